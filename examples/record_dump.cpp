// Prints a stored record field by field, as docs/formats.md has it, with offset and width in bytes:
//
//   record_dump [--show-keys] FORM [FILE]
//
// Without a file it reads standard input; without arguments it lists the forms. The bytes of keys are not
// shown unless it is told so. Nothing in the input is believed: a field that goes beyond the end, a byte
// behind the record and a value that the form does not have are failures that name the offset. (The library's
// own readers take missing bytes of keys for zeros.)

#include <exception>
#include <iomanip>
#include <iostream>
#include <string>
#include <string_view>

#include <boost/make_shared.hpp>

#include "nelvo/core/date_time.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/to_text.h"
#include "nelvo/crypto/key_names.h"
#include "nelvo/crypto/processing_policy.h"
#include "nelvo/crypto/secure_array.h"
#include "nelvo/io/binary_value.h"
#include "nelvo/io/mem_stream.h"
#include "nelvo/posix/posix_file.h"

namespace
{

using bytes_t = crypto::secure_array_t; // wiped at the end, for there may be keys among them
using bytes_ptr_t = crypto::secure_array_ptr_t;

constexpr std::size_t kPiece = 65536;
constexpr std::size_t kGreatestInput = 1024 * kPiece;
constexpr std::uint32_t kIdSize = 16;

unsigned char Byte(char letter) { return static_cast<unsigned char>(letter); }

// In quotes, with all but printable ASCII as \x and two digits: nothing of it reaches a terminal as it is.
std::string Quoted(const bytes_t& bytes)
{
    std::string text = "\"";
    for (const char letter : std::string_view(bytes.data(), bytes.size()))
    {
        if (letter == '"' || letter == '\\')
            text += '\\';
        if (letter >= ' ' && letter <= '~')
            text += letter;
        else
            text += "\\x" + util::HexText(Byte(letter));
    }
    return text + '"';
}

std::string Hex(const bytes_t& bytes)
{
    if (bytes.empty())
        return "(none)";
    std::string text;
    for (const char letter : std::string_view(bytes.data(), bytes.size()))
        text += (text.empty() ? "" : " ") + util::HexText(Byte(letter));
    return text;
}

std::string DateText(std::int64_t seconds, bool is_utc)
{
    try
    {
        return datetime::CDateTime(seconds, is_utc).ToString(datetime::CDateTime::kIsoFormat) +
               (is_utc ? " UTC" : " local");
    }
    catch (std::exception&)
    {
        return "beyond all dates";
    }
}

// The record and the place in it. Each operation reads one field, or one with its length in front, and prints
// it.
class dump_t
{
public:
    dump_t(const bytes_ptr_t& record, bool show_keys) : m_device(record), m_show_keys(show_keys) {}

    using names_t = std::string (*)(std::uint32_t);

    std::uint32_t U32(const std::string& name, names_t names = nullptr)
    {
        const auto value = Take<std::uint32_t>(name);
        Print(name, util::ToText(value) + (names != nullptr ? " (" + names(value) + ")" : ""));
        return value;
    }

    std::int32_t I32(const std::string& name) { return Plain<std::int32_t>(name); }
    std::uint64_t U64(const std::string& name) { return Plain<std::uint64_t>(name); }

    // Of 4 bytes, and of 1 in flat buffers.
    bool Flag(const std::string& name) { return PrintFlag(name, Take<std::uint32_t>(name)); }
    bool FlatFlag(const std::string& name) { return PrintFlag(name, Take<std::uint8_t>(name)); }

    void Bits(const std::string& name) { Print(name, "0x" + util::HexText(Take<std::uint32_t>(name))); }

    void Date(const std::string& name)
    {
        const bool is_utc = Flag(name + ".is_utc");
        const auto seconds = Take<std::int64_t>(name + ".seconds");
        Print(name + ".seconds", util::ToText(seconds) + " (" + DateText(seconds, is_utc) + ")");
    }

    // In units of 100 nanoseconds, in two halves.
    void Time(const std::string& name)
    {
        const std::uint64_t low = U32(name + ".low");
        const auto high = Take<std::uint32_t>(name + ".high");
        const std::uint64_t seconds = (std::uint64_t{high} << 32 | low) / 10000000;
        Print(name + ".high",
              util::ToText(high) + " (" + DateText(static_cast<std::int64_t>(seconds), true) + ")");
    }

    void Text(const std::string& name) { Print(name, Quoted(TakeArray(name, U32(name + ".length")))); }
    void Blob(const std::string& name) { Raw(name, U32(name + ".length")); }
    void Raw(const std::string& name, std::uint32_t size) { Print(name, Hex(TakeArray(name, size))); }

    void Secret(const std::string& name, std::uint32_t size)
    {
        const bytes_t bytes = TakeArray(name, size);
        Print(name, m_show_keys ? Hex(bytes) : "(not shown)");
    }

    void Magic(const std::string& name, std::string_view magic)
    {
        const bytes_t bytes = TakeArray(name, static_cast<std::uint32_t>(magic.size()));
        Print(name, Quoted(bytes));
        Expect(std::string_view(bytes.data(), bytes.size()) == magic, name);
    }

