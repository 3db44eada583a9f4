// Values in a stream. A byte before each tells its kind.

#include "nelvo/io/binary_value.h"

#include "fuzz/stream.h"

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

// The values as far as they can be read, written again.
fuzz::array_ptr_t Copy(const fuzz::array_ptr_t& bytes)
{
    io::plain_mem_stream_t from(bytes);
    io::plain_mem_stream_t to;
    while (fuzz::Reads([&] { CopyOne(from, to); }))
    {
    }
    return to.GetArray();
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    const array_ptr_t copy = Copy(fuzz::Array(data, size));
    fuzz::Require(copy->size() <= size && *Copy(copy) == *copy);
}
