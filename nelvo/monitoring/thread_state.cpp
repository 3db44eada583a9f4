#include "nelvo/monitoring/thread_state.h"

#include <utility>

#include <pthread.h>

#include <boost/make_shared.hpp>
#include <boost/thread/lock_guard.hpp>

#include "nelvo/core/util/process_instance.h"
#include "nelvo/monitoring/tick.h"

namespace monitoring
{
namespace
{

using lock_t = boost::lock_guard<boost::recursive_mutex>;
using instance_t = util::process_instance_tt<CThreadStatesCollection>;

// Before main, and so before there are threads. An exception may end the program there.
const bool kPrepared = instance_t::Prepare(); // NOLINT(cert-err58-cpp)

boost::shared_ptr<CThreadState> StateOfThisThread()
{
    return CThreadStatesCollection::GetInstance()->GetCurrentState();
}

} // namespace

CThreadTrace::CThreadTrace(std::string function) : m_startTick(GetTickMs()), m_function(std::move(function))
{
}

std::uint32_t CThreadTrace::GetAgeSeconds() const { return (GetTickMs() - m_startTick) / 1000; }

CThreadState::CThreadState(std::string role) : m_role(std::move(role)), m_threadId(pthread_self()) {}

void CThreadState::PushTrace(std::string function)
{
    m_traces.push_back(boost::make_shared<CThreadTrace>(std::move(function)));
}

void CThreadState::PopTrace() { m_traces.pop_back(); }

boost::shared_ptr<CThreadStatesCollection> CThreadStatesCollection::GetInstance()
{
    return instance_t::Get([] { return boost::make_shared<CThreadStatesCollection>(); });
}

void CThreadStatesCollection::Add(const boost::shared_ptr<CThreadState>& state)
{
    const lock_t lock(m_mutex);
    m_states[state->GetThreadId()] = state;
}

void CThreadStatesCollection::Remove(const boost::shared_ptr<CThreadState>& state)
{
    const lock_t lock(m_mutex);
    m_states.erase(static_cast<std::uint64_t>(std::int64_t{state->GetShortThreadId()}));
}

boost::shared_ptr<CThreadState> CThreadStatesCollection::GetCurrentState() const
{
    const lock_t lock(m_mutex);
    const auto found = m_states.find(pthread_self());
    return found != m_states.end() ? found->second : nullptr;
}

void CThreadStatesCollection::SetTraceFile(const std::string& name)
{
    const lock_t lock(m_mutex);
    const boost::lock_guard<boost::mutex> name_lock(m_traceFileMutex);
    m_traceFile = name.empty() ? name : name + ".trace";
}

std::string CThreadStatesCollection::GetTraceFile() const
{
    const boost::lock_guard<boost::mutex> name_lock(m_traceFileMutex);
    return m_traceFile;
}

void PushThreadMark(const std::string& function)
{
    if (const auto state = StateOfThisThread())
        state->PushTrace(function);
}

void PopThreadMark()
{
    if (const auto state = StateOfThisThread())
        state->PopTrace();
}

} // namespace monitoring
