#include "nelvo/logging/receiver/log_file.h"

#include <gtest/gtest.h>

#include "tests/support/lines_receiver.h"

TEST(LogFile, PathIsWhatItWasGiven)
{
    EXPECT_EQ("", lines_receiver_t().get_path());
    EXPECT_EQ("/x/a.log", lines_receiver_t("/x/a.log").get_path());
}

TEST(LogFile, LineEndIsALineFeed) { EXPECT_EQ("\n", lines_receiver_t().get_eol()); }
