#include "nelvo/crypto/sec_allocator.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/freed_memory.h"
#include "tests/support/made_secret.h"

using namespace std::string_literals;
using crypto::sec_allocator_t;

using allocator_t = sec_allocator_t<char>;
using traits_t = std::allocator_traits<allocator_t>;

TEST(SecAllocator, FreedMemoryHoldsZerosOnly)
{
    allocator_t allocator;
    char* const block = allocator.allocate(6);
    MakeSecret(block, 6);
    WatchFree(block, 6);
    allocator.deallocate(block, 6);
    EXPECT_EQ("\0\0\0\0\0\0"s, FreedBytes());
}

TEST(SecAllocator, WipesEachByteOfLargerValues)
{
    sec_allocator_t<std::uint32_t> allocator;
    std::uint32_t* const block = allocator.allocate(2);
    std::fill_n(block, 2, 0xffffffffU);
    WatchFree(block, 8);
    allocator.deallocate(block, 2);
    EXPECT_EQ("\0\0\0\0\0\0\0\0"s, FreedBytes());
}

TEST(SecAllocator, NewMemoryIsZero)
{
    allocator_t allocator;
    char* const block = allocator.allocate(1000);
    EXPECT_EQ(1000, std::count(block, block + 1000, 0));
    allocator.deallocate(block, 1000);
}

TEST(SecAllocator, NothingIsABlockToo)
{
    allocator_t allocator;
    char* const block = allocator.allocate(0);
    EXPECT_NE(nullptr, block);
    allocator.deallocate(block, 0);
}

TEST(SecAllocator, ServesAContainerAndCleansUpBehindIt)
{
    std::vector<char, allocator_t> bytes(6);
    MakeSecret(bytes.data(), 6);
    WatchFree(bytes.data(), 6);
    bytes.resize(bytes.capacity() + 1);
    EXPECT_EQ("\0\0\0\0\0\0"s, FreedBytes());
}

TEST(SecAllocator, AnyServesAnyOthersMemory)
{
    EXPECT_TRUE(traits_t::is_always_equal::value);
    EXPECT_TRUE(allocator_t() == allocator_t());
    EXPECT_FALSE(allocator_t() != allocator_t());
    const traits_t::rebind_alloc<int> rebound{allocator_t()};
    EXPECT_TRUE(allocator_t(rebound) == allocator_t());
}

TEST(SecAllocator, MoreThanThereIsIsABadAlloc)
{
    // Volatile, so that the compiler does not see what is wrong here.
    const volatile std::size_t most = std::numeric_limits<std::size_t>::max();
    EXPECT_THROW(allocator_t().allocate(most), std::bad_alloc);
    EXPECT_THROW(sec_allocator_t<std::uint64_t>().allocate(most / 4), std::bad_alloc);
}