    // Throws if the last field, whose name it is, must not have its value.
    void Expect(bool is_right, const std::string& name) const
    {
        if (!is_right)
            throw exc::runtime_exc_t("Offset %1: this is no value for [%2].", m_begin, name);
    }

    void ExpectEnd() const
    {
        if (m_device.GetRemaining() != 0)
            throw exc::runtime_exc_t("Offset %1: the record ends here, and %2 more bytes follow.",
                                     m_device.GetOffset(), m_device.GetRemaining());
    }

private:
    void Begin(const std::string& name, std::uint64_t width)
    {
        m_begin = m_device.GetOffset();
        if (m_device.GetRemaining() < width)
            throw exc::runtime_exc_t("Offset %1: [%2] has %3 bytes, and %4 are left.", m_begin, name, width,
                                     m_device.GetRemaining());
    }

    template <class Value>
    Value Take(const std::string& name)
    {
        Begin(name, sizeof(Value));
        return io::ReadValue<Value>(m_device);
    }

    // No memory is taken for what is not there.
    bytes_t TakeArray(const std::string& name, std::uint32_t size)
    {
        Begin(name, size);
        return io::ReadRawArray<bytes_t>(m_device, size);
    }

    template <class Value>
    Value Plain(const std::string& name)
    {
        const auto value = Take<Value>(name);
        Print(name, util::ToText(value));
        return value;
    }

    bool PrintFlag(const std::string& name, std::uint32_t value) const
    {
        Print(name, util::ToText(value) + (value != 0 ? " (true)" : " (false)"));
        return value != 0;
    }

    void Print(const std::string& name, const std::string& value) const
    {
        std::cout << std::setw(8) << m_begin << std::setw(8) << m_device.GetOffset() - m_begin << "  "
                  << std::left << std::setw(30) << name << std::right << ' ' << value << '\n';
    }

