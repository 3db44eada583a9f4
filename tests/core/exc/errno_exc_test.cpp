#include "nelvo/core/exc/errno_exc.h"

#include <cerrno>

#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "tests/core/exc/buffers.h"
#include "tests/core/exc/copies.h"
#include "tests/support/golden.h"

using posix::errno_exc_t;

namespace
{

errno_exc_t Failure()
{
    return Detailed([] { return errno_exc_t("message", ENOENT); });
}

void ExpectFailure(const errno_exc_t& original, const exc::exc_base_t& copy)
{
    ExpectCopyOf<errno_exc_t>(original, copy);
    EXPECT_EQ(static_cast<std::uint32_t>(ENOENT), dynamic_cast<const errno_exc_t&>(copy).GetErrorCode());
}

} // namespace

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
    const errno_exc_t e = Failure();
    ExpectCopyOf<exc::exc_base_t>(e, *e.Clone());
}

TEST(ErrnoExc, TypedCloneKeepsTheNumber)
{
    const errno_exc_t e = Failure();
    ExpectFailure(e, *e.CloneErrno());
}

TEST(ErrnoExc, RethrowKeepsTypeAndNumber)
{
    const errno_exc_t e = Failure();
    LookAtRethrown(e, [&e](const exc::exc_base_t& thrown) { ExpectFailure(e, thrown); });
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

TEST(ErrnoExcBuffer, IsWrittenWithoutItsNumber)
{
    EXPECT_EQ(Hex(Golden("errno_exc")), Hex(Written(errno_exc_t("message", ENOENT))));
}

TEST(ErrnoExcBuffer, IsReadIntoABaseObjectWithItsTwoLines)
{
    EXPECT_STREQ("No such file or directory\nmessage", Read(Golden("errno_exc")).what());
}

TEST(ErrnoExcBuffer, ReadingLeavesTheNumber)
{
    errno_exc_t e(EACCES);
    EXPECT_EQ("no failure", ReadFailure(e, Golden("errno_exc")));
    EXPECT_STREQ("No such file or directory\nmessage", e.what());
    EXPECT_EQ(static_cast<std::uint32_t>(EACCES), e.GetErrorCode());
}

TEST(ErrnoExcBuffer, EachCutIsToldAndLeavesTheExceptionAsItWas)
{
    ExpectEachCutTold(GoldenFields("errno_exc"), "isbsbii",
                      [](const std::string& bytes, const std::string& failure)
                      {
                          errno_exc_t e(EACCES);
                          EXPECT_EQ(failure, ReadFailure(e, bytes));
                          EXPECT_EQ("Permission denied", e.GetFullText());
                      });
}
