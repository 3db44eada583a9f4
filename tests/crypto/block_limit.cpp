#include "tests/crypto/block_limit.h"

#include <atomic>
#include <cstdint>

namespace
{

std::atomic<std::size_t> g_most = SIZE_MAX;

} // namespace

block_limit_t::block_limit_t(std::size_t most) : m_before(g_most.exchange(most)) {}

block_limit_t::~block_limit_t() { g_most = m_before; }

// NOLINTBEGIN(clang-diagnostic-reserved-identifier): the linker's names.

extern "C" void* __real_calloc(std::size_t count, std::size_t size);
extern "C" void* __wrap_calloc(std::size_t count, std::size_t size);

extern "C" void* __wrap_calloc(std::size_t count, std::size_t size)
{
    return size != 0 && count > g_most / size ? nullptr : __real_calloc(count, size);
}

// NOLINTEND(clang-diagnostic-reserved-identifier)
