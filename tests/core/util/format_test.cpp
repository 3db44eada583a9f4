#include "nelvo/core/util/format.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/core/util/mutation.h"

using namespace std::string_literals;
using util::Format;

namespace
{

std::string Streamed(double value)
{
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

std::wstring Widened(const std::string& text) { return {text.begin(), text.end()}; }

// The substitution put down as plainly as possible.
std::string PlainFormat(const std::string& format, const std::vector<std::string>& args)
{
    std::string result;
    for (std::size_t at = 0; at < format.size();)
    {
        const char* const behind = format.c_str() + at + 1;
        char* end = nullptr;
        const long number = format[at] == '%' ? std::strtol(behind, &end, 10) : 0;
        if (format[at] != '%' || end == behind)
        {
            result += format[at++];
            continue;
        }
        if (number >= 1 && number <= static_cast<long>(args.size()))
            result += args[static_cast<std::size_t>(number) - 1];
        else
            result += "%" + std::to_string(number);
        at = static_cast<std::size_t>(end - format.c_str());
    }
    return result;
}

std::size_t CountMismatches(const std::string& text)
{
    const bool narrow = Format(text, "a", "bc") == PlainFormat(text, {"a", "bc"});
    const bool wide = Format(Widened(text), L"a", L"bc") == Widened(PlainFormat(text, {"a", "bc"}));
    return (narrow ? 0U : 1U) + (wide ? 0U : 1U);
}

} // namespace

TEST(Format, ArgumentsStandInAnyOrder) { EXPECT_EQ("b a", Format("%2 %1", "a", "b")); }
TEST(Format, ArgumentsStandAsOftenAsNamed) { EXPECT_EQ("aaba", Format("%1%1%2%1", "a", "b")); }
TEST(Format, AnArgumentNeedNotBeNamed) { EXPECT_EQ("text", Format("text", "a", "b")); }
TEST(Format, AnEmptyFormatGivesAnEmptyText) { EXPECT_EQ("", Format("", "a")); }
TEST(Format, AnEmptyArgumentLeavesNothing) { EXPECT_EQ("[]", Format("[%1]", "")); }
TEST(Format, PercentAtTheEndStays) { EXPECT_EQ("100%", Format("100%", "a")); }
TEST(Format, PercentAloneStays) { EXPECT_EQ("%", Format("%", "a")); }
TEST(Format, PercentWithoutANumberStays) { EXPECT_EQ("%d %s %", Format("%d %s %", "a")); }
TEST(Format, ReferenceBeyondTheArgumentsStaysVisible) { EXPECT_EQ("%3", Format("%3", "a")); }
TEST(Format, ReferenceToArgumentZeroStays) { EXPECT_EQ("%0", Format("%0", "a")); }
TEST(Format, TextFromAnArgumentIsNotScannedAgain) { EXPECT_EQ("%1", Format("%1", "%1")); }

TEST(Format, TextFromAnArgumentMakesNoReferenceWithWhatFollows)
{
    EXPECT_EQ("%1", Format("%2%1", "1", "%"));
    EXPECT_EQ("%+1", Format("%1+1", "%"));
}

TEST(Format, DoubledPercentIsNoEscape)
{
    EXPECT_EQ("%a", Format("%%1", "a"));
    EXPECT_EQ("%%", Format("%%", "a"));
    EXPECT_EQ("%%a", Format("%%%1", "a"));
}

TEST(Format, WhiteSpaceBeforeTheNumberBelongsToTheReference)
{
    EXPECT_EQ("a", Format("% 1", "a"));
    EXPECT_EQ("a", Format("%\n1", "a"));
    EXPECT_EQ("a", Format("% \t\n\v\f\r1", "a"));
    EXPECT_EQ("50b of", Format("50% 2 of", "a", "b"));
}

TEST(Format, ASignBelongsToTheReference)
{
    EXPECT_EQ("a", Format("%+1", "a"));
    EXPECT_EQ("a", Format("% +1", "a"));
    EXPECT_EQ("%-1", Format("%-1", "a"));
    EXPECT_EQ("%-7", Format("% -007", "a"));
    EXPECT_EQ("%0", Format("%-0", "a"));
}

TEST(Format, WhiteSpaceOrASignWithoutANumberStays)
{
    EXPECT_EQ("% x", Format("% x", "a"));
    EXPECT_EQ("%   ", Format("%   ", "a"));
    EXPECT_EQ("%+", Format("%+", "a"));
    EXPECT_EQ("%-x", Format("%-x", "a"));
    EXPECT_EQ("%+-1", Format("%+-1", "a"));
    EXPECT_EQ("%+ 1", Format("%+ 1", "a"));
    EXPECT_EQ("%+a", Format("%+%1", "a"));
}

TEST(Format, LeadingZerosAreNoPartOfTheNumber)
{
    EXPECT_EQ("a", Format("%01", "a"));
    EXPECT_EQ("a", Format("%000000000000000000000000000001", "a"));
    EXPECT_EQ("%7", Format("%007", "a"));
}

TEST(Format, AReferenceThatStaysIsWrittenAsAPlainNumber)
{
    EXPECT_EQ("%5", Format("%  5", "a"));
    EXPECT_EQ("%7", Format("%+7", "a"));
}

TEST(Format, AllDigitsBelongToTheNumber)
{
    EXPECT_EQ("%10", Format("%10", "a"));
    EXPECT_EQ("%11", Format("%11", "a", "b"));
    EXPECT_EQ("a0x1", Format("%1%2x1", "a", "0"));
}

TEST(Format, ANumberThatIsTooLargeStaysAsTheLargest)
{
    EXPECT_EQ("%9223372036854775807", Format("%99999999999999999999", "a"));
    EXPECT_EQ("%-9223372036854775808", Format("%-99999999999999999999", "a"));
    EXPECT_EQ("%4294967297", Format("%4294967297", "a"));
    EXPECT_EQ("%999999999", Format("%999999999", "a"));
    EXPECT_EQ("%1000000000", Format("%1000000000", "a"));
}

TEST(Format, OtherBasesAreNotRead)
{
    EXPECT_EQ("%0x1", Format("%0x1", "a"));
    EXPECT_EQ("a.5", Format("%1.5", "a"));
}

TEST(Format, AZeroCharacterEndsANumberAndNothingElse)
{
    EXPECT_EQ("x\0a\0y"s, Format("x\0%1\0y"s, "a"));
    EXPECT_EQ("a\0"
              "1"s,
              Format("%1\0"
                     "1"s,
                     "a"));
    EXPECT_EQ("%\0"
              "1"s,
              Format("%\0"
                     "1"s,
                     "a"));
    EXPECT_EQ("% \0"
              "1"s,
              Format("% \0"
                     "1"s,
                     "a"));
    EXPECT_EQ("[b\0b]"s, Format("[%1]", "b\0b"s));
}

TEST(Format, BytesOfAnyEncodingPass)
{
    EXPECT_EQ("\xC3\xA9 \xFF\x80", Format("\xC3\xA9 %1", "\xFF\x80"));
    EXPECT_EQ("%\xA0"
              "1",
              Format("%\xA0"
                     "1",
                     "a"));
}

TEST(Format, OneToSixArguments)
{
    EXPECT_EQ("1", Format("%1", "1"));
    EXPECT_EQ("12", Format("%1%2", "1", "2"));
    EXPECT_EQ("123", Format("%1%2%3", "1", "2", "3"));
    EXPECT_EQ("1234", Format("%1%2%3%4", "1", "2", "3", "4"));
    EXPECT_EQ("12345", Format("%1%2%3%4%5", "1", "2", "3", "4", "5"));
    EXPECT_EQ("123456%7", Format("%1%2%3%4%5%6%7", "1", "2", "3", "4", "5", "6"));
}

TEST(Format, TextsOfEveryKindAreArguments)
{
    char array[] = "array";
    char* const pointer = array;
    const std::string string = "string";
    EXPECT_EQ("array array string view",
              Format("%1 %2 %3 %4", array, pointer, string, std::string_view("view")));
    EXPECT_EQ("temporary", Format("%1", std::string("temporary")));
}

TEST(Format, ANullTextIsNamed)
{
    const char* const null = nullptr;
    EXPECT_EQ("[<null>]", Format("[%1]", null));
}

TEST(Format, BooleansAreWords) { EXPECT_EQ("true false", Format("%1 %2", true, false)); }
TEST(Format, ACharacterIsItself) { EXPECT_EQ("x\0"s, Format("%1%2", 'x', '\0')); }

TEST(Format, IntegersAreDecimal)
{
    EXPECT_EQ("-5 0 5", Format("%1 %2 %3", -5, 0, 5U));
    EXPECT_EQ("-128 255", Format("%1 %2", std::int8_t{-128}, std::uint8_t{255}));
    EXPECT_EQ("-32768 65535", Format("%1 %2", std::int16_t{-32768}, std::uint16_t{65535}));
    EXPECT_EQ("-2147483648 4294967295", Format("%1 %2", std::numeric_limits<int>::min(), 4294967295U));
    EXPECT_EQ("-9223372036854775808", Format("%1", std::numeric_limits<long>::min()));
    EXPECT_EQ("9223372036854775807", Format("%1", std::numeric_limits<long long>::max()));
    EXPECT_EQ("18446744073709551615", Format("%1", std::numeric_limits<unsigned long>::max()));
    EXPECT_EQ("18446744073709551615", Format("%1", std::numeric_limits<unsigned long long>::max()));
}

TEST(Format, FloatingPointNumbersHaveSixDigits)
{
    EXPECT_EQ("0.5 3.14159 100000", Format("%1 %2 %3", 0.5, 3.14159265, 100000.0));
    EXPECT_EQ("1e+06 1.23457e+06 1e-05", Format("%1 %2 %3", 1000000.0, 1234567.0, 0.00001));
    EXPECT_EQ("0 -0 0.1", Format("%1 %2 %3", 0.0, -0.0, 0.1F));
    EXPECT_EQ("inf -inf nan",
              Format("%1 %2 %3", std::numeric_limits<double>::infinity(),
                     -std::numeric_limits<float>::infinity(), std::numeric_limits<double>::quiet_NaN()));
    EXPECT_EQ("1.18973e+4932 -3.3621e-4932", Format("%1 %2", std::numeric_limits<long double>::max(),
                                                    -std::numeric_limits<long double>::min()));
}

TEST(Format, FloatingPointNumbersAreAsAStreamWritesThem)
{
    mutation_t numbers("0", 1);
    for (int i = 0; i != 10000; ++i)
    {
        const double value = std::ldexp(static_cast<double>(numbers.Random(1U << 30U)) + 0.5,
                                        static_cast<int>(numbers.Random(200)) - 100);
        ASSERT_EQ(Streamed(value), Format("%1", value));
        ASSERT_EQ(Streamed(-value), Format("%1", -value));
    }
}

TEST(Format, ReferencesAreReadAsStrtolReadsThem)
{
    mutation_t texts("%%%%0112 +-\n\tx\0"
                     "9"s,
                     24);
    std::size_t mismatches = 0;
    for (int i = 0; i != 1000000; ++i)
        mismatches += CountMismatches(texts.Next());
    EXPECT_EQ(0u, mismatches);
}

// Up to 512 characters are put together in one place, and eight at a time.
TEST(Format, ATextOfAnyLengthStaysWhole)
{
    std::string text;
    for (char letter = 'a'; text.size() != 1100; letter = letter == 'z' ? 'a' : static_cast<char>(letter + 1))
    {
        text += letter;
        EXPECT_EQ(text, Format(text, 1));
        EXPECT_EQ(text + "-", Format(text + "%1", '-'));
    }
}

TEST(Format, ATemplateOfAMebibyteIsFilledInWhole)
{
    constexpr std::size_t kSize = 1024 * 1024;
    std::string format;
    std::string expected;
    while (format.size() < kSize)
    {
        format += "ab%1%%2% 9%";
        expected += "abxyz%%9%";
    }
    EXPECT_TRUE(expected == Format(format, "xyz", ""));
}

TEST(Format, AMebibyteOfPercentSignsStays)
{
    const std::string format(1024 * 1024, '%');
    EXPECT_TRUE(format == Format(format, "a"));
    EXPECT_TRUE(Widened(format) == Format(Widened(format), L"a"));
}

TEST(Format, AMebibyteOfBlanksOrDigitsBehindAPercentSignIsReadOnce)
{
    const std::string blanks = "%" + std::string(1024 * 1024, ' ');
    EXPECT_TRUE(blanks == Format(blanks, "a"));
    EXPECT_EQ("a", Format(blanks + "1", "a"));
    EXPECT_EQ("a", Format("%" + std::string(1024 * 1024, '0') + "1", "a"));
}

TEST(Format, AnArgumentOfAMebibyteStandsTwice)
{
    const std::string large(1024 * 1024, 'x');
    EXPECT_TRUE(large + "-" + large == Format("%1-%1", large));
}

TEST(WideFormat, ReferencesAreThoseOfTheNarrowForm)
{
    EXPECT_EQ(L"b a", Format(L"%2 %1", L"a", L"b"));
    EXPECT_EQ(L"100%", Format(L"100%", L"a"));
    EXPECT_EQ(L"%3 %0", Format(L"%3 %0", L"a"));
    EXPECT_EQ(L"%1", Format(L"%1", L"%1"));
    EXPECT_EQ(L"%a", Format(L"%%1", L"a"));
    EXPECT_EQ(L"aaa", Format(L"% 1%\n1%+1", L"a"));
    EXPECT_EQ(L"%-1 %7 %10", Format(L"%-1 %007 %10", L"a"));
    EXPECT_EQ(L"%9223372036854775807", Format(L"%99999999999999999999", L"a"));
}

TEST(WideFormat, OneToFiveArguments)
{
    EXPECT_EQ(L"1", Format(L"%1", L"1"));
    EXPECT_EQ(L"12", Format(L"%1%2", L"1", L"2"));
    EXPECT_EQ(L"123", Format(L"%1%2%3", L"1", L"2", L"3"));
    EXPECT_EQ(L"1234", Format(L"%1%2%3%4", L"1", L"2", L"3", L"4"));
    EXPECT_EQ(L"12345%6", Format(L"%1%2%3%4%5%6", L"1", L"2", L"3", L"4", L"5"));
}

TEST(WideFormat, ArgumentsAreThoseOfTheNarrowForm)
{
    const wchar_t* const null = nullptr;
    EXPECT_EQ(L"<null> true false x", Format(L"%1 %2 %3 %4", null, true, false, L'x'));
    EXPECT_EQ(L"-5 18446744073709551615 1.5",
              Format(L"%1 %2 %3", -5, std::numeric_limits<std::uint64_t>::max(), 1.5));
    EXPECT_EQ(L"string view", Format(L"%1 %2", std::wstring(L"string"), std::wstring_view(L"view")));
}

TEST(WideFormat, AZeroCharacterEndsANumberAndNothingElse)
{
    EXPECT_EQ(L"x\0a"s, Format(L"x\0%1"s, L"a"));
    EXPECT_EQ(L"%\0x"s, Format(L"%\0x"s, L"a"));
}

TEST(WideFormat, CharactersOfAnyScriptPass)
{
    EXPECT_EQ(L"\u20AC \U0001F600", Format(L"\u20AC %1", L"\U0001F600"));
    EXPECT_EQ(L"%\u0661", Format(L"%\u0661", L"a"));
    EXPECT_EQ(L"%\u0131 \u01251", Format(L"%\u0131 \u01251", L"a")) << "they end like 1 and %";
}

TEST(WideFormat, ATemplateOfAMebibyteIsFilledInWhole)
{
    std::wstring format;
    std::wstring expected;
    while (format.size() < 1024 * 1024)
    {
        format += L"ab%1% 9%";
        expected += L"abxyz%9%";
    }
    EXPECT_TRUE(expected == Format(format, L"xyz"));
}
