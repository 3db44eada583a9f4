#pragma once

// A device in memory over a byte array that may be shared, and the stream over it: where records are built
// and taken apart.
//
//   io::plain_mem_stream_t stream;
//   io::WriteString(stream, "ab");
//   file->WriteBytes(stream.GetArray()->size(), stream.GetArray()->data());
//
// Reading and writing share one offset. Those over a secure array leave no copy of its bytes in the heap;
// those over a plain one leave copies wherever it stood, so it is not for keys. An array that devices share
// is not protected: one thread at a time.

#include <cstdint>

#include <boost/shared_ptr.hpp>

#include "nelvo/core/cnt/array.h"
#include "nelvo/io/binary_stream.h"

namespace io
{

template <class Array>
class mem_dev_tt : public io_dev_t
{
public:
    // Over a new empty array, or one that is shared; the offset is 0. The array must not be null.
    mem_dev_tt();
    explicit mem_dev_tt(boost::shared_ptr<Array> array);

    // Writes over what stands at the offset and grows the array as far as needed; bytes that are left out
    // before an offset beyond the end are zero. Takes all, or throws std::bad_alloc and changes nothing. The
    // data must not lie within the array.
    std::uint64_t write(const void* data, std::uint64_t count) override;

    // What is there, up to the count; 0 at the end.
    std::uint64_t read(void* buffer, std::uint64_t count) override;

    // The array itself, and the place in it where the next byte is read or written.
    const boost::shared_ptr<Array>& GetArray() const { return m_array; }
    std::uint64_t GetOffset() const { return m_offset; }

    // Null if the array is empty; of no use while the array is shorter than the offset. Holds until the array
    // grows.
    char* GetCurrentPointer() const;

    // The bytes from the offset to the array's end; 0 if the array has shrunk below the offset.
    std::uint64_t GetRemaining() const;

    // Move the offset forward by a size, or to a place; at most to the end of the array. Beyond, they throw
    // exc::runtime_exc_t with "Failed to seek memory stream pointer : out of the buffer (buffer size '<array
    // size>', current offset '<offset>', seek size '<size>')." or "seek offset '<offset>'" and leave the
    // offset.
    void SeekRelative(std::uint64_t size);
    void SeekAbsolute(std::uint64_t offset);

private:
    [[gnu::noinline]] std::uint64_t WriteAny(const void* data, std::uint64_t count);
    void WriteOver(const void* data, std::uint64_t count);
    [[gnu::noinline]] std::uint64_t ReadAny(void* buffer, std::uint64_t count);

    boost::shared_ptr<Array> m_array;
    std::uint64_t m_offset = 0;
};

template <class Array>
class mem_stream_tt : public binary_stream_tt
{
public:
    // Over a new memory device, with a new empty array or one that is shared.
    mem_stream_tt();
    explicit mem_stream_tt(const boost::shared_ptr<Array>& array);

    // If a derived class has put another device in the place of the memory device, or none, these throw
    // exc::runtime_exc_t with "Failed to cast binary stream device to memory RW device object."
    boost::shared_ptr<mem_dev_tt<Array>> GetMemDevice() const;
    boost::shared_ptr<Array> GetArray() const;
    std::uint64_t GetRemaining() const;
};

// Those that are there: other arrays have no code in the library.
using plain_mem_dev_t = mem_dev_tt<cnt::plain_array_t>;
using secure_mem_dev_t = mem_dev_tt<cnt::secure_array_t>;
using plain_mem_stream_t = mem_stream_tt<cnt::plain_array_t>;
using secure_mem_stream_t = mem_stream_tt<cnt::secure_array_t>;

extern template class mem_dev_tt<cnt::plain_array_t>;
extern template class mem_dev_tt<cnt::secure_array_t>;
extern template class mem_stream_tt<cnt::plain_array_t>;
extern template class mem_stream_tt<cnt::secure_array_t>;

} // namespace io
