#include <string>

#include <boost/thread/lock_guard.hpp>

#include "nelvo/fs/file_utils.h"
#include "nelvo/logging/channels.h"
#include "nelvo/monitoring/thread_state.h"
#include "nelvo/posix/posix_file.h"

namespace monitoring
{

void CThreadState::DumpToLog() const
{
    logging::channels::default_log.info("Thread: %1. Role: %2.", GetShortThreadId(), m_role);
    for (const auto& trace : m_traces)
        logging::channels::default_log.info("    Function: %1. Time: %2 seconds ago.", trace->GetFunction(),
                                            trace->GetAgeSeconds());
}

void CThreadState::DumpToFile(const posix_file_ptr_t& file) const
{
    std::string text = "Thread: " + std::to_string(m_threadId) + ". " + "Role: " + m_role + "\r\n";
    for (const auto& trace : m_traces)
        text += "    Function: " + trace->GetFunction() +
                ". Time: " + std::to_string(trace->GetAgeSeconds()) + " seconds ago." + "\r\n";
    file->WriteBytes(static_cast<stream_size_t>(text.size()), text.data());
}

// Whether there is a file is asked without the lock. Between the test and the opening the file may vanish; it
// isn't created then either.
void CThreadStatesCollection::DumpToFile() const
{
    const std::string trace_file = GetTraceFile();
    if (!util::FileExists(trace_file))
        return;
    const boost::lock_guard<boost::recursive_mutex> lock(m_mutex);
    const posix_file_ptr_t file = posix::posix_file_t::OpenReadWrite(trace_file);
    file->set_size(0);
    for (const auto& [id, state] : m_states)
        state->DumpToFile(file);
}

void CThreadStatesCollection::DumpToLog() const
{
    const boost::lock_guard<boost::recursive_mutex> lock(m_mutex);
    for (const auto& [id, state] : m_states)
        state->DumpToLog();
}

} // namespace monitoring
