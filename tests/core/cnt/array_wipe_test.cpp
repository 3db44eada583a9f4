// Looks at memory when it goes back to the heap: this program is linked with a free of its own.

#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

#include "nelvo/core/cnt/array.h"
#include "tests/support/freed_memory.h"
#include "tests/support/made_secret.h"

using namespace std::string_literals;

namespace
{

constexpr std::string_view kBytes = kSecret<'s', 6>;

cnt::secure_array_t Secret() { return cnt::secure_array_t(kBytes.data(), kBytes.size()); }

// The six bytes of a secret as they are when the use lets go of them.
std::string Freed(const std::function<void(cnt::secure_array_t&)>& use)
{
    cnt::secure_array_t array = Secret();
    WatchFree(array.data(), array.capacity());
    use(array);
    return FreedBytes();
}

} // namespace

TEST(SecureArray, DestructorLeavesZeros)
{
    EXPECT_EQ("\0\0\0\0\0\0"s,
              Freed([](cnt::secure_array_t& array) { const cnt::secure_array_t last(std::move(array)); }));
}

TEST(SecureArray, GrowingLeavesZerosWhereTheBytesStood)
{
    EXPECT_EQ("\0\0\0\0\0\0"s, Freed([](cnt::secure_array_t& array) { array.resize(7); }));
}

TEST(SecureArray, AppendingLeavesZerosWhereTheBytesStood)
{
    EXPECT_EQ("\0\0\0\0\0\0"s, Freed([](cnt::secure_array_t& array) { array.append("x", 1); }));
}

TEST(SecureArray, LongerContentsLeaveZerosWhereTheOldOnesStood)
{
    EXPECT_EQ("\0\0\0\0\0\0"s,
              Freed([](cnt::secure_array_t& array) { array.assign("longer than that", 16); }));
}

TEST(SecureArray, AssignmentLeavesZerosWhereTheOldContentsStood)
{
    EXPECT_EQ("\0\0\0\0\0\0"s, Freed([](cnt::secure_array_t& array) { array = cnt::secure_array_t(1); }));
}

TEST(SecureArray, WholeCapacityIsZeroAndNotTheSizeAlone)
{
    const auto shrink = [](cnt::secure_array_t& array)
    {
        array.resize(2);
        array = {};
    };
    EXPECT_EQ("\0\0\0\0\0\0"s, Freed(shrink));
}

TEST(SecureArray, BytesThatAreCutOffAreZeroAtOnce)
{
    cnt::secure_array_t array = Secret();
    array.resize(2);
    EXPECT_EQ("\x73\x04\0\0\0\0"s, std::string(array.data(), array.capacity()));
}

TEST(SecureArray, ShorterContentsLeaveZerosBehindThem)
{
    cnt::secure_array_t array = Secret();
    array.assign("no", 2);
    EXPECT_EQ("no\0\0\0\0"s, std::string(array.data(), array.capacity()));
}

TEST(PlainArray, LeavesItsBytesAsTheyAre)
{
    cnt::plain_array_t array("public", 6);
    WatchFree(array.data(), array.capacity());
    array = {};
    EXPECT_EQ("public", FreedBytes());
}
