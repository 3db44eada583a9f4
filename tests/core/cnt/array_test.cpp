#include "nelvo/core/cnt/array.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "tests/support/failure_text.h"

using namespace std::string_literals;

namespace
{

// Both arrays do all of this alike.
template <class Type>
class Array : public ::testing::Test
{
protected:
    using array_t = Type;

    static array_t Of(const std::string& bytes) { return array_t(bytes.data(), bytes.size()); }
    static std::string Bytes(const array_t& array) { return std::string(array.begin(), array.end()); }

    static std::size_t CapacityAfter(std::size_t size, std::size_t next_size)
    {
        array_t array(size);
        array.resize(next_size);
        return array.capacity();
    }
};

using arrays_t = ::testing::Types<cnt::plain_array_t, cnt::secure_array_t>;
TYPED_TEST_SUITE(Array, arrays_t);

} // namespace

TYPED_TEST(Array, StartsEmptyAndWithoutMemory)
{
    const TypeParam array;
    EXPECT_EQ(nullptr, array.data());
    EXPECT_EQ(0u, array.size());
    EXPECT_EQ(0u, array.capacity());
    EXPECT_TRUE(array.empty());
    EXPECT_EQ(nullptr, TypeParam(0).data());
}

TYPED_TEST(Array, NothingIsTakenForASizeOfZero)
{
    TypeParam array(0);
    array.resize(0);
    EXPECT_EQ(nullptr, array.data());
    EXPECT_EQ(0u, array.capacity());
}

TYPED_TEST(Array, NewBytesAreZero)
{
    TypeParam array(2);
    array[1] = 'x';
    array.resize(5);
    EXPECT_EQ("\0x\0\0\0"s, this->Bytes(array));
    EXPECT_FALSE(array.empty());
}

TYPED_TEST(Array, BytesThatComeBackAreZero)
{
    TypeParam array = this->Of("abcde");
    array.resize(2);
    EXPECT_EQ("ab", this->Bytes(array));
    array.resize(5);
    EXPECT_EQ("ab\0\0\0"s, this->Bytes(array));

    array.assign("z", 1);
    array.resize(5);
    EXPECT_EQ("z\0\0\0\0"s, this->Bytes(array));
}

TYPED_TEST(Array, MovingMakesRoomForTheOldSizeAndTheGreaterOfItAndTheGrowth)
{
    EXPECT_EQ(3u, this->CapacityAfter(0, 3));
    EXPECT_EQ(20u, this->CapacityAfter(10, 11));
    EXPECT_EQ(20u, this->CapacityAfter(10, 20));
    EXPECT_EQ(21u, this->CapacityAfter(10, 21));

    TypeParam array(10);
    array.resize(15);
    array.resize(5);
    array.resize(21);
    EXPECT_EQ(21u, array.capacity()) << "5 bytes grow by 16, whatever there was before";
}

TYPED_TEST(Array, GrowsInPlaceAsFarAsItsCapacityGoes)
{
    TypeParam array(10);
    array.resize(11);
    const char* const place = array.data();
    array.resize(20);
    EXPECT_EQ(place, array.data());
    array.resize(0);
    EXPECT_EQ(place, array.data());
    EXPECT_EQ(20u, array.capacity());
    EXPECT_TRUE(array.empty());
}

TYPED_TEST(Array, IndexedAccessChecksTheBound)
{
    TypeParam array = this->Of("abc");
    const TypeParam& same = array;
    array[2] = 'x';
    EXPECT_EQ('x', same[2]);
    EXPECT_EQ("Out of the array bound. Index of the requested array element: [3]. Array size: [3].",
              FailureText([&] { array[3] = 'y'; }));
    EXPECT_EQ(
        "Out of the array bound. Index of the requested array element: [18446744073709551615]. Array size: [3].",
        FailureText([&] { EXPECT_EQ('y', same[std::numeric_limits<std::size_t>::max()]); }));
    EXPECT_EQ("Out of the array bound. Index of the requested array element: [0]. Array size: [0].",
              FailureText([] { TypeParam()[0] = 'y'; }));
}

TYPED_TEST(Array, BoundIsTheSizeAndNotTheCapacity)
{
    TypeParam array(10);
    array.resize(5);
    EXPECT_EQ("Out of the array bound. Index of the requested array element: [5]. Array size: [5].",
              FailureText([&] { array[5] = 'y'; }));
}

