#include "nelvo/monitoring/thread_counters.h"

#include <cerrno>
#include <functional>

#include <boost/thread/exceptions.hpp>
#include <gtest/gtest.h>

#include "tests/support/mutex_calls.h"

namespace
{

class ThreadCountersMutex : public testing::Test
{
protected:
    ThreadCountersMutex()
    {
        m_counters.Start();
        m_counters.Stop(5);
    }

    void ExpectLockFailure(const std::function<void()>& call)
    {
        AnswerNext("pthread_mutex_lock", {EINVAL});
        try
        {
            call();
            ADD_FAILURE() << "no failure";
        }
        catch (const boost::lock_error& e)
        {
            EXPECT_STREQ("boost: mutex lock failed in pthread_mutex_lock: Invalid argument", e.what());
            EXPECT_EQ(EINVAL, e.native_error());
        }
        EXPECT_EQ(0u, TakeUnasked());
    }

    workload::CThreadCounters m_counters;
    std::uint64_t m_busy = 1;
    std::uint64_t m_bytes = 1;
};

} // namespace

TEST_F(ThreadCountersMutex, LockThatFailsIsAFailureOfEachCall)
{
    ExpectLockFailure([this] { m_counters.Start(); });
    ExpectLockFailure([this] { m_counters.Stop(6); });
    ExpectLockFailure([this] { m_counters.Collect(m_busy, m_bytes); });
    EXPECT_EQ(0u, m_busy);
    EXPECT_EQ(0u, m_bytes);
    m_counters.Start();
    m_counters.Collect(m_busy, m_bytes);
    EXPECT_EQ(5u, m_bytes);
}

TEST_F(ThreadCountersMutex, LockAndUnlockAreRepeatedAfterASignal)
{
    AnswerNext("pthread_mutex_lock", {EINTR, EINTR});
    m_counters.Start();
    EXPECT_EQ(0u, TakeUnasked());
    AnswerNext("pthread_mutex_unlock", {EINTR, EINTR});
    m_counters.Collect(m_busy, m_bytes);
    EXPECT_EQ(0u, TakeUnasked());
    EXPECT_EQ(5u, m_bytes);
    m_counters.Stop(1);
}
