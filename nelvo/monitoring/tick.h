#pragma once

#include <cstdint>

namespace monitoring
{

// The wall clock in ms, cut to 32 bits: gettimeofday(2)'s seconds times 1000, plus its microseconds divided
// by 1000. It wraps after about 49.7 days and follows every change of the clock. A duration is the difference
// of two ticks in unsigned 32-bit arithmetic.
std::uint32_t GetTickMs();

} // namespace monitoring
