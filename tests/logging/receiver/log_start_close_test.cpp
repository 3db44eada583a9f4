#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/logging/channels.h"
#include "nelvo/logging/log.h"
#include "nelvo/logging/receiver/log_start.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/stdout_capture.h"

TEST(LogStart, ClosedLogIsSilentAndKeepsItsReceiver)
{
    const auto receiver = boost::make_shared<lines_receiver_t>("/x/a.log");
    logging::GetProcessLog()->set_receiver(receiver);
    logging::close_log();
    logging::channels::default_log.info("a");
    EXPECT_EQ("", receiver->text());
    EXPECT_EQ("/x/a.log", logging::get_log_file_path());
}

TEST(LogStart, ClosedLogStaysSilentWhenItIsStartedAgain)
{
    const stdout_capture_t captured;
    logging::close_log();
    logging::start_log("", false, false, true);
    logging::channels::default_log.info("a");
    EXPECT_EQ(std::string(74, '/') + "\n", captured.text());
    logging::GetProcessLog()->set_receiver({});
}
