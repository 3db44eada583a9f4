#include "nelvo/io/fixed_cache.h"

#include <algorithm>
#include <cstring>

fixed_cache_t::fixed_cache_t(std::uint64_t size) : m_buffer(size) {}

void fixed_cache_t::Append(const char*& data, std::uint64_t& count)
{
    const std::uint64_t taken = std::min(count, GetSize() - m_used);
    if (taken == 0)
        return;
    std::memcpy(m_buffer.data() + m_used, data, taken);
    m_used += taken;
    data += taken;
    count -= taken;
}
