#pragma once

// Stored forms, written out. A record's bytes stand in tests/data/<name>.hex, one field a line: its name, a
// colon and its bytes in hexadecimal. A # begins a comment.
//
//   # a date, 2 January 1970 in UTC
//   is_utc:  01 00 00 00
//   seconds: 80 51 01 00 00 00 00 00

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/wiped_bytes.h"

// The bytes of hexadecimal digits; blanks between them are no matter.
std::string Unhex(const std::string& digits);

// "01 00 ff": what a failed comparison should show.
std::string Hex(std::string_view bytes);

// The record of a file, whole, and its fields in order.
std::string Golden(const std::string& name);
std::vector<std::string> GoldenFields(const std::string& name);

// The same, of a record that holds keys.
wiped_bytes_t SecretGolden(const std::string& name);
wiped_list_t SecretFields(const std::string& name);

// All that a record can be cut off to: lengths 0 to size - 1.
std::vector<std::string> Prefixes(const std::string& bytes);

// The record with one bit turned, for each of its bits.
std::vector<std::string> BitFlips(const std::string& bytes);
