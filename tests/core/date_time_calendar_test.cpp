#include <algorithm>
#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "nelvo/core/date_time.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "tests/support/thrown.h"

using datetime::CDateTime;
using datetime::day_of_week_t;

namespace
{

constexpr std::int64_t kYear2100 = 4102444800;
constexpr std::int64_t kNoDate = 67768036191676800; // the first second that gmtime_r refuses

template <class Call>
std::string FailureOf(Call call)
{
    return Thrown<exc::runtime_exc_t>(call);
}

CDateTime Date(std::uint16_t year, std::uint16_t month, std::uint16_t day)
{
    return CDateTime(date_time_fields_t{year, month, 0, day, 23, 59, 59, 0}, false);
}

// "2024-2: 29 days from day 4, 5 weeks"
std::string SheetOf(const CDateTime& value, day_of_week_t week_begin = day_of_week_t::kSunday)
{
    const datetime::month_info_t info = value.GetMonthInfo(week_begin);
    return std::to_string(info.year) + '-' + std::to_string(info.month) + ": " +
           std::to_string(info.last_day) + " days from day " +
           std::to_string(static_cast<int>(info.first_day)) + ", " + std::to_string(info.number_of_weeks) +
           " weeks";
}

// The context lines of all queries but that of the current month, each behind this failure.
void ExpectAllToFail(const std::string& failure, const CDateTime& value)
{
    const auto context = [&](const auto& query)
    {
        const std::string text = FailureOf(query);
        EXPECT_EQ(failure + '\n', text.substr(0, failure.size() + 1));
        return text.substr(std::min(text.size(), failure.size() + 1));
    };
    EXPECT_EQ("CDateTime: Failed to get month info.", context([&] { value.GetMonthInfo(); }));
    EXPECT_EQ("CDateTime: Failed to get today's day of week.", context([&] { value.GetTodaysDayOfWeek(); }));
    EXPECT_EQ("CDateTime: Failed to get index of current week in month.",
              context([&] { value.GetIndexOfCurrentWeek(); }));
    EXPECT_EQ("CDateTime: Failed to get number of weeks for current month.",
              context([&] { value.GetNumberOfWeeks(); }));
    EXPECT_EQ("CDateTime: Failed to get last day number for current month.",
              context([&] { value.GetLastDayOfMonth(); }));
    EXPECT_EQ("CDateTime: Failed to get days of month by day of week.",
              context([&] { value.GetDaysOfMonth(day_of_week_t::kMonday); }));
}

} // namespace

TEST(DateTimeCalendar, CurrentMonthIsTheValues)
{
    for (std::uint16_t month = 1; month <= 12; ++month)
        EXPECT_EQ(month, Date(2024, month, 28).GetCurrentMonth());
    EXPECT_EQ(1, CDateTime().GetCurrentMonth());
    EXPECT_EQ(12, CDateTime(-62167219201, true).GetCurrentMonth()); // of the year before the year 0
}

TEST(DateTimeCalendar, DaysOfTheWeekCountFromSunday)
{
    EXPECT_EQ(day_of_week_t::kThursday, CDateTime().GetTodaysDayOfWeek());
    EXPECT_EQ(day_of_week_t::kSunday, Date(2024, 3, 3).GetTodaysDayOfWeek());
    EXPECT_EQ(day_of_week_t::kSaturday, Date(2024, 3, 9).GetTodaysDayOfWeek());
    EXPECT_EQ(0, static_cast<int>(day_of_week_t::kSunday));
    EXPECT_EQ(6, static_cast<int>(day_of_week_t::kSaturday));
}

TEST(DateTimeCalendar, MonthInfoIsTheSheetOfTheMonth)
{
    EXPECT_EQ("2024-2: 29 days from day 4, 5 weeks", SheetOf(Date(2024, 2, 11)));
    EXPECT_EQ("2015-2: 28 days from day 0, 4 weeks", SheetOf(Date(2015, 2, 28)));
    EXPECT_EQ("2015-8: 31 days from day 6, 6 weeks", SheetOf(Date(2015, 8, 1)));
    EXPECT_EQ("1970-1: 31 days from day 4, 5 weeks", SheetOf(CDateTime()));
    EXPECT_EQ("1400-1: 31 days from day 3, 5 weeks", SheetOf(Date(1400, 1, 1)));
    EXPECT_EQ("9999-12: 31 days from day 3, 5 weeks", SheetOf(Date(9999, 12, 31)));
}

TEST(DateTimeCalendar, MonthInfoTakesTheDayOnWhichWeeksBegin)
{
    EXPECT_EQ("2015-2: 28 days from day 0, 5 weeks", SheetOf(Date(2015, 2, 1), day_of_week_t::kMonday));
    EXPECT_EQ("2015-2: 28 days from day 0, 5 weeks", SheetOf(Date(2015, 2, 1), day_of_week_t::kSaturday));
    EXPECT_EQ("2015-8: 31 days from day 6, 6 weeks", SheetOf(Date(2015, 8, 1), day_of_week_t::kMonday));
    EXPECT_EQ("2015-8: 31 days from day 6, 5 weeks", SheetOf(Date(2015, 8, 1), day_of_week_t::kSaturday));
}

