// Values in a flat buffer. A byte before each tells its kind.

#include "nelvo/core/cnt/buf_reader.h"

#include <array>

#include "fuzz/stream.h"
#include "nelvo/core/cnt/buf_writer.h"

namespace
{

template <class Array>
void CopyBlob(CBufReader& from, cnt::CBufWriter& to)
{
    Array blob;
    from.ReadBlob(blob);
    to.WriteBlob(blob.size(), blob.data());
}

void CopyToMemory(CBufReader& from, cnt::CBufWriter& to)
{
    std::array<char, 8> memory{};
    to.WriteBlob(from.ReadBlob(memory.data(), memory.size()), memory.data());
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
    default: CopyToMemory(from, to); break;
    }
}

// The values as far as they can be read, written again.
fuzz::array_ptr_t Copy(const fuzz::array_ptr_t& bytes)
{
    static cnt::CBufWriter to; // its mebibyte is made once
    to.Rewind();
    CBufReader from(bytes);
    while (fuzz::Reads([&] { CopyOne(from, to); }))
    {
    }
    return boost::make_shared<cnt::plain_array_t>(to.GetBuffer()->data(), to.GetPosition());
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    const array_ptr_t copy = Copy(Array(data, size));
    Require(copy->size() <= size && *Copy(copy) == *copy);
}
