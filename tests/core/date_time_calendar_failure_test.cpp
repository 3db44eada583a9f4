#include <ctime>

#include <gtest/gtest.h>

#include "nelvo/core/date_time.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "tests/support/thrown.h"

using datetime::CDateTime;

namespace
{

std::tm g_broken_down{};

template <class Query>
std::string FailureAt(int year, int month_from_0, int day, Query query)
{
    g_broken_down = {};
    g_broken_down.tm_year = year - 1900;
    g_broken_down.tm_mon = month_from_0;
    g_broken_down.tm_mday = day;
    return Thrown<exc::runtime_exc_t>([&] { query(CDateTime(1, true)); });
}

// What GetFields says of a broken-down time that is right but for what change does.
std::string FailureOfFields(void (*change)(std::tm&))
{
    g_broken_down = {};
    g_broken_down.tm_year = 124;
    g_broken_down.tm_mday = 1;
    change(g_broken_down);
    return Thrown<exc::runtime_exc_t>([] { CDateTime(1, true).GetFields(); });
}

} // namespace

extern "C" struct tm* gmtime_r(const time_t*, struct tm* result) noexcept
{
    *result = g_broken_down;
    return result;
}

TEST(DateTimeFields, EachIsCastWithACheck)
{
    const char* const failure = "Unable to cast value from [i] to [t].";
    EXPECT_EQ(failure, FailureOfFields([](std::tm& time) { time.tm_year = -1901; }));
    EXPECT_EQ(failure, FailureOfFields([](std::tm& time) { time.tm_mon = 65535; }));
    EXPECT_EQ(failure, FailureOfFields([](std::tm& time) { time.tm_mday = -1; }));
    EXPECT_EQ(failure, FailureOfFields([](std::tm& time) { time.tm_hour = 65536; }));
    EXPECT_EQ(failure, FailureOfFields([](std::tm& time) { time.tm_min = -1; }));
    EXPECT_EQ(failure, FailureOfFields([](std::tm& time) { time.tm_sec = 65536; }));
}

TEST(DateTimeCalendar, MonthAboveElevenIsWrong)
{
    EXPECT_EQ("Wrong month [12].\nCDateTime: Failed to get current month.",
              FailureAt(2024, 12, 1, [](const CDateTime& value) { value.GetCurrentMonth(); }));
    EXPECT_EQ("Wrong month [4711].\nCDateTime: Failed to get last day number for current month.",
              FailureAt(2024, 4711, 1, [](const CDateTime& value) { value.GetLastDayOfMonth(); }));
}

TEST(DateTimeCalendar, RangeFailuresOfTheCalendarKeepTheirTexts)
{
    EXPECT_EQ("Month number is out of range 1..12\nCDateTime: Failed to get current month.",
              FailureAt(2024, -1, 1, [](const CDateTime& value) { value.GetCurrentMonth(); }));
    EXPECT_EQ("Day of month is not valid for year\nCDateTime: Failed to get month info.",
              FailureAt(2023, 1, 29, [](const CDateTime& value) { value.GetMonthInfo(); }));
    EXPECT_EQ("Day of month value is out of range 1..31\nCDateTime: Failed to get today's day of week.",
              FailureAt(2023, 1, 32, [](const CDateTime& value) { value.GetTodaysDayOfWeek(); }));
}
