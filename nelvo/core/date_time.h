#pragma once

// The date value: seconds since 1970 and whether they are UTC or the local wall clock. Copied by value.
//
//   CDateTime::NowLocal().ToString(CDateTime::kIsoFormat)      "2024-07-01 14:30:00"
//
// A local value is no instant. Its seconds are those that show the wall clock when they are read as if they
// were UTC, so that no operation on the fields of a value looks at the time zone. ToLocal, ToUtc, NowLocal
// and UtcOffsetHours do, at that of the process as it is at the call (tzset).
//
// Zero seconds are an empty date, but for GetFields alone: all else takes them for 1 January 1970 00:00:00,
// and a date made of just these fields is empty.
// Kept: DateTime.FirstSecondOf1970IsAnEmptyDate
//
// Seconds that gmtime_r(3) refuses, two thousand million years away, have no date. An operation that needs
// theirs throws exc::runtime_exc_t. Any thread may use values of its own; only TZ must not change under them.

#include <cstdint>
#include <string>
#include <vector>

namespace io
{
class io_dev_t;
}

// A date and a time of day, broken down.
struct date_time_fields_t
{
    std::uint16_t year;
    std::uint16_t month; // 1 to 12
    std::uint16_t spare; // ignored by who takes the fields, 0 from who gives them
    std::uint16_t day;
    std::uint16_t hour;
    std::uint16_t minute;
    std::uint16_t second;
    std::uint16_t spare2; // as spare
};

namespace datetime
{

// As struct tm numbers them, from Sunday as 0.
enum class day_of_week_t : std::uint16_t
{
    kSunday,
    kMonday,
    kTuesday,
    kWednesday,
    kThursday,
    kFriday,
    kSaturday
};

// A month as a sheet of the calendar, with a line for each week.
struct month_info_t
{
    std::uint16_t year;
    std::uint16_t month;           // 1 to 12
    std::uint16_t last_day;        // 28 to 31
    day_of_week_t first_day;       // day of week of the 1st
    std::uint16_t number_of_weeks; // lines of the sheet, 4 to 6; the first and the last may have gaps
};

class CDateTime
{
public:
    static constexpr char kIsoFormat[] = "%Y-%m-%d %H:%M:%S";
    static constexpr char kUsFormat[] = "%m/%d/%Y %H:%M:%S";

    // An empty date, in UTC.
    CDateTime() = default;

    // Takes both as they are; 0 seconds are an empty date.
    CDateTime(std::int64_t seconds, bool is_utc) : m_seconds(seconds), m_is_utc(is_utc) {}

    // Fields above their range carry over into the next larger one, and a 0 borrows from it: 30 February is 1
    // or 2 March. So the zeros of an empty date give no empty date, but one in the year -1, which GetFields
    // refuses.
    // Kept: DateTime.FieldsOfAnEmptyDateGiveNoEmptyDate
    explicit CDateTime(const date_time_fields_t& fields, bool is_utc = true);

    CDateTime(const CDateTime&) = default;
    CDateTime& operator=(const CDateTime&) = default;
    virtual ~CDateTime() = default;

    // The system's clock in whole seconds, as a local and as a UTC value.
    static CDateTime NowLocal();
    static CDateTime NowUtc();

    // What the value is made of: the seconds count from 1970 by the clock that IsUtc tells.
    std::int64_t GetSeconds() const { return m_seconds; }
    bool IsUtc() const { return m_is_utc; }

    // All zero for an empty date. Throws exc::runtime_exc_t "Unable to cast value from [i] to [t]." for a
    // year below 0 or above 65535, and "... from [l] to [i]." for one that no int holds.
    date_time_fields_t GetFields() const;

    // The value by the other clock; a value that is by it already is copied. ToLocal takes the offset that
    // the time zone has at the value. ToUtc takes that of now, UtcOffsetHours cut to whole seconds, whatever
    // the value's date, so that in winter a date of summer is one hour late. It throws exc::runtime_exc_t if
    // the seconds leave their range.
    // Kept: DateTimeClock.ToUtcTakesTheOffsetOfNow
    CDateTime ToLocal() const;
    CDateTime ToUtc() const;

