#include "nelvo/core/exc/file_locked_exc.h"

#include <gtest/gtest.h>

using exc::file_locked_exc_t;

TEST(FileLockedExc, NamesTheFileInItsOneLine)
{
    const file_locked_exc_t e("/tmp/a %1.log");
    EXPECT_STREQ("File [/tmp/a %1.log] is locked.", e.what());
    EXPECT_EQ("/tmp/a %1.log", e.GetFile());
}

TEST(FileLockedExc, CloneKeepsTypeAndFile)
{
    const auto clone = boost::dynamic_pointer_cast<file_locked_exc_t>(file_locked_exc_t("a").Clone());
    ASSERT_TRUE(clone);
    EXPECT_EQ("a", clone->GetFile());
    EXPECT_STREQ("File [a] is locked.", clone->what());
}

TEST(FileLockedExc, RethrowThrowsAPlainBaseObject)
{
    try
    {
        file_locked_exc_t("a").Rethrow();
    }
    catch (const exc::exc_base_t& thrown)
    {
        EXPECT_EQ(typeid(exc::exc_base_t), typeid(thrown));
        EXPECT_STREQ("File [a] is locked.", thrown.what());
    }
}
