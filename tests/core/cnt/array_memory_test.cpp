#include "nelvo/core/cnt/array.h"

#include <new>

#include <gtest/gtest.h>

#include "tests/core/cnt/little_memory.h"
#include "tests/core/cnt/resident_pages.h"

namespace
{

constexpr std::size_t kGiB = 1073741824;

} // namespace

// One page for the use, and one to which the heap writes its own.

TEST(ArrayMemory, LargePlainArrayTakesMemoryForWhatIsUsedOfIt)
{
    cnt::plain_array_t array(kGiB);
    array[kGiB / 2] = 'x';
    EXPECT_GE(2u, ResidentPages(array));
}

TEST(ArrayMemory, GrowingTouchesTheOldBytesAlone)
{
    cnt::plain_array_t array(16);
    array.resize(kGiB);
    EXPECT_GE(2u, ResidentPages(array));
}

TEST(ArrayMemory, NewSecureArrayTakesMemoryForWhatIsUsedOfIt)
{
    cnt::secure_array_t array(kGiB / 16);
    array[kGiB / 32] = 'x';
    EXPECT_GE(2u, ResidentPages(array));
}

TEST(ArrayMemory, PlainArrayThatCannotGrowIsLeftAsItIs)
{
    constexpr std::size_t kSize = kGiB / 8;
    cnt::plain_array_t array(kSize);
    array[0] = 'x';
    const little_memory_t little_memory;
    EXPECT_THROW(array.append("y", 1), std::bad_alloc);
    EXPECT_EQ(kSize, array.size());
    EXPECT_EQ('x', array[0]);
}
