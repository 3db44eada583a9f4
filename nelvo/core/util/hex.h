#pragma once

// Hexadecimal digits, numbers and bytes. All failures are exc::runtime_exc_t. A wide character that is no
// digit and has no UTF-8 form throws what WideToUtf8 throws. The way back, HexText, is in to_text.h.
//
//   util::ParseHex<std::uint8_t>("0xFF")    255
//   util::ParseHex<std::int8_t>("ff")       -1
//   util::ParseHex<std::uint8_t>("100")     throws: too huge
//   util::ParseHex<std::uint8_t>("0x")      throws: a prefix is one only with a digit behind it

#include <climits>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include "nelvo/core/cnt/array.h"

namespace util
{

// The digit for 0 to 15, in lower case. Other numbers throw.
std::string HexDigit(long long number);
std::wstring WideHexDigit(long long number);

// The value of a digit in either case. Other letters throw.
unsigned DigitFromLetter(char letter);
unsigned DigitFromLetter(wchar_t letter);

// The core of ParseHex.
std::uint64_t ParseHexBits(std::string_view text, unsigned bits);
std::uint64_t ParseHexBits(std::wstring_view text, unsigned bits);

// The number that the digits of the text are, in either case, behind an optional "0x" or "0X". Throws for an
// empty text, for any other character (a sign or a blank too) and if the value doesn't fit into the type's
// bits; leading zeros are no matter. The bits are taken as they are, so a signed type can become negative.
template <class Value>
Value ParseHex(std::string_view text)
{
    static_assert(std::is_integral_v<Value> && !std::is_same_v<Value, bool>);
    return static_cast<Value>(ParseHexBits(text, sizeof(Value) * CHAR_BIT));
}

template <class Value>
Value ParseHex(std::wstring_view text)
{
    static_assert(std::is_integral_v<Value> && !std::is_same_v<Value, bool>);
    return static_cast<Value>(ParseHexBits(text, sizeof(Value) * CHAR_BIT));
}

// The bytes that pairs of digits are, in either case and without anything between or before them. An odd
// length throws "Invalid length of the data."; a bad digit what DigitFromLetter throws, with the line "Failed
// to convert string to binary array, specified string: '<text>'."
cnt::plain_array_t BytesFromHex(std::string_view text);

} // namespace util
