// Values in a stream, a byte before each for its kind; and devices in memory, which do what a model does.

#include "nelvo/io/binary_value.h"

#include "fuzz/stream.h"
#include "nelvo/io/buffered_stream.h"
#include "nelvo/io/fixed_cache.h"

namespace
{

enum class enumeration_t : std::uint32_t
{
};

void CopyOne(io::io_dev_t& from, io::io_dev_t& to)
{
    const auto kind = io::ReadValue<std::uint8_t>(from);
    io::WriteValue(to, kind);
    switch (kind)
    {
    case 0: io::WriteValue(to, io::ReadValue<std::int8_t>(from)); break;
    case 1: io::WriteValue(to, io::ReadValue<std::uint32_t>(from)); break;
    case 2: io::WriteValue(to, io::ReadValue<std::int64_t>(from)); break;
    case 3: io::WriteValue(to, io::ReadValue<bool>(from)); break;
    case 4: io::WriteValue(to, io::ReadValue<enumeration_t>(from)); break;
    case 5: io::WriteOptionalValue(to, io::ReadOptionalValue<std::uint64_t>(from)); break;
    case 6: io::WriteString(to, io::ReadString(from)); break;
    case 7: io::WriteOptionalString(to, io::ReadOptionalString(from)); break;
    case 8: io::WriteArray(to, io::ReadArray<cnt::plain_array_t>(from)); break;
    default: io::WriteArray(to, io::ReadArray<cnt::secure_array_t>(from)); break;
    }
}

bool HasBoolean(char kind) { return kind == 3 || kind == 5 || kind == 7; }

// What was written is what was read, but for a boolean behind the kind: any that is not 0 is written as 1.
void RequireSame(const cnt::plain_array_t& read, const cnt::plain_array_t& written, std::size_t begin)
{
    fuzz::Require(written.size() <= read.size());
    std::string expected(read.begin() + begin, read.begin() + written.size());
    if (HasBoolean(expected[0]))
    {
        const bool is_true = expected.find_first_not_of('\0', 1) < 1 + sizeof(std::uint32_t);
        expected.replace(1, sizeof(std::uint32_t), {is_true ? '\1' : '\0', '\0', '\0', '\0'});
    }
    fuzz::Require(std::equal(written.begin() + begin, written.end(), expected.begin(), expected.end()));
}

// The values as far as they can be read, written again.
fuzz::array_ptr_t Copy(const fuzz::array_ptr_t& bytes)
{
    io::plain_mem_stream_t from(bytes);
    io::plain_mem_stream_t to;
    std::size_t end = 0;
    while (fuzz::Reads([&] { CopyOne(from, to); }))
    {
        fuzz::Require(to.GetArray()->size() == from.GetMemDevice()->GetOffset());
        RequireSame(*bytes, *to.GetArray(), end);
        end = to.GetArray()->size();
    }
    return boost::make_shared<cnt::plain_array_t>(to.GetArray()->data(), end);
}

// The same values by way of a buffer of any size.
void TryBuffered(const fuzz::array_ptr_t& bytes, std::uint64_t buffer_size)
{
    const auto target = boost::make_shared<io::plain_mem_dev_t>();
    const auto buffer = boost::make_shared<io::buffered_io_dev_t>(buffer_size, target);
    io::buffered_bin_stream_tt to(buffer);
    io::plain_mem_stream_t from(bytes);
    for (std::uint64_t left = 1; left != 0; left = from.GetRemaining())
        CopyOne(from, to);
    to.Flush();
    fuzz::Require(*target->GetArray() == *bytes && buffer->GetForwardedBytes() == bytes->size());
}

// All bytes go through the cache, which is never more than full.
void TryCache(const std::uint8_t* data, std::uint64_t size, std::uint64_t cache_size)
{
    fixed_cache_t cache(cache_size);
    const std::string_view bytes = fuzz::Text(data, size);
    const char* at = bytes.data();
    std::string through;
    while (size != 0)
    {
        const bool overflows = cache.WouldOverflow(size);
        cache.Append(at, size);
        fuzz::Require(overflows == (size != 0) && (cache.IsFull() || size == 0));
        through.append(cache.GetData(), cache.GetUsed());
        cache.Reset();
    }
    fuzz::Require(through == bytes && cache.IsEmpty());
}

// A device in memory as it is told: bytes and an offset.
template <class Device>
class model_t
{
public:
    void Write(std::string_view bytes)
    {
        fuzz::Require(m_device.write(bytes.data(), bytes.size()) == bytes.size());
        if (!bytes.empty())
            m_bytes.resize(std::max(m_bytes.size(), m_offset + bytes.size()));
        m_bytes.replace(m_offset, bytes.size(), bytes);
        m_offset += bytes.size();
    }

    void Read(std::size_t count)
    {
        std::string bytes(count, '\0');
        bytes.resize(m_device.read(bytes.data(), count));
        fuzz::Require(bytes == m_bytes.substr(m_offset, count));
        m_offset += bytes.size();
    }

    void SeekRelative(std::uint64_t size)
    {
        const bool fits = size <= m_bytes.size() - m_offset;
        fuzz::Require(fuzz::Reads([&] { m_device.SeekRelative(size); }) == fits);
        m_offset += fits ? size : 0;
    }

    void SeekAbsolute(std::uint64_t offset)
    {
        const bool fits = offset <= m_bytes.size();
        fuzz::Require(fuzz::Reads([&] { m_device.SeekAbsolute(offset); }) == fits);
        m_offset = fits ? offset : m_offset;
    }

    void RequireSame() const
    {
        const auto& array = *m_device.GetArray();
        fuzz::Require(std::string_view(array.data(), array.size()) == m_bytes);
        fuzz::Require(m_device.GetOffset() == m_offset &&
                      m_device.GetRemaining() == m_bytes.size() - m_offset);
        fuzz::Require(array.empty() || m_device.GetCurrentPointer() == array.data() + m_offset);
    }

private:
    Device m_device;
    std::string m_bytes;
    std::size_t m_offset = 0;
};

// A number of one byte, or of eight that may be anything.
std::uint64_t TakeNumber(std::string_view& bytes)
{
    std::uint64_t number = 0;
    const std::size_t width = bytes.empty() ? 0 : bytes.front() == '\xff' ? sizeof(number) : 1;
    const std::size_t taken = std::min(width, bytes.size());
    std::memcpy(&number, bytes.data(), taken);
    bytes.remove_prefix(taken);
    return number;
}

// One operation a byte, with a number behind it.
template <class Device>
void TryDevice(std::string_view bytes)
{
    model_t<Device> model;
    while (!bytes.empty())
    {
        const char kind = bytes.front();
        bytes.remove_prefix(1);
        const std::uint64_t number = TakeNumber(bytes);
        switch (kind & 3)
        {
        case 0: model.Write(bytes.substr(0, number & 0xff)); break;
        case 1: model.Read(number & 0xff); break;
        case 2: model.SeekRelative(number); break;
        default: model.SeekAbsolute(number); break;
        }
        model.RequireSame();
    }
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    const array_ptr_t copy = Copy(fuzz::Array(data, size));
    Require(*Copy(copy) == *copy);
    if (!copy->empty())
        TryBuffered(copy, 1U + static_cast<unsigned char>((*copy)[0]) % 32U);
    TryCache(data, size, 7);
    TryDevice<io::plain_mem_dev_t>(Text(data, size));
    TryDevice<io::secure_mem_dev_t>(Text(data, size));
}
