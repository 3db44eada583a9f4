#pragma once

// A flag that stays set until it is reset, and on which any number of threads can wait. Held by a shared
// pointer, and safe for any number of threads.
//
//   posix::posix_manual_reset_event_t done(false);
//   if (!done.wait(5000)) ...       // not set within 5 s
//
// A failure is a boost::system::system_error of the system category with one of these texts: "cannot create
// event (mutex)", "cannot create event (condition)", "cannot signal event (lock)", "cannot signal event",
// "cannot reset event", "wait for event failed (lock)", "cannot wait for event".

#include <cstdint>

#include <pthread.h>

namespace posix
{

class posix_manual_reset_event_t
{
public:
    // A failure carries errno, although the POSIX calls return their code; all others carry the call's
    // result.
    // Kept: ManualResetEventCalls.CreationFailureCarriesErrnoInsteadOfTheResult
    explicit posix_manual_reset_event_t(bool signalled);
    ~posix_manual_reset_event_t();
    posix_manual_reset_event_t(const posix_manual_reset_event_t&) = delete;
    posix_manual_reset_event_t& operator=(const posix_manual_reset_event_t&) = delete;

    // Wakes all who wait.
    void set();
    void reset();

    // Whether the event was seen set within the timeout, in ms; -1 is 21 days, the longest wait there is. The
    // state stays as it is; 0 just reads it. The deadline is one of the wall clock (pthread_cond_timedwait(3)
    // on the real-time clock): a clock that is put back makes the wait longer. Any other number below 0 fails
    // or times out, as the clock has it.
    // Kept: ManualResetEventCalls.LongestWaitEndsAfter21Days
    bool wait(std::int32_t timeout);

private:
    bool m_signalled;
    pthread_mutex_t m_mutex;
    pthread_cond_t m_cond;
};

} // namespace posix
