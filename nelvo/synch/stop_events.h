#pragma once

// Which event asks which thread to stop. A thread that synch::thread_t starts is meant to share its creator's
// event, so that one event can serve a whole tree of threads.

#include <cstdint>
#include <map>

#include <boost/shared_ptr.hpp>
#include <boost/thread/mutex.hpp>

#include "nelvo/synch/manual_reset_event.h"

namespace synch
{

// Any thread may use it at any time. A lock that fails throws boost::lock_error.
class CStopEvtCollection
{
public:
    // The one of the process (process_instance.h).
    static boost::shared_ptr<CStopEvtCollection> GetInstance();

    // Gives the calling thread the event of another one, in place of its own. Nothing changes if the other
    // has none.
    void InheritFrom(std::uint64_t thread_id);

    // The calling thread's event. Set replaces an earlier one; Get gives an empty pointer if there is none.
    void SetForCurrentThread(const boost::shared_ptr<posix::posix_manual_reset_event_t>& event);
    void RemoveCurrentThread();
    boost::shared_ptr<posix::posix_manual_reset_event_t> GetForCurrentThread();

private:
    boost::mutex m_mutex;
    std::map<std::uint64_t, boost::shared_ptr<posix::posix_manual_reset_event_t>>
        m_events; // by pthread_self()
};

} // namespace synch

// Gives a new thread its parent's stop event, and takes the thread's event away when it ends.
class CStopEvtThreadRegistration
{
public:
    // The id is the low half of the parent's, and is widened with its sign: where the parent's doesn't fit
    // into 32 bits nothing is inherited, unless another thread has the id that comes of it.
    // Kept: StopEvtThreadRegistration.InheritsNothingFromAParentWhoseIdIsWider
    explicit CStopEvtThreadRegistration(std::int32_t parent_id);

    // Logs a failure, with "At ~CStopEvtThreadRegistration.".
    ~CStopEvtThreadRegistration();

    CStopEvtThreadRegistration(const CStopEvtThreadRegistration&) = delete;
    CStopEvtThreadRegistration& operator=(const CStopEvtThreadRegistration&) = delete;

private:
    boost::shared_ptr<synch::CStopEvtCollection> m_collection;
};
