// What do an event and a thread cost, next to a condition variable and to bare threads?
//
// All threads run on one processor: each wait of a pair that plays ping-pong then really hands over, whatever
// else the machine does.

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <sched.h>
#include <thread>

#include <boost/make_shared.hpp>
#include <boost/thread/thread.hpp>

#include "bench/support/figure.h"
#include "nelvo/logging/log.h"
#include "nelvo/logging/receiver/debug_log.h"
#include "nelvo/monitoring/thread_state.h"
#include "nelvo/synch/manual_reset_event.h"
#include "nelvo/synch/thread.h"

namespace
{

using namespace std::chrono_literals;

void StayOnOneProcessor()
{
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(static_cast<unsigned>(::sched_getcpu()), &one);
    ::sched_setaffinity(0, sizeof(one), &one);
}

class our_event_t
{
public:
    void Set() { m_event.set(); }
    void Reset() { m_event.reset(); }
    void Wait() { m_event.wait(-1); }

private:
    posix::posix_manual_reset_event_t m_event{false};
};

// The same promises: all wake, the flag stays, and whoever sets it holds the lock meanwhile.
class condition_event_t
{
public:
    void Set()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_set = true;
        m_condition.notify_all();
    }
    void Reset()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_set = false;
    }
    void Wait()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        while (!m_set)
            m_condition.wait(lock);
    }
    template <class Time>
    bool WaitUntil(Time deadline)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        while (!m_set)
            if (m_condition.wait_until(lock, deadline) == std::cv_status::timeout)
                return false;
        return true;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_condition;
    bool m_set = false;
};

class timed_condition_event_t : public condition_event_t
{
public:
    void Wait() { WaitUntil(std::chrono::system_clock::now() + 21 * 24h); }
};

// A thread that answers each ping.
template <class Event>
class partner_tt
{
public:
    partner_tt() : m_thread([this] { Answer(); }) {}
    ~partner_tt()
    {
        m_ends = true;
        m_ping.Set();
        m_thread.join();
    }
    partner_tt(const partner_tt&) = delete;
    partner_tt& operator=(const partner_tt&) = delete;

    const void* PingPong()
    {
        m_ping.Set();
        m_pong.Wait();
        m_pong.Reset();
        return this;
    }

private:
    void Answer()
    {
        for (;;)
        {
            m_ping.Wait();
            m_ping.Reset();
            if (m_ends)
                return;
            m_pong.Set();
        }
    }

    Event m_ping;
    Event m_pong;
    std::atomic<bool> m_ends{false};
    std::thread m_thread;
};

template <class Event>
auto PingPong()
{
    return [partner = std::make_shared<partner_tt<Event>>()] { return partner->PingPong(); };
}

// Each wait for an event has a deadline, and so has the goal's peer: what the system takes for a timer is no
// cost of ours. A condition without one is shown beside it.
void AddPingPong()
{
    constexpr double kGoal = 1.05;
    figure_t("event, ping-pong of two threads")
        .OfAllThreads()
        .Ours(PingPong<our_event_t>())
        .Against("std::condition_variable, deadline", kGoal, PingPong<timed_condition_event_t>())
        .Against("std::condition_variable", PingPong<condition_event_t>());
}

// Asking whether an event is set must not become a wait. The measure is the shortest wait that an event could
// be asked for instead, which sleeps; one whose deadline has passed, and which need not, is shown beside it.
void AddQuestion()
{
    constexpr double kGoal = 0.01;
    const auto ours = std::make_shared<posix::posix_manual_reset_event_t>(false);
    const auto other = std::make_shared<condition_event_t>();
    figure_t("event, wait of 0 ms")
        .Ours([ours] { return ours->wait(0); })
        .Against("wait of 1 ms", kGoal,
                 [other] { return other->WaitUntil(std::chrono::steady_clock::now() + 1ms); })
        .Against("wait until now", [other] { return other->WaitUntil(std::chrono::steady_clock::now()); });
}

void* EmptyBody(void* argument) { return argument; }

// From start to finish; the lines go to a receiver that swallows them.
void AddThread()
{
    logging::GetProcessLog()->set_receiver(boost::make_shared<logging::receiver::COutputDebugStringLog>());
    const auto by_std = []
    {
        std::thread(&EmptyBody, nullptr).join();
        return 0;
    };
    const auto by_boost = []
    {
        boost::thread(&EmptyBody, nullptr).join();
        return 0;
    };
    for (const bool logged : {true, false})
        figure_t(logged ? "thread, start to end" : "thread that is not logged, start to end")
            .OfAllThreads()
            .Ours(
                [logged]
                {
                    monitoring::CThreadStatesCollection::GetInstance()->SetLoggingEnabled(logged);
                    const synch::thread_t thread(&EmptyBody, nullptr, "bench");
                    return logged;
                })
            .Against("std::thread", by_std)
            .Against("boost::thread", by_boost);
}

} // namespace

void AddFigures()
{
    StayOnOneProcessor();
    AddPingPong();
    AddQuestion();
    AddThread();
}
