#include "nelvo/core/date_time.h"

#include <ctime>
#include <locale>
#include <sstream>

#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/posix_time/conversion.hpp>
#include <boost/date_time/posix_time/posix_time_io.hpp>

#include "nelvo/core/exc/rethrow.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/numeric_cast.h"
#include "nelvo/core/util/wide.h"
#include "nelvo/io/binary_value.h"

namespace datetime
{
namespace
{

constexpr double kSecondsPerHour = 3600.0;
constexpr int kDaysOfWeek = 7;

std::tm BrokenDown(std::int64_t seconds)
{
    std::tm time{};
    if (::gmtime_r(&seconds, &time) == nullptr)
        throw exc::runtime_exc_t("Seconds [%1] have no date.", seconds);
    return time;
}

// localtime_r may keep to an old time zone; localtime may not, but has one result for all threads.
std::tm BrokenDownLocally(std::int64_t seconds)
{
    ::tzset();
    std::tm time{};
    if (::localtime_r(&seconds, &time) == nullptr)
        throw exc::runtime_exc_t("Seconds [%1] have no local date.", seconds);
    return time;
}

// The seconds at which gmtime_r gives these fields. timegm writes to what it is given, the hour of summer
// too, hence the copy. A time that it cannot count to looks like the last second of 1969, but for the day of
// the week, which is not set then.
std::int64_t SecondsAt(std::tm time)
{
    time.tm_wday = -1;
    const std::int64_t seconds = ::timegm(&time);
    if (time.tm_wday == -1)
        throw exc::runtime_exc_t("Date is out of range.");
    return seconds;
}

std::int64_t LocalSeconds(std::int64_t utc_seconds) { return SecondsAt(BrokenDownLocally(utc_seconds)); }

int Sum(std::int64_t left, std::int64_t right) { return util::NumericCast<int>(left + right); }

int YearOf(const std::tm& time) { return Sum(time.tm_year, 1900); }

void PutDate(std::tm& time, int year, int month, int day)
{
    time.tm_year = Sum(year, -1900);
    time.tm_mon = Sum(month, -1);
    time.tm_mday = day;
}

void PutTime(std::tm& time, int hour, int minute, int second)
{
    time.tm_hour = hour;
    time.tm_min = minute;
    time.tm_sec = second;
}

std::int64_t SecondsOf(const date_time_fields_t& fields)
{
    std::tm time{};
    time.tm_isdst = -1;
    PutDate(time, fields.year, fields.month, fields.day);
    PutTime(time, fields.hour, fields.minute, fields.second);
    return SecondsAt(time);
}

// strftime gives no size for a text that doesn't fit, as for an empty one.
bool Print(const std::string& format, const std::tm& time, std::string& text)
{
    constexpr std::size_t kFirstSize = 256;
    constexpr std::size_t kLastSize = std::size_t{1024} * 1024;
    for (std::size_t size = kFirstSize; size <= kLastSize; size *= 2)
    {
        text.resize(size);
        // The format is the caller's.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
        const std::size_t count = std::strftime(text.data(), size, format.c_str(), &time);
#pragma GCC diagnostic pop
        text.resize(count);
        if (count != 0)
            return true;
    }
    return false;
}

// Text that is refused gives a time that to_tm throws for.
std::tm Parsed(const std::string& text, const std::string& format)
{
    using facet_t = boost::posix_time::time_input_facet;

    // Lives here and not by the locale's count, for which a locale that cannot be made would lose it.
    facet_t facet(format, 1);
    std::istringstream stream(text);
    stream.imbue(std::locale(std::locale::classic(), &facet));
    boost::posix_time::ptime time;
    stream >> time;
    return boost::posix_time::to_tm(time);
}

std::uint16_t MonthOf(const std::tm& time)
{
    if (time.tm_mon > 11)
        throw exc::runtime_exc_t("Wrong month [%1].", time.tm_mon);
    return boost::gregorian::greg_month(util::NumericCast<std::uint16_t>(time.tm_mon + 1)).as_number();
}

boost::gregorian::date DateOf(std::int64_t seconds)
{
    const std::tm time = BrokenDown(seconds);
    const std::uint16_t month = MonthOf(time);
    return {util::NumericCast<std::uint16_t>(YearOf(time)), month,
            util::NumericCast<std::uint16_t>(time.tm_mday)};
}

boost::gregorian::date FirstOfMonth(const boost::gregorian::date& date)
{
    return {date.year(), date.month(), 1};
}

day_of_week_t DayOfWeek(const boost::gregorian::date& date)
{
    return static_cast<day_of_week_t>(date.day_of_week().as_number());
}

boost::gregorian::greg_weekday BoostDay(day_of_week_t day) { return {static_cast<std::uint16_t>(day)}; }

// The line of the month's sheet that the day stands on, the first of them 1.
std::uint16_t WeekOf(const boost::gregorian::date& date, day_of_week_t week_begin)
{
    const long gap = boost::gregorian::days_before_weekday(FirstOfMonth(date), BoostDay(week_begin)).days();
    return static_cast<std::uint16_t>((gap + date.day() - 1) / kDaysOfWeek + 1);
}

} // namespace

CDateTime::CDateTime(const date_time_fields_t& fields, bool is_utc) : CDateTime(SecondsOf(fields), is_utc) {}

CDateTime CDateTime::NowLocal() { return {LocalSeconds(std::time(nullptr)), false}; }

CDateTime CDateTime::NowUtc() { return {SecondsAt(BrokenDown(std::time(nullptr))), true}; }

date_time_fields_t CDateTime::GetFields() const
{
    if (m_seconds == 0)
        return {};

    const std::tm time = BrokenDown(m_seconds);
    const auto field = [](int value) { return util::NumericCast<std::uint16_t>(value); };
    date_time_fields_t fields{};
    fields.year = field(YearOf(time));
    fields.month = field(time.tm_mon + 1);
    fields.day = field(time.tm_mday);
    fields.hour = field(time.tm_hour);
    fields.minute = field(time.tm_min);
    fields.second = field(time.tm_sec);
    return fields;
}

CDateTime CDateTime::ToLocal() const { return m_is_utc ? CDateTime(LocalSeconds(m_seconds), false) : *this; }

CDateTime CDateTime::ToUtc() const
{
    if (m_is_utc)
        return *this;

    const auto offset = static_cast<std::int64_t>(UtcOffsetHours() * kSecondsPerHour);
    std::int64_t seconds = 0;
    if (__builtin_sub_overflow(m_seconds, offset, &seconds))
        throw exc::runtime_exc_t("Local seconds [%1] have no UTC seconds.", m_seconds);
    return {seconds, true};
}

double CDateTime::UtcOffsetHours()
{
    const std::time_t now = std::time(nullptr);
    const std::tm local = BrokenDownLocally(now);
    const double hours = std::difftime(SecondsAt(local), SecondsAt(BrokenDown(now))) / kSecondsPerHour;
    return local.tm_isdst >= 1 ? hours + 1.0 : hours;
}

void CDateTime::SetDate(int year, int month, int day)
{
    std::tm time = BrokenDown(m_seconds);
    PutDate(time, year, month, day);
    m_seconds = SecondsAt(time);
}

void CDateTime::GetDate(int& year, int& month, int& day) const
{
    const std::tm time = BrokenDown(m_seconds);
    year = YearOf(time);
    month = time.tm_mon + 1;
    day = time.tm_mday;
}

void CDateTime::SetTime(int hour, int minute, int second)
{
    std::tm time = BrokenDown(m_seconds);
    PutTime(time, hour, minute, second);
    m_seconds = SecondsAt(time);
}

void CDateTime::GetTime(int& hour, int& minute, int& second) const
{
    const std::tm time = BrokenDown(m_seconds);
    hour = time.tm_hour;
    minute = time.tm_min;
    second = time.tm_sec;
}

std::string CDateTime::ToString(const std::string& format) const
{
    std::tm time{};
    std::string text;
    if (::gmtime_r(&m_seconds, &time) == nullptr || !Print(format, time, text))
        throw exc::runtime_exc_t("Can't convert DateTime to string with format [%1].", format);
    return text;
}

std::wstring CDateTime::ToString(const std::wstring& format) const
{
    return util::MultibyteToWide(ToString(util::WideToMultibyte(format)));
}

CDateTime CDateTime::FromString(const std::string& text, const std::string& format)
try
{
    return {SecondsAt(Parsed(text, format)), true};
}
catch (const std::exception&)
{
    throw exc::runtime_exc_t("Unable to convert string [%1] with date format [%2] to DateTime.", text,
                             format);
}

CDateTime CDateTime::FromString(const std::wstring& text, const std::wstring& format)
{
    return FromString(util::WideToMultibyte(text), util::WideToMultibyte(format));
}

void CDateTime::Serialize(io::io_dev_t& stream) const
try
{
    io::WriteValue(stream, m_is_utc);
    io::WriteValue(stream, m_seconds);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "CDateTime::Serialize: Can't serialize data.", e);
}

