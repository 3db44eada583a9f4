#include "tests/support/failing_memory.h"

#include <cerrno>
#include <cstdlib>
#include <new>
#include <utility>

namespace
{

thread_local bool g_next_fails = false;
bool g_changes_errno = false;

} // namespace

void FailNextAllocation() { g_next_fails = true; }

bool HasAllocationFailed() { return !std::exchange(g_next_fails, false); }

bool ChangeErrnoWithMemory()
{
    g_changes_errno = true;
    return true;
}

void* operator new(std::size_t size)
{
    if (std::exchange(g_next_fails, false))
        throw std::bad_alloc();
    void* const memory = std::malloc(size != 0 ? size : 1);
    if (memory == nullptr)
        throw std::bad_alloc();
    if (g_changes_errno)
        errno = ENOTUNIQ;
    return memory;
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
