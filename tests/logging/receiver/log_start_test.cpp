#include "nelvo/logging/receiver/log_start.h"

#include <cstdio>
#include <memory>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/logging/channels.h"
#include "nelvo/logging/log.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/stdout_capture.h"

namespace
{

std::string Frame() { return std::string(74, '/') + "\n"; }

const char kParsing[] = "LOG: Parsing log parameters ...\n";
const char kDisabled[] = "LOG: <error, logs disabled>\n";

using paths_t = std::vector<std::string>;

class LogStart : public ::testing::Test
{
protected:
    void TearDown() override { m_log->set_receiver({}); }

    stdout_capture_t m_captured;
    boost::shared_ptr<logging::log_t> m_log = logging::GetProcessLog();
};

class LogParams : public LogStart
{
protected:
    // What the list gives: its paths, and ":" in front if the result is true.
    std::string Parsed(const std::string& params)
    {
        paths_t paths;
        std::string result = logging::parse_log_params(params, paths) ? ":" : "";
        for (const std::string& path : paths)
            result += "[" + path + "]";
        return result;
    }
};

struct pipe_closer_t
{
    void operator()(FILE* pipe) const { ::pclose(pipe); }
};

std::string OutputOf(const char* program)
{
    const std::unique_ptr<FILE, pipe_closer_t> pipe(::popen(program, "r"));
    std::string output;
    for (int c = 0; pipe != nullptr && (c = std::fgetc(pipe.get())) != EOF;)
        output += static_cast<char>(c);
    return output;
}

} // namespace

TEST_F(LogStart, EmptyNameIsALogOnStandardOutput)
{
    logging::start_log("", false, false, true);
    logging::channels::cli.info("a");
    const std::string text = m_captured.text();
    EXPECT_EQ(Frame(), text.substr(0, Frame().size()));
    EXPECT_EQ("cli    | a\n", WithoutHeads(text.substr(Frame().size())));
    EXPECT_EQ("", logging::get_log_file_path());
    EXPECT_EQ("", m_log->get_log_path());
}

TEST_F(LogStart, NamedLogInstallsNoReceiver)
{
    logging::start_log("a.log", false, true, true);
    logging::channels::default_log.info("a");
    EXPECT_EQ("", m_captured.text());
    EXPECT_EQ(nullptr, m_log->get_receiver());
    EXPECT_FALSE(m_log->is_mask_sensitive());
}

TEST_F(LogStart, SetsAndClearsTheDebugFlag)
{
    EXPECT_FALSE(logging::is_debug_log());
    logging::start_log("", true, false, false);
    EXPECT_TRUE(logging::is_debug_log());
    logging::start_log("", false, false, false);
    EXPECT_FALSE(logging::is_debug_log());
    logging::start_log("a.log", true, false, false);
    EXPECT_TRUE(logging::is_debug_log());
    logging::start_log("a.log", false, false, false);
}

TEST_F(LogStart, OpenSetsTheMaskFlag)
{
    EXPECT_TRUE(logging::open_log({}, true, false));
    EXPECT_TRUE(m_log->is_mask_sensitive());
    EXPECT_TRUE(logging::open_log({}, false, false));
    EXPECT_FALSE(m_log->is_mask_sensitive());
}

TEST_F(LogStart, OpenWithoutReceiverLeavesTheLogAsItWas)
{
    const auto receiver = boost::make_shared<lines_receiver_t>("/x/a.log");
    m_log->set_receiver(receiver);
    EXPECT_FALSE(logging::open_log({"a.log"}, true, true));
    EXPECT_EQ(receiver, m_log->get_receiver());
    EXPECT_FALSE(m_log->is_mask_sensitive());
}

TEST_F(LogStart, NewLogOnStandardOutputOpensBeforeTheOldOneCloses)
{
    logging::start_log("", false, false, false);
    logging::start_log("", false, false, false);
    EXPECT_EQ(Frame() + Frame() + Frame(), m_captured.text());
}

TEST_F(LogStart, PathIsTheReceiversOrEmpty)
{
    EXPECT_EQ("", logging::get_log_file_path());
    m_log->set_receiver(boost::make_shared<lines_receiver_t>("/x/a.log"));
    EXPECT_EQ("/x/a.log", logging::get_log_file_path());
}

