#pragma once

// How much of its time one thread spends in one kind of operation, and how many bytes that moves. A cycle
// goes from one start to the next: it is busy from start to stop, idle until the next start. Its figures are
// added up by that next start, so that of the last stop nothing is counted yet.
//
// All times are microseconds of the real-time clock (clock_gettime(2)), as unsigned 64-bit numbers: one that
// is put back makes them wrap. A counter has no lock.

#include <cstdint>

#include <boost/shared_ptr.hpp>

namespace workload
{

class CTimeRatioCounter
{
public:
    // The owner, of whatever kind, is kept alive as long as the counter; it may be null.
    explicit CTimeRatioCounter(boost::shared_ptr<const void> owner);

    // Of two starts in a row the first counts.
    void Start();

    // Of two stops in a row the time of the first and the size of the last count. A stop before any start
    // makes the next start close a cycle that began in 1970, as busy time.
    // Kept: TimeRatioCounter.StopBeforeAnyStartCountsTheTimeSince1970
    void Stop(std::uint64_t size);
    void Stop();

    // The busy microseconds and the bytes of the closed cycles since the last call. The ratio stays.
    // Kept: TimeRatioCounter.TakeAndResetKeepsTheRatio
    void TakeAndReset(std::uint64_t& busy, std::uint64_t& bytes);

    // Busy time in percent of all time since the last reset, as of the last closed cycle; 0 after a cycle
    // that took no time, whatever the sums.
    // Kept: TimeRatioCounter.CycleWithoutTimeAddsItsBytesAndMakesTheRatioZero
    float GetRatio() const { return m_ratio; }

private:
    void CloseCycle(std::uint64_t now);

    enum class state_t : std::int32_t
    {
        kNew,
        kRunning,
        kStopped
    };

    boost::shared_ptr<const void> m_owner;
    state_t m_state = state_t::kNew;
    std::uint64_t m_start_us = 0;
    std::uint64_t m_stop_us = 0;
    std::uint64_t m_last_size = 0;
    std::uint64_t m_busy_us = 0;
    std::uint64_t m_total_us = 0;
    float m_ratio = 0;
    std::uint64_t m_bytes = 0;
};

} // namespace workload
