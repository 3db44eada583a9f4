#include "nelvo/core/util/hex.h"

#include <cstdint>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "nelvo/core/util/to_text.h"
#include "tests/core/util/mutation.h"
#include "tests/support/failure_text.h"

using namespace std::string_literals;
using util::ParseHex;

namespace
{

constexpr const char* kTooHuge = "Failed to convert {string} to numeric type: Too huge value";

template <class Value>
std::string HexFailure(const std::string& text)
{
    return FailureText([&] { ParseHex<Value>(text); });
}

template <class Value>
std::string WideHexFailure(const std::wstring& text)
{
    return FailureText([&] { ParseHex<Value>(text); });
}

} // namespace

TEST(HexDigit, IsInLowerCase)
{
    std::string digits;
    std::wstring wide_digits;
    for (int i = 0; i != 16; ++i)
    {
        digits += util::HexDigit(i);
        wide_digits += util::WideHexDigit(i);
    }
    EXPECT_EQ("0123456789abcdef", digits);
    EXPECT_EQ(L"0123456789abcdef", wide_digits);
}

TEST(HexDigit, RefusesOtherNumbers)
{
    EXPECT_EQ("Unable to convert numeric to hex digit: [16].", FailureText([] { util::HexDigit(16); }));
    EXPECT_EQ("Unable to convert numeric to hex digit: [-1].", FailureText([] { util::HexDigit(-1); }));
    EXPECT_EQ("Unable to convert numeric to hex digit: [4294967296].",
              FailureText([] { util::WideHexDigit(4294967296); }));
}

TEST(DigitFromLetter, TakesEitherCase)
{
    const std::string letters = "0123456789abcdef0123456789ABCDEF";
    for (unsigned i = 0; i != letters.size(); ++i)
    {
        EXPECT_EQ(i % 16, util::DigitFromLetter(letters[i]));
        EXPECT_EQ(i % 16, util::DigitFromLetter(static_cast<wchar_t>(letters[i])));
    }
}

TEST(DigitFromLetter, RefusesOtherLetters)
{
    for (const char letter : {'g', 'G', '/', ':', '@', '`', ' ', '-', '\xFF'})
        EXPECT_EQ("Cannot convert letter '"s + letter + "' to digit.",
                  FailureText([&] { util::DigitFromLetter(letter); }));
    EXPECT_EQ("Cannot convert letter '\xE2\x82\xAC' to digit.",
              FailureText([] { util::DigitFromLetter(L'\u20AC'); }));
}

TEST(ParseHex, ReadsEveryWidth)
{
    EXPECT_EQ(0xFE, ParseHex<std::uint8_t>("fe"));
    EXPECT_EQ(0xFEDC, ParseHex<std::uint16_t>("FEDC"));
    EXPECT_EQ(0xFEDCBA98U, ParseHex<std::uint32_t>("fedcBA98"));
    EXPECT_EQ(0xFEDCBA9876543210U, ParseHex<std::uint64_t>("fedcba9876543210"));
    EXPECT_EQ(0, ParseHex<std::uint8_t>("0"));
}

TEST(ParseHex, SignedTypesTakeAllBits)
{
    EXPECT_EQ(-1, ParseHex<std::int8_t>("ff"));
    EXPECT_EQ(-128, ParseHex<std::int8_t>("80"));
    EXPECT_EQ(127, ParseHex<std::int8_t>("7f"));
    EXPECT_EQ(-2, ParseHex<std::int16_t>("fffe"));
    EXPECT_EQ(-1, ParseHex<std::int32_t>("ffffffff"));
    EXPECT_EQ(std::numeric_limits<std::int64_t>::min(), ParseHex<std::int64_t>("8000000000000000"));
}

TEST(ParseHex, SkipsThePrefix)
{
    EXPECT_EQ(0xFF, ParseHex<std::uint8_t>("0xff"));
    EXPECT_EQ(0xFF, ParseHex<std::uint8_t>("0XFF"));
    EXPECT_EQ(1, ParseHex<std::uint8_t>("0x1"));
}

