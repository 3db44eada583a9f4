#include <cstdint>
#include <locale>
#include <string>

#include <gtest/gtest.h>

#include "nelvo/core/date_time.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "tests/support/global_locale.h"
#include "tests/support/thrown.h"

using datetime::CDateTime;

namespace
{

constexpr std::int64_t kLeapDay = 1709251198;       // 29 February 2024 23:59:58
constexpr std::int64_t kNoDate = 67768036191676800; // the first second that gmtime_r refuses

template <class Call>
std::string FailureOf(Call call)
{
    return Thrown<exc::runtime_exc_t>(call);
}

std::string IsoText(const CDateTime& value) { return value.ToString(CDateTime::kIsoFormat); }

CDateTime FromIso(const std::string& text) { return CDateTime::FromString(text, CDateTime::kIsoFormat); }

// A star is white space, and no blank is.
class stars_t : public std::ctype<char>
{
public:
    stars_t() : std::ctype<char>(Table()) {}

private:
    static const mask* Table()
    {
        static mask table[table_size] = {};
        table[std::size_t{'*'}] = space;
        return table;
    }
};

void ExpectLeapDayInUtc(const CDateTime& value)
{
    EXPECT_EQ(kLeapDay, value.GetSeconds());
    EXPECT_TRUE(value.IsUtc());
}

} // namespace

TEST(DateTimeToString, TextIsStrftimes)
{
    const CDateTime value(kLeapDay, true);
    EXPECT_EQ("2024-02-29 23:59:58", value.ToString(CDateTime::kIsoFormat));
    EXPECT_EQ("02/29/2024 23:59:58", value.ToString(CDateTime::kUsFormat));
    EXPECT_EQ("Thursday, 29 Feb 2024, day 060, 100%", value.ToString("%A, %d %b %Y, day %j, 100%%"));
    EXPECT_EQ("no conversion", value.ToString("no conversion"));
    EXPECT_EQ("2024", value.ToString(std::string("%Y\0%m", 5)));
}

TEST(DateTimeToString, LongTextsFitUpToAMebibyte)
{
    const CDateTime value(kLeapDay, true);
    for (const std::size_t size : {255u, 256u, 257u, 5000u, 1048575u})
        EXPECT_TRUE(std::string(size, 'x') == value.ToString(std::string(size, 'x'))) << size;
    EXPECT_EQ(std::string(996, '0') + "2024", value.ToString("%1000Y"));
    EXPECT_EQ("Can't convert DateTime to string with format [%1048576Y].",
              FailureOf([&] { value.ToString("%1048576Y"); }));
}

TEST(DateTimeToString, FormatThatGivesNoTextIsAFailure)
{
    EXPECT_EQ("Can't convert DateTime to string with format [].",
              FailureOf([] { CDateTime().ToString(""); }));
    EXPECT_EQ("Can't convert DateTime to string with format [].",
              FailureOf([] { CDateTime().ToString(L""); }));
}

TEST(DateTimeToString, SecondsWithoutADateHaveNoText)
{
    EXPECT_EQ("Can't convert DateTime to string with format [%Y].",
              FailureOf([] { CDateTime(kNoDate, true).ToString("%Y"); }));
    EXPECT_EQ("Can't convert DateTime to string with format [%Y].",
              FailureOf([] { CDateTime(INT64_MIN, false).ToString("%Y"); }));
}

TEST(DateTimeToString, WideTextIsTheSame)
{
    EXPECT_EQ(L"2024-02-29 23:59:58", CDateTime(kLeapDay, true).ToString(L"%Y-%m-%d %H:%M:%S"));
    EXPECT_EQ("Unicode string cannot be converted to multibyte string. Failed to get buffer size. ",
              FailureOf([] { CDateTime().ToString(L"\u00e9"); }));
}

TEST(DateTimeFromString, ReadsBothFormatsAsUtc)
{
    ExpectLeapDayInUtc(CDateTime::FromString("2024-02-29 23:59:58", CDateTime::kIsoFormat));
    ExpectLeapDayInUtc(CDateTime::FromString("02/29/2024 23:59:58", CDateTime::kUsFormat));
}

