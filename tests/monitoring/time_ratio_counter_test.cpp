#include "nelvo/monitoring/time_ratio_counter.h"

#include <boost/make_shared.hpp>
#include <boost/weak_ptr.hpp>
#include <gtest/gtest.h>

#include "tests/support/set_clock.h"

namespace
{

struct sums_t
{
    std::uint64_t busy;
    std::uint64_t bytes;

    bool operator==(const sums_t& other) const { return busy == other.busy && bytes == other.bytes; }
};

void PrintTo(const sums_t& sums, std::ostream* out)
{
    *out << "busy " << sums.busy << " us, " << sums.bytes << " bytes";
}

class TimeRatioCounter : public testing::Test
{
protected:
    // Microseconds.
    void Pass(std::int64_t time) { m_clock.Advance(time * 1000); }

    void Run(std::int64_t busy, std::uint64_t size, std::int64_t idle)
    {
        m_counter.Start();
        Pass(busy);
        m_counter.Stop(size);
        Pass(idle);
    }

    sums_t Take()
    {
        sums_t sums = {~0ULL, ~0ULL};
        m_counter.TakeAndReset(sums.busy, sums.bytes);
        return sums;
    }

    set_clock_t m_clock{1'700'000'000};
    workload::CTimeRatioCounter m_counter{nullptr};
};

} // namespace

TEST_F(TimeRatioCounter, BeginsWithNothing)
{
    EXPECT_EQ((sums_t{0, 0}), Take());
    EXPECT_EQ(0.0F, m_counter.GetRatio());
}

TEST_F(TimeRatioCounter, CycleIsAddedUpByTheNextStart)
{
    Run(300, 5, 700);
    EXPECT_EQ((sums_t{0, 0}), Take());
    EXPECT_EQ(0.0F, m_counter.GetRatio());
    m_counter.Start();
    EXPECT_EQ(30.0F, m_counter.GetRatio());
    EXPECT_EQ((sums_t{300, 5}), Take());
}

TEST_F(TimeRatioCounter, AddsUpAllCycles)
{
    Run(300, 5, 700);
    Run(100, 7, 100);
    Run(0, 1, 600);
    m_counter.Start();
    EXPECT_EQ(static_cast<float>(400 * 100.0 / 1800), m_counter.GetRatio());
    EXPECT_EQ((sums_t{400, 13}), Take());
}

TEST_F(TimeRatioCounter, StopAloneKeepsTheSizeOfTheLastOne)
{
    Run(1, 5, 1);
    m_counter.Start();
    m_counter.Stop();
    m_counter.Start();
    EXPECT_EQ((sums_t{1, 10}), Take());
}

TEST_F(TimeRatioCounter, OfTwoStartsTheFirstCounts)
{
    m_counter.Start();
    Pass(10);
    m_counter.Start();
    EXPECT_EQ((sums_t{0, 0}), Take());
    Pass(5);
    m_counter.Stop(3);
    m_counter.Start();
    EXPECT_EQ((sums_t{15, 3}), Take());
}

TEST_F(TimeRatioCounter, OfTwoStopsTheTimeOfTheFirstAndTheSizeOfTheLastCount)
{
    Run(10, 3, 20);
    m_counter.Stop(4);
    Pass(10);
    m_counter.Stop();
    m_counter.Start();
    EXPECT_EQ(25.0F, m_counter.GetRatio());
    EXPECT_EQ((sums_t{10, 4}), Take());
}

TEST_F(TimeRatioCounter, SizeGivenWhileNothingRunsTakesThePlaceOfTheLast)
{
    Run(10, 3, 0);
    m_counter.Stop(0);
    m_counter.Start();
    EXPECT_EQ((sums_t{10, 0}), Take());
}

TEST_F(TimeRatioCounter, StopBeforeAnyStartCountsTheTimeSince1970)
{
    m_counter.Stop(8);
    EXPECT_EQ((sums_t{0, 0}), Take());
    Pass(1'700'000'000);
    m_counter.Start();
    EXPECT_EQ(static_cast<float>(100 / 1.000001), m_counter.GetRatio());
    EXPECT_EQ((sums_t{1'700'000'000'000'000, 8}), Take());
}

TEST_F(TimeRatioCounter, StopWithoutASizeBeforeAnyStartDoesTheSame)
{
    m_counter.Stop();
    Pass(1);
    m_counter.Stop();
    m_counter.Start();
    EXPECT_EQ((sums_t{1'700'000'000'000'000, 0}), Take());
}

TEST_F(TimeRatioCounter, CycleWithoutTimeAddsItsBytesAndMakesTheRatioZero)
{
    Run(300, 5, 700);
    Run(0, 7, 0);
    EXPECT_EQ(30.0F, m_counter.GetRatio());
    m_counter.Start();
    EXPECT_EQ(0.0F, m_counter.GetRatio());
    EXPECT_EQ((sums_t{300, 12}), Take());
}

// The clock goes back by what has run.
TEST_F(TimeRatioCounter, CycleWithoutTimeAddsNoBusyTime)
{
    Run(10, 3, -10);
    m_counter.Start();
    EXPECT_EQ(0.0F, m_counter.GetRatio());
    EXPECT_EQ((sums_t{0, 3}), Take());
}

TEST_F(TimeRatioCounter, RatioComesBackAfterACycleWithoutTime)
{
    Run(300, 5, 700);
    Run(0, 7, 0);
    Run(100, 0, 900);
    m_counter.Start();
    EXPECT_EQ(20.0F, m_counter.GetRatio());
}

TEST_F(TimeRatioCounter, TakeAndResetKeepsTheRatio)
{
    Run(300, 5, 700);
    m_counter.Start();
    Take();
    EXPECT_EQ(30.0F, m_counter.GetRatio());
    EXPECT_EQ((sums_t{0, 0}), Take());
}

TEST_F(TimeRatioCounter, CountsTheRatioAnewAfterTakeAndReset)
{
    Run(300, 5, 700);
    m_counter.Start();
    Take();
    Pass(600);
    m_counter.Stop(1);
    Pass(400);
    m_counter.Start();
    EXPECT_EQ(60.0F, m_counter.GetRatio());
    EXPECT_EQ((sums_t{600, 1}), Take());
}

TEST_F(TimeRatioCounter, TakeAndResetInACycleLeavesTheCycleWhole)
{
    m_counter.Start();
    Pass(300);
    Take();
    m_counter.Stop(5);
    Pass(700);
    Take();
    m_counter.Start();
    EXPECT_EQ(30.0F, m_counter.GetRatio());
    EXPECT_EQ((sums_t{300, 5}), Take());
}

TEST_F(TimeRatioCounter, CountsWholeMicrosecondsOfTheClock)
{
    m_clock.Set(10, 1999);
    m_counter.Start();
    m_clock.Advance(1);
    m_counter.Stop();
    m_clock.Advance(999);
    m_counter.Start();
    EXPECT_EQ((sums_t{1, 0}), Take());
}

TEST_F(TimeRatioCounter, ClockThatGoesBackWraps)
{
    m_counter.Start();
    Pass(-10);
    m_counter.Stop(1);
    Pass(30);
    m_counter.Start();
    EXPECT_EQ(static_cast<float>(18446744073709551606.0 * 100 / 20), m_counter.GetRatio());
    EXPECT_EQ((sums_t{18446744073709551606ULL, 1}), Take());
}

TEST_F(TimeRatioCounter, ReadsTheClockOnceForEachStartAndStop)
{
    m_clock.TakeReadings();
    for (int i = 0; i != 10; ++i)
        Run(1, 1, 1);
    EXPECT_EQ(20, m_clock.TakeReadings());
    m_counter.Stop(1);
    m_counter.Start();
    m_clock.TakeReadings();
    m_counter.Start();
    EXPECT_EQ(0, m_clock.TakeReadings());
}

TEST(TimeRatioCounterOwner, LivesAsLongAsTheCounter)
{
    auto owner = boost::make_shared<int>(1);
    const boost::weak_ptr<int> seen = owner;
    {
        const workload::CTimeRatioCounter counter(std::move(owner));
        EXPECT_FALSE(seen.expired());
    }
    EXPECT_TRUE(seen.expired());
}
