#include <cerrno>
#include <optional>
#include <thread>
#include <vector>

#include "nelvo/synch/manual_reset_event.h"
#include "tests/support/pthread_calls.h"

namespace
{

using event_t = posix::posix_manual_reset_event_t;

class ManualResetEventCalls : public PthreadCalls
{
protected:
    // The deadline of a wait that begins at a time.
    std::string DeadlineOf(std::int32_t timeout, std::int64_t seconds, std::int64_t microseconds)
    {
        SetTime(seconds, microseconds);
        const calls_t calls = Calls([&] { EXPECT_FALSE(m_event.wait(timeout)); });
        EXPECT_EQ((calls_t{"gettimeofday", "lock", calls.at(2), "unlock"}), calls);
        return calls.at(2);
    }

    event_t m_event{false};
};

} // namespace

TEST_F(ManualResetEventCalls, MutexAndConditionAreOfTheDefaultKind)
{
    std::optional<event_t> event;
    EXPECT_EQ((calls_t{"mutex_init", "cond_init"}), Calls([&] { event.emplace(false); }));
    EXPECT_EQ((calls_t{"cond_destroy", "mutex_destroy"}), Calls([&] { event.reset(); }));
}

TEST_F(ManualResetEventCalls, CreationFailureCarriesErrnoInsteadOfTheResult)
{
    Answer("mutex_init", ENOMEM);
    EXPECT_EQ(calls_t{"mutex_init"}, Calls([] { event_t{false}; }));
    EXPECT_EQ("cannot create event (mutex): Exchange full (system 54)", failure());

    Answer("cond_init", ENOMEM);
    EXPECT_EQ((calls_t{"mutex_init", "cond_init", "mutex_destroy"}), Calls([] { event_t{false}; }));
    EXPECT_EQ("cannot create event (condition): Exchange full (system 54)", failure());
}

TEST_F(ManualResetEventCalls, SetBroadcastsUnderTheLock)
{
    EXPECT_EQ((calls_t{"lock", "broadcast", "unlock"}), Calls([&] { m_event.set(); }));
    EXPECT_EQ("no failure", failure());
    EXPECT_TRUE(m_event.wait(0));
}

TEST_F(ManualResetEventCalls, SetThatCannotLockSetsNothing)
{
    Answer("lock", EINVAL);
    EXPECT_EQ(calls_t{"lock"}, Calls([&] { m_event.set(); }));
    EXPECT_EQ("cannot signal event (lock): Invalid argument (system 22)", failure());
    EXPECT_FALSE(m_event.wait(0));
}

TEST_F(ManualResetEventCalls, BroadcastThatFailsIsToldOfAfterTheUnlock)
{
    Answer("broadcast", EINVAL);
    EXPECT_EQ((calls_t{"lock", "broadcast", "unlock"}), Calls([&] { m_event.set(); }));
    EXPECT_EQ("cannot signal event: Invalid argument (system 22)", failure());
    EXPECT_TRUE(m_event.wait(0));
}

TEST_F(ManualResetEventCalls, ResetNeedsTheLock)
{
    m_event.set();
    Answer("lock", EINVAL);
    EXPECT_EQ(calls_t{"lock"}, Calls([&] { m_event.reset(); }));
    EXPECT_EQ("cannot reset event: Invalid argument (system 22)", failure());
    EXPECT_TRUE(m_event.wait(0));
    EXPECT_EQ((calls_t{"lock", "unlock"}), Calls([&] { m_event.reset(); }));
    EXPECT_FALSE(m_event.wait(0));
}

TEST_F(ManualResetEventCalls, WaitNeedsTheLock)
{
    for (const std::int32_t timeout : {0, 5, -1})
    {
        Answer("lock", EDEADLK);
        EXPECT_EQ("lock", Calls([&] { m_event.wait(timeout); }).back());
        EXPECT_EQ("wait for event failed (lock): Resource deadlock avoided (system 35)", failure());
    }
}

TEST_F(ManualResetEventCalls, WaitOfZeroTakesTheLockAndDoesNotWait)
{
    EXPECT_EQ((calls_t{"lock", "unlock"}), Calls([&] { EXPECT_FALSE(m_event.wait(0)); }));
    m_event.set();
    EXPECT_EQ((calls_t{"lock", "unlock"}), Calls([&] { EXPECT_TRUE(m_event.wait(0)); }));
}

