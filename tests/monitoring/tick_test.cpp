#include "nelvo/monitoring/tick.h"

#include <gtest/gtest.h>

#include "tests/support/set_clock.h"

using monitoring::GetTickMs;

TEST(Tick, CountsWholeMillisecondsOfTheWallClock)
{
    set_clock_t clock(1000, 1'999'999);
    EXPECT_EQ(1'000'001u, GetTickMs());
    clock.Advance(1);
    EXPECT_EQ(1'000'002u, GetTickMs());
    clock.Set(1000, 999'999'999);
    EXPECT_EQ(1'000'999u, GetTickMs());
}

TEST(Tick, WrapsAfter2To32Milliseconds)
{
    set_clock_t clock(4'294'967, 295'000'000);
    EXPECT_EQ(4'294'967'295u, GetTickMs());
    clock.Set(4'294'967, 296'000'000);
    EXPECT_EQ(0u, GetTickMs());
    clock.Set(1'700'000'000, 123'456'789);
    EXPECT_EQ(3'487'918'203u, GetTickMs());
}

TEST(Tick, GoesBackWithTheWallClock)
{
    set_clock_t clock(1000);
    const std::uint32_t before = GetTickMs();
    clock.Set(997);
    EXPECT_EQ(before - 3000, GetTickMs());
}