void CDateTime::DeSerialize(io::io_dev_t& stream)
try
{
    const bool is_utc = io::ReadValue<bool>(stream);
    const auto seconds = io::ReadValue<std::int64_t>(stream);
    *this = CDateTime(seconds, is_utc);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "CDateTime::DeSerialize: Can't deserialize data.", e);
}

std::uint16_t CDateTime::GetCurrentMonth() const
try
{
    return MonthOf(BrokenDown(m_seconds));
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "CDateTime: Failed to get current month.", e);
}

month_info_t CDateTime::GetMonthInfo(day_of_week_t week_begin) const
try
{
    if (week_begin > day_of_week_t::kSaturday)
        throw exc::runtime_exc_t("Wrong day of week [%1].", static_cast<std::uint16_t>(week_begin));

    const boost::gregorian::date today = DateOf(m_seconds);
    const boost::gregorian::date last = today.end_of_month();
    return {today.year(), today.month(), last.day(), DayOfWeek(FirstOfMonth(today)),
            WeekOf(last, week_begin)};
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "CDateTime: Failed to get month info.", e);
}

day_of_week_t CDateTime::GetTodaysDayOfWeek() const
try
{
    return DayOfWeek(DateOf(m_seconds));
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "CDateTime: Failed to get today's day of week.", e);
}

