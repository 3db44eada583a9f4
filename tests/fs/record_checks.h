#pragma once

// Records, their bytes, and what is said when these end too early.

#include <functional>
#include <string>
#include <vector>

#include <boost/make_shared.hpp>

#include "nelvo/io/mem_stream.h"

// A stream in memory: the bytes are read, and what is written goes over them.
class record_stream_t : public io::plain_mem_stream_t
{
public:
    explicit record_stream_t(const std::string& bytes = {})
        : io::plain_mem_stream_t(boost::make_shared<cnt::plain_array_t>(bytes.data(), bytes.size()))
    {
    }

    std::string bytes() const { return {GetArray()->begin(), GetArray()->end()}; }
};

// Reads from the stream, or writes to it, the record that it stands for.
using transfer_t = std::function<void(io::io_dev_t& stream)>;

// What it writes.
std::string Written(const transfer_t& write);

// A field as it is stored, and the records that it lies in, the innermost first: T attributes, D date, A ACL
// data, M file metadata, I file info.
struct stored_field_t
{
    std::string records;
    bool is_text = false; // the bytes of a text, behind their length
};
using stored_fields_t = std::vector<stored_field_t>;

stored_fields_t AclFields();
stored_fields_t MetaFields();
stored_fields_t InfoFields();

// The lines that the records add to a failure.
std::string ReadingContext(const std::string& records);
std::string WritingContext(const std::string& records);

// The record of tests/data, cut at each byte: the message tells what of the field came, and the contexts.
void ExpectEachPrefixToFail(const std::string& golden, const stored_fields_t& fields, const transfer_t& read);

// The same for a device that takes no more bytes. A short write of a text is not noticed by itself, but by
// the field behind it.
void ExpectEachFullDeviceToFail(const std::string& golden, const stored_fields_t& fields,
                                const transfer_t& write);

// The length before the text of this index is one that no text has, and two bytes follow it: what reading
// says to 0, 1, 2^31 - 1, 2^31 and 2^32 - 1, nothing being a text that was read.
void ExpectWrongLengthsToFail(const std::string& golden, const stored_fields_t& fields, std::size_t text,
                              const transfer_t& read);

// Each bit of the record turned: it is read, or refused by the exceptions of the library.
void ExpectEachBitFlipToBeReadOrRefused(const std::string& golden, const transfer_t& read);
