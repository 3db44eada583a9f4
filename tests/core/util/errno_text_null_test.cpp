#include <cstring>

#include <gtest/gtest.h>

#include "nelvo/core/util/errno_text.h"

namespace
{

std::size_t g_size = 0;
bool g_zeroed = false;

} // namespace

// In the place of the C library's, which always gives a text.
extern "C" char* strerror_r(int /*error*/, char* buffer, std::size_t size) noexcept
{
    g_size = size;
    g_zeroed = std::string(buffer, size) == std::string(size, '\0');
    return nullptr;
}

TEST(ErrnoTextWithoutText, IsTheNumber)
{
    EXPECT_EQ("POSIX error: 2", util::ErrnoText(2));
    EXPECT_EQ("POSIX error: -1", util::ErrnoText(-1));
}

TEST(ErrnoTextWithoutText, AskedForItInAZeroedBuffer)
{
    util::ErrnoText(2);
    EXPECT_EQ(256u, g_size);
    EXPECT_TRUE(g_zeroed);
}
