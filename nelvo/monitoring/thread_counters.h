#pragma once

// One counter (CTimeRatioCounter) for each thread that takes part in one kind of operation. The library
// counts each read(2) and write(2) of a file.

#include <cstdint>
#include <map>

#include <boost/shared_ptr.hpp>
#include <boost/thread/mutex.hpp>

#include "nelvo/monitoring/time_ratio_counter.h"

namespace workload
{

// Any thread may use it at any time. The counter of a thread that ended stays, and serves a later thread with
// the same id. A lock that fails throws boost::lock_error.
class CThreadCounters
{
public:
    // Start and stop the calling thread's counter, which the first call makes; later calls take no memory.
    // The result is that of a system call: below 0 it counts as no bytes, and the time counts all the same.
    void Start();
    void Stop(std::int64_t result);

    // The most microseconds that one thread was busy and the bytes of all threads, since the last call
    // (CTimeRatioCounter::TakeAndReset).
    void Collect(std::uint64_t& busy, std::uint64_t& bytes);

private:
    CTimeRatioCounter& CounterOfThisThread();

    boost::mutex m_mutex;
    std::map<std::uint64_t, boost::shared_ptr<CTimeRatioCounter>> m_counters; // by pthread_self()
};

// Those of all files of the process. They are never released: the last lines of a log go through them.
CThreadCounters& ReadCounters();
CThreadCounters& WriteCounters();

} // namespace workload