    io::secure_mem_dev_t m_device;
    bool m_show_keys;
    std::uint64_t m_begin = 0; // of the last field
};

std::string FileTypeName(std::uint32_t type)
{
    switch (type)
    {
    case 0: return "regular file";
    case 1: return "directory";
    case 2: return "symbolic link";
    default: return "something else";
    }
}

std::string Numbered(const std::string& name, std::int64_t number)
{
    return name + "." + util::ToText(number) + ".";
}

// The forms. What stands in others too takes a prefix for the names of its fields.

void DumpDate(dump_t& dump) { dump.Date("date"); }
void DumpAttributes(dump_t& dump) { dump.Bits("attributes"); }

void DumpAcl(dump_t& dump)
{
    dump.Magic("acl.magic", "acld");
    if (dump.Flag("access_acl.there"))
        dump.Text("access_acl");
    if (dump.Flag("default_acl.there"))
        dump.Text("default_acl");
}

void DumpFileMeta(dump_t& dump)
{
    if (dump.Flag("attributes.there"))
        dump.Bits("attributes");
    dump.Date("changed");
    dump.Date("modified");
    dump.Date("accessed");
    if (dump.Flag("uid.there"))
        dump.U64("uid");
    if (dump.Flag("gid.there"))
        dump.U64("gid");
    if (dump.Flag("mode.there"))
        dump.U32("mode");
    DumpAcl(dump);
}

void DumpFileInfo(dump_t& dump)
{
    if (dump.Flag("type.there"))
        dump.U32("type", FileTypeName);
    if (dump.Flag("link_count.there"))
        dump.U32("link_count");
    if (dump.Flag("name.there"))
        dump.Text("name");
    if (dump.Flag("size.there"))
        dump.U64("size");
    DumpFileMeta(dump);
    dump.Blob("extra_data");
}

void DumpSecurity(dump_t& dump)
{
    dump.Magic("magic", "NIX");
    dump.U64("uid");
    dump.U64("gid");
    dump.U64("mode");
}

void DumpId(dump_t& dump, const std::string& name)
{
    dump.Expect(dump.U32(name + ".size") == kIdSize, name + ".size");
    dump.Raw(name, kIdSize);
}

void DumpKey(dump_t& dump, const std::string& prefix)
{
    dump.U32(prefix + "type", crypto::KeyTypeToString);
    dump.Secret(prefix + "bytes", dump.U32(prefix + "size"));
}

void DumpRepairRecord(dump_t& dump, const std::string& prefix)
{
    DumpId(dump, prefix + "master_id");
    dump.Secret(prefix + "data", dump.U32(prefix + "size"));
}

void DumpKeySet(dump_t& dump, const std::string& prefix)
{
    dump.Expect(dump.U32(prefix + "version") == 1, prefix + "version");
    dump.U32(prefix + "algorithm", crypto::KeyAlgorithmToString);
    dump.Text(prefix + "hint");
    dump.U32(prefix + "role", crypto::KeyRoleToString);
    const std::uint32_t keys = dump.U32(prefix + "keys");
    const std::uint32_t records = dump.U32(prefix + "repair_records");
    dump.Time(prefix + "time");
    for (std::uint32_t i = 1; i <= keys; ++i)
        DumpKey(dump, Numbered(prefix + "key", i));
    for (std::uint32_t i = 1; i <= records; ++i)
        DumpRepairRecord(dump, Numbered(prefix + "repair", i));
    DumpId(dump, prefix + "id");
}

void DumpKeySets(dump_t& dump)
{
    const std::uint32_t sets = dump.U32("sets");
    for (std::uint32_t i = 1; i <= sets; ++i)
        DumpKeySet(dump, Numbered("set", i));
}

void DumpAesKey(dump_t& dump)
{
    dump.Raw("reserved", 18);
    const std::uint32_t key = dump.U32("key.size");
    const std::uint32_t vector = dump.U32("vector.size");
    dump.Secret("key", key);
    dump.Secret("vector", vector);
}

void DumpPolicy(dump_t& dump)
{
    const std::uint32_t type = dump.U32("type", CCryptoProcessingPolicy::TypeToString);
    dump.Flag("extra_flag");
    if (type != CCryptoProcessingPolicy::enNoCryptoProcessing && type != CCryptoProcessingPolicy::enDecrypt)
        DumpId(dump, "key_set_id");
}

void DumpException(dump_t& dump)
{
    const std::int32_t lines = dump.I32("lines");
    for (std::int32_t i = 1; i <= lines; ++i)
    {
        dump.Text(Numbered("line", i) + "text");
        dump.FlatFlag(Numbered("line", i) + "marked");
    }
    const std::int32_t properties = dump.I32("properties");
    for (std::int32_t i = 1; i <= properties; ++i)
    {
        dump.Text(Numbered("property", i) + "key");
        dump.Text(Numbered("property", i) + "value");
    }
    const std::int32_t events = dump.I32("events");
    for (std::int32_t i = 1; i <= events; ++i)
    {
        dump.I32(Numbered("event", i) + "code");
        dump.Text(Numbered("event", i) + "info");
    }
}

void DumpRuntimeException(dump_t& dump)
{
    DumpException(dump);
    dump.U32("code");
}

struct form_t
{
    const char* name;
    const char* what;
    void (*dump)(dump_t& dump);
};

constexpr form_t kForms[] = {
    {"acl", "ACL data", DumpAcl},
    {"aes-key", "AES key and vector", DumpAesKey},
    {"attributes", "file attributes", DumpAttributes},
    {"date", "date", DumpDate},
    {"exception", "exception", DumpException},
    {"file-info", "file info", DumpFileInfo},
    {"file-meta", "file metadata", DumpFileMeta},
    {"key", "key", [](dump_t& dump) { DumpKey(dump, ""); }},
    {"key-set", "key set", [](dump_t& dump) { DumpKeySet(dump, ""); }},
    {"key-set-id", "id of a key set", [](dump_t& dump) { DumpId(dump, "id"); }},
    {"key-sets", "collection of key sets", DumpKeySets},
    {"policy", "processing policy", DumpPolicy},
    {"repair-record", "repair record", [](dump_t& dump) { DumpRepairRecord(dump, ""); }},
    {"runtime-exception", "exception of the type runtime_exc_t", DumpRuntimeException},
    {"security", "security buffer", DumpSecurity},
};

std::string Usage()
{
    std::string text = "Usage: record_dump [--show-keys] FORM [FILE]";
    for (const form_t& form : kForms)
        text += "\n  " + std::string(form.name) + ": " + form.what;
    return text;
}

bytes_ptr_t ReadInput(const std::string& path)
{
    const posix_file_ptr_t file = posix::posix_file_t::OpenRead(path);
    auto bytes = boost::make_shared<bytes_t>();
    for (std::size_t size = kPiece; size == kPiece;)
    {
        if (bytes->size() == kGreatestInput)
            throw exc::runtime_exc_t("[%1] has %2 bytes or more.", path, kGreatestInput);
        const std::size_t begin = bytes->size();
        bytes->resize(begin + kPiece);
        size = static_cast<std::size_t>(file->ReadBytes(bytes->data() + begin, kPiece));
        bytes->resize(begin + size);
    }
    return bytes;
}

void Run(int argc, char* argv[])
{
    const bool show_keys = argc > 1 && std::string_view(argv[1]) == "--show-keys";
    const int first = show_keys ? 2 : 1;
    const std::string name = argc - first == 1 || argc - first == 2 ? argv[first] : "";
    for (const form_t& form : kForms)
    {
        if (name != form.name)
            continue;
        dump_t dump(ReadInput(argc - first == 2 ? argv[first + 1] : "/dev/stdin"), show_keys);
        std::cout << "  offset   width  field                          value\n";
        form.dump(dump);
        dump.ExpectEnd();
        return;
    }
    throw exc::runtime_exc_t(Usage());
}

} // namespace

int main(int argc, char* argv[])
{
    try
    {
        Run(argc, argv);
        if (!std::cout.flush())
            throw exc::runtime_exc_t("Failed to write to standard output.");
    }
    catch (std::exception& e)
    {
        std::cout << std::flush;
        std::cerr << e.what() << std::endl;
        return 1;
    }
    return 0;
}
