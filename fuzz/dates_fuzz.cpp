// Dates: their text, their stored form and what is asked of one that came from outside. And spans of time:
// the first eight bytes are the seconds, the rest is a format.

#include "nelvo/core/date_time.h"

#include <ctime>

#include "fuzz/stream.h"
#include "nelvo/core/time_span.h"

using datetime::CDateTime;
using datetime::CTimeSpan;

namespace
{

bool SetTimeZone()
{
    ::setenv("TZ", "EST5EDT,M3.2.0,M11.1.0", 1);
    ::tzset();
    return true;
}

// What was read reads the same again as it is printed.
CDateTime TryFormat(const std::string& text, const std::string& format)
{
    CDateTime date;
    if (fuzz::Reads([&] { date = CDateTime::FromString(text, format); }))
        fuzz::Require(CDateTime::FromString(date.ToString(format), format).GetSeconds() == date.GetSeconds());
    return date;
}

void TryText(const std::string& text)
{
    TryFormat(text, CDateTime::kUsFormat);
    const CDateTime date = TryFormat(text, CDateTime::kIsoFormat);
    CDateTime wide_date;
    if (!fuzz::IsAscii(text) || text.find('\0') != std::string::npos)
        return;
    fuzz::Reads([&] { wide_date = CDateTime::FromString(fuzz::Widened(text), L"%Y-%m-%d %H:%M:%S"); });
    fuzz::Require(wide_date.GetSeconds() == date.GetSeconds());
}

void AskCalendar(const CDateTime& date)
{
    fuzz::Reads(
        [&]
        {
            const datetime::month_info_t month = date.GetMonthInfo();
            fuzz::Require(month.month == date.GetCurrentMonth() &&
                          month.last_day == date.GetLastDayOfMonth());
            fuzz::Require(month.last_day >= 28 && month.last_day <= 31);
            fuzz::Require(month.number_of_weeks == date.GetNumberOfWeeks());
            fuzz::Require(date.GetIndexOfCurrentWeek() <= month.number_of_weeks);
            const std::size_t days = date.GetDaysOfMonth(date.GetTodaysDayOfWeek()).size();
            fuzz::Require(days == 4 || days == 5);
        });
}

// A date that is made of a date's fields is the same.
void AskFields(const CDateTime& date)
{
    int year = 0;
    int month = 0;
    int day = 0;
    if (!fuzz::Reads([&] { date.GetDate(year, month, day); }))
        return;
    int hour = 0;
    int minute = 0;
    int second = 0;
    date.GetTime(hour, minute, second);
    CDateTime made;
    made.SetDate(year, month, day);
    made.SetTime(hour, minute, second);
    fuzz::Require(made.GetSeconds() == date.GetSeconds());
    if (date.GetSeconds() != 0)
        fuzz::Reads([&] { fuzz::Require(CDateTime(date.GetFields()).GetSeconds() == date.GetSeconds()); });
    if (year >= 1400 && year <= 9999)
        fuzz::Require(
            CDateTime::FromString(date.ToString(CDateTime::kIsoFormat), CDateTime::kIsoFormat).GetSeconds() ==
            date.GetSeconds());
}

void AskClocks(const CDateTime& date)
{
    fuzz::Reads([&] { fuzz::Require(!date.ToLocal().IsUtc()); });
    fuzz::Reads([&] { fuzz::Require(date.ToUtc().IsUtc()); });
}

void TryStoredDate(const fuzz::array_ptr_t& bytes)
{
    CDateTime date;
    if (!fuzz::TryStored(date, bytes))
        return;
    AskCalendar(date);
    AskFields(date);
    AskClocks(date);
}

void TrySpan(const std::uint8_t* data, std::size_t size)
{
    std::int64_t seconds = 0;
    const std::size_t taken = std::min(size, sizeof(seconds));
    if (taken != 0)
        std::memcpy(&seconds, data, taken);
    const CTimeSpan span(seconds);
    const datetime::time_span_fields_t fields = span.GetFields();
    fuzz::Require(fields.hours < 24 && fields.minutes < 60 && fields.seconds < 60);
    const std::uint64_t length =
        fields.days * 86400 + fields.hours * 3600U + fields.minutes * 60U + fields.seconds;
    fuzz::Require((fields.is_negative ? 0 - length : length) == static_cast<std::uint64_t>(seconds));

    const std::string format(fuzz::Text(data + taken, size - taken));
    std::string text;
    if (!fuzz::Reads([&] { text = span.ToString(format); }))
        return;
    fuzz::Require((text.front() == '-') == (fields.is_negative || format.front() == '-'));
    if (format.find('%') == std::string::npos)
        fuzz::Require(text == (fields.is_negative ? "-" : "") + format);
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    static const bool has_time_zone = SetTimeZone(); // the same one in each run
    Require(has_time_zone);

    TryText(std::string(Text(data, size)));
    Reads([&] { CDateTime::FromString(WideText(data, size), L"%Y-%m-%d %H:%M:%S"); });
    TryStoredDate(Array(data, size));
    TrySpan(data, size);
}
