#pragma once

// Values to text. Nothing here depends on a locale, and nothing throws but std::bad_alloc.
//
//   util::ToText(-5)            "-5"
//   util::ToText(true)          "true"
//   util::ToText('x')           "x"
//   util::HexText(uint16_t(26)) "001a"
//   util::GroupedText(1048576)  "1,048,576"
//   util::SizeText(1536)        "1.500 KiB"
//
// Each has a wide twin, whose name begins with Wide.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include "nelvo/core/util/format.h"

namespace util
{

// What Format writes for the value as an argument: a number in decimal, a floating point number as a stream
// writes it, a boolean as a word, a character as itself, a text as it is, a null C string as "<null>".
template <class Value>
std::string ToText(const Value& value)
{
    return std::string(text_arg_t(value).text());
}
template <class Value>
std::wstring WideToText(const Value& value)
{
    return std::wstring(wide_text_arg_t(value).text());
}

// The core of HexText: the lowest bytes of the value.
std::string HexDigits(std::uint32_t value, std::size_t bytes);

// Two lower-case digits a byte, the most significant first, without a prefix. A negative value shows its
// two's complement. For integers of up to 32 bits.
template <class Value>
std::string HexText(Value value)
{
    static_assert(std::is_integral_v<Value> && sizeof(Value) <= sizeof(std::uint32_t));
    return HexDigits(static_cast<std::uint32_t>(value), sizeof(Value));
}
template <class Value>
std::wstring WideHexText(Value value)
{
    const std::string digits = HexText(value);
    return {digits.begin(), digits.end()};
}

// The core of GroupedText: the text of a number without a comma in it.
std::string GroupDigits(std::string_view number);

// A whole number in decimal with a comma between groups of three digits: "-1", "999", "-1,000".
template <class Value>
std::string GroupedText(Value value)
{
    static_assert(std::is_integral_v<Value> && sizeof(Value) >= sizeof(short));
    return GroupDigits(text_arg_t(value).text());
}
template <class Value>
std::wstring WideGroupedText(Value value)
{
    const std::string digits = GroupedText(value);
    return {digits.begin(), digits.end()};
}

// A count of bytes: as it is below 1024, otherwise with three decimals in KiB, MiB, GiB or TiB. The unit
// is chosen before the number is rounded.
std::string SizeText(std::uint64_t bytes);
std::wstring WideSizeText(std::uint64_t bytes);

} // namespace util
