#include "tests/support/failing_memory.h"

#include <cstdlib>
#include <new>
#include <utility>

namespace
{

thread_local bool g_next_fails = false;

} // namespace

void FailNextAllocation() { g_next_fails = true; }

bool HasAllocationFailed() { return !std::exchange(g_next_fails, false); }

void* operator new(std::size_t size)
{
    if (std::exchange(g_next_fails, false))
        throw std::bad_alloc();
    void* const memory = std::malloc(size != 0 ? size : 1);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
