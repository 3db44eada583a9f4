#include "nelvo/logging/receiver/log_file.h"

#include <gtest/gtest.h>

#include "tests/support/lines_receiver.h"
#include "tests/support/vtable_slot.h"

TEST(LogFile, PathIsWhatItWasGiven)
{
    EXPECT_EQ("", lines_receiver_t().get_path());
    EXPECT_EQ("/x/a.log", lines_receiver_t("/x/a.log").get_path());
}

TEST(LogFile, LineEndIsALineFeed) { EXPECT_EQ("\n", lines_receiver_t().get_eol()); }

TEST(LogFile, OperationsKeepTheirPlaces)
{
    using logging::receiver::log_file_t;
    EXPECT_EQ(0u, VtableSlot(&log_file_t::write));
    EXPECT_EQ(1u, VtableSlot(&log_file_t::get_path));
    EXPECT_EQ(2u, VtableSlot(&log_file_t::get_eol));
    EXPECT_EQ(3u, VtableSlot(&log_file_t::get_size));
    EXPECT_EQ(4u, VtableSlot(&log_file_t::compress_to));
}
