#pragma once

// A length of time in whole seconds, which may be negative.
//
//   CTimeSpan(93784).ToString("%d days %H:%M:%S")      "1 days 02:03:04"

#include <cstdint>
#include <string>

namespace datetime
{

// A span broken down. Days count on, the others stay below 24, 60 and 60.
struct time_span_fields_t
{
    bool is_negative; // the numbers are those of the opposite span then
    std::uint64_t days;
    std::uint16_t hours;
    std::uint16_t minutes;
    std::uint16_t seconds;
};

class CTimeSpan
{
public:
    // No time at all, or so many seconds.
    CTimeSpan() = default;
    explicit CTimeSpan(std::int64_t seconds) : m_seconds(seconds) {}

    // The whole span, in seconds and broken down.
    std::int64_t GetSeconds() const { return m_seconds; }
    time_span_fields_t GetFields() const;

    // The format with %d replaced by the days, %H, %M and %S by the others in two digits, %% by a %. The text
    // of a negative span begins with a "-". Throws exc::runtime_exc_t "Failed convert TimeSpan to string
    // using format [%1]." for any other conversion, a % at the end and an empty format.
    std::string ToString(const std::string& format) const;

private:
    std::int64_t m_seconds = 0;
};

} // namespace datetime
