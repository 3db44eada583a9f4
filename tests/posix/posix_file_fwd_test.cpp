#include "nelvo/posix/posix_file_fwd.h"

#include <limits>
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
    EXPECT_EQ(9223372036854775807, std::numeric_limits<stream_size_t>::max());
    EXPECT_EQ(-1, stream_size_t(-1));
    EXPECT_EQ(9223372036854775807, std::numeric_limits<stream_pos_t>::max());
    EXPECT_EQ(-1, stream_pos_t(-1));
}
