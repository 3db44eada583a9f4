#pragma once

// What the targets of stored records share.

#include <utility>

#include <boost/make_shared.hpp>

#include "fuzz/fuzz_target.h"
#include "nelvo/io/mem_stream.h"

namespace fuzz
{

using array_ptr_t = boost::shared_ptr<cnt::plain_array_t>;

inline array_ptr_t Array(const std::uint8_t* data, std::size_t size)
{
    return boost::make_shared<cnt::plain_array_t>(reinterpret_cast<const char*>(data), size);
}

// The stored form of a record, which write puts into a stream.
template <class Record, class Write>
array_ptr_t Stored(const Record& record, Write write)
{
    io::plain_mem_stream_t stream;
    write(record, stream);
    return stream.GetArray();
}

enum class form_t
{
    kCanonical, // the stored form is what was read, with zeros for what was missing at the end
    kBooleans   // but for booleans, of which any but 0 is stored as 1
};

// Whether a byte belongs to a boolean of which this is so.
inline bool IsInBoolean(const array_ptr_t& stored, const array_ptr_t& bytes, std::size_t place)
{
    static constexpr char kTrue[] = {1, 0, 0, 0};
    static constexpr char kFalse[] = {0, 0, 0, 0};
    for (std::size_t begin = place - std::min(place, sizeof(kTrue) - 1); begin <= place; ++begin)
    {
        if (begin + sizeof(kTrue) <= std::min(stored->size(), bytes->size()) &&
            std::memcmp(stored->data() + begin, kTrue, sizeof(kTrue)) == 0 &&
            std::memcmp(bytes->data() + begin, kFalse, sizeof(kFalse)) != 0)
            return true;
    }
    return false;
}

// What was read from the beginning of the bytes, of which so many are left, is stored as this.
inline void RequireForm(const array_ptr_t& stored, const array_ptr_t& bytes, std::uint64_t left, form_t form)
{
    const std::size_t taken = bytes->size() - left;
    Require(stored->size() == taken || (stored->size() > taken && left == 0));
    for (std::size_t i = 0; i != taken; ++i)
        Require((*stored)[i] == (*bytes)[i] || (form == form_t::kBooleans && IsInBoolean(stored, bytes, i)));
    Require(std::all_of(stored->begin() + taken, stored->end(), [](char byte) { return byte == 0; }));
}

// Tries a record that read takes from a stream and write puts there. One that is read and stored is read
// again with nothing left over, and stored again as the same bytes. One that is not read stays as it was.
// True if it is read.
template <class Record, class Read, class Write>
bool TryStored(Record& record, const array_ptr_t& bytes, Read read, Write write,
               form_t form = form_t::kBooleans)
{
    const array_ptr_t before = Stored(record, write);
    io::plain_mem_stream_t stream(bytes);
    const bool is_read = Reads([&] { read(record, stream); });
    const array_ptr_t stored = Stored(record, write);
    if (is_read)
    {
        RequireForm(stored, bytes, stream.GetRemaining(), form);
        io::plain_mem_stream_t stored_stream(stored);
        read(record, stored_stream);
        Require(stored_stream.GetRemaining() == 0 && *Stored(record, write) == *stored);
    }
    else
    {
        Require(*stored == *before);
    }
    return is_read;
}

// The same for the records that name these Serialize and DeSerialize.
template <class Record>
bool TryStored(Record& record, const array_ptr_t& bytes, form_t form = form_t::kBooleans)
{
    return TryStored(
        record, bytes, [](Record& to, io::io_dev_t& stream) { to.DeSerialize(stream); },
        [](const Record& from, io::io_dev_t& stream) { from.Serialize(stream); }, form);
}

// A reading for TryStored of what leaves the fields that came before a failure: it is done to another record.
template <class Record>
auto IntoAnother(void (*read)(Record& record, io::io_dev_t& stream))
{
    return [read](Record& record, io::io_dev_t& stream)
    {
        Record another;
        read(another, stream);
        record = std::move(another);
    };
}

// The same for the records that are made by reading: DeSerialize returns a new one. Null if it is not read.
template <class Record>
boost::shared_ptr<Record> TryMade(const array_ptr_t& bytes)
{
    const auto write = [](const Record& record, io::io_dev_t& stream) { record.Serialize(stream); };
    boost::shared_ptr<Record> record;
    io::plain_mem_stream_t stream(bytes);
    if (!Reads([&] { record = Record::DeSerialize(stream); }))
        return nullptr;
    const array_ptr_t stored = Stored(*record, write);
    RequireForm(stored, bytes, stream.GetRemaining(), form_t::kCanonical);
    io::plain_mem_stream_t stored_stream(stored);
    const auto again = Record::DeSerialize(stored_stream);
    Require(stored_stream.GetRemaining() == 0 && *Stored(*again, write) == *stored);
    return record;
}

} // namespace fuzz