TEST(ParseHex, APrefixNeedsADigitBehindIt)
{
    EXPECT_EQ("Failed to convert hex-char 'x' ('120') to number", HexFailure<std::uint8_t>("0x"));
    EXPECT_EQ("Failed to convert hex-char 'X' ('88') to number", HexFailure<std::uint32_t>("0X"));
    EXPECT_EQ("Failed to convert hex-char 'x' ('120') to number", HexFailure<std::uint32_t>("0x0x1"));
    EXPECT_EQ("Failed to convert hex-char 'x' ('120') to number", HexFailure<std::uint32_t>("00x1"));
}

TEST(ParseHex, RefusesAnEmptyText)
{
    EXPECT_EQ("Failed to convert {string} to numeric type: Incorrect parameter <value: {empty}>",
              HexFailure<std::uint8_t>(""));
    EXPECT_EQ("Failed to convert {string} to numeric type: Incorrect parameter <value: {empty}>",
              WideHexFailure<std::int64_t>(L""));
}

TEST(ParseHex, RefusesWhatDoesNotFit)
{
    EXPECT_EQ(kTooHuge, HexFailure<std::uint8_t>("1ff"));
    EXPECT_EQ(kTooHuge, HexFailure<std::uint8_t>("100"));
    EXPECT_EQ(kTooHuge, HexFailure<std::int8_t>("0x100"));
    EXPECT_EQ(kTooHuge, HexFailure<std::uint16_t>("10000"));
    EXPECT_EQ(kTooHuge, HexFailure<std::int16_t>("10000"));
    EXPECT_EQ(kTooHuge, HexFailure<std::uint32_t>("100000000"));
    EXPECT_EQ(kTooHuge, HexFailure<std::int32_t>("100000000"));
    EXPECT_EQ(kTooHuge, HexFailure<std::uint64_t>("10000000000000000"));
    EXPECT_EQ(kTooHuge, HexFailure<std::int64_t>("10000000000000000"));
}

TEST(ParseHex, LeadingZerosAreNoMatter)
{
    EXPECT_EQ(0xFF, ParseHex<std::uint8_t>("0ff"));
    EXPECT_EQ(0xFF, ParseHex<std::uint8_t>("0x" + std::string(1000, '0') + "ff"));
    EXPECT_EQ(kTooHuge, HexFailure<std::uint8_t>("0100"));
}

TEST(ParseHex, RefusesEveryOtherCharacter)
{
    EXPECT_EQ("Failed to convert hex-char 'g' ('103') to number", HexFailure<std::uint8_t>("g"));
    EXPECT_EQ("Failed to convert hex-char ' ' ('32') to number", HexFailure<std::uint8_t>(" 1"));
    EXPECT_EQ("Failed to convert hex-char '-' ('45') to number", HexFailure<std::int8_t>("-1"));
    EXPECT_EQ("Failed to convert hex-char '+' ('43') to number", HexFailure<std::int8_t>("+1"));
    EXPECT_EQ("Failed to convert hex-char '\n' ('10') to number", HexFailure<std::int8_t>("1\n"));
    EXPECT_EQ("Failed to convert hex-char '\xFF' ('255') to number", HexFailure<std::int8_t>("\xFF"));
    EXPECT_EQ("Failed to convert hex-char '\0' ('0') to number"s, HexFailure<std::int8_t>("1\0"s));
}

TEST(ParseHex, LooksAtTheCharacterBeforeTheSize)
{
    EXPECT_EQ("Failed to convert hex-char 'g' ('103') to number", HexFailure<std::uint8_t>("ffg"));
    EXPECT_EQ(kTooHuge, HexFailure<std::uint8_t>("fffg"));
}

