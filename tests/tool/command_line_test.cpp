#include "tool/command_line.h"

#include <gtest/gtest.h>

#include "nelvo/logging/log.h"
#include "nelvo/logging/receiver/log_start.h"
#include "tests/support/stdout_capture.h"
#include "tool/agent_log.h"

namespace
{

int g_checks = 0;

} // namespace

// Stands in for the library's, which is not linked in then.
void logging::log_t::ValidateSize(receiver::log_file_t&) { ++g_checks; }

namespace
{

// An empty name, for a log on standard output.
void StartOnStandardOutput()
{
    const char* const args[] = {"nelvoagentid", "-l", ""};
    InitToolCommandLine(3, args);
}

} // namespace

class CommandLine : public ::testing::Test
{
protected:
    void TearDown() override { logging::GetProcessLog()->set_receiver({}); }

    const stdout_capture_t m_captured;
};

TEST_F(CommandLine, LogIsNotForDebugging)
{
    logging::start_log("", true, false, false);
    StartOnStandardOutput();
    EXPECT_FALSE(logging::is_debug_log());
}

TEST_F(CommandLine, LogHidesNothing)
{
    logging::start_log("", false, true, false);
    StartOnStandardOutput();
    EXPECT_EQ("secret", agent_log.mask("secret"));
}

TEST_F(CommandLine, SizeOfTheLogIsChecked)
{
    logging::start_log("", false, false, false);
    StartOnStandardOutput();
    g_checks = 0;
    for (int i = 0; i != 1000; ++i)
        agent_log.info("a");
    EXPECT_EQ(1, g_checks);
}
