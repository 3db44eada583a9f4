#include "nelvo/core/exc/file_locked_exc.h"

#include <gtest/gtest.h>

#include "tests/core/exc/buffers.h"
#include "tests/core/exc/copies.h"
#include "tests/support/golden.h"

using exc::file_locked_exc_t;

TEST(FileLockedExc, NamesTheFileInItsOneLine)
{
    const file_locked_exc_t e("/tmp/a %1.log");
    EXPECT_STREQ("File [/tmp/a %1.log] is locked.", e.what());
    EXPECT_EQ("/tmp/a %1.log", e.GetFile());
}

TEST(FileLockedExc, CloneKeepsTypeAndFile)
{
    const file_locked_exc_t e = Detailed([] { return file_locked_exc_t("a"); });
    const auto clone = e.Clone();
    ExpectCopyOf<file_locked_exc_t>(e, *clone);
    EXPECT_EQ("a", dynamic_cast<const file_locked_exc_t&>(*clone).GetFile());
}

TEST(FileLockedExc, RethrowThrowsAPlainBaseObject)
{
    const file_locked_exc_t e = Detailed([] { return file_locked_exc_t("a"); });
    LookAtRethrown(e, [&e](const exc::exc_base_t& thrown) { ExpectCopyOf<exc::exc_base_t>(e, thrown); });
}

TEST(FileLockedExcBuffer, IsWrittenWithoutItsFile)
{
    EXPECT_EQ(Hex(Golden("file_locked_exc")), Hex(Written(exc::file_locked_exc_t("/tmp/a"))));
}

TEST(FileLockedExcBuffer, IsReadIntoABaseObjectWithItsLine)
{
    EXPECT_STREQ("File [/tmp/a] is locked.", Read(Golden("file_locked_exc")).what());
}

TEST(FileLockedExcBuffer, ReadingLeavesTheFile)
{
    exc::file_locked_exc_t e("/tmp/b");
    EXPECT_EQ("no failure", ReadFailure(e, Golden("file_locked_exc")));
    EXPECT_STREQ("File [/tmp/a] is locked.", e.what());
    EXPECT_EQ("/tmp/b", e.GetFile());
}

TEST(FileLockedExcBuffer, EachCutIsToldAndLeavesTheExceptionAsItWas)
{
    ExpectEachCutTold(GoldenFields("file_locked_exc"), "isbii",
                      [](const std::string& bytes, const std::string& failure)
                      {
                          exc::file_locked_exc_t e("/tmp/b");
                          EXPECT_EQ(failure, ReadFailure(e, bytes));
                          EXPECT_EQ("File [/tmp/b] is locked.", e.GetFullText());
                      });
}