TYPED_TEST(Array, CopyHasBytesOfItsOwn)
{
    TypeParam array = this->Of("abc");
    const TypeParam copy(array);
    TypeParam assigned(7);
    assigned = array;
    array[0] = 'x';
    EXPECT_EQ("abc", this->Bytes(copy));
    EXPECT_EQ("abc", this->Bytes(assigned));
    EXPECT_EQ("xbc", this->Bytes(array));
}

TYPED_TEST(Array, MoveAndSwapTakeTheMemoryAlong)
{
    TypeParam array = this->Of("abc");
    const char* const place = array.data();
    TypeParam moved(std::move(array));
    EXPECT_EQ(place, moved.data());
    TypeParam other = this->Of("other");
    other.swap(moved);
    EXPECT_EQ("other", this->Bytes(moved));
    EXPECT_EQ(place, other.data());
    moved = std::move(other);
    EXPECT_EQ(place, moved.data());
    EXPECT_EQ("abc", this->Bytes(moved));
}

TYPED_TEST(Array, AppendAddsBytesAtTheEnd)
{
    TypeParam array;
    array.append(nullptr, 0);
    EXPECT_EQ(nullptr, array.data());
    std::string expected;
    for (const std::string bytes : {"a", "", "bcde", "12345678", "a longer text"})
    {
        array.append(bytes.data(), bytes.size());
        expected += bytes;
        EXPECT_EQ(expected, this->Bytes(array));
    }
}

TYPED_TEST(Array, AppendMakesRoomAsResizeDoes)
{
    TypeParam array = this->Of("0123456789");
    EXPECT_EQ(0u, array.spare());
    array.append("a", 1);
    EXPECT_EQ(20u, array.capacity());
    EXPECT_EQ(9u, array.spare());
    const char* const before = array.data();
    array.append("bcdefghij", 9);
    EXPECT_EQ(before, array.data());
    array.append("012345678901234567890", 21);
    EXPECT_EQ(41u, array.capacity());
}

TYPED_TEST(Array, BytesThatComeAfterAnAppendAreZero)
{
    // What the memory held before.
    ::free(std::memset(::malloc(64), 'x', 64));
    TypeParam array;
    array.append(std::string(30, 'a').data(), 30);
    array.append("b", 1);
    array.resize(60);
    EXPECT_EQ(std::string(30, 'a') + 'b' + std::string(29, '\0'), this->Bytes(array));
}

TYPED_TEST(Array, AppendThatNoMemoryHasLeavesTheArray)
{
    TypeParam array = this->Of("abc");
    // The compiler would see that there are no such bytes.
    const char* volatile data = "x";
    for (const std::size_t size : {std::numeric_limits<std::size_t>::max(), std::size_t{PTRDIFF_MAX} - 2})
        EXPECT_THROW(array.append(data, size), std::bad_alloc) << size;
    EXPECT_EQ("abc", this->Bytes(array));
}

TYPED_TEST(Array, AssignReplacesTheContents)
{
    TypeParam array = this->Of("abc");
    array.assign("longer", 6);
    EXPECT_EQ("longer", this->Bytes(array));
    array.assign("s", 1);
    EXPECT_EQ("s", this->Bytes(array));
    array.assign(nullptr, 0);
    EXPECT_EQ("", this->Bytes(array));
}

TYPED_TEST(Array, AssignTakesItsOwnBytes)
{
    TypeParam array = this->Of("abcdef");
    array.assign(array.data() + 1, 4);
    EXPECT_EQ("bcde", this->Bytes(array));
    array = *&array;
    EXPECT_EQ("bcde", this->Bytes(array));
}

TYPED_TEST(Array, ComparesByteByByte)
{
    EXPECT_TRUE(this->Of("abc") == this->Of("abc"));
    EXPECT_TRUE(this->Of("abc") != this->Of("abd"));
    EXPECT_TRUE(this->Of("abc") != this->Of("ab"));
    EXPECT_TRUE(TypeParam() == TypeParam(0));
    EXPECT_FALSE(this->Of("a") == TypeParam());
}

TYPED_TEST(Array, SizeThatNoMemoryHasLeavesTheArray)
{
    TypeParam array = this->Of("abc");
    const std::size_t most = std::numeric_limits<std::ptrdiff_t>::max();
    for (const std::size_t size : {most - 4096, most, most + 1, std::numeric_limits<std::size_t>::max()})
        EXPECT_THROW(array.resize(size), std::bad_alloc) << size;
    EXPECT_EQ("abc", this->Bytes(array));
    EXPECT_EQ(3u, array.capacity());
}
