// A pool of threads that work off a queue. Each has a role, under which it stands in the log and in a dump of
// all threads, and the pool's stop event, which whatever runs on the thread can ask for:
//
//   thread_pool
//
// logs to standard output: the threads' starts and ends, two short jobs, and what the threads are doing in
// the midst of two jobs without end.

#include <deque>
#include <exception>
#include <functional>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>
#include <boost/thread/condition_variable.hpp>
#include <boost/thread/lock_guard.hpp>
#include <boost/thread/mutex.hpp>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/logging/progress_scope.h"
#include "nelvo/logging/receiver/log_start.h"
#include "nelvo/monitoring/thread_state.h"
#include "nelvo/synch/stop_events.h"
#include "nelvo/synch/thread.h"

namespace
{

using event_t = posix::posix_manual_reset_event_t;
using job_t = std::function<void()>;

const logging::log_channel_t pool_log("pool"); // NOLINT(cert-err58-cpp): there is memory at the start

class pool_t
{
public:
    explicit pool_t(int threads)
    {
        try
        {
            Start(threads);
        }
        catch (std::exception&)
        {
            Stop(); // those that have started, which are waited for
            throw;
        }
    }

    // Tells the jobs to stop, and leaves out those that have not begun. The threads are waited for.
    ~pool_t()
    {
        try
        {
            Stop();
        }
        catch (std::exception& e)
        {
            pool_log.error_exc(e, "At ~pool_t.");
        }
    }

    pool_t(const pool_t&) = delete;
    pool_t& operator=(const pool_t&) = delete;

    void Add(job_t job)
    {
        {
            const boost::lock_guard<boost::mutex> lock(m_mutex);
            m_jobs.push_back(std::move(job));
        }
        m_wake.notify_one();
    }

private:
    void Start(int threads)
    {
        for (int i = 1; i <= threads; ++i)
            m_threads.push_back(
                boost::make_shared<synch::thread_t>(&pool_t::Run, this, "worker " + std::to_string(i)));
    }

    void Stop()
    {
        {
            const boost::lock_guard<boost::mutex> lock(m_mutex);
            m_stop->set();
        }
        m_wake.notify_all();
    }

    static void* Run(void* pool)
    {
        static_cast<pool_t*>(pool)->Work();
        return nullptr;
    }

    // The stop event is set by hand: a thread inherits its creator's only where thread ids are small
    // (stop_events.h). It is taken away when the thread ends.
    void Work()
    {
        synch::CStopEvtCollection::GetInstance()->SetForCurrentThread(m_stop);
        while (const job_t job = Take())
        {
            try
            {
                job();
            }
            catch (std::exception& e)
            {
                pool_log.error_exc(e, "A job failed.");
            }
        }
    }

    // The next job, for which it waits; none if the pool ends.
    job_t Take()
    {
        boost::unique_lock<boost::mutex> lock(m_mutex);
        m_wake.wait(lock, [this] { return m_stop->wait(0) || !m_jobs.empty(); });
        if (m_stop->wait(0))
            return {};
        job_t job = std::move(m_jobs.front());
        m_jobs.pop_front();
        return job;
    }

    boost::mutex m_mutex; // guards the jobs
    boost::condition_variable m_wake;
    std::deque<job_t> m_jobs;
    const boost::shared_ptr<event_t> m_stop = boost::make_shared<event_t>(false);
    std::vector<boost::shared_ptr<synch::thread_t>> m_threads; // use all of the above, and end first
};

// Knows nothing of the pool: the thread has the event.
void WorkUntilStopped(event_t& begun)
{
    progress_scope_t scope(pool_log, "Working without end");
    begun.set();
    synch::CStopEvtCollection::GetInstance()->GetForCurrentThread()->wait(-1);
    scope.close_with("Stopped");
}

void UsePool()
{
    event_t first_begun(false);
    event_t second_begun(false);
    pool_t pool(2);
    pool.Add([] { pool_log.info("A short job"); });
    pool.Add([] { throw exc::runtime_exc_t("No such volume."); });
    pool.Add([&] { WorkUntilStopped(first_begun); });
    pool.Add([&] { WorkUntilStopped(second_begun); });
    first_begun.wait(-1);
    second_begun.wait(-1);

    // While the threads are at work: one that has ended can still stand in a dump (thread_state.h).
    monitoring::CThreadStatesCollection::GetInstance()->DumpToLog();
}

} // namespace

int main()
{
    try
    {
        logging::start_log("", false, false, false);
        UsePool();
        pool_log.info("All threads have ended");
    }
    catch (std::exception& e)
    {
        std::cerr << e.what() << std::endl;
        return 1;
    }
    return 0;
}