TEST(DateTimeFromString, ReadsItsOwnText)
{
    for (const std::int64_t seconds : {-17987443200L, -1219852250L, 0L, kLeapDay, 253402300799L})
        EXPECT_EQ(seconds, FromIso(IsoText(CDateTime(seconds, true))).GetSeconds());
}

TEST(DateTimeFromString, TakesMoreThanTheFormatSays)
{
    const auto read = [](const char* text) { return IsoText(FromIso(text)); };
    EXPECT_EQ("2020-03-02 00:00:00", read("2020-03-02"));
    EXPECT_EQ("2020-03-02 01:00:00", read("2020-03-02 01"));
    EXPECT_EQ("2020-03-02 01:02:00", read("2020-03-02 01:02"));
    EXPECT_EQ("2020-03-02 01:02:03", read("2020-03-02 01:02:03 and more"));
    EXPECT_EQ("2020-03-02 01:02:03", read("2020-03-02 01:02:03.999"));
    EXPECT_EQ("2020-03-02 01:02:03", read("  2020-03-02 01:02:03"));
    EXPECT_EQ("2020-03-02 01:02:03", read("2020/03.02T01-02x03"));
    EXPECT_EQ("2020-03-03 00:00:00", read("2020-03-02 24:00:00"));
    EXPECT_EQ("2020-03-03 02:02:39", read("2020-03-02 25:61:99"));
    EXPECT_EQ("1400-01-01 12:00:00", IsoText(CDateTime::FromString("12", "%H")));
    EXPECT_EQ("1400-01-01 00:00:00", IsoText(CDateTime::FromString("any", "")));
}

TEST(DateTimeFromString, RefusesWithOneTextWhatIsNoDate)
{
    for (const std::string text :
         {"", "x", "2020-3-2 1:2:3", "1399-12-31 23:59:59", "10000-01-01 00:00:00", "2021-02-29 00:00:00",
          "2020-13-01 00:00:00", "2020-00-01 00:00:00", "2020-01-00 00:00:00", "2020-03-02 -1:02:03",
          "2020-03-02 ab:cd:ef", "2020-03-0201:02:03", "not-a-date-time", "+infinity", "\xff\xfe"})
        EXPECT_EQ("Unable to convert string [" + text + "] with date format [%Y-%m-%d %H:%M:%S] to DateTime.",
                  FailureOf([&] { FromIso(text); }));
    EXPECT_EQ("Unable to convert string [] with date format [] to DateTime.",
              FailureOf([] { CDateTime::FromString("", ""); }));
}

TEST(DateTimeFromString, DoesNotLookAtTheGlobalLocale)
{
    const global_locale_tt<stars_t> guard;
    ExpectLeapDayInUtc(FromIso("  2024-02-29 23:59:58"));
    EXPECT_EQ("Unable to convert string [*2024-02-29 23:59:58] with date format [%Y-%m-%d %H:%M:%S] to "
              "DateTime.",
              FailureOf([] { FromIso("*2024-02-29 23:59:58"); }));
}

TEST(DateTimeFromString, FirstAndLastYear)
{
    EXPECT_EQ(-17987443200, FromIso("1400-01-01 00:00:00").GetSeconds());
    EXPECT_EQ(253402300799, FromIso("9999-12-31 23:59:59").GetSeconds());
}

TEST(DateTimeFromString, WideFormReadsTheSame)
{
    ExpectLeapDayInUtc(CDateTime::FromString(L"2024-02-29 23:59:58", L"%Y-%m-%d %H:%M:%S"));
    EXPECT_EQ("Unable to convert string [x] with date format [%Y] to DateTime.",
              FailureOf([] { CDateTime::FromString(L"x", L"%Y"); }));
    const std::string conversion =
        "Unicode string cannot be converted to multibyte string. Failed to get buffer size. ";
    EXPECT_EQ(conversion, FailureOf([] { CDateTime::FromString(L"\u00e9", L"%Y"); }));
    EXPECT_EQ(conversion, FailureOf([] { CDateTime::FromString(L"2024", L"\u00e9"); }));
}
