#include "nelvo/core/util/parse.h"

#include <cstdlib>
#include <cwchar>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "tests/core/util/mutation.h"
#include "tests/support/failure_text.h"

using namespace std::string_literals;

namespace
{

constexpr auto kLongMax = std::numeric_limits<long>::max();
constexpr auto kLongMin = std::numeric_limits<long>::min();
constexpr auto kUnsignedLongMax = std::numeric_limits<unsigned long>::max();

constexpr const char* kAlphabet = "0123456789009 \t\n+-xXaAfFzZ.,";

std::wstring Widened(const std::string& text)
{
    std::wstring wide;
    for (const char c : text)
        wide += static_cast<wchar_t>(c);
    return wide;
}

std::string NotUnsigned(const std::string& text)
{
    return "Cannot convert string value to unsigned integer. Given string: [" + text + "].";
}

std::string NotSigned(const std::string& text)
{
    return "Cannot convert string value to signed integer. Given string: [" + text + "].";
}

// Whether the call gives what the C function gives for the text, or throws as it takes nothing of it.
template <class Char, class Number, class Parse>
bool SameAs(Number (*function)(const Char*, Char**, int), const std::basic_string<Char>& text, int base,
            Parse parse)
{
    Char* end = nullptr;
    const Number expected = function(text.c_str(), &end, base);
    try
    {
        return parse(text, base) == expected && end != text.c_str();
    }
    catch (const exc::runtime_exc_t&)
    {
        return end == text.c_str();
    }
}

// One of the four kinds of number, narrow and wide.
bool NarrowAndWideSame(std::size_t kind, const std::string& text, int base)
{
    const auto both = [&](auto function, auto wide_function, auto parse)
    { return SameAs(function, text, base, parse) && SameAs(wide_function, Widened(text), base, parse); };
    switch (kind)
    {
    case 0:
        return both(std::strtol, std::wcstol, [](const auto& in, int of) { return util::ParseLong(in, of); });
    case 1:
        return both(std::strtol, std::wcstol,
                    [](const auto& in, int of) { return util::ParseInt64(in, of); });
    case 2:
        return both(std::strtoul, std::wcstoul,
                    [](const auto& in, int of) { return util::ParseUnsignedLong(in, of); });
    default:
        return both(std::strtoull, std::wcstoull,
                    [](const auto& in, int of) { return util::ParseUnsignedLongLong(in, of); });
    }
}

} // namespace

TEST(ParseUnsigned, ReadsANumber)
{
    EXPECT_EQ(0u, util::ParseUnsignedLong("0"));
    EXPECT_EQ(1234567890u, util::ParseUnsignedLong("1234567890"));
    EXPECT_EQ(7u, util::ParseUnsignedLong("007"));
    EXPECT_EQ(kUnsignedLongMax, util::ParseUnsignedLong("18446744073709551615"));
    EXPECT_EQ(9999999999999999999u, util::ParseUnsignedLong("9999999999999999999"));
    EXPECT_EQ(10000000000000000000u, util::ParseUnsignedLongLong("10000000000000000000"));
}

TEST(ParseUnsigned, DoesNotLookBehindTheNumber)
{
    EXPECT_EQ(12u, util::ParseUnsignedLong("12abc"));
    EXPECT_EQ(12u, util::ParseUnsignedLongLong("12 13"));
    EXPECT_EQ(1u, util::ParseUnsignedLong("1.9"));
}

TEST(ParseUnsigned, TakesWhiteSpaceAndASign)
{
    EXPECT_EQ(7u, util::ParseUnsignedLong(" +7"));
    EXPECT_EQ(7u, util::ParseUnsignedLongLong("\t\n\v\f\r 7"));
}

TEST(ParseUnsigned, ANegativeNumberWrapsRound)
{
    EXPECT_EQ(kUnsignedLongMax, util::ParseUnsignedLong("-1"));
    EXPECT_EQ(kUnsignedLongMax, util::ParseUnsignedLongLong("-1"));
    EXPECT_EQ(kUnsignedLongMax - 4, util::ParseUnsignedLong(L"-5"));
}

TEST(ParseUnsigned, TooLargeANumberGivesTheLargest)
{
    EXPECT_EQ(kUnsignedLongMax, util::ParseUnsignedLong("18446744073709551616"));
    EXPECT_EQ(kUnsignedLongMax, util::ParseUnsignedLongLong(std::string(100, '9')));
    EXPECT_EQ(kUnsignedLongMax, util::ParseUnsignedLong("-99999999999999999999"));
}

