#pragma once

#include <cstdint>
#include <string>

#include <boost/shared_ptr.hpp>

#include "nelvo/monitoring/thread_state.h"

// A thread's place in the table of thread states (monitoring::CThreadStatesCollection) while its body runs,
// with a line in the log at either end, unless the table says that threads aren't logged:
//
//   Thread started. Thread id: 139872, parent id: 139840, role: backup
//   Thread finished. Role: 'backup'.
class CThreadMonitorRegistration
{
public:
    // On the thread that it registers. Logs before the thread stands in the table.
    CThreadMonitorRegistration(const std::string& role, std::uint64_t parent_id);

    // Logs when the thread has been removed, as far as that goes (CThreadStatesCollection::Remove). What
    // leaves the log then, which is no std::exception, ends the process.
    ~CThreadMonitorRegistration();

    CThreadMonitorRegistration(const CThreadMonitorRegistration&) = delete;
    CThreadMonitorRegistration& operator=(const CThreadMonitorRegistration&) = delete;

private:
    boost::shared_ptr<monitoring::CThreadState> m_state;
    boost::shared_ptr<monitoring::CThreadStatesCollection> m_collection;
};
