#include "nelvo/core/util/errno_text.h"

#include <cerrno>

#include <gtest/gtest.h>

TEST(ErrnoText, IsTheTextOfTheSystem)
{
    EXPECT_EQ("No such file or directory", util::ErrnoText(ENOENT));
    EXPECT_EQ("Permission denied", util::ErrnoText(EACCES));
    EXPECT_EQ("Success", util::ErrnoText(0));
}

TEST(ErrnoText, NamesANumberThatIsNoError)
{
    EXPECT_EQ("Unknown error 123456", util::ErrnoText(123456));
    EXPECT_EQ("Unknown error -1", util::ErrnoText(-1));
}

TEST(ErrnoText, LeavesErrnoAlone)
{
    errno = EINTR;
    util::ErrnoText(ENOENT);
    EXPECT_EQ(EINTR, errno);
}