TEST_F(ManualResetEventCalls, WaitForASetEventDoesNotWait)
{
    m_event.set();
    for (const std::int32_t timeout : {1, -1})
        EXPECT_EQ((calls_t{"gettimeofday", "lock", "unlock"}),
                  Calls([&] { EXPECT_TRUE(m_event.wait(timeout)); }));
}

TEST_F(ManualResetEventCalls, DeadlineIsTheTimeoutBehindTheTimeOfTheCall)
{
    EXPECT_EQ("timedwait(1700000000.001000000)", DeadlineOf(1, 1700000000, 0));
    EXPECT_EQ("timedwait(1700000000.999123000)", DeadlineOf(999, 1700000000, 123));
    EXPECT_EQ("timedwait(1700000001.000123000)", DeadlineOf(1000, 1700000000, 123));
    EXPECT_EQ("timedwait(1700000012.345678000)", DeadlineOf(12345, 1700000000, 678));
    EXPECT_EQ("timedwait(1702147483.647000000)", DeadlineOf(2147483647, 1700000000, 0));
}

TEST_F(ManualResetEventCalls, NanosecondsCarryOneSecond)
{
    EXPECT_EQ("timedwait(1700000000.999999000)", DeadlineOf(1, 1700000000, 998999));
    EXPECT_EQ("timedwait(1700000001.000000000)", DeadlineOf(1, 1700000000, 999000));
    EXPECT_EQ("timedwait(1700000003.998999000)", DeadlineOf(2999, 1700000000, 999999));
}

TEST_F(ManualResetEventCalls, OnlyMinusOneOfTheNumbersBelowZeroIsTheLongestWait)
{
    EXPECT_EQ("timedwait(1700000000.000500000)", DeadlineOf(-2, 1700000000, 2500));
    EXPECT_EQ("timedwait(1699999999.400000000)", DeadlineOf(-1500, 1700000000, 900000));
}

TEST_F(ManualResetEventCalls, LongestWaitEndsAfter21Days)
{
    EXPECT_EQ("timedwait(1701814400.999999000)", DeadlineOf(-1, 1700000000, 999999));
}

TEST_F(ManualResetEventCalls, SpuriousWakeUpsDoNotMoveTheDeadline)
{
    Answer("timedwait", 0);
    Answer("timedwait", 0);
    SetTime(1700000000, 0);
    SetHook([] { SetTime(1800000000, 0); });
    const std::string wait = "timedwait(1700000000.007000000)";
    EXPECT_EQ((calls_t{"gettimeofday", "lock", wait, wait, wait, "unlock"}),
              Calls([&] { EXPECT_FALSE(m_event.wait(7)); }));
}

TEST_F(ManualResetEventCalls, FlagIsReadAgainAfterAWakeUp)
{
    Answer("timedwait", 0);
    SetHook([&] { m_event.set(); });
    EXPECT_EQ(
        (calls_t{"gettimeofday", "lock", "timedwait(0.007000000)", "lock", "broadcast", "unlock", "unlock"}),
        Calls([&] { EXPECT_TRUE(m_event.wait(7)); }));
}

TEST_F(ManualResetEventCalls, FlagIsNotReadAgainAfterTheTimeout)
{
    SetHook([&] { m_event.set(); });
    Calls([&] { EXPECT_FALSE(m_event.wait(7)); });
    EXPECT_TRUE(m_event.wait(0));
}

TEST_F(ManualResetEventCalls, WaitThatFailsIsToldOfAfterTheUnlock)
{
    Answer("timedwait", EINVAL);
    EXPECT_EQ((calls_t{"gettimeofday", "lock", "timedwait(0.007000000)", "unlock"}),
              Calls([&] { m_event.wait(7); }));
    EXPECT_EQ("cannot wait for event: Invalid argument (system 22)", failure());
}

// Each has begun its wait before the event is set, and none gets the lock back before the setter has it.
TEST_F(ManualResetEventCalls, SetWakesAllWhoWait)
{
    std::vector<std::thread> waiters(3);
    for (std::thread& waiter : waiters)
        waiter = std::thread([&] { EXPECT_TRUE(m_event.wait(-1)); });
    while (WaitCount() != 3)
        std::this_thread::yield();
    m_event.set();
    for (std::thread& waiter : waiters)
        waiter.join();
    EXPECT_TRUE(m_event.wait(0));
}