TEST(ParseUnsigned, RefusesATextWithoutANumber)
{
    for (const std::string text : {"", "-", "+", " ", "abc", "- 1", "--1", ".5"})
    {
        EXPECT_EQ(NotUnsigned(text), FailureText([&] { util::ParseUnsignedLong(text); }));
        EXPECT_EQ(NotUnsigned(text), FailureText([&] { util::ParseUnsignedLongLong(text); }));
        EXPECT_EQ(NotUnsigned(text), FailureText([&] { util::ParseUnsignedLong(Widened(text)); }));
        EXPECT_EQ(NotUnsigned(text), FailureText([&] { util::ParseUnsignedLongLong(Widened(text)); }));
    }
}

TEST(ParseSigned, ReadsANumber)
{
    EXPECT_EQ(-7, util::ParseLong(" -7 days"));
    EXPECT_EQ(12, util::ParseLong("12abc"));
    EXPECT_EQ(kLongMax, util::ParseLong("9223372036854775807"));
    EXPECT_EQ(kLongMin, util::ParseLong("-9223372036854775808"));
    EXPECT_EQ(kLongMax, util::ParseInt64("9223372036854775807"));
    EXPECT_EQ(-1, util::ParseInt64("-1"));
}

TEST(ParseSigned, TooLargeANumberGivesTheNearest)
{
    EXPECT_EQ(kLongMax, util::ParseLong("9223372036854775808"));
    EXPECT_EQ(kLongMin, util::ParseLong("-9223372036854775809"));
    EXPECT_EQ(kLongMax, util::ParseInt64("99999999999999999999"));
}

TEST(ParseSigned, RefusesATextWithoutANumber)
{
    for (const std::string text : {"", "-", "+", " ", "abc", "- 1", "--1", ".5"})
    {
        EXPECT_EQ(NotSigned(text), FailureText([&] { util::ParseLong(text); }));
        EXPECT_EQ(NotSigned(text), FailureText([&] { util::ParseInt64(text); }));
        EXPECT_EQ(NotSigned(text), FailureText([&] { util::ParseLong(Widened(text)); }));
        EXPECT_EQ(NotSigned(text), FailureText([&] { util::ParseInt64(Widened(text)); }));
    }
}

TEST(ParseNumber, TakesTheBaseOfTheCFunction)
{
    EXPECT_EQ(255u, util::ParseUnsignedLong("ff", 16));
    EXPECT_EQ(255u, util::ParseUnsignedLong("0xFF", 16));
    EXPECT_EQ(493u, util::ParseUnsignedLong("755", 8));
    EXPECT_EQ(35, util::ParseLong("z", 36));
    EXPECT_EQ(255, util::ParseLong("0xff", 0));
    EXPECT_EQ(8, util::ParseLong("010", 0));
    EXPECT_EQ(10, util::ParseLong("010"));
    EXPECT_EQ(0, util::ParseLong("0x10"));
    EXPECT_EQ(-5, util::ParseInt64("-101", 2));
    EXPECT_EQ(5, util::ParseInt64(L"101", 2));
}

TEST(ParseNumber, RefusesABaseThatIsNone)
{
    EXPECT_EQ(NotUnsigned("12"), FailureText([] { util::ParseUnsignedLong("12", 1); }));
    EXPECT_EQ(NotUnsigned("12"), FailureText([] { util::ParseUnsignedLongLong("12", 37); }));
    EXPECT_EQ(NotSigned("12"), FailureText([] { util::ParseLong(L"12", -10); }));
}

TEST(ParseNumber, EndsAtAZeroCharacter)
{
    EXPECT_EQ(1u, util::ParseUnsignedLong("1\0"
                                          "2"s));
    EXPECT_EQ(-1, util::ParseLong("-1\0"
                                  "2"s));
    EXPECT_EQ(1, util::ParseInt64(L"1\0"
                                  L"2"s));
    const std::string failure = "Cannot convert string value to signed integer. Given string: [\0:2]."s;
    EXPECT_EQ(failure, FailureText([] { util::ParseLong("\0:2"s); }));
    EXPECT_EQ(failure, FailureText([] { util::ParseLong(L"\0:2"s); }));
}

TEST(ParseNumber, WideTextThatIsNoUnicodeFailsWithAnotherText)
{
    const std::string failure = "Unicode string cannot be converted to multibyte UTF8 string.";
    EXPECT_EQ(failure, FailureText([] { util::ParseUnsignedLong(L"\xd800"); }));
    EXPECT_EQ(failure, FailureText([] { util::ParseUnsignedLongLong(L"\xd800"); }));
    EXPECT_EQ(failure, FailureText([] { util::ParseLong(L"\xd800"); }));
    EXPECT_EQ(12, util::ParseLong(L"12\xd800"));
}

TEST(ParseNumber, ReadsNothingBehindTheView)
{
    EXPECT_EQ(12, util::ParseLong(std::string_view("123").substr(0, 2)));
    EXPECT_EQ(-1, util::ParseLong(std::string_view("-123").substr(0, 2)));
    EXPECT_EQ(-1, util::ParseLong(std::wstring_view(L"-123").substr(0, 2)));
}

