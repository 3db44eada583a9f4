#pragma once

// Stored keys and what they lie in, cut off at each byte. Some of it fails then, and some is read with zeros.

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "nelvo/crypto/secure_array.h"
#include "tests/support/made_secret.h"
#include "tests/support/record_stream.h"
#include "tests/support/wiped_bytes.h"

// What becomes of a part of a record of which some bytes are missing.
enum class part_kind_t
{
    kValue,   // fails, both ways
    kText,    // fails when it is read; a short write goes unnoticed
    kZeros,   // read with zeros; a short write goes unnoticed
    kSizeOfId // read with zeros, and fails unless it is 16 then; a short write goes unnoticed
};

// A part, and the line that a failure there gets from the record in which the part lies.
struct stored_part_t
{
    part_kind_t kind;
    std::string reading;
    std::string writing;
};
using stored_parts_t = std::vector<stored_part_t>;

stored_parts_t KeyParts();
stored_parts_t KeySetIdParts();
stored_parts_t RepairRecordParts();

// A number of 4 bytes in a record that adds no line.
stored_part_t PlainPart();

stored_parts_t Joined(const std::vector<stored_parts_t>& parts);

// Reads a record and writes it.
using copy_t = std::function<void(io::io_dev_t& from, io::io_dev_t& to)>;

// For a record whose static function reads a new one.
template <class Record>
copy_t Copy()
{
    return [](io::io_dev_t& from, io::io_dev_t& to) { Record::DeSerialize(from)->Serialize(to); };
}

// What comes of reading these bytes: those of the record, in hexadecimal, or "fails: " and the text.
std::string Outcome(std::string_view bytes, const copy_t& copy);

// The record of tests/data is read and written as the same bytes, and nothing is left over.
void ExpectCopyToBeTheSame(const std::string& golden, const copy_t& copy);

// The record cut at each byte has the outcome that its parts say. Missing zeros are written again.
void ExpectEachCut(const std::string& golden, const stored_parts_t& parts, const copy_t& copy);

// A device that takes no more bytes than up to each of the record's.
void ExpectEachShortWrite(const std::string& golden, const stored_parts_t& parts, const transfer_t& write);

// Each bit of the record turned: it is read, or refused by the exceptions of the library, or there is no
// memory. There are no blocks above 16 MiB. With another size, a text takes in what stands behind it:
// meanwhile there are zeros in the place of secrets.
void ExpectEachBitFlipToBeReadOrRefused(const std::string& golden, const copy_t& copy,
                                        const std::vector<std::size_t>& sizes_of_texts = {});

// The record with another number in the place of that part.
wiped_bytes_t WithNumber(const std::string& golden, std::size_t part, std::uint32_t number);

// Secrets that stand in the records of tests/data.
constexpr std::string_view kGoldenKey = kSecret<'\x11', 8>;
constexpr std::string_view kGoldenOtherKey = kSecret<'\x99', 6>;
constexpr std::string_view kGoldenVector = kSecret<'\xa1', 6>;
constexpr std::string_view kGoldenRepairData = kSecret<'\xa9', 6>;

crypto::secure_array_t Secure(std::string_view bytes);
crypto::secure_array_ptr_t SharedSecure(std::string_view bytes);

// The bytes themselves, while they stay where they are.
std::string_view Text(const crypto::secure_array_t& bytes);
