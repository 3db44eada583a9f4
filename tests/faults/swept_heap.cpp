#include "tests/faults/swept_heap.h"

#include <atomic>
#include <cerrno>
#include <mutex>
#include <new>
#include <pthread.h>
#include <unordered_set>

#include "tests/support/failing_memory.h"

// NOLINTBEGIN(clang-diagnostic-reserved-identifier): the linker's names.

extern "C" void* __real_malloc(std::size_t size);
extern "C" void* __real_calloc(std::size_t count, std::size_t size);
extern "C" void* __real_realloc(void* block, std::size_t size);
extern "C" void __real_free(void* block);
extern "C" void* __wrap_malloc(std::size_t size);
extern "C" void* __wrap_calloc(std::size_t count, std::size_t size);
extern "C" void* __wrap_realloc(void* block, std::size_t size);
extern "C" void __wrap_free(void* block);

namespace
{

std::atomic<bool> g_short = false;
std::atomic<std::size_t> g_after;
std::atomic<shortage_t> g_shortage;
std::atomic<asking_t> g_asking;
std::atomic<pthread_t> g_thread;
std::atomic<std::size_t> g_asked;
std::atomic<std::size_t> g_failed;

bool IsRefused()
{
    if (!g_short || (g_asking == asking_t::kThisThread && g_thread != ::pthread_self()))
        return false;
    const std::size_t before = g_asked++;
    if (before < g_after || (before > g_after && g_shortage == shortage_t::kOfOne))
        return false;
    ++g_failed;
    errno = ENOMEM;
    return true;
}

// Takes its memory past what is watched here.
template <class T>
struct unseen_allocator_t
{
    using value_type = T;

    unseen_allocator_t() = default;
    template <class Other>
    // NOLINTNEXTLINE(google-explicit-constructor): what the allocator requirements ask for
    unseen_allocator_t(const unseen_allocator_t<Other>&) noexcept
    {
    }

    // NOLINTNEXTLINE(bugprone-sizeof-expression): one of the types is a pointer
    T* allocate(std::size_t count) { return static_cast<T*>(__real_malloc(count * sizeof(T))); }
    void deallocate(T* block, std::size_t) { __real_free(block); }

    friend bool operator==(const unseen_allocator_t&, const unseen_allocator_t&) { return true; }
    friend bool operator!=(const unseen_allocator_t&, const unseen_allocator_t&) { return false; }
};

// Built by the first allocation, and never destroyed.
struct blocks_t
{
    std::mutex mutex;
    std::unordered_set<void*, std::hash<void*>, std::equal_to<void*>, unseen_allocator_t<void*>> in_use;
};

blocks_t& Blocks()
{
    static blocks_t& blocks = *new (__real_malloc(sizeof(blocks_t))) blocks_t;
    return blocks;
}

void* Noted(void* block)
{
    if (block != nullptr)
    {
        const std::lock_guard<std::mutex> lock(Blocks().mutex);
        Blocks().in_use.insert(block);
    }
    return block;
}

// Before the block is given back: another thread may get it next. False for one that came from elsewhere.
bool Forget(void* block)
{
    const std::lock_guard<std::mutex> lock(Blocks().mutex);
    return Blocks().in_use.erase(block) != 0;
}

} // namespace

void BeginShortage(std::size_t after, shortage_t shortage, asking_t asking)
{
    // Not to have another fail, but to have the linker take this operator new, also where there is a
    // sanitizer's.
    HasAllocationFailed();
    g_after = after;
    g_shortage = shortage;
    g_asking = asking;
    g_thread = ::pthread_self();
    g_asked = 0;
    g_failed = 0;
    g_short = true;
}

shortage_end_t EndShortage()
{
    g_short = false;
    return {g_asked, g_failed};
}

std::size_t BlocksInUse()
{
    const std::lock_guard<std::mutex> lock(Blocks().mutex);
    return Blocks().in_use.size();
}

extern "C" void* __wrap_malloc(std::size_t size)
{
    return IsRefused() ? nullptr : Noted(__real_malloc(size));
}

extern "C" void* __wrap_calloc(std::size_t count, std::size_t size)
{
    return IsRefused() ? nullptr : Noted(__real_calloc(count, size));
}

extern "C" void* __wrap_realloc(void* block, std::size_t size)
{
    if (IsRefused())
        return nullptr;
    const bool was_noted = block != nullptr && Forget(block);
    void* const grown = __real_realloc(block, size);
    if (grown == nullptr && was_noted)
        Noted(block);
    return Noted(grown);
}

extern "C" void __wrap_free(void* block)
{
    if (block != nullptr)
        Forget(block);
    __real_free(block);
}

// NOLINTEND(clang-diagnostic-reserved-identifier)
