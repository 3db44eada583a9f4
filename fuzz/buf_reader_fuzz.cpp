// Values in a flat buffer. A byte before each tells its kind.

#include "nelvo/core/cnt/buf_reader.h"

#include <array>

#include "fuzz/stream.h"
#include "nelvo/core/cnt/buf_writer.h"

namespace
{

constexpr std::string_view kBefore = "before";

// A blob that is not read leaves what it would replace.
template <class Array>
void CopyBlob(CBufReader& from, cnt::CBufWriter& to)
{
    Array blob(kBefore.data(), kBefore.size());
    const Array before(blob);
    try
    {
        from.ReadBlob(blob);
    }
    catch (...)
    {
        fuzz::Require(blob == before);
        throw;
    }
    to.WriteBlob(blob.size(), blob.data());
}

void CopyToMemory(CBufReader& from, cnt::CBufWriter& to)
{
    std::array<char, 8> memory{};
    to.WriteBlob(from.ReadBlob(memory.data(), memory.size()), memory.data());
}

void CopyTaken(CBufReader& from, cnt::CBufWriter& to)
{
    const std::uint32_t size = from.ReadUint32();
    const char* const taken = from.Take(size);
    to.WriteInt32(size);
    to.WriteRaw(size, taken);
}

void CopyReserved(CBufReader& from, cnt::CBufWriter& to)
{
    const std::string text = from.ReadString();
    std::copy(text.begin(), text.end(), to.ReserveLength(static_cast<std::uint32_t>(text.size())));
    to.FillLength(static_cast<std::uint32_t>(text.size()));
}

void CopyOne(CBufReader& from, cnt::CBufWriter& to)
{
    const char* const kind = from.Take(1);
    to.WriteRaw(1, kind);
    switch (*kind)
    {
    case 0: to.WriteBool(from.ReadBool()); break;
    case 1: to.WriteInt32(from.ReadInt32()); break;
    case 2: to.WriteInt64(from.ReadUint64()); break;
    case 3: to.WriteString(from.ReadString()); break;
    case 4: CopyBlob<cnt::plain_array_t>(from, to); break;
    case 5: CopyBlob<cnt::secure_array_t>(from, to); break;
    case 6: CopyToMemory(from, to); break;
    case 7: CopyTaken(from, to); break;
    case 8: CopyReserved(from, to); break;
    case 9: to.WriteInt64(from.ReadInt64()); break;
    default: to.WriteInt32(from.ReadUint32()); break;
    }
}

// What was written is what was read, but for a boolean, which may have had any bits.
void RequireSame(const fuzz::array_ptr_t& bytes, const cnt::CBufWriter& to, std::uint64_t begin)
{
    const char* const written = to.GetBuffer()->data();
    const std::uint64_t end = to.GetPosition();
    if (written[begin] == 0)
        fuzz::Require(end == begin + 2 && (written[begin + 1] != 0) == ((*bytes)[begin + 1] != 0));
    else
        fuzz::Require(std::equal(written + begin, written + end, bytes->data() + begin));
}

// The values as far as they can be read, written again.
fuzz::array_ptr_t Copy(const fuzz::array_ptr_t& bytes)
{
    static cnt::CBufWriter to; // its mebibyte is made once
    to.Rewind();
    CBufReader from;
    from.SetBuffer(bytes);
    std::uint64_t end = 0;
    while (fuzz::Reads([&] { CopyOne(from, to); }))
    {
        fuzz::Require(to.GetPosition() == from.GetPosition() && from.GetPosition() <= bytes->size());
        RequireSame(bytes, to, end);
        end = to.GetPosition();
    }
    fuzz::Require(from.GetPosition() <= bytes->size());
    return boost::make_shared<cnt::plain_array_t>(to.GetBuffer()->data(), end);
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    const array_ptr_t copy = Copy(Array(data, size));
    Require(*Copy(copy) == *copy);
    CBufReader without_buffer;
    Require(!Reads([&] { without_buffer.Take(0); }));
}
