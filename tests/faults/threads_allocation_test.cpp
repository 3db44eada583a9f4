// Threads, what they share and what is told of them, while memory runs out.

#include <atomic>
#include <cstdint>
#include <exception>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/monitoring/thread_counters.h"
#include "nelvo/monitoring/thread_registration.h"
#include "nelvo/synch/stop_events.h"
#include "nelvo/synch/thread.h"
#include "nelvo/synch/thread_context.h"
#include "tests/faults/allocation_sweep.h"
#include "tests/faults/swept_log.h"
#include "tests/support/temp_folder.h"

using event_t = posix::posix_manual_reset_event_t;
using monitoring::CThreadState;
using monitoring::CThreadStatesCollection;
using synch::CStopEvtCollection;
using synch::CThreadContext;

namespace
{

const std::string kRole = "a role whose name is not short";

void* CountUp(void* counter)
{
    ++*static_cast<std::atomic<int>*>(counter);
    return nullptr;
}

// What the work throws on a thread of its own.
void OnItsOwnThread(const std::function<void()>& work)
{
    std::exception_ptr failure;
    std::thread(
        [&]
        {
            try
            {
                work();
            }
            catch (...)
            {
                failure = std::current_exception();
            }
        })
        .join();
    if (failure != nullptr)
        std::rethrow_exception(failure);
}

// Ids and ages become N.
std::string WithoutNumbers(const std::string& text)
{
    std::string result;
    for (const char c : text)
    {
        const bool is_digit = c >= '0' && c <= '9';
        if (!is_digit || result.empty() || result.back() != 'N')
            result += is_digit ? 'N' : c;
    }
    return result;
}

} // namespace

// Who creates the thread hears of what its start has no memory for; what the thread has none for is logged,
// and the thread counts as finished.
TEST(ThreadsWithoutMemory, ThreadRunsOrThrowsOrCountsAsFinished)
{
    swept_log_t log;
    std::atomic<int> runs = 0;
    swept_operation_t operation = {[&]
                                   {
                                       const synch::thread_t thread(&CountUp, &runs, kRole);
                                       EXPECT_TRUE(thread.wait(-1));
                                   },
                                   [&]
                                   {
                                       log.Taken();
                                       return runs.exchange(0) == 1 ? "ran\n" : "";
                                   },
                                   "ran\n",
                                   {},
                                   true};
    operation.asking = asking_t::kAnyThread;
    SweepAllocations(operation);
}

TEST(ThreadsWithoutMemory, WaitThatFailsSaysSoOrThrowsBadAlloc)
{
    struct
    {
        event_t running{false};
        event_t go{false};
    } events;
    using events_t = decltype(events);
    const synch::thread_t thread(
        [](void* both) -> void*
        {
            static_cast<events_t*>(both)->running.set();
            static_cast<events_t*>(both)->go.wait(-1);
            return nullptr;
        },
        &events, kRole);
    EXPECT_TRUE(events.running.wait(-1));
    bool has_failed = false;
    SweepAllocations({[&]
                      {
                          has_failed = false;
                          try
                          {
                              thread.join(0);
                          }
                          catch (const std::exception& e)
                          {
                              if (std::string_view(e.what()).find("Thread not finished within [0]") != 0)
                                  throw;
                              has_failed = true;
                          }
                      },
                      [&] { return has_failed ? "not finished" : "finished"; }, "not finished"});
    events.go.set();
}

TEST(ThreadsWithoutMemory, ContextIsMadeOrThrows)
{
    bool is_there = false;
    swept_operation_t operation = {[&]
                                   {
                                       is_there = false;
                                       OnItsOwnThread(
                                           [&] { is_there = CThreadContext::GetCurrent() != nullptr; });
                                   },
                                   [&] { return is_there ? "made" : "not made"; }, "made", "not made"};
    operation.asking = asking_t::kAnyThread;
    SweepAllocations(operation);
}

TEST(ThreadsWithoutMemory, OwnerIsSetOrStays)
{
    CThreadContext context;
    const boost::thread::id id = boost::this_thread::get_id();
    SweepAllocations({[&] { context.SetOwnerThread(id); },
                      [&]
                      {
                          const bool is_set = context.GetOwnerThread() != nullptr;
                          context.ResetOwnerThread();
                          return is_set ? "set" : "none";
                      },
                      "set", "none"});
}

TEST(ThreadsWithoutMemory, EventIsMadeOrThrows)
{
    boost::shared_ptr<event_t> event;
    SweepAllocations({[&] { event = boost::make_shared<event_t>(true); },
                      [&]
                      {
                          const auto made = std::exchange(event, nullptr);
                          return made != nullptr && made->wait(0) ? "set" : "none";
                      },
                      "set", "none"});
}

