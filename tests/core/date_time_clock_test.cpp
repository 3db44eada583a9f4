#include <cstdint>
#include <ctime>

#include <gtest/gtest.h>

#include "nelvo/core/date_time.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "tests/support/thrown.h"
#include "tests/support/time_zone.h"

using datetime::CDateTime;

namespace
{

constexpr std::int64_t kSummer = 1719835200; // 1 July 2024 12:00:00
constexpr std::int64_t kWinter = 1705320000; // 15 January 2024 12:00:00
constexpr char kBerlin[] = "CET-1CEST,M3.5.0,M10.5.0/3";
constexpr char kNewYork[] = "EST5EDT,M3.2.0,M11.1.0";

std::time_t g_now = kWinter;

double OffsetHours(const char* zone, std::int64_t now)
{
    const time_zone_t guard(zone);
    g_now = now;
    return CDateTime::UtcOffsetHours();
}

CDateTime ToUtc(const char* zone, std::int64_t now, std::int64_t local)
{
    const time_zone_t guard(zone);
    g_now = now;
    return CDateTime(local, false).ToUtc();
}

} // namespace

extern "C" time_t time(time_t* now) noexcept
{
    if (now != nullptr)
        *now = g_now;
    return g_now;
}

TEST(DateTimeClock, NowUtcIsTheClock)
{
    const time_zone_t guard(kBerlin);
    g_now = kSummer;
    EXPECT_EQ(kSummer, CDateTime::NowUtc().GetSeconds());
    EXPECT_TRUE(CDateTime::NowUtc().IsUtc());
}

TEST(DateTimeClock, NowLocalIsTheWallClock)
{
    const time_zone_t guard(kBerlin);
    g_now = kSummer;
    EXPECT_EQ("2024-07-01 14:00:00", CDateTime::NowLocal().ToString(CDateTime::kIsoFormat));
    EXPECT_FALSE(CDateTime::NowLocal().IsUtc());
    g_now = kWinter;
    EXPECT_EQ("2024-01-15 13:00:00", CDateTime::NowLocal().ToString(CDateTime::kIsoFormat));
}

TEST(DateTimeClock, OffsetIsLocalTimeLessUtc)
{
    EXPECT_EQ(0.0, OffsetHours("UTC0", kWinter));
    EXPECT_EQ(1.0, OffsetHours(kBerlin, kWinter));
    EXPECT_EQ(-5.0, OffsetHours(kNewYork, kWinter));
    EXPECT_EQ(5.5, OffsetHours("IST-5:30", kSummer));
}

TEST(DateTimeClock, OffsetHasTheHourOfSummerTwice)
{
    EXPECT_EQ(3.0, OffsetHours(kBerlin, kSummer));
    EXPECT_EQ(-3.0, OffsetHours(kNewYork, kSummer));
}

TEST(DateTimeClock, ToUtcTakesAwayTheOffset)
{
    EXPECT_EQ(kWinter, ToUtc(kBerlin, kWinter, kWinter + 3600).GetSeconds());
    EXPECT_TRUE(ToUtc(kBerlin, kWinter, kWinter + 3600).IsUtc());
    EXPECT_EQ(kWinter, ToUtc(kNewYork, kWinter, kWinter - 5 * 3600).GetSeconds());
    EXPECT_EQ(kWinter, ToUtc("IST-5:30", kWinter, kWinter + 19800).GetSeconds());
}

TEST(DateTimeClock, ToUtcIsOneHourEarlyInSummer)
{
    const time_zone_t guard(kBerlin);
    g_now = kSummer;
    EXPECT_EQ(kSummer - 3600, CDateTime::NowLocal().ToUtc().GetSeconds());
    EXPECT_EQ(kSummer - 3600, CDateTime(kSummer, true).ToLocal().ToUtc().GetSeconds());
}

TEST(DateTimeClock, ToUtcTakesTheOffsetOfNow)
{
    EXPECT_EQ(kSummer + 3600, ToUtc(kBerlin, kWinter, kSummer + 7200).GetSeconds());
    EXPECT_EQ(kWinter - 7200, ToUtc(kBerlin, kSummer, kWinter + 3600).GetSeconds());
}

// 115 / 3600.0 * 3600.0 is a little less than 115.
TEST(DateTimeClock, ToUtcCutsTheOffsetToWholeSeconds)
{
    EXPECT_EQ(kWinter + 1, ToUtc("LMT-0:01:55", kWinter, kWinter + 115).GetSeconds());
    EXPECT_EQ(kWinter - 1, ToUtc("LMT0:01:55", kWinter, kWinter - 115).GetSeconds());
}

TEST(DateTimeClock, ToUtcRefusesSecondsThatLeaveTheRange)
{
    EXPECT_EQ("Local seconds [-9223372036854775808] have no UTC seconds.",
              Thrown<exc::runtime_exc_t>([] { ToUtc(kBerlin, kWinter, INT64_MIN); }));
    EXPECT_EQ("Local seconds [9223372036854775807] have no UTC seconds.",
              Thrown<exc::runtime_exc_t>([] { ToUtc(kNewYork, kWinter, INT64_MAX); }));
    EXPECT_EQ(INT64_MIN, ToUtc(kBerlin, kWinter, INT64_MIN + 3600).GetSeconds());
}
