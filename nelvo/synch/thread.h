#pragma once

// A thread with a role, a creator, and an end that can be waited for with a timeout.
//
//   synch::thread_t reader(&ReadVolumes, &volumes, "reader");
//   if (!reader.wait(5000)) ...       // still busy after 5 s
//
// Its start and end stand in the log, it has a place in the table of thread states and shares its creator's
// stop event and context (CThreadMonitorRegistration, CStopEvtThreadRegistration, CThreadContext).
//
// A std::exception that leaves the body stands in the log as an error, and the thread counts as finished: no
// failure reaches those who wait. Any other exception is not caught, and nobody is told that the thread
// ended.

#include <atomic>
#include <cstdint>
#include <string>

#include <boost/shared_ptr.hpp>
#include <boost/thread/thread.hpp>

#include "nelvo/synch/manual_reset_event.h"

namespace synch
{

class thread_t
{
public:
    using proc_t = void* (*)(void*);

    // Starts the thread, which calls the body with the argument; what the body returns is ignored. The body
    // may run before the constructor has returned. If the system gives no thread, throws
    // boost::thread_resource_error with code 11 (EAGAIN).
    thread_t(proc_t proc, void* arg, const std::string& role);

    // Waits for the end of the system's thread for as long as it takes, unless called on that thread, which
    // then goes on by itself. Logs a failure, with "~thread_t". It is an interruption point of Boost, and an
    // interruption ends the process.
    ~thread_t();

    thread_t(const thread_t&) = delete;
    thread_t& operator=(const thread_t&) = delete;

    // Throws exc::runtime_exc_t with "Cannot get thread id. m_ptr_boost_thread not set." if the body asks
    // while the constructor has yet to take over the thread.
    boost::thread::id get_id() const;

    // Whether the body has not ended yet. Throws what the event throws (manual_reset_event.h). The checked
    // form fails like get_id, and speaks of the id too, with a colon in place of the full stop.
    // Kept: ThreadCalls.BodyThatOutrunsTheConstructorHasNoThreadYet
    bool is_running() const;
    bool is_running_checked() const;

    // Whether the body ended within the timeout, in ms; -1 is 21 days. The system's thread may still be about
    // to end. Throws what the event throws.
    bool wait(std::int32_t timeout) const;

    // As wait, but a timeout is exc::runtime_exc_t with "Thread not finished within [<timeout>]
    // milliseconds." All failures get the marked context "Failed to wait for thread [<id>] to finish.", with
    // the id 0 if the thread has not run yet.
    void join(std::int32_t timeout) const;

private:
    struct thread_exec_proc_t;
    using event_t = posix::posix_manual_reset_event_t;
    using thread_id_t = std::atomic<std::uint64_t>; // pthread_self(), 0 until the thread runs

    boost::shared_ptr<event_t> m_ptr_finished_event;
    boost::shared_ptr<thread_id_t> m_ptr_thread_id;
    boost::shared_ptr<boost::thread> m_ptr_boost_thread;
};

} // namespace synch