TEST(ThreadsWithoutMemory, StopEventIsSetAndInheritedOrStays)
{
    CStopEvtCollection events;
    const auto event = boost::make_shared<event_t>(false);
    const auto result = [&]
    {
        const bool is_set = events.GetForCurrentThread() != nullptr;
        events.RemoveCurrentThread();
        return is_set ? "set" : "none";
    };
    SweepAllocations({[&] { events.SetForCurrentThread(event); }, result, "set", "none"});

    std::thread([&] { events.SetForCurrentThread(event); }).join();
    const std::uint64_t no_thread = 0;
    SweepAllocations({[&] { events.InheritFrom(no_thread); }, result, "none"});
}

TEST(ThreadsWithoutMemory, StopEventIsGivenUpByTheGuardWhateverHappens)
{
    const auto collection = CStopEvtCollection::GetInstance();
    const auto event = boost::make_shared<event_t>(false);
    SweepAllocations({[&]
                      {
                          const CStopEvtThreadRegistration guard(0);
                          collection->SetForCurrentThread(event);
                      },
                      [&] { return collection->GetForCurrentThread() == nullptr ? "given up" : "kept"; },
                      "given up", "given up"});
}

TEST(ThreadsWithoutMemory, ThreadIsRegisteredOrThrowsAndTheGuardEndsWithoutAFailure)
{
    swept_log_t log;
    const std::string started = "       | Thread started. Thread id: N, parent id: N, role: " + kRole + "\n";
    SweepAllocations({[&] { const CThreadMonitorRegistration guard(kRole, 7); },
                      [&] { return WithoutNumbers(log.Taken()); },
                      started + "       | Thread finished. Role: '" + kRole + "'.\n",
                      {},
                      true});

    boost::shared_ptr<CThreadMonitorRegistration> guard;
    const auto renew = [&] { guard = boost::make_shared<CThreadMonitorRegistration>(kRole, 7); };
    renew();
    log.Taken();
    SweepAllocations({[&] { [&]() noexcept { guard.reset(); }(); },
                      [&]
                      {
                          std::string lines = log.Taken();
                          renew();
                          log.Taken();
                          return lines;
                      },
                      "       | Thread finished. Role: '" + kRole + "'.\n",
                      {},
                      true});
}

TEST(ThreadsWithoutMemory, MarkIsPushedOrThrows)
{
    CThreadState state(kRole);
    swept_log_t log;
    SweepAllocations({[&]
                      {
                          state.PushTrace("Looking at the quick brown fox");
                          state.PopTrace();
                      },
                      [&]
                      {
                          state.DumpToLog();
                          return WithoutNumbers(log.Taken());
                      },
                      WithoutNumbers("       | Thread: " + std::to_string(state.GetShortThreadId()) +
                                     ". Role: " + kRole + ".\n")});
}

TEST(ThreadsWithoutMemory, DumpIsWrittenOrLosesLines)
{
    CThreadStatesCollection table;
    const auto state = boost::make_shared<CThreadState>(kRole);
    state->PushTrace("Looking at the quick brown fox");
    table.Add(state);
    swept_log_t log;
    SweepAllocations({[&] { [&]() noexcept { table.DumpToLog(); }(); },
                      [&] { return WithoutNumbers(log.Taken()); },
                      WithoutNumbers("       | Thread: " + std::to_string(state->GetShortThreadId()) +
                                     ". Role: " + kRole + ".\n") +
                          "       |     Function: Looking at the quick brown fox. Time: N seconds ago.\n",
                      {},
                      true});
}

TEST(ThreadsWithoutMemory, DumpGoesToTheFileOrThrows)
{
    const temp_folder_t folder;
    CThreadStatesCollection table;
    const auto state = boost::make_shared<CThreadState>(kRole);
    state->PushTrace("Looking at the quick brown fox");
    table.Add(state);
    const std::string path = folder / "a file whose name is not short";
    table.SetTraceFile(path);
    WriteFile(path + ".trace", "");
    SweepAllocations({[&] { table.DumpToFile(); }, [&] { return WithoutNumbers(ReadFile(path + ".trace")); },
                      "Thread: N. Role: " + kRole +
                          "\r\n    Function: Looking at the quick brown fox. Time: N seconds ago.\r\n"});
}

TEST(ThreadsWithoutMemory, TraceFileIsSetOrStays)
{
    CThreadStatesCollection table;
    SweepAllocations(
        {[&] { table.SetTraceFile("/a/path/that/is/not/short/at/all"); }, [] { return "set"; }, "set"});
}

TEST(ThreadsWithoutMemory, CounterIsMadeByTheFirstCallOrThrows)
{
    boost::shared_ptr<workload::CThreadCounters> counters;
    const auto renew = [&] { counters = boost::make_shared<workload::CThreadCounters>(); };
    renew();
    SweepAllocations({[&]
                      {
                          counters->Start();
                          counters->Stop(7);
                          counters->Start();
                      },
                      [&]
                      {
                          std::uint64_t busy = 0;
                          std::uint64_t bytes = 0;
                          counters->Collect(busy, bytes);
                          renew();
                          return std::to_string(bytes);
                      },
                      "7", "0"});
}
