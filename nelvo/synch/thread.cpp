#include "nelvo/synch/thread.h"

#include <exception>

#include <pthread.h>

#include <boost/make_shared.hpp>

#include "nelvo/core/exc/rethrow.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/to_text.h"
#include "nelvo/logging/channels.h"
#include "nelvo/logging/log_exception.h"
#include "nelvo/monitoring/thread_registration.h"
#include "nelvo/synch/stop_events.h"
#include "nelvo/synch/thread_context.h"

namespace synch
{

struct thread_t::thread_exec_proc_t
{
    void* m_arg;
    proc_t m_proc;
    boost::shared_ptr<event_t> m_ptr_finished_event;
    std::string m_role;
    std::uint64_t m_parent_id;
    boost::shared_ptr<thread_id_t> m_ptr_thread_id;
    boost::shared_ptr<CThreadContext> m_ptr_parent_context;

    // The line on the end of the thread stands in the log before the failure, since the guards go first.
    // Kept: Thread.FailureStandsBehindTheFinishedLineAndWithoutAThreadLine
    void operator()() const
    {
        try
        {
            RunBody();
        }
        catch (std::exception& e)
        {
            logging::log_exception(e);
        }
        m_ptr_finished_event->set();
    }

    void RunBody() const
    {
        const auto context = CThreadContext::GetCurrent();
        context->SetParent(m_ptr_parent_context);
        m_ptr_thread_id->store(pthread_self(), std::memory_order_relaxed);
        const CThreadMonitorRegistration monitored(m_role, m_parent_id);
        const CStopEvtThreadRegistration stoppable(static_cast<std::int32_t>(m_parent_id));
        m_proc(m_arg);
    }
};

thread_t::thread_t(proc_t proc, void* arg, const std::string& role)
    : m_ptr_finished_event(boost::make_shared<event_t>(false)),
      m_ptr_thread_id(boost::make_shared<thread_id_t>(0))
{
    m_ptr_boost_thread = boost::make_shared<boost::thread>(
        thread_exec_proc_t{arg, proc, m_ptr_finished_event, role, pthread_self(), m_ptr_thread_id,
                           CThreadContext::GetCurrent()});
}

thread_t::~thread_t()
{
    try
    {
        // boost::thread::join refuses to wait for the calling thread by itself, but that is no failure here.
        if (m_ptr_boost_thread != nullptr &&
            m_ptr_thread_id->load(std::memory_order_relaxed) != pthread_self())
            m_ptr_boost_thread->join();
    }
    catch (std::exception& e)
    {
        logging::channels::default_log.error_exc(e, "%1", "~thread_t");
    }
}

boost::thread::id thread_t::get_id() const
{
    if (m_ptr_boost_thread == nullptr)
        throw exc::runtime_exc_t("Cannot get thread id. m_ptr_boost_thread not set.");
    return m_ptr_boost_thread->get_id();
}

bool thread_t::is_running() const { return !m_ptr_finished_event->wait(0); }

bool thread_t::is_running_checked() const
{
    if (m_ptr_boost_thread == nullptr)
        throw exc::runtime_exc_t("Cannot get thread id: m_ptr_boost_thread not set.");
    return is_running();
}

bool thread_t::wait(std::int32_t timeout) const
{
    const auto event = m_ptr_finished_event;
    return event->wait(timeout);
}

void thread_t::join(std::int32_t timeout) const
{
    const auto event = m_ptr_finished_event;
    const auto id = m_ptr_thread_id;
    try
    {
        if (!event->wait(timeout))
            throw exc::runtime_exc_t("Thread not finished within [%1] milliseconds.", timeout);
    }
    catch (std::exception& e)
    {
        const std::string text =
            id != nullptr ? util::ToText(id->load(std::memory_order_relaxed)) : "unknown";
        exc::RethrowWithContext(true, util::Format("Failed to wait for thread [%1] to finish.", text), e);
    }
}

} // namespace synch
