#include "nelvo/monitoring/thread_counters.h"

#include <cstdlib>
#include <new>
#include <string>

#include <boost/thread/thread.hpp>
#include <boost/weak_ptr.hpp>
#include <gtest/gtest.h>

#include "nelvo/synch/thread_context.h"
#include "tests/support/failing_memory.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/placed_thread.h"
#include "tests/support/set_clock.h"
#include "tests/support/temp_folder.h"

namespace
{

// Places for threads that live at the same time or one after another.
constexpr std::uintptr_t kFirst = kBelow2To31;
constexpr std::uintptr_t kSecond = kBelow2To31 + 0x1000'0000;
constexpr std::uintptr_t kThird = kBelow2To31 + 0x2000'0000;

class ThreadCounters : public testing::Test
{
protected:
    // Microseconds.
    void Pass(std::int64_t time) { m_clock.Advance(time * 1000); }

    void Call(std::int64_t time, std::int64_t result)
    {
        m_counters.Start();
        Pass(time);
        m_counters.Stop(result);
    }

    void ExpectCollected(std::uint64_t expected_busy, std::uint64_t expected_bytes)
    {
        std::uint64_t busy = 123;
        std::uint64_t bytes = 456;
        m_counters.Collect(busy, bytes);
        EXPECT_EQ(expected_busy, busy);
        EXPECT_EQ(expected_bytes, bytes);
    }

    set_clock_t m_clock{1'700'000'000};
    workload::CThreadCounters m_counters;
};

} // namespace

TEST_F(ThreadCounters, NoThreadGivesZeroAndZero) { ExpectCollected(0, 0); }

TEST_F(ThreadCounters, CountTheCallsOfOneThread)
{
    Call(30, 5);
    Pass(100);
    Call(12, 6);
    m_counters.Start();
    ExpectCollected(42, 11);
}

TEST_F(ThreadCounters, LastCallCountsFromTheNextStartOn)
{
    Call(30, 5);
    ExpectCollected(0, 0);
    m_counters.Start();
    ExpectCollected(30, 5);
}

TEST_F(ThreadCounters, FailedCallCountsItsTimeAndNoBytes)
{
    Call(30, -1);
    Call(12, INT64_MIN);
    m_counters.Start();
    ExpectCollected(42, 0);
}

TEST_F(ThreadCounters, AnyOtherResultIsASize)
{
    Call(1, 0);
    Call(1, INT64_MAX);
    m_counters.Start();
    ExpectCollected(2, 9'223'372'036'854'775'807U);
}

TEST_F(ThreadCounters, StopBeforeAnyStartMakesTheThreadsCounter)
{
    m_counters.Stop(8);
    ExpectCollected(0, 0);
    Pass(1);
    m_counters.Start();
    ExpectCollected(1'700'000'000'000'000, 8);
}

TEST_F(ThreadCounters, CollectGivesTheBusiestThreadsTimeAndAllBytes)
{
    const auto call_on_thread = [this](std::uintptr_t address, std::int64_t time, std::int64_t size)
    {
        RunOnThreadAt(address,
                      [&]
                      {
                          Call(time, size);
                          m_counters.Start();
                      });
    };
    call_on_thread(kFirst, 10, 1);
    call_on_thread(kSecond, 50, 2);
    call_on_thread(kThird, 30, 4);
    ExpectCollected(50, 7);
    ExpectCollected(0, 0);
}

TEST_F(ThreadCounters, CallOfOneThreadDoesNotEndThatOfAnother)
{
    m_counters.Start();
    Pass(10);
    RunOnThreadAt(kFirst, [this] { Call(5, 1); });
    Pass(10);
    m_counters.Stop(2);
    m_counters.Start();
    ExpectCollected(25, 2);
}

TEST_F(ThreadCounters, CounterOfAThreadThatEndedServesTheNextWithItsId)
{
    RunOnThreadAt(kFirst, [this] { Call(30, 5); });
    ExpectCollected(0, 0);
    RunOnThreadAt(kFirst, [this] { m_counters.Start(); });
    ExpectCollected(30, 5);
}

TEST_F(ThreadCounters, TakeNoMemoryAfterAThreadsFirstCall)
{
    m_counters.Start();
    FailNextAllocation();
    m_counters.Stop(1);
    Call(1, 1);
    Call(1, -1);
    std::uint64_t busy = 0;
    std::uint64_t bytes = 0;
    m_counters.Collect(busy, bytes);
    EXPECT_FALSE(HasAllocationFailed());
    EXPECT_EQ(1u, busy);
}

TEST_F(ThreadCounters, FirstCallWithoutMemoryThrowsAndTheNextTriesAgain)
{
    RunOnThreadAt(kFirst,
                  [this]
                  {
                      synch::CThreadContext::GetCurrent();
                      FailNextAllocation();
                      EXPECT_THROW(m_counters.Start(), std::bad_alloc);
                      Call(30, 5);
                      m_counters.Start();
                  });
    ExpectCollected(30, 5);
}

TEST(ThreadCountersOwner, IsTheOneOfTheThreadsContextAtTheFirstCallAndKept)
{
    boost::weak_ptr<boost::thread::id> first;
    boost::weak_ptr<boost::thread::id> second;
    {
        workload::CThreadCounters counters;
        RunOnThreadAt(kFirst,
                      [&]
                      {
                          const auto context = synch::CThreadContext::GetCurrent();
                          context->SetOwnerThread(boost::this_thread::get_id());
                          first = context->GetOwnerThread();
                          counters.Start();
                          context->SetOwnerThread(boost::this_thread::get_id());
                          second = context->GetOwnerThread();
                          counters.Stop(1);
                      });
        EXPECT_FALSE(first.expired());
        EXPECT_TRUE(second.expired());
    }
    EXPECT_TRUE(first.expired());
}

TEST(ThreadCountersOfFiles, AreTwoAndAlwaysTheSame)
{
    EXPECT_EQ(&workload::ReadCounters(), &workload::ReadCounters());
    EXPECT_EQ(&workload::WriteCounters(), &workload::WriteCounters());
    EXPECT_NE(&workload::ReadCounters(), &workload::WriteCounters());
}

// See tests/programs/count_at_exit.cpp.
TEST(ThreadCountersOfFiles, CountTheLastCallsOfAProgram)
{
    const temp_folder_t folder;
    const std::string path = folder / "a.log";
    ASSERT_EQ(0, std::system((COUNT_AT_EXIT " " + path).c_str()));
    EXPECT_EQ("tag    | in main\ntag    | from the last static object\n", WithoutHeads(ReadFile(path)));
}

TEST(ThreadCountersOfManyThreads, LoseNoCall)
{
    constexpr int kThreads = 4;
    constexpr int kCalls = 2000;
    workload::CThreadCounters counters;
    std::uint64_t all_bytes = 0;
    boost::thread_group threads;
    for (int i = 0; i != kThreads; ++i)
        threads.create_thread(
            [&]
            {
                for (int k = 0; k != kCalls; ++k)
                {
                    counters.Start();
                    counters.Stop(1);
                }
                counters.Start();
            });
    for (int i = 0; i != 100; ++i)
    {
        std::uint64_t busy = 0;
        std::uint64_t bytes = 0;
        counters.Collect(busy, bytes);
        all_bytes += bytes;
    }
    threads.join_all();
    std::uint64_t busy = 0;
    std::uint64_t bytes = 0;
    counters.Collect(busy, bytes);
    EXPECT_EQ(8000u, all_bytes + bytes);
}
