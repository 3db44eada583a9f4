#include "nelvo/synch/manual_reset_event.h"

#include <cerrno>
#include <ctime>

#include <sys/time.h>

#include <boost/system/system_error.hpp>

namespace posix
{
namespace
{

constexpr std::int32_t kLongest = -1;
constexpr std::time_t kLongestSeconds = 1'814'400;
constexpr long kNsPerMs = 1'000'000;
constexpr long kNsPerSecond = 1'000'000'000;

[[noreturn]] void Fail(int code, const char* text)
{
    throw boost::system::system_error(code, boost::system::system_category(), text);
}

class locked_t
{
public:
    locked_t(pthread_mutex_t& mutex, const char* failure) : m_mutex(mutex)
    {
        const int result = ::pthread_mutex_lock(&m_mutex);
        if (result != 0)
            Fail(result, failure);
    }
    ~locked_t() { ::pthread_mutex_unlock(&m_mutex); }
    locked_t(const locked_t&) = delete;
    locked_t& operator=(const locked_t&) = delete;

private:
    pthread_mutex_t& m_mutex;
};

timespec DeadlineOf(std::int32_t timeout)
{
    timeval now = {};
    ::gettimeofday(&now, nullptr);
    timespec deadline = {};
    deadline.tv_sec = now.tv_sec + (timeout == kLongest ? kLongestSeconds : timeout / 1000);
    deadline.tv_nsec = now.tv_usec * 1000 + (timeout == kLongest ? 0 : timeout % 1000 * kNsPerMs);
    if (deadline.tv_nsec >= kNsPerSecond)
    {
        ++deadline.tv_sec;
        deadline.tv_nsec -= kNsPerSecond;
    }
    return deadline;
}

} // namespace

posix_manual_reset_event_t::posix_manual_reset_event_t(bool signalled) : m_signalled(signalled)
{
    if (::pthread_mutex_init(&m_mutex, nullptr) != 0)
        Fail(errno, "cannot create event (mutex)");
    if (::pthread_cond_init(&m_cond, nullptr) != 0)
    {
        const int error = errno;
        ::pthread_mutex_destroy(&m_mutex);
        Fail(error, "cannot create event (condition)");
    }
}

posix_manual_reset_event_t::~posix_manual_reset_event_t()
{
    ::pthread_cond_destroy(&m_cond);
    ::pthread_mutex_destroy(&m_mutex);
}

void posix_manual_reset_event_t::set()
{
    int result = 0;
    {
        const locked_t lock(m_mutex, "cannot signal event (lock)");
        m_signalled = true;
        result = ::pthread_cond_broadcast(&m_cond);
    }
    if (result != 0)
        Fail(result, "cannot signal event");
}

void posix_manual_reset_event_t::reset()
{
    const locked_t lock(m_mutex, "cannot reset event");
    m_signalled = false;
}

// An event that is set while the wait times out counts as not set.
// Kept: ManualResetEventCalls.FlagIsNotReadAgainAfterTheTimeout
bool posix_manual_reset_event_t::wait(std::int32_t timeout)
{
    // A deadline of now has passed: nothing to wait for.
    const bool waits = timeout != 0;
    const timespec deadline = waits ? DeadlineOf(timeout) : timespec{};
    int result = 0;
    {
        const locked_t lock(m_mutex, "wait for event failed (lock)");
        while (result == 0 && !m_signalled)
            result = waits ? ::pthread_cond_timedwait(&m_cond, &m_mutex, &deadline) : ETIMEDOUT;
        if (result == 0)
            return true;
    }
    if (result != ETIMEDOUT)
        Fail(result, "cannot wait for event");
    return false;
}

} // namespace posix
