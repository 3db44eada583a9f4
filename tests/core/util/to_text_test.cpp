#include "nelvo/core/util/to_text.h"

#include <cstdint>
#include <limits>
#include <locale>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/global_locale.h"

using namespace std::string_literals;

namespace
{

// Decimals stand behind a comma, and points part all digits.
class commas_t : public std::numpunct<char>
{
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\1"; }
};

} // namespace

TEST(ToText, NumbersAreDecimal)
{
    EXPECT_EQ("0", util::ToText(0));
    EXPECT_EQ("-5", util::ToText(-5));
    EXPECT_EQ("18446744073709551615", util::ToText(std::numeric_limits<std::uint64_t>::max()));
    EXPECT_EQ("-9223372036854775808", util::ToText(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ("255", util::ToText(std::uint8_t{255}));
    EXPECT_EQ("1.5", util::ToText(1.5));
}

TEST(ToText, BooleansAreWords)
{
    EXPECT_EQ("true", util::ToText(true));
    EXPECT_EQ("false", util::ToText(false));
}

TEST(ToText, ACharacterIsATextOfOne)
{
    EXPECT_EQ("x", util::ToText('x'));
    EXPECT_EQ("\xFF", util::ToText('\xFF'));
    EXPECT_EQ("\0"s, util::ToText('\0'));
}

TEST(ToText, TextIsAsItIs)
{
    EXPECT_EQ("text", util::ToText("text"));
    EXPECT_EQ("a\0b"s, util::ToText("a\0b"s));
}

TEST(ToText, ANullTextIsNamed)
{
    const char* const null = nullptr;
    EXPECT_EQ("<null>", util::ToText(null));
}

TEST(ToText, TheWideFormDoesTheSame)
{
    const wchar_t* const null = nullptr;
    EXPECT_EQ(L"-5", util::WideToText(-5));
    EXPECT_EQ(L"1.5", util::WideToText(1.5));
    EXPECT_EQ(L"true", util::WideToText(true));
    EXPECT_EQ(L"x", util::WideToText(L'x'));
    EXPECT_EQ(L"\u20AC", util::WideToText(L"\u20AC"));
    EXPECT_EQ(L"<null>", util::WideToText(null));
}

TEST(HexText, HasTwoLowerCaseDigitsAByte)
{
    EXPECT_EQ("00", util::HexText(std::uint8_t{0}));
    EXPECT_EQ("0a", util::HexText(std::uint8_t{10}));
    EXPECT_EQ("ff", util::HexText(std::uint8_t{255}));
    EXPECT_EQ("001a", util::HexText(std::uint16_t{26}));
    EXPECT_EQ("beef", util::HexText(std::uint16_t{0xBEEF}));
    EXPECT_EQ("00000000", util::HexText(std::uint32_t{0}));
    EXPECT_EQ("01234567", util::HexText(std::uint32_t{0x01234567}));
    EXPECT_EQ("89abcdef", util::HexText(std::uint32_t{0x89ABCDEF}));
}

TEST(HexText, NegativeNumbersShowTheirBits)
{
    EXPECT_EQ("ff", util::HexText(std::int8_t{-1}));
    EXPECT_EQ("80", util::HexText(std::int8_t{-128}));
    EXPECT_EQ("fffe", util::HexText(std::int16_t{-2}));
    EXPECT_EQ("80000000", util::HexText(std::numeric_limits<std::int32_t>::min()));
    EXPECT_EQ("7f", util::HexText(std::int8_t{127}));
}

TEST(HexText, TheWideFormDoesTheSame)
{
    EXPECT_EQ(L"0a", util::WideHexText(std::uint8_t{10}));
    EXPECT_EQ(L"fffe", util::WideHexText(std::int16_t{-2}));
    EXPECT_EQ(L"89abcdef", util::WideHexText(std::uint32_t{0x89ABCDEF}));
}

TEST(GroupedText, HasACommaBetweenGroupsOfThree)
{
    EXPECT_EQ("0", util::GroupedText(0));
    EXPECT_EQ("12", util::GroupedText(12));
    EXPECT_EQ("999", util::GroupedText(999));
    EXPECT_EQ("1,000", util::GroupedText(1000));
    EXPECT_EQ("12,345", util::GroupedText(12345));
    EXPECT_EQ("123,456", util::GroupedText(123456));
    EXPECT_EQ("1,048,576", util::GroupedText(1048576));
    EXPECT_EQ("18,446,744,073,709,551,615", util::GroupedText(std::numeric_limits<std::uint64_t>::max()));
}

TEST(GroupedText, KeepsTheMinusSign)
{
    EXPECT_EQ("-1", util::GroupedText(-1));
    EXPECT_EQ("-12", util::GroupedText(-12));
    EXPECT_EQ("-999", util::GroupedText(-999));
    EXPECT_EQ("-1,000", util::GroupedText(-1000));
    EXPECT_EQ("-123,456", util::GroupedText(-123456));
    EXPECT_EQ("-9,223,372,036,854,775,808", util::GroupedText(std::numeric_limits<std::int64_t>::min()));
}

TEST(GroupedText, TheWideFormDoesTheSame)
{
    EXPECT_EQ(L"1,048,576", util::WideGroupedText(1048576));
    EXPECT_EQ(L"-999", util::WideGroupedText(-999));
}

TEST(SizeText, BelowAKibibyteIsTheCountAlone)
{
    EXPECT_EQ("0", util::SizeText(0));
    EXPECT_EQ("1023", util::SizeText(1023));
}

TEST(SizeText, HasThreeDecimalsAndAUnit)
{
    EXPECT_EQ("1.000 KiB", util::SizeText(1024));
    EXPECT_EQ("1.001 KiB", util::SizeText(1025));
    EXPECT_EQ("1.500 KiB", util::SizeText(1536));
    EXPECT_EQ("1023.999 KiB", util::SizeText(1048575));
    EXPECT_EQ("1.000 MiB", util::SizeText(1048576));
    EXPECT_EQ("10.000 MiB", util::SizeText(10485760));
    EXPECT_EQ("1.000 GiB", util::SizeText(1073741824));
    EXPECT_EQ("2.500 GiB", util::SizeText(2684354560));
    EXPECT_EQ("1.000 TiB", util::SizeText(1099511627776));
    EXPECT_EQ("1024.000 TiB", util::SizeText(1125899906842624));
    EXPECT_EQ("16777216.000 TiB", util::SizeText(std::numeric_limits<std::uint64_t>::max()));
}

TEST(SizeText, RoundsAHalfToTheEvenDigit)
{
    EXPECT_EQ("1.062 KiB", util::SizeText(1088));
    EXPECT_EQ("1.188 KiB", util::SizeText(1216));
}

TEST(SizeText, RoundingDoesNotCarryIntoTheNextUnit)
{
    EXPECT_EQ("1024.000 MiB", util::SizeText(1073741823));
    EXPECT_EQ("1024.000 GiB", util::SizeText(1099511627775));
}

TEST(SizeText, IsTheSameInAnyLocale)
{
    const global_locale_tt<commas_t> locale;
    EXPECT_EQ("1023", util::SizeText(1023));
    EXPECT_EQ("1023.999 KiB", util::SizeText(1048575));
}

TEST(SizeText, TheWideFormDoesTheSame)
{
    EXPECT_EQ(L"1023", util::WideSizeText(1023));
    EXPECT_EQ(L"1.500 KiB", util::WideSizeText(1536));
}
