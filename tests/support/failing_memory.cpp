#include "tests/support/failing_memory.h"

#include <cerrno>
#include <cstdlib>
#include <new>
#include <utility>

namespace
{

// How many allocations are left up to the one that fails; 0 if none does.
thread_local std::size_t g_left = 0;
bool g_changes_errno = false;

} // namespace

void FailNextAllocation(std::size_t after) { g_left = after + 1; }

bool HasAllocationFailed() { return std::exchange(g_left, 0) == 0; }

bool ChangeErrnoWithMemory()
{
    g_changes_errno = true;
    return true;
}

void* operator new(std::size_t size)
{
    if (g_left != 0 && --g_left == 0)
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
