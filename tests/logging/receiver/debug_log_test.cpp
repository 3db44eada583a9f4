#include "nelvo/logging/receiver/debug_log.h"

#include <iostream>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/logging/log.h"
#include "nelvo/logging/log_channel.h"
#include "nelvo/logging/receiver/zip_writer.h"
#include "tests/support/gz.h"
#include "tests/support/redirected_stream.h"
#include "tests/support/stdout_capture.h"
#include "tests/support/temp_folder.h"

TEST(DebugLog, HasNoPathAndNoSize)
{
    const logging::receiver::COutputDebugStringLog receiver;
    EXPECT_EQ("", receiver.get_path());
    EXPECT_EQ("\n", receiver.get_eol());
    EXPECT_EQ(0u, receiver.get_size());
}

TEST(DebugLog, HasNoFieldsOfItsOwn)
{
    EXPECT_EQ(sizeof(logging::receiver::log_file_t), sizeof(logging::receiver::COutputDebugStringLog));
}

TEST(DebugLog, SwallowsMessages)
{
    const stdout_capture_t captured;
    std::stringbuf errors;
    const redirected_stream_t cerr_redirected(std::cerr, &errors);
    const redirected_stream_t clog_redirected(std::clog, &errors);
    const auto log =
        boost::make_shared<logging::log_t>(boost::make_shared<logging::receiver::COutputDebugStringLog>());
    logging::log_channel_t("dbg", log).error("text");
    EXPECT_EQ("", captured.text());
    EXPECT_EQ("", errors.str());
}

TEST(DebugLog, HasNothingToCompress)
{
    const temp_folder_t folder;
    logging::receiver::COutputDebugStringLog receiver;
    receiver.write("text");
    {
        util::zip_writer_t writer(folder / "a.gz", 9);
        receiver.compress_to(writer);
    }
    EXPECT_EQ("", Unpack(folder / "a.gz"));
}