TEST(ParseNumber, WideTextNeedNotBeAscii)
{
    EXPECT_EQ(12u, util::ParseUnsignedLong(L"12\u20AC"));
    EXPECT_EQ(12, util::ParseLong(L"12\u20AC"));
    EXPECT_EQ(12, util::ParseLong(L"12\u0133")) << "which ends like 3";
    EXPECT_EQ(NotUnsigned("\xE2\x82\xAC"), FailureText([] { util::ParseUnsignedLong(L"\u20AC"); }));
    EXPECT_EQ(NotSigned("\xE2\x82\xAC"), FailureText([] { util::ParseLong(L"\u20AC"); }));
}

TEST(ParseNumber, TheWide64BitFormConvertsTheTextFirst)
{
    EXPECT_EQ(-12, util::ParseInt64(L"-12abc"));
    EXPECT_EQ("Unicode string cannot be converted to multibyte string. Failed to get buffer size. ",
              FailureText([] { util::ParseInt64(L"12\u20AC"); }));
}

TEST(ParseNumber, DoesWhatTheCFunctionsDo)
{
    constexpr int kBases[] = {0, 2, 8, 16, 35, 36};
    mutation_t texts(kAlphabet + "\0"s, 24);
    std::size_t mismatches = 0;
    for (int i = 0; i != 100000; ++i)
    {
        const std::string& text = texts.Next();
        const int base = texts.Random(4) != 0 ? 10 : kBases[texts.Random(std::size(kBases))];
        mismatches += NarrowAndWideSame(texts.Random(4), text, base) ? 0U : 1U;
    }
    EXPECT_EQ(0u, mismatches);
}

TEST(ParseFloat, ReadsANumber)
{
    EXPECT_EQ(1.5, util::ParseDouble("1.5"));
    EXPECT_EQ(-0.125, util::ParseDouble(" -0.125e0 kg"));
    EXPECT_EQ(1200.0, util::ParseDouble("12e2"));
    EXPECT_EQ(0.1F, util::ParseFloat("0.1"));
    EXPECT_EQ(12.0F, util::ParseFloat("12abc"));
    EXPECT_EQ(1.5, util::ParseDouble(L"1.5\u20AC"));
    EXPECT_EQ(-2.5F, util::ParseFloat(L"-2.5"));
}

TEST(ParseFloat, NoNumberGivesZero)
{
    for (const std::string text : {"", "abc", "-", ".", "inf", "nan", "1e"})
    {
        EXPECT_EQ(0.0, util::ParseDouble(text));
        EXPECT_EQ(0.0F, util::ParseFloat(text));
        EXPECT_EQ(0.0, util::ParseDouble(Widened(text)));
        EXPECT_EQ(0.0F, util::ParseFloat(Widened(text)));
    }
}

TEST(ParseFloat, TooLargeANumberGivesTheLargest)
{
    EXPECT_EQ(std::numeric_limits<double>::max(), util::ParseDouble("1e999"));
    EXPECT_EQ(std::numeric_limits<double>::lowest(), util::ParseDouble("-1e999"));
    EXPECT_EQ(std::numeric_limits<float>::max(), util::ParseFloat("1e99"));
}

TEST(ParseBool, KnowsTwoWordsAndZero)
{
    EXPECT_TRUE(util::ParseBool("true"));
    EXPECT_TRUE(util::ParseBool("TRUE"));
    EXPECT_FALSE(util::ParseBool("false"));
    EXPECT_FALSE(util::ParseBool("FaLsE"));
    EXPECT_FALSE(util::ParseBool("0"));
    EXPECT_TRUE(util::ParseBool("1"));
}

TEST(ParseBool, AnUnknownWordIsTrue)
{
    for (const std::string text : {"no", "", "00", " 0", "0 ", "off", "falsely", "fals", " false"})
    {
        EXPECT_TRUE(util::ParseBool(text));
        EXPECT_TRUE(util::ParseBool(Widened(text)));
    }
}

TEST(ParseBool, EndsAtAZeroCharacter)
{
    EXPECT_FALSE(util::ParseBool("false\0x"s));
    EXPECT_FALSE(util::ParseBool("0\0x"s));
    EXPECT_FALSE(util::ParseBool(L"false\0x"s));
}

TEST(ParseBool, TheWideFormDoesTheSame)
{
    EXPECT_TRUE(util::ParseBool(L"TRUE"));
    EXPECT_FALSE(util::ParseBool(L"False"));
    EXPECT_FALSE(util::ParseBool(L"0"));
    EXPECT_TRUE(util::ParseBool(L"\u20AC"));
}
