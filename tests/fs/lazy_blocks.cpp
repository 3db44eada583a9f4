// Large blocks come from the kernel itself, which gives a page only when it is touched, so that the memory
// for a false length costs nothing in any build: the sanitizers' allocators take a second for each gibibyte.
// The linker puts what wraps in the place of calloc and free. A thread frees the large blocks that it took.

#include <algorithm>
#include <array>
#include <cstddef>

#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{

constexpr std::size_t kLargeSize = std::size_t{16} * 1024 * 1024;

struct block_t
{
    void* begin;
    std::size_t size;
};

// Those that begin nowhere are free.
thread_local std::array<block_t, 8> g_blocks{};

block_t* Find(const void* begin)
{
    const auto is_it = [begin](const block_t& block) { return block.begin == begin; };
    return std::find_if(g_blocks.begin(), g_blocks.end(), is_it);
}

// Not by mmap and munmap, which the sanitizers watch.
void* Map(std::size_t size)
{
    block_t* const block = Find(nullptr);
    if (block == g_blocks.end())
        return nullptr;
    const long address = ::syscall(SYS_mmap, nullptr, size, PROT_READ | PROT_WRITE,
                                   MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0L);
    if (address == -1)
        return nullptr;
    *block = {reinterpret_cast<void*>(address), size};
    return block->begin;
}

} // namespace

extern "C" void* TakeABlock(std::size_t count, std::size_t size) __asm__("__real_calloc");
extern "C" void* TakeOrMap(std::size_t count, std::size_t size) __asm__("__wrap_calloc");
extern "C" void FreeABlock(void* memory) __asm__("__real_free");
extern "C" void FreeOrUnmap(void* memory) __asm__("__wrap_free");

void* TakeOrMap(std::size_t count, std::size_t size)
{
    return size == 1 && count >= kLargeSize ? Map(count) : TakeABlock(count, size);
}

void FreeOrUnmap(void* memory)
{
    block_t* const block = memory != nullptr ? Find(memory) : g_blocks.end();
    if (block == g_blocks.end())
        return FreeABlock(memory);
    ::syscall(SYS_munmap, block->begin, block->size);
    *block = {};
}
