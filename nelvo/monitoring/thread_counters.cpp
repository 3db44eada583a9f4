#include "nelvo/monitoring/thread_counters.h"

#include <algorithm>
#include <utility>

#include <pthread.h>

#include <boost/make_shared.hpp>
#include <boost/thread/lock_guard.hpp>

#include "nelvo/synch/thread_context.h"

namespace workload
{
namespace
{

using lock_t = boost::lock_guard<boost::mutex>;

} // namespace

void CThreadCounters::Start()
{
    const lock_t lock(m_mutex);
    CounterOfThisThread().Start();
}

void CThreadCounters::Stop(std::int64_t result)
{
    const lock_t lock(m_mutex);
    CounterOfThisThread().Stop(result < 0 ? 0 : static_cast<std::uint64_t>(result));
}

void CThreadCounters::Collect(std::uint64_t& busy, std::uint64_t& bytes)
{
    busy = 0;
    bytes = 0;
    const lock_t lock(m_mutex);
    for (const auto& [thread, counter] : m_counters)
    {
        std::uint64_t thread_busy = 0;
        std::uint64_t thread_bytes = 0;
        counter->TakeAndReset(thread_busy, thread_bytes);
        busy = std::max(busy, thread_busy);
        bytes += thread_bytes;
    }
}

CTimeRatioCounter& CThreadCounters::CounterOfThisThread()
{
    const auto thread = pthread_self();
    const auto found = m_counters.find(thread);
    if (found != m_counters.end())
        return *found->second;
    auto counter =
        boost::make_shared<CTimeRatioCounter>(synch::CThreadContext::GetCurrent()->GetOwnerThread());
    return *m_counters.emplace(thread, std::move(counter)).first->second;
}

CThreadCounters& ReadCounters()
{
    static auto& counters = *new CThreadCounters;
    return counters;
}

CThreadCounters& WriteCounters()
{
    static auto& counters = *new CThreadCounters;
    return counters;
}

} // namespace workload
