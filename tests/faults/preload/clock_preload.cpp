// A wall clock for the tool, loaded before the C library. The variable CLOCK tells the time of the first
// reading, in seconds since 1970, and the milliseconds by which each reading is later than the one before:
//
//   CLOCK=2147483640:1000     the clock passes 2038-01-19 03:14:07 after a few readings
//
// Programs that the tool starts have the machine's own clock.

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace
{

bool g_stands = false;
long long g_milliseconds = 0;
long long g_step = 0;

__attribute__((constructor)) void ReadClock()
{
    const char* const clock = std::getenv("CLOCK");
    long long seconds = 0;
    if (clock == nullptr || std::sscanf(clock, "%lld:%lld", &seconds, &g_step) != 2)
        return;
    g_milliseconds = seconds * 1000;
    g_stands = true;
    ::unsetenv("CLOCK");
    ::unsetenv("LD_PRELOAD");
}

timespec Now()
{
    const timespec now = {static_cast<time_t>(g_milliseconds / 1000),
                          static_cast<long>(g_milliseconds % 1000 * 1'000'000)};
    g_milliseconds += g_step;
    return now;
}

} // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* now) noexcept
{
    if (!g_stands || clock != CLOCK_REALTIME)
        return static_cast<int>(::syscall(SYS_clock_gettime, clock, now));
    *now = Now();
    return 0;
}

extern "C" int gettimeofday(timeval* now, void*) noexcept
{
    timespec shown = {};
    ::clock_gettime(CLOCK_REALTIME, &shown);
    *now = {shown.tv_sec, shown.tv_nsec / 1000};
    return 0;
}

extern "C" time_t time(time_t* now) noexcept
{
    timespec shown = {};
    ::clock_gettime(CLOCK_REALTIME, &shown);
    if (now != nullptr)
        *now = shown.tv_sec;
    return shown.tv_sec;
}
