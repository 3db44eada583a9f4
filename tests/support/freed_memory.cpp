#include "tests/support/freed_memory.h"

#include <array>
#include <cstring>

#include <gtest/gtest.h>

namespace
{

// No memory of the heap while some is being freed.
std::array<char, 4096> g_bytes;
const void* g_block = nullptr;
std::size_t g_size = 0;
bool g_freed = false;

} // namespace

void WatchFree(const void* block, std::size_t size)
{
    ASSERT_LE(size, g_bytes.size());
    g_block = block;
    g_size = size;
    g_freed = false;
}

std::string FreedBytes()
{
    EXPECT_TRUE(g_freed) << "still in use";
    return std::string(g_bytes.data(), g_freed ? g_size : 0);
}

// NOLINTBEGIN(clang-diagnostic-reserved-identifier): the linker's names.

extern "C" void __real_free(void* block);
extern "C" void __wrap_free(void* block);

extern "C" void __wrap_free(void* block)
{
    if (block != nullptr && block == g_block)
    {
        std::memcpy(g_bytes.data(), block, g_size);
        g_freed = true;
        g_block = nullptr;
    }
    __real_free(block);
}

// NOLINTEND(clang-diagnostic-reserved-identifier)
