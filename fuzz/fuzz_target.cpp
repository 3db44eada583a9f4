// The linker puts __wrap_malloc and its like in the places of malloc and its like, by which the byte arrays
// are allocated: the optimiser makes a realloc of nothing a malloc.

#include "fuzz/fuzz_target.h"

namespace
{

constexpr std::size_t kMost = std::size_t{1} << 20U;

thread_local bool g_limited = false;

} // namespace

fuzz::limit_t::limit_t() : m_outer(g_limited) { g_limited = true; }
fuzz::limit_t::~limit_t() { g_limited = m_outer; }

// NOLINTBEGIN(clang-diagnostic-reserved-identifier): the linker's names
extern "C" void* __real_malloc(std::size_t size);

extern "C" void* __wrap_malloc(std::size_t size)
{
    return g_limited && size > kMost ? nullptr : __real_malloc(size);
}

extern "C" void* __real_calloc(std::size_t count, std::size_t size);

extern "C" void* __wrap_calloc(std::size_t count, std::size_t size)
{
    return g_limited && size != 0 && count > kMost / size ? nullptr : __real_calloc(count, size);
}

extern "C" void* __real_realloc(void* block, std::size_t size);

extern "C" void* __wrap_realloc(void* block, std::size_t size)
{
    return g_limited && size > kMost ? nullptr : __real_realloc(block, size);
}
// NOLINTEND(clang-diagnostic-reserved-identifier)

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return std::malloc(size != 0 ? size : 1);
}

void* operator new(std::size_t size)
{
    void* const memory = operator new(size, std::nothrow);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::Try(data, size);
    return 0;
}
