#include "nelvo/monitoring/thread_registration.h"

#include <boost/make_shared.hpp>

#include "nelvo/logging/channels.h"

CThreadMonitorRegistration::CThreadMonitorRegistration(const std::string& role, std::uint64_t parent_id)
    : m_state(boost::make_shared<monitoring::CThreadState>(role)),
      m_collection(monitoring::CThreadStatesCollection::GetInstance())
{
    if (m_collection->IsLoggingEnabled())
        logging::channels::default_log.info("Thread started. Thread id: %1, parent id: %2, role: %3",
                                            m_state->GetThreadId(), parent_id, role);
    m_collection->Add(m_state);
}

CThreadMonitorRegistration::~CThreadMonitorRegistration()
{
    m_collection->Remove(m_state);
    if (m_collection->IsLoggingEnabled())
        logging::channels::default_log.info("Thread finished. Role: '%1'.", m_state->GetRole());
}