TEST(DateTimeCalendar, MonthInfoRefusesWhatIsNoDayOfTheWeek)
{
    EXPECT_EQ("Wrong day of week [7].\nCDateTime: Failed to get month info.",
              FailureOf([] { CDateTime().GetMonthInfo(static_cast<day_of_week_t>(7)); }));
    EXPECT_EQ("Wrong day of week [65535].\nCDateTime: Failed to get month info.",
              FailureOf([] { CDateTime().GetMonthInfo(static_cast<day_of_week_t>(65535)); }));
}

TEST(DateTimeCalendar, WeeksOfTheMonthCountFromOneAndBeginOnSunday)
{
    EXPECT_EQ(1, Date(2024, 3, 1).GetIndexOfCurrentWeek());
    EXPECT_EQ(1, Date(2024, 3, 2).GetIndexOfCurrentWeek());
    EXPECT_EQ(2, Date(2024, 3, 3).GetIndexOfCurrentWeek());
    EXPECT_EQ(5, Date(2024, 3, 30).GetIndexOfCurrentWeek());
    EXPECT_EQ(6, Date(2024, 3, 31).GetIndexOfCurrentWeek());
    EXPECT_EQ(6, Date(2024, 3, 15).GetNumberOfWeeks());
    EXPECT_EQ(4, Date(2015, 2, 15).GetNumberOfWeeks());
    EXPECT_EQ(5, Date(2024, 2, 15).GetNumberOfWeeks());
}

TEST(DateTimeCalendar, LastDayKnowsLeapYears)
{
    EXPECT_EQ(31, Date(2024, 1, 1).GetLastDayOfMonth());
    EXPECT_EQ(30, Date(2024, 4, 30).GetLastDayOfMonth());
    EXPECT_EQ(29, Date(2024, 2, 1).GetLastDayOfMonth());
    EXPECT_EQ(28, Date(2023, 2, 1).GetLastDayOfMonth());
    EXPECT_EQ(28, Date(1900, 2, 1).GetLastDayOfMonth());
    EXPECT_EQ(29, Date(2000, 2, 1).GetLastDayOfMonth());
}

TEST(DateTimeCalendar, DaysOfTheMonthByDayOfTheWeek)
{
    using days_t = std::vector<std::uint16_t>;
    EXPECT_EQ((days_t{1, 8, 15, 22, 29}), Date(2024, 2, 20).GetDaysOfMonth(day_of_week_t::kThursday));
    EXPECT_EQ((days_t{2, 9, 16, 23}), Date(2024, 2, 20).GetDaysOfMonth(day_of_week_t::kFriday));
    EXPECT_EQ((days_t{7, 14, 21, 28}), Date(2024, 2, 20).GetDaysOfMonth(day_of_week_t::kWednesday));
    EXPECT_EQ((days_t{5, 12, 19, 26}), Date(9999, 12, 31).GetDaysOfMonth(day_of_week_t::kSunday));
}

TEST(DateTimeCalendar, DaysOfTheMonthRefuseWhatIsNoDayOfTheWeek)
{
    EXPECT_EQ("Weekday is out of range 0..6\nCDateTime: Failed to get days of month by day of week.",
              FailureOf([] { CDateTime().GetDaysOfMonth(static_cast<day_of_week_t>(7)); }));
}

TEST(DateTimeCalendar, AgreesWithTheSystemOnEveryDay)
{
    std::int64_t seconds = 0;
    const auto is_right = [](std::int64_t now)
    {
        const CDateTime value(now, true);
        std::tm system{};
        ::gmtime_r(&now, &system);
        const int sunday_since_the_1st = system.tm_mday - system.tm_wday - 1;
        return static_cast<int>(value.GetTodaysDayOfWeek()) == system.tm_wday &&
               value.GetCurrentMonth() == system.tm_mon + 1 &&
               value.GetIndexOfCurrentWeek() == (sunday_since_the_1st + 6) / 7 + 1;
    };
    while (seconds < kYear2100 && is_right(seconds))
        seconds += 86400;
    EXPECT_EQ(kYear2100, seconds);
}

TEST(DateTimeCalendar, YearsAreTheCalendars)
{
    const std::string failure = "Year is out of valid range: 1400..9999";
    ExpectAllToFail(failure, Date(1399, 12, 31));
    ExpectAllToFail(failure, Date(10000, 1, 1));
    ExpectAllToFail("Unable to cast value from [i] to [t].", CDateTime(-62167219201, true));
}

TEST(DateTimeCalendar, SecondsWithoutADateHaveNoMonth)
{
    const CDateTime value(kNoDate, true);
    EXPECT_EQ("Seconds [67768036191676800] have no date.\nCDateTime: Failed to get current month.",
              FailureOf([&] { value.GetCurrentMonth(); }));
    ExpectAllToFail("Seconds [67768036191676800] have no date.", value);
}
