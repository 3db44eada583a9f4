#pragma once

// Writes values one behind the other into a byte array, in the flat encoding that a CBufReader reads
// (docs/formats.md): the host's byte order, no header, no alignment, no type tags.
//
//   cnt::CBufWriter writer;
//   writer.WriteInt32(7);          // 07 00 00 00
//   writer.WriteString("ab");      // 02 00 00 00 61 62
//   writer.GetPosition();          // 10: the real length
//   writer.GetBuffer()->size();    // 1048576
//
// The array grows to whole mebibytes, with zeros, and only if it is too small, so its size runs ahead of the
// position. Nothing is cut off at the end: the bytes before the position are what was written.
//
// What grows the array throws std::bad_alloc, and nothing is written then. Data that is written must not lie
// within the array. A writer belongs to one thread.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include <boost/shared_ptr.hpp>

#include "nelvo/core/cnt/array.h"

namespace cnt
{

class CBufWriter
{
public:
    // What the array grows by.
    static constexpr std::uint32_t kGrowth = 1048576;

    // All begin at position 0: with a new empty array, with one that is shared (not null), with a new one of
    // a size.
    CBufWriter();
    explicit CBufWriter(boost::shared_ptr<plain_array_t> buffer);
    explicit CBufWriter(std::size_t initial_size);

    // A copy has an array of its own with the same bytes, and stands at the same position.
    CBufWriter(const CBufWriter& other);
    CBufWriter& operator=(const CBufWriter&) = delete;

    // 1 byte, 0 or 1.
    void WriteBool(bool value);

    // 4 and 8 bytes.
    void WriteInt32(std::uint32_t value);
    void WriteInt32(std::int32_t value) { WriteInt32(static_cast<std::uint32_t>(value)); }
    void WriteInt64(std::uint64_t value);
    void WriteInt64(std::int64_t value) { WriteInt64(static_cast<std::uint64_t>(value)); }

    // The length as 4 bytes, then the bytes. 4 GiB and more are exc::runtime_exc_t "Unable to cast value from
    // [m] to [j]." Data of size 0 may be null.
    void WriteString(std::string_view text);
    void WriteBlob(std::size_t size, const void* data);

    // The bytes alone.
    void WriteRaw(std::size_t size, const void* data);

    // For data of a length that is not known ahead. Gives the place behind a length of 4 bytes, with room for
    // as many bytes as the greatest length says; the caller puts the data there and then tells its length,
    // which goes to its place and moves the position forward by itself and the 4 bytes: behind the data.
    //
    //   char* const place = writer.ReserveLength(4096);
    //   writer.FillLength(Produce(place, 4096));
    //
    // The place holds until the next write or reservation. The position stays until the length is told, so
    // that a write in between would go over the place, and the length then moves the position from where that
    // write left it. There is one reservation at a time: another takes the place of one that was not filled.
    char* ReserveLength(std::uint32_t greatest = kGrowth);

    // More than the greatest length is exc::runtime_exc_t "Out of the array bound. Index of the requested
    // array element: [<length - 1>]. Array size: [<greatest length>]."; without a reservation, "No length
    // slot is reserved." Either changes nothing.
    void FillLength(std::uint32_t length);

    // The array itself, never null. It may be longer than what was written: the position tells the end.
    const boost::shared_ptr<plain_array_t>& GetBuffer() const { return m_buffer; }

    // The next byte to write.
    std::uint64_t GetPosition() const { return m_position; }

    // Back to the start of the array, which keeps its size and bytes. Gives up a reservation.
    void Rewind();

    // The same, and the array's size becomes zero; it keeps its memory.
    void Reset();

private:
    struct slot_t
    {
        std::uint64_t place; // an offset, for the array may move
        std::uint32_t greatest;
    };

    char* Room(std::uint64_t size);
    char* RoomWithLength(std::uint32_t length);
    void Put(std::size_t size, const void* data);
    void PutWithLength(std::size_t size, const void* data);

    std::uint64_t m_position = 0;
    boost::shared_ptr<plain_array_t> m_buffer;
    std::optional<slot_t> m_reserved_slot;
};

} // namespace cnt
