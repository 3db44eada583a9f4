#include "nelvo/monitoring/time_ratio_counter.h"

#include <ctime>
#include <utility>

namespace workload
{
namespace
{

std::uint64_t NowUs()
{
    timespec now = {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000 +
           static_cast<std::uint64_t>(now.tv_nsec) / 1000;
}

} // namespace

CTimeRatioCounter::CTimeRatioCounter(boost::shared_ptr<const void> owner) : m_owner(std::move(owner)) {}

void CTimeRatioCounter::Start()
{
    if (m_state == state_t::kRunning)
        return;
    const std::uint64_t now = NowUs();
    if (m_state == state_t::kStopped)
        CloseCycle(now);
    m_start_us = now;
    m_state = state_t::kRunning;
}

void CTimeRatioCounter::CloseCycle(std::uint64_t now)
{
    const std::uint64_t running = m_stop_us - m_start_us;
    const std::uint64_t cycle = now - m_stop_us + running;
    m_bytes += m_last_size;
    m_ratio = 0;
    if (cycle == 0)
        return;
    m_total_us += cycle;
    m_busy_us += running;
    m_ratio = static_cast<float>(static_cast<double>(m_busy_us) * 100 / static_cast<double>(m_total_us));
}

void CTimeRatioCounter::Stop(std::uint64_t size)
{
    m_last_size = size;
    Stop();
}

void CTimeRatioCounter::Stop()
{
    if (m_state != state_t::kStopped)
        m_stop_us = NowUs();
    m_state = state_t::kStopped;
}

void CTimeRatioCounter::TakeAndReset(std::uint64_t& busy, std::uint64_t& bytes)
{
    busy = std::exchange(m_busy_us, 0);
    bytes = std::exchange(m_bytes, 0);
    m_total_us = 0;
}

} // namespace workload