TEST_F(LogParams, PathsAreAppended)
{
    paths_t paths = {"before"};
    EXPECT_TRUE(logging::parse_log_params("a.log,/x/b.log", paths));
    EXPECT_EQ((paths_t{"before", "a.log", "/x/b.log"}), paths);
    EXPECT_EQ(kParsing, m_captured.text());
}

TEST_F(LogParams, KeywordsAndSignsArePassedOver)
{
    EXPECT_EQ(":[a.log]", Parsed("a.log,+x,-y,flush"));
    EXPECT_EQ(":[a.log]", Parsed("cout,cerr,flush,debug,a.log"));
    EXPECT_EQ("", Parsed("+,-"));
}

TEST_F(LogParams, EmptyWordsAreDropped)
{
    EXPECT_EQ(":[a][b]", Parsed(",a,,b,"));
    EXPECT_EQ("", Parsed(""));
    EXPECT_EQ("", Parsed(",,"));
}

TEST_F(LogParams, WordsAreNotTrimmedAndCaseMatters)
{
    EXPECT_EQ(":[ flush][COUT][Debug][debugger]", Parsed(" flush,COUT,Debug,debugger"));
    EXPECT_FALSE(logging::is_debug_log());
}

TEST_F(LogParams, KeywordsAloneGiveFalse)
{
    EXPECT_EQ("", Parsed("cout,debug"));
    EXPECT_TRUE(logging::is_debug_log());
}

TEST_F(LogParams, ParsingNeverClearsTheDebugFlag)
{
    logging::start_log("a.log", true, false, false);
    EXPECT_EQ(":[a]", Parsed("a"));
    EXPECT_TRUE(logging::is_debug_log());
}

TEST_F(LogParams, PathsAreUnpacked)
{
    EXPECT_EQ(":[a,b_c]", Parsed("a_Ab__c"));
    paths_t paths;
    EXPECT_THROW(logging::parse_log_params("my_log.log", paths), exc::runtime_exc_t);
}

TEST_F(LogParams, KeywordsAloneOpenNoLog)
{
    logging::start_log_from_params("cout,debug", true);
    EXPECT_EQ(std::string(kParsing) + kDisabled, m_captured.text());
    EXPECT_EQ(nullptr, m_log->get_receiver());
    EXPECT_FALSE(m_log->is_mask_sensitive());
    EXPECT_TRUE(logging::is_debug_log());
}

TEST_F(LogParams, PathThatCannotBeOpenedDisablesTheLog)
{
    logging::start_log_from_params("a.log", false);
    EXPECT_EQ(std::string(kParsing) + kDisabled, m_captured.text());
    EXPECT_EQ(nullptr, m_log->get_receiver());
}

TEST_F(LogParams, FailureToUnpackPasses)
{
    EXPECT_THROW(logging::start_log_from_params("my_log.log", false), exc::runtime_exc_t);
    EXPECT_EQ(kParsing, m_captured.text());
}

TEST_F(LogParams, SafeStartPrintsTheFailureRightBehindTheComma)
{
    logging::start_log_from_params_safe("my_log.log", false);
    EXPECT_EQ(std::string(kParsing) +
                  "Unable to create log,Failed to unpack log name string: Incorrect sequence: [l].\n",
              m_captured.text());
}

TEST_F(LogParams, SafeStartIsTheSameOtherwise)
{
    logging::start_log_from_params_safe("flush", false);
    EXPECT_EQ(std::string(kParsing) + kDisabled, m_captured.text());
}

// The log is closed for good, so this is the last that is said in its process.
TEST_F(LogStart, ClosedLogIsSilentAndKeepsItsReceiver)
{
    const auto receiver = boost::make_shared<lines_receiver_t>("/x/a.log");
    m_log->set_receiver(receiver);
    logging::close_log();
    logging::channels::default_log.info("a");
    EXPECT_EQ("", receiver->text());
    EXPECT_EQ("/x/a.log", logging::get_log_file_path());
}

TEST(LogAtExit, StaticObjectsMayLogAndTheClosingLineComesLast)
{
    const std::string output = OutputOf(LOG_AT_EXIT);
    ASSERT_LT(2 * Frame().size(), output.size());
    EXPECT_EQ(Frame(), output.substr(0, Frame().size()));
    EXPECT_EQ("vhd    | in main\n       | from a static object\n",
              WithoutHeads(output.substr(Frame().size(), output.size() - 2 * Frame().size())));
    EXPECT_EQ(Frame(), output.substr(output.size() - Frame().size()));
}
