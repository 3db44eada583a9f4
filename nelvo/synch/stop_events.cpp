#include "nelvo/synch/stop_events.h"

#include <exception>

#include <boost/make_shared.hpp>
#include <boost/thread/lock_guard.hpp>

#include "nelvo/core/util/process_instance.h"
#include "nelvo/logging/channels.h"

namespace synch
{
namespace
{

using lock_t = boost::lock_guard<boost::mutex>;

} // namespace

boost::shared_ptr<CStopEvtCollection> CStopEvtCollection::GetInstance()
{
    return util::process_instance_tt<CStopEvtCollection>::Get(
        [] { return boost::make_shared<CStopEvtCollection>(); });
}

void CStopEvtCollection::InheritFrom(std::uint64_t thread_id)
{
    const lock_t lock(m_mutex);
    const auto found = m_events.find(thread_id);
    if (found != m_events.end())
        m_events[pthread_self()] = found->second;
}

void CStopEvtCollection::SetForCurrentThread(
    const boost::shared_ptr<posix::posix_manual_reset_event_t>& event)
{
    const lock_t lock(m_mutex);
    m_events[pthread_self()] = event;
}

void CStopEvtCollection::RemoveCurrentThread()
{
    const lock_t lock(m_mutex);
    m_events.erase(pthread_self());
}

boost::shared_ptr<posix::posix_manual_reset_event_t> CStopEvtCollection::GetForCurrentThread()
{
    const lock_t lock(m_mutex);
    const auto found = m_events.find(pthread_self());
    return found != m_events.end() ? found->second : nullptr;
}

} // namespace synch

CStopEvtThreadRegistration::CStopEvtThreadRegistration(std::int32_t parent_id)
    : m_collection(synch::CStopEvtCollection::GetInstance())
{
    m_collection->InheritFrom(static_cast<std::uint64_t>(std::int64_t{parent_id}));
}

CStopEvtThreadRegistration::~CStopEvtThreadRegistration()
{
    try
    {
        m_collection->RemoveCurrentThread();
    }
    catch (std::exception& e)
    {
        logging::channels::default_log.error_exc(e, "At ~CStopEvtThreadRegistration.");
    }
}
