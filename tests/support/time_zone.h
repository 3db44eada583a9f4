#pragma once

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

// The time zone of the process, as long as this lives. Zones that TZ spells out need no zone files:
// "CET-1CEST,M3.5.0,M10.5.0/3" is Berlin's.
class time_zone_t
{
public:
    explicit time_zone_t(const std::string& zone)
    {
        if (const char* const before = std::getenv("TZ"))
            m_before = before;
        Set(zone);
    }
    ~time_zone_t()
    {
        if (m_before)
            Set(*m_before);
        else
            ::unsetenv("TZ");
        ::tzset();
    }

    time_zone_t(const time_zone_t&) = delete;
    time_zone_t& operator=(const time_zone_t&) = delete;

private:
    static void Set(const std::string& zone)
    {
        ::setenv("TZ", zone.c_str(), 1);
        ::tzset();
    }

    std::optional<std::string> m_before;
};
