#include "tests/support/set_clock.h"

#include <atomic>
#include <cerrno>
#include <ctime>

#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace
{

constexpr std::uint64_t kSecond = 1'000'000'000;

std::atomic<bool> g_stands{false};
std::atomic<std::uint64_t> g_now{0};
std::atomic<int> g_readings{0};

} // namespace

set_clock_t::set_clock_t(std::uint64_t seconds, std::uint64_t nanoseconds)
{
    Set(seconds, nanoseconds);
    g_readings = 0;
    g_stands = true;
}

set_clock_t::~set_clock_t() { g_stands = false; }

void set_clock_t::Set(std::uint64_t seconds, std::uint64_t nanoseconds)
{
    g_now = seconds * kSecond + nanoseconds;
}

void set_clock_t::Advance(std::int64_t nanoseconds) { g_now += static_cast<std::uint64_t>(nanoseconds); }

int set_clock_t::TakeReadings() { return g_readings.exchange(0); }

extern "C" int clock_gettime(clockid_t clock, timespec* now) noexcept
{
    if (!g_stands || clock != CLOCK_REALTIME)
        return static_cast<int>(::syscall(SYS_clock_gettime, clock, now));
    ++g_readings;
    const std::uint64_t shown = g_now;
    now->tv_sec = static_cast<time_t>(shown / kSecond);
    now->tv_nsec = static_cast<long>(shown % kSecond);
    errno = ENOTUNIQ;
    return 0;
}

extern "C" int gettimeofday(timeval* now, void* zone) noexcept
{
    if (!g_stands)
        return static_cast<int>(::syscall(SYS_gettimeofday, now, zone));
    const std::uint64_t shown = g_now;
    now->tv_sec = static_cast<time_t>(shown / kSecond);
    now->tv_usec = static_cast<suseconds_t>(shown % kSecond / 1000);
    return 0;
}