TEST(ParseHex, TheWideFormDoesTheSame)
{
    EXPECT_EQ(0xFE, ParseHex<std::uint8_t>(L"0xFe"));
    EXPECT_EQ(-1, ParseHex<std::int16_t>(L"ffff"));
    EXPECT_EQ(0xFEDCBA9876543210U, ParseHex<std::uint64_t>(L"fedcba9876543210"));
    EXPECT_EQ(kTooHuge, WideHexFailure<std::uint8_t>(L"1ff"));
    EXPECT_EQ("Failed to convert hex-char 'x' ('120') to number", WideHexFailure<std::uint8_t>(L"0x"));
    EXPECT_EQ("Failed to convert hex-char '\xE2\x82\xAC' ('8364') to number",
              WideHexFailure<std::uint8_t>(L"\u20AC"));
    EXPECT_EQ(0xFE, ParseHex<std::uint8_t>(L"0Xfe"));
}

// U+0131 ends with the code of 1.
TEST(ParseHex, WideCharacterThatEndsLikeADigitIsNone)
{
    EXPECT_EQ("Failed to convert hex-char '\xC4\xB1' ('305') to number",
              WideHexFailure<std::uint8_t>(L"\u0131"));
    EXPECT_EQ("Cannot convert letter '\xC4\xB1' to digit.",
              FailureText([] { util::DigitFromLetter(L'\u0131'); }));
}

TEST(ParseHex, WideCharacterThatIsNoUnicodeFailsWithAnotherText)
{
    const std::string failure = "Unicode string cannot be converted to multibyte UTF8 string.";
    EXPECT_EQ(failure, WideHexFailure<std::uint8_t>(L"1\xd800"));
    EXPECT_EQ(failure, FailureText([] { util::DigitFromLetter(L'\xd800'); }));
}

TEST(ParseHex, ReadsWhatHexTextWrites)
{
    mutation_t numbers("0", 1);
    for (int i = 0; i != 100000; ++i)
    {
        const auto value = static_cast<std::int32_t>(numbers.Random(std::size_t{1} << 31U) * 2 + 1);
        ASSERT_EQ(value, ParseHex<std::int32_t>(util::HexText(value)));
    }
}

TEST(BytesFromHex, TakesTwoDigitsToAByteInEitherCase)
{
    const cnt::plain_array_t bytes = util::BytesFromHex("00fF1a0A80");
    EXPECT_EQ("\x00\xff\x1a\x0a\x80"s, std::string(bytes.begin(), bytes.end()));
    EXPECT_EQ(0u, util::BytesFromHex("").size());
}

TEST(BytesFromHex, ReadsWhatHexTextWrites)
{
    for (unsigned i = 0; i != 256; ++i)
    {
        const cnt::plain_array_t bytes = util::BytesFromHex(util::HexText(static_cast<std::uint8_t>(i)));
        ASSERT_EQ(1u, bytes.size());
        EXPECT_EQ(static_cast<char>(i), bytes[0]);
    }
}

TEST(BytesFromHex, RefusesAnOddLengthWhateverTheDigits)
{
    EXPECT_EQ("Invalid length of the data.", FailureText([] { util::BytesFromHex("0"); }));
    EXPECT_EQ("Invalid length of the data.", FailureText([] { util::BytesFromHex("00g"); }));
}

TEST(BytesFromHex, NamesTheTextWithABadDigit)
{
    EXPECT_EQ("Cannot convert letter 'g' to digit.\n"
              "Failed to convert string to binary array, specified string: '000g'.",
              FailureText([] { util::BytesFromHex("000g"); }));
    EXPECT_EQ("Cannot convert letter 'x' to digit.\n"
              "Failed to convert string to binary array, specified string: '0x00'.",
              FailureText([] { util::BytesFromHex("0x00"); }));
    EXPECT_EQ("Cannot convert letter ' ' to digit.\n"
              "Failed to convert string to binary array, specified string: ' 0%1'.",
              FailureText([] { util::BytesFromHex(" 0%1"); }));
}
