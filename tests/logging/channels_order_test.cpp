#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "nelvo/logging/channels.h"
#include "tests/logging/recorded_format.h"

TEST(Channels, AreBuiltInTheirOrder)
{
    EXPECT_EQ(0, logging::channels::default_log.get_indent());
    ASSERT_LE(17u, BuiltTags().size());
    const std::vector<std::string> first(BuiltTags().begin(), BuiltTags().begin() + 17);
    EXPECT_THAT(first, testing::ElementsAre("", "dmn", "cli", "srv", "prt", "vcb", "vcb", "drv", "stg", "cpl",
                                            "bkp", "nfs", "rpc", "dbg", "vhd", "mnt", "dt "));
}