std::uint16_t CDateTime::GetIndexOfCurrentWeek() const
try
{
    return WeekOf(DateOf(m_seconds), day_of_week_t::kSunday);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "CDateTime: Failed to get index of current week in month.", e);
}

std::uint16_t CDateTime::GetNumberOfWeeks() const
try
{
    return WeekOf(DateOf(m_seconds).end_of_month(), day_of_week_t::kSunday);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "CDateTime: Failed to get number of weeks for current month.", e);
}

std::uint16_t CDateTime::GetLastDayOfMonth() const
try
{
    return DateOf(m_seconds).end_of_month().day();
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "CDateTime: Failed to get last day number for current month.", e);
}

std::vector<std::uint16_t> CDateTime::GetDaysOfMonth(day_of_week_t day_of_week) const
try
{
    const boost::gregorian::greg_weekday wanted = BoostDay(day_of_week);
    const boost::gregorian::date today = DateOf(m_seconds);
    const boost::gregorian::date last = today.end_of_month();

    std::vector<std::uint16_t> days;
    for (auto day = boost::gregorian::next_weekday(FirstOfMonth(today), wanted); day <= last;
         day += boost::gregorian::days(kDaysOfWeek))
        days.push_back(day.day());
    return days;
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "CDateTime: Failed to get days of month by day of week.", e);
}

} // namespace datetime
