// Text to numbers and booleans, hexadecimal digits, and narrow text to wide text and back.

#include "nelvo/core/util/parse.h"

#include <clocale>
#include <cmath>

#include "fuzz/fuzz_target.h"
#include "nelvo/core/util/hex.h"
#include "nelvo/core/util/numeric_cast.h"
#include "nelvo/core/util/to_text.h"
#include "nelvo/core/util/wide.h"
#include "nelvo/fs/convert_base.h"

namespace
{

// A number is what the C function says, its own text gives it again, and narrow and wide ASCII text agree.
template <class Parse, class Convert>
void TryWhole(const std::string& text, Parse parse, Convert convert)
{
    for (const int base : {10, 16, 0, 36})
    {
        char* end = nullptr;
        const auto expected = convert(text.c_str(), &end, base);
        std::remove_const_t<decltype(expected)> number{};
        const bool reads = fuzz::Reads([&] { number = parse(text, base); });
        fuzz::Require(reads == (end != text.c_str()) && number == expected);
        if (reads)
            fuzz::Require(parse(util::ToText(number), 10) == number &&
                          parse(fuzz::Widened(util::ToText(number)), 10) == number);
        if (fuzz::IsAscii(text))
            fuzz::Agree([&] { return parse(text, base); }, [&] { return parse(fuzz::Widened(text), base); });
    }
}

void TryWholeNumbers(const std::string& text)
{
    TryWhole(
        text, [](const auto& from, int base) { return util::ParseUnsignedLong(from, base); }, std::strtoul);
    TryWhole(
        text, [](const auto& from, int base) { return util::ParseUnsignedLongLong(from, base); },
        std::strtoull);
    TryWhole(
        text, [](const auto& from, int base) { return util::ParseLong(from, base); }, std::strtol);
    TryWhole(
        text, [](const auto& from, int base) { return util::ParseInt64(from, base); }, std::strtoll);
}

// A cast is done if and only if it keeps the value. A long double holds each of these values exactly, a
// double, which memcheck takes for one, at least the ends of the ranges.
template <class Target, class Source>
void TryCast(Source value)
{
    using limits_t = std::numeric_limits<Target>;
    const auto exact = static_cast<long double>(value);
    const long double end = std::ldexp(1.0L, limits_t::digits);
    const bool fits = exact >= (limits_t::is_signed ? -end : 0) && exact < end && std::trunc(exact) == exact;
    Target cast = 0;
    fuzz::Require(fuzz::Reads([&] { cast = util::NumericCast<Target>(value); }) == fits);
    fuzz::Require(!fits || static_cast<long double>(cast) == exact);
}

template <class Source>
void TryCasts(Source value)
{
    TryCast<std::uint8_t>(value);
    TryCast<std::int32_t>(value);
    TryCast<std::uint64_t>(value);
    TryCast<std::int64_t>(value);
}

void TryFloats(std::string_view text)
{
    TryCasts(util::ParseFloat(text));
    TryCasts(util::ParseDouble(text));
    if (!fuzz::IsAscii(text))
        return;
    fuzz::Require(util::ParseFloat(fuzz::Widened(text)) == util::ParseFloat(text));
    fuzz::Require(util::ParseDouble(fuzz::Widened(text)) == util::ParseDouble(text));
}

void TryBool(std::string_view text)
{
    std::string word(text.substr(0, text.find('\0')));
    std::transform(word.begin(), word.end(), word.begin(),
                   [](char letter)
                   { return letter >= 'A' && letter <= 'Z' ? letter + ('a' - 'A') : letter; });
    fuzz::Require(util::ParseBool(text) == (word != "false" && word != "0"));
    if (fuzz::IsAscii(text))
        fuzz::Require(util::ParseBool(fuzz::Widened(text)) == util::ParseBool(text));
}

template <class Value>
bool IsHex(std::string_view text)
{
    return fuzz::Agree([&] { return util::ParseHex<Value>(text); },
                       [&] { return util::ParseHex<Value>(fuzz::Widened(text)); });
}

// The way back has all digits of the type, in lower case.
void TryHexDigits(std::string_view text)
{
    std::uint32_t value = 0;
    if (!fuzz::Reads([&] { value = util::ParseHex<std::uint32_t>(text); }))
        return;
    const std::string digits = util::HexText(value);
    fuzz::Require(util::ParseHex<std::uint32_t>(digits) == value);
    const auto same = [](char left, char right)
    { return util::DigitFromLetter(left) == util::DigitFromLetter(right); };
    if (text.size() == digits.size() && text[1] != 'x' && text[1] != 'X')
        fuzz::Require(std::equal(text.begin(), text.end(), digits.begin(), same));
}

// Each byte is what its two digits are alone.
void TryHexBytes(std::string_view text)
{
    cnt::plain_array_t bytes;
    if (!fuzz::Reads([&] { bytes = util::BytesFromHex(text); }))
        return;
    fuzz::Require(bytes.size() * 2 == text.size());
    for (std::size_t i = 0; i != bytes.size(); ++i)
        fuzz::Require(util::ParseHex<std::uint8_t>(text.substr(2 * i, 2)) ==
                      static_cast<std::uint8_t>(bytes[i]));
}

void TryHex(std::string_view text)
{
    // What a narrow type can hold, a wide one can.
    const bool in_8 = IsHex<std::uint8_t>(text);
    const bool in_16 = IsHex<std::int16_t>(text);
    const bool in_32 = IsHex<std::uint32_t>(text);
    const bool in_64 = IsHex<std::int64_t>(text);
    fuzz::Require(in_8 <= in_16 && in_16 <= in_32 && in_32 <= in_64);
    TryHexDigits(text);
    TryHexBytes(text);
}

// The digits of a mode, taken apart and put together.
void TryMode(std::string_view text)
{
    std::uint32_t mode = 0;
    if (!fuzz::Reads([&] { mode = util::ParseHex<std::uint32_t>(text); }))
        return;
    std::uint64_t spoken = 0;
    if (!fuzz::Reads([&] { spoken = util::ConvertBase(mode, 8, 10); }))
        return;
    fuzz::Require(util::ToText(spoken).find_first_of("89") == std::string::npos);
    if (util::FitsInto<std::uint32_t>(spoken))
        fuzz::Require(util::ConvertBase(static_cast<std::uint32_t>(spoken), 10, 8) == mode);
}

void TryShownNumbers(std::string_view text)
{
    std::uint64_t number = 0;
    if (!fuzz::Reads([&] { number = util::ParseUnsignedLong(text); }))
        return;
    std::string grouped = util::GroupedText(number);
    grouped.erase(std::remove(grouped.begin(), grouped.end(), ','), grouped.end());
    fuzz::Require(grouped == util::ToText(number));
    fuzz::Require(util::WideSizeText(number) == fuzz::Widened(util::SizeText(number)));
}

bool IsCharacter(wchar_t letter)
{
    const auto value = static_cast<std::uint32_t>(letter);
    return value <= 0x10ffff && (value < 0xd800 || value > 0xdfff);
}

void TryNarrow(std::string_view text)
{
    std::wstring wide;
    const bool reads = fuzz::Reads([&] { wide = util::Utf8ToWide(text); });
    fuzz::Require(std::all_of(wide.begin(), wide.end(), IsCharacter));
    if (reads)
        fuzz::Require(util::WideToUtf8(wide) == text);
    // The locale's encoding is UTF-8 too, ends at a zero and takes numbers that are no characters.
    std::wstring by_locale;
    const bool reads_by_locale = fuzz::Reads([&] { by_locale = util::MultibyteToWide(text); });
    fuzz::Require(reads <= reads_by_locale);
    if (reads)
        fuzz::Require(by_locale == wide.substr(0, wide.find(L'\0')));
    if (reads_by_locale)
        fuzz::Require(util::WideToMultibyte(by_locale) == text.substr(0, text.find('\0')));
}

void TryWide(const std::wstring& text)
{
    std::string narrow;
    const bool reads = fuzz::Reads([&] { narrow = util::WideToUtf8(text); });
    fuzz::Require(reads == std::all_of(text.begin(), text.end(), IsCharacter));
    if (reads)
        fuzz::Require(util::Utf8ToWide(narrow) == text);
    fuzz::Reads([&] { util::MultibyteToWide(util::WideToMultibyte(text)); });
    fuzz::Reads([&] { util::ParseHex<std::uint64_t>(text); });
    fuzz::Reads([&] { util::ParseLong(text); });
    util::ParseDouble(text);
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    static const bool has_locale = std::setlocale(LC_CTYPE, "C.UTF-8") != nullptr;
    Require(has_locale);

    const std::string_view text = Text(data, size);
    TryWholeNumbers(std::string(text));
    TryFloats(text);
    TryBool(text);
    TryHex(text);
    TryMode(text);
    TryShownNumbers(text);
    TryNarrow(text);
    TryWide(WideText(data, size));
    if (size != 0)
        Reads([&] { Require(util::DigitFromLetter(text[0]) < 16); });
}
