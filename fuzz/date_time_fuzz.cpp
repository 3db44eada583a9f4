// Stored dates, and what is asked of a date that came from outside.

#include "nelvo/core/date_time.h"

#include <ctime>

#include "fuzz/stream.h"

using datetime::CDateTime;

namespace
{

bool SetTimeZone()
{
    ::setenv("TZ", "EST5EDT,M3.2.0,M11.1.0", 1);
    ::tzset();
    return true;
}

void AskCalendar(const CDateTime& date)
{
    fuzz::Reads([&] { date.GetMonthInfo(); });
    fuzz::Reads([&] { date.GetTodaysDayOfWeek(); });
    fuzz::Reads([&] { date.GetIndexOfCurrentWeek(); });
    fuzz::Reads([&] { date.GetNumberOfWeeks(); });
    fuzz::Reads([&] { date.GetLastDayOfMonth(); });
    fuzz::Reads([&] { date.GetDaysOfMonth(datetime::day_of_week_t::kMonday); });
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    static const bool has_time_zone = SetTimeZone(); // the same one in each run
    Require(has_time_zone);

    CDateTime date;
    if (!TryStored(date, Array(data, size)))
        return;
    Reads([&] { date.ToString(CDateTime::kIsoFormat); });
    Reads([&] { date.ToLocal().GetFields(); });
    Reads([&] { date.ToUtc().GetFields(); });
    AskCalendar(date);
    if (date.GetSeconds() != 0)
        Reads([&] { Require(CDateTime(date.GetFields()).GetSeconds() == date.GetSeconds()); });
}
