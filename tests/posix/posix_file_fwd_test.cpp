#include "nelvo/posix/posix_file_fwd.h"

#include <cstdint>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

TEST(PosixFileForward, HandlePassesOnWithoutTheClass)
{
    posix_file_ptr_t first;
    const posix_file_ptr_t second = std::move(first);
    EXPECT_EQ(nullptr, second.get());
    EXPECT_TRUE((std::is_same_v<boost::shared_ptr<posix::posix_file_t>, posix_file_ptr_t>));
}

TEST(PosixFileForward, SizesAndPositionsAreSignedWith64Bits)
{
    EXPECT_TRUE((std::is_same_v<std::int64_t, stream_size_t>));
    EXPECT_TRUE((std::is_same_v<std::int64_t, stream_pos_t>));
}
