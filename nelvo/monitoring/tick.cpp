#include "nelvo/monitoring/tick.h"

#include <sys/time.h>

namespace monitoring
{

std::uint32_t GetTickMs()
{
    timeval now = {};
    ::gettimeofday(&now, nullptr);
    return static_cast<std::uint32_t>(now.tv_sec) * 1000 + static_cast<std::uint32_t>(now.tv_usec / 1000);
}

} // namespace monitoring