    // Local time less UTC, now, in hours. In summer time it has the hour of summer twice, and what ToUtc
    // gives is one hour early.
    // Kept: DateTimeClock.OffsetHasTheHourOfSummerTwice
    static double UtcOffsetHours();

    // The year as it is counted, month 1 to 12, day 1 to 31. SetDate leaves the time of day and SetTime the
    // date; what is out of its range carries over as in the constructor, whatever the sign. What then has no
    // seconds, and a year that no int holds, is an exc::runtime_exc_t and changes nothing.
    void SetDate(int year, int month, int day);
    void GetDate(int& year, int& month, int& day) const;
    void SetTime(int hour, int minute, int second);
    void GetTime(int& hour, int& minute, int& second) const;

    // By strftime(3), which ends the format at a zero byte and takes names from the process locale. Throws
    // exc::runtime_exc_t "Can't convert DateTime to string with format [%1]." if that gives no text, for an
    // empty format also, or one of a mebibyte or more, and for seconds that have no date.
    std::string ToString(const std::string& format) const;

    // Converts by util::WideToMultibyte and util::MultibyteToWide, and throws what they throw.
    std::wstring ToString(const std::wstring& format) const;

    // A UTC value from text, by Boost's input facet for times, whose conversions are not quite strftime's
    // (%s is seconds with a fraction, %B an English name). Throws exc::runtime_exc_t "Unable to convert
    // string [%1] with date format [%2] to DateTime." for what that refuses: a number of fewer digits than
    // its conversion has, a date that does not exist, a year outside 1400 to 9999.
    //
    // It takes more than the format says: blanks in front, any separator, anything behind. Where the text
    // ends, the time of day is zero from there on, hours of 24 and more, minutes and seconds of 60 and more
    // carry over, and a format without a date means 1 January 1400.
    // Kept: DateTimeFromString.TakesMoreThanTheFormatSays
    static CDateTime FromString(const std::string& text, const std::string& format);
    static CDateTime FromString(const std::wstring& text, const std::wstring& format);

    // The stored form, 12 bytes: is_utc as 0 or 1 in 4 (on reading, anything but 0 is true), seconds in 8,
    // little-endian. A failure leaves with the context line "CDateTime::Serialize: Can't serialize data." or
    // "CDateTime::DeSerialize: Can't deserialize data." and, on reading, the value as it was.
    void Serialize(io::io_dev_t& stream) const;
    void DeSerialize(io::io_dev_t& stream);

    // The calendar of the month that the value stands in, by Boost's, which has the years 1400 to 9999. Its
    // failures pass with their texts. Each failure leaves with a context line, such as "CDateTime: Failed to
    // get current month.".

    // 1 to 12, in any year.
    std::uint16_t GetCurrentMonth() const;

    // With weeks that begin on the given day. Throws "Wrong day of week [%1]." for none of the seven.
    month_info_t GetMonthInfo(day_of_week_t week_begin = day_of_week_t::kSunday) const;

    // That of the value's day.
    day_of_week_t GetTodaysDayOfWeek() const;

    // Weeks are counted from 1, that of the 1st, and begin on Sunday.
    std::uint16_t GetIndexOfCurrentWeek() const;
    std::uint16_t GetNumberOfWeeks() const;

    // 28 to 31.
    std::uint16_t GetLastDayOfMonth() const;

    // The days of the month that fall on the given day of week, the first of them first. Throws "Weekday is
    // out of range 0..6" for none of the seven.
    std::vector<std::uint16_t> GetDaysOfMonth(day_of_week_t day_of_week) const;

private:
    std::int64_t m_seconds = 0;
    bool m_is_utc = true;
};

} // namespace datetime
