#pragma once

// Takes values out of a byte array that a cnt::CBufWriter filled, in the order in which they were written.
// The array is not trusted: each access is checked against its size, and the length of a text or blob against
// the limit of the agent options (GetMaxReadLength) before any byte is copied.
//
//   CBufReader reader(array);
//   const std::uint32_t code = reader.ReadUint32();
//   const std::string text = reader.ReadString();
//
// A read that fails throws exc::runtime_exc_t with the cause and a line that names the kind of value:
//
//   Out of the buffer, buffer size '3', struct size '4', buffer pointer '0'.
//   Failed to extract integer value from buffer.
//
// It may have moved the position, behind a length that was refused for example, so a reader that failed
// must not be used further, unless SetBuffer lets it begin anew.
//
// A reader belongs to one thread. Several may share an array that nobody changes.

#include <cstddef>
#include <cstdint>
#include <string>

#include <boost/shared_ptr.hpp>

#include "nelvo/core/cnt/array.h"

class CBufReader
{
public:
    using buffer_ptr_t = boost::shared_ptr<const cnt::plain_array_t>;

    // Without an array, or with one (which may be null) at position 0. The limit of lengths is taken from the
    // agent options now, for the life of the reader.
    CBufReader();
    explicit CBufReader(buffer_ptr_t buffer);

    // Replaces the array, which may be null, and begins at its start.
    void SetBuffer(buffer_ptr_t buffer);

    // The next byte to read.
    std::uint64_t GetPosition() const { return m_position; }

    // The address of the next bytes of the array; the position moves behind them. Throws exc::runtime_exc_t,
    // and leaves the position, with "CBufReader buffer not initialized." or, if there are fewer bytes, "Out
    // of the buffer, buffer size '<array's size>', struct size '<size>', buffer pointer '<position>'."
    const char* Take(std::uint64_t size);

    // 1 byte, true unless it is 0. "Failed to extract boolean value from buffer."
    bool ReadBool();

    // 4 and 8 bytes. "Failed to extract integer value from buffer."
    std::uint32_t ReadUint32();
    std::int32_t ReadInt32() { return static_cast<std::int32_t>(ReadUint32()); }
    std::uint64_t ReadUint64();
    std::int64_t ReadInt64() { return static_cast<std::int64_t>(ReadUint64()); }

    // A length of 4 bytes, then the bytes. A length above the limit is "Invalid length of the string
    // '<length>'." "Failed to extract multi-byte string from buffer ."
    std::string ReadString();

    // The same for a blob, which replaces the contents of an array, or goes to the caller's memory of a size,
    // and its length is returned. A length above the limit or above the size is "Invalid length of the binary
    // data '<length>'." "Failed to extract binary content from buffer." What fails leaves target and memory
    // as they were.
    void ReadBlob(cnt::plain_array_t& target);
    void ReadBlob(cnt::secure_array_t& target);
    std::size_t ReadBlob(void* memory, std::size_t size);

private:
    template <class Value>
    Value TakeValue();
    std::uint32_t TakeBlobLength(std::uint64_t greatest);
    template <class Array>
    void ReadBlobInto(Array& target);

    buffer_ptr_t m_buffer;
    std::uint64_t m_position = 0;
    std::uint32_t m_max_length;
};
