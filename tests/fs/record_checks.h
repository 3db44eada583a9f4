#pragma once

// Records, their bytes, and what is said when these end too early.

#include <functional>
#include <string>
#include <vector>

#include "tests/support/record_stream.h"

// What the bytes of a field are: a flag before an optional value, a length or a magic; a boolean; another
// value; the bytes of a text, behind their length.
enum class field_kind_t
{
    kFrame,
    kBoolean,
    kValue,
    kText
};

// A field as it is stored, and the records that it lies in, the innermost first: T attributes, D date, A ACL
// data, M file metadata, I file info.
struct stored_field_t
{
    std::string records;
    field_kind_t kind;
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

// Each length that is wrong, with two bytes behind it: 2^31 - 1, 2^31 and 2^32 - 1 are too long, and with 0
// and 1 the next field is short, unless the text is the last.
void ExpectWrongLengthsToFail(const std::string& golden, const stored_fields_t& fields,
                              const transfer_t& read);

// Reads the stream over a record of these bytes, which fails, and returns what is in the record then, as
// bytes.
using failing_read_t = std::function<std::string(const std::string& before, io::io_dev_t& stream)>;

// The record cut at each byte, read over another one: fields that were read whole are the new ones, a date
// only with both its values. Texts are the old ones, unless all those of their ACL data were
// read.
void ExpectFailedReadsToLeave(const std::string& golden, const stored_fields_t& fields,
                              const failing_read_t& read);

// Each bit of the record turned: it is read, or refused by the exceptions of the library.
void ExpectEachBitFlipToBeReadOrRefused(const std::string& golden, const transfer_t& read);
