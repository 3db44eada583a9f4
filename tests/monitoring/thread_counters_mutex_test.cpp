#include "nelvo/monitoring/thread_counters.h"

#include <cerrno>

#include <boost/thread/exceptions.hpp>

#include "tests/support/pthread_calls.h"

namespace
{

class ThreadCountersMutex : public PthreadCalls
{
protected:
    // The first call makes the counter.
    ThreadCountersMutex()
    {
        m_counters.Start();
        m_counters.Stop(5);
    }

    std::uint64_t BytesAfterTheNextStart()
    {
        m_counters.Start();
        m_counters.Collect(m_busy, m_bytes);
        return m_bytes;
    }

    workload::CThreadCounters m_counters;
    std::uint64_t m_busy = 1;
    std::uint64_t m_bytes = 1;
    const std::function<void()> m_operations[3] = {[this] { m_counters.Start(); },
                                                   [this] { m_counters.Stop(6); },
                                                   [this] { m_counters.Collect(m_busy, m_bytes); }};
};

} // namespace

TEST_F(ThreadCountersMutex, IsHeldWhileACounterStartsOrStops)
{
    const calls_t counting = {"lock", "clock_gettime", "unlock"};
    EXPECT_EQ(counting, Calls([this] { m_counters.Start(); }));
    EXPECT_EQ(counting, Calls([this] { m_counters.Stop(6); }));
    EXPECT_EQ((calls_t{"lock", "unlock"}), Calls([this] { m_counters.Collect(m_busy, m_bytes); }));
}

TEST_F(ThreadCountersMutex, LockThatFailsIsBoostsFailureAndChangesNoCounter)
{
    for (const auto& operation : m_operations)
    {
        Answer("lock", EINVAL);
        EXPECT_EQ(calls_t{"lock"}, Calls(operation));
        EXPECT_EQ("boost: mutex lock failed in pthread_mutex_lock: Invalid argument (generic 22)", failure());
        Answer("lock", EINVAL);
        Calls([&] { EXPECT_THROW(operation(), boost::lock_error); });
    }
    EXPECT_EQ(0u, m_busy);
    EXPECT_EQ(0u, m_bytes);
    EXPECT_EQ(5u, BytesAfterTheNextStart());
}

TEST_F(ThreadCountersMutex, LockAndUnlockAreRepeatedAfterASignal)
{
    for (const auto& operation : m_operations)
    {
        for (const char* const call : {"lock", "lock", "unlock"})
            Answer(call, EINTR);
        calls_t calls = Calls(operation);
        EXPECT_EQ((calls_t{"lock", "lock", "lock"}), calls_t(calls.begin(), calls.begin() + 3));
        EXPECT_EQ((calls_t{"unlock", "unlock"}), calls_t(calls.end() - 2, calls.end()));
        EXPECT_EQ("no failure", failure());
    }
}
