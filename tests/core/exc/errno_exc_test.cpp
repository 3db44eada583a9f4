#include "nelvo/core/exc/errno_exc.h"

#include <cerrno>

#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"

using posix::errno_exc_t;

TEST(ErrnoExc, SystemTextIsTheFirstLineAndTheMessageTheSecond)
{
    EXPECT_STREQ("No such file or directory", errno_exc_t(ENOENT).what());
    EXPECT_STREQ("No such file or directory\nmessage", errno_exc_t("message", ENOENT).what());
}

TEST(ErrnoExc, BothLinesAreUnmarked)
{
    const errno_exc_t e("message", EACCES);
    EXPECT_EQ(e.GetPlainText(), e.what());
    EXPECT_EQ("Permission denied\nmessage", e.GetPlainText());
}

TEST(ErrnoExc, FormatTakesOneToThreeArgumentsBeforeTheNumber)
{
    EXPECT_STREQ("Permission denied\n[a]", errno_exc_t("[%1]", "a", EACCES).what());
    EXPECT_STREQ("Permission denied\nb 1", errno_exc_t("%2 %1", 1, std::string("b"), EACCES).what());
    EXPECT_STREQ("Permission denied\n1 2 3", errno_exc_t("%1 %2 %3", 1, 2, 3, EACCES).what());
}

TEST(ErrnoExc, MessageAloneIsTakenWithoutSubstitution)
{
    EXPECT_STREQ("Permission denied\n%01", errno_exc_t("%01", EACCES).what());
}

TEST(ErrnoExc, KeepsTheNumber)
{
    EXPECT_EQ(static_cast<std::uint32_t>(EACCES), errno_exc_t(EACCES).GetErrorCode());
}

TEST(ErrnoExc, NegativeNumberIsKeptInThirtyTwoBits)
{
    const errno_exc_t e(-1);
    EXPECT_EQ(4294967295u, e.GetErrorCode());
    EXPECT_STREQ("Unknown error -1", e.what());
}

TEST(ErrnoExc, CloneIsAPlainBaseObject)
{
    const auto clone = errno_exc_t("message", ENOENT).Clone();
    EXPECT_EQ(typeid(exc::exc_base_t), typeid(*clone));
    EXPECT_STREQ("No such file or directory\nmessage", clone->what());
}

TEST(ErrnoExc, TypedCloneKeepsTheNumber)
{
    const auto clone = errno_exc_t("message", ENOENT).CloneErrno();
    EXPECT_EQ(typeid(errno_exc_t), typeid(*clone));
    EXPECT_EQ(static_cast<std::uint32_t>(ENOENT), clone->GetErrorCode());
    EXPECT_STREQ("No such file or directory\nmessage", clone->what());
}

TEST(ErrnoExc, RethrowKeepsTypeAndNumber)
{
    const errno_exc_t e("message", ENOENT);
    try
    {
        static_cast<const exc::exc_base_t&>(e).Rethrow();
    }
    catch (const errno_exc_t& thrown)
    {
        EXPECT_EQ(static_cast<std::uint32_t>(ENOENT), thrown.GetErrorCode());
        EXPECT_STREQ("No such file or directory\nmessage", thrown.what());
    }
}

TEST(ErrnoExc, WideMessageIsConverted)
{
    EXPECT_STREQ("Permission denied\n%01", errno_exc_t(L"%01", EACCES).what());
}

TEST(ErrnoExc, WideMessageOutsideTheLocaleThrowsInstead)
{
    try
    {
        const errno_exc_t e(L"\u00e9", EACCES);
        FAIL() << "nothing was thrown";
    }
    catch (const exc::runtime_exc_t& e)
    {
        EXPECT_STREQ("Unicode string cannot be converted to multibyte string. Failed to get buffer size. \n"
                     "UNICODE->ANSI failed",
                     e.what());
    }
}
