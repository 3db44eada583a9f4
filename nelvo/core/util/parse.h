#pragma once

// Text to numbers and booleans, as the C functions read it: leading white space and a sign are taken, and
// what follows the number is not looked at, so "12abc" is 12. Text ends at a zero character.
//
//   util::ParseLong(" -7 days")      -7
//   util::ParseUnsignedLong("-1")    the largest value, as strtoul(3) has it
//   util::ParseUnsignedLong("")      throws exc::runtime_exc_t
//
// A number out of range gives the nearest value without a failure. The base is that of the C function: 2 to
// 36, or 0 for one told by the text's prefix.

#include <cstdint>
#include <string_view>

namespace util
{

// By strtoul, strtoull, strtol and their wide twins. No number at all throws exc::runtime_exc_t, whose text
// names the given one (a wide one in UTF-8). Then a wide text that has no UTF-8 form throws what WideToUtf8
// throws.
unsigned long ParseUnsignedLong(std::string_view text, int base = 10);
unsigned long ParseUnsignedLong(std::wstring_view text, int base = 10);
unsigned long long ParseUnsignedLongLong(std::string_view text, int base = 10);
unsigned long long ParseUnsignedLongLong(std::wstring_view text, int base = 10);
long ParseLong(std::string_view text, int base = 10);
long ParseLong(std::wstring_view text, int base = 10);

// The wide form converts by WideToMultibyte first, and throws what that throws.
std::int64_t ParseInt64(std::string_view text, int base = 10);
std::int64_t ParseInt64(std::wstring_view text, int base = 10);

// By extraction from a string stream. No number at all gives 0.
float ParseFloat(std::string_view text);
float ParseFloat(std::wstring_view text);
double ParseDouble(std::string_view text);
double ParseDouble(std::wstring_view text);

// "false" in either case and "0" are false. Any other text is true, be it a word that is not known or empty.
bool ParseBool(std::string_view text);
bool ParseBool(std::wstring_view text);

} // namespace util
