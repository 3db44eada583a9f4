#include "nelvo/logging/receiver/stdout_log.h"

#include <stdexcept>
#include <streambuf>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/logging/log.h"
#include "nelvo/logging/log_channel.h"
#include "nelvo/logging/receiver/zip_writer.h"
#include "tests/logging/receiver/flushed_buffer.h"
#include "tests/support/failing_memory.h"
#include "tests/support/gz.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/redirected_stream.h"
#include "tests/support/stdout_capture.h"
#include "tests/support/temp_folder.h"

namespace
{

std::string Frame() { return "//////////////////////////////////////////////////////////////////////////\n"; }

class broken_buffer_t : public std::streambuf
{
protected:
    int_type overflow(int_type) override { throw std::runtime_error("pipe"); }
};

} // namespace

using logging::receiver::create_stdout_log;

TEST(StdoutLog, FrameIsSeventyFourSlashes) { EXPECT_EQ(std::string(74, '/') + "\n", Frame()); }

TEST(StdoutLog, TwoFramingLinesEncloseTheText)
{
    const stdout_capture_t captured;
    auto receiver = create_stdout_log();
    EXPECT_EQ(Frame(), captured.text());
    receiver->write("a\nb\n");
    receiver->write("c");
    EXPECT_EQ(Frame() + "a\nb\nc", captured.text());
    receiver.reset();
    EXPECT_EQ(Frame() + "a\nb\nc" + Frame(), captured.text());
}

TEST(StdoutLog, HasNoPathAndNoSize)
{
    const stdout_capture_t captured;
    const auto receiver = create_stdout_log();
    receiver->write("a\n");
    EXPECT_EQ("", receiver->get_path());
    EXPECT_EQ("\n", receiver->get_eol());
    EXPECT_EQ(0u, receiver->get_size());
}

TEST(StdoutLog, HasNoFieldsOfItsOwn)
{
    EXPECT_EQ(sizeof(logging::receiver::log_file_t), sizeof(logging::receiver::stdout_log_file_t));
}

TEST(StdoutLog, HasNothingToCompress)
{
    const temp_folder_t folder;
    const stdout_capture_t captured;
    const auto receiver = create_stdout_log();
    receiver->write("a\n");
    {
        util::zip_writer_t writer(folder / "a.gz", 9);
        receiver->compress_to(writer);
    }
    EXPECT_EQ("", Unpack(folder / "a.gz"));
    EXPECT_EQ(Frame() + "a\n", captured.text());
}

TEST(StdoutLog, FlushesItsFrameAndNothingElse)
{
    flushed_buffer_t buffer;
    const redirected_stream_t redirected(std::cout, &buffer);
    auto receiver = create_stdout_log();
    const int opened = buffer.m_flushes;
    receiver->write("a\n");
    const int written = buffer.m_flushes;
    receiver.reset();
    EXPECT_EQ(1, opened);
    EXPECT_EQ(1, written);
    EXPECT_EQ(2, buffer.m_flushes);
}

TEST(StdoutLog, FailureToCreateIsPrinted)
{
    const stdout_capture_t captured;
    FailNextAllocation();
    const auto receiver = create_stdout_log();
    EXPECT_TRUE(HasAllocationFailed());
    EXPECT_EQ(nullptr, receiver);
    EXPECT_EQ("Failed to initialize stdout log.\nstd::bad_alloc\n", captured.text());
}

TEST(StdoutLog, ClosingLineThatCannotBePrintedIsNoFailure)
{
    broken_buffer_t buffer;
    boost::shared_ptr<logging::receiver::log_file_t> receiver;
    {
        const stdout_capture_t captured;
        receiver = create_stdout_log();
    }
    const redirected_stream_t redirected(std::cout, &buffer);
    std::cout.exceptions(std::ios::badbit);
    receiver.reset();
    EXPECT_TRUE(std::cout.bad());
    std::cout.exceptions(std::ios::goodbit);
}

TEST(StdoutLog, MessagesKeepTheirHeads)
{
    const stdout_capture_t captured;
    {
        const auto log = boost::make_shared<logging::log_t>(create_stdout_log());
        logging::log_channel_t("agentid", log).warning("a\nb");
    }
    const std::string text = captured.text();
    EXPECT_EQ(Frame(), text.substr(0, Frame().size()));
    EXPECT_EQ("agentid| WARN|a\nagentid| >>  |b\n",
              WithoutHeads(text.substr(Frame().size(), text.size() - 2 * Frame().size())));
    EXPECT_EQ(Frame(), text.substr(text.size() - Frame().size()));
}
