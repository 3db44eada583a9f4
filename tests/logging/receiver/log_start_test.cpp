#include "nelvo/logging/receiver/log_start.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

#include <boost/filesystem/exception.hpp>
#include <boost/make_shared.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/logging/channels.h"
#include "nelvo/logging/log.h"
#include "nelvo/logging/receiver/posix_log_file.h"
#include "tests/logging/receiver/count_anew.h"
#include "tests/logging/receiver/flushed_buffer.h"
#include "tests/support/gz.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/private_disk.h"
#include "tests/support/program_output.h"
#include "tests/support/redirected_stream.h"
#include "tests/support/stdout_capture.h"
#include "tests/support/temp_folder.h"

using testing::ElementsAre;

namespace fs = std::filesystem;

namespace
{

std::string Frame() { return std::string(74, '/') + "\n"; }

const char kParsing[] = "LOG: Parsing log parameters ...\n";
const char kDisabled[] = "LOG: <error, logs disabled>\n";

using paths_t = std::vector<std::string>;

// What a FIFO says when it is to be the log: it can be opened, but has no end to write behind.
std::string NoLog(const std::string& fifo)
{
    return "Failed to initialize log [" + fifo +
           "].\nIllegal seek\nPOSIX: Seek operation has failed. File: [" + fifo +
           "]. Distance to move: [0]. Move method: [SEEK_END].\n";
}

// Works in a folder of its own.
class LogStart : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_EQ(0, ::chdir(m_folder.path().c_str())); }

    void TearDown() override
    {
        logging::start_log("", false, false, false);
        m_log->set_receiver({});
        ASSERT_EQ(0, ::chdir("/"));
    }

    static void Log(const std::string& text) { logging::channels::vhd.info(text); }

    static void LogTimes(int count)
    {
        for (int i = 0; i != count; ++i)
            Log("a");
    }

    // A log beyond the limit of its size, of zeros.
    static void MakeBigLog(const std::string& name)
    {
        const std::ofstream created(name);
        fs::resize_file(name, 15728640);
    }

    std::vector<std::string> Names() const
    {
        std::vector<std::string> names;
        for (const fs::directory_entry& entry : fs::directory_iterator(m_folder.path()))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }

    const private_disk_t m_tmp{"/tmp", 32'000'000};
    const temp_folder_t m_folder;
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

TEST_F(LogStart, NameIsAFilesName)
{
    logging::start_log("x/a.log", false, true, true);
    Log("a\nb");
    EXPECT_EQ("vhd    | a\nvhd    | b\n", WithoutHeads(ReadFile("x/a.log")));
    EXPECT_EQ("x/a.log", logging::get_log_file_path());
    EXPECT_EQ("x/a.log", m_log->get_log_path());
    EXPECT_TRUE(m_log->is_mask_sensitive());
    EXPECT_EQ("", m_captured.text());
}

TEST_F(LogStart, FileThatCannotBeALogIsPrinted)
{
    ASSERT_EQ(0, ::mkfifo("fifo", 0600));
    logging::start_log("fifo", false, false, true);
    Log("lost");
    EXPECT_EQ(NoLog("fifo"), m_captured.text());
    EXPECT_EQ(nullptr, m_log->get_receiver());
}

TEST_F(LogStart, SizeIsCheckedIfItIsAskedFor)
{
    CountAnew(*m_log);
    logging::start_log("a.log", false, false, true);
    MakeBigLog("a.log");
    LogTimes(999);
    EXPECT_THAT(Names(), ElementsAre("a.log"));
    LogTimes(1);
    EXPECT_THAT(Names(), ElementsAre("a.log", "a.log.gz"));
}

TEST_F(LogStart, SizeIsNotCheckedOtherwise)
{
    logging::start_log("a.log", false, false, true);
    logging::start_log("b.log", false, false, false);
    MakeBigLog("b.log");
    LogTimes(2000);
    EXPECT_THAT(Names(), ElementsAre("a.log", "b.log"));
}

TEST_F(LogStart, LogThatIsBigAlreadyIsRotatedFirst)
{
    MakeBigLog("a.log");
    logging::start_log("a.log", false, false, false);
    Log("a");
    EXPECT_EQ("vhd    | a\n", WithoutHeads(ReadFile("a.log")));
    EXPECT_EQ(15728640u, Unpack("a.log.gz").size());
}

// The old receiver still holds the file when the new one is made.
TEST_F(LogStart, StartingAgainAtTheSameNameTakesTheNextNumber)
{
    logging::start_log("a.log", false, false, false);
    Log("first");
    logging::start_log("a.log", false, false, false);
    Log("second");
    EXPECT_EQ("vhd    | first\n", WithoutHeads(ReadFile("a.log")));
    EXPECT_EQ("vhd    | second\n", WithoutHeads(ReadFile("a.1.log")));
    EXPECT_EQ("a.1.log", logging::get_log_file_path());
}

TEST_F(LogStart, FirstPathThatCanBeUsedIsOpened)
{
    WriteFile("file", "");
    EXPECT_TRUE(logging::open_log({"file/a.log", "b.log", "c.log"}, false, false));
    EXPECT_EQ("b.log", logging::get_log_file_path());
    EXPECT_THAT(Names(), ElementsAre("b.log", "file"));
    EXPECT_EQ("", m_captured.text());
}

TEST_F(LogStart, NoUsablePathEndsInTheBackupFolder)
{
    WriteFile("file", "");
    EXPECT_TRUE(logging::open_log({"file/a.log", "file/b.log"}, false, false));
    EXPECT_EQ("/tmp/NelvoBackup/a.log", logging::get_log_file_path());
    EXPECT_EQ("", m_captured.text());
}

TEST_F(LogStart, PathWithoutAFileNameEndsTheProcess)
{
    EXPECT_EXIT(logging::open_log({""}, false, false), testing::KilledBySignal(SIGABRT), "terminate called");
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

TEST_F(LogStart, DebugFlagIsSetAlthoughThereIsNoLog)
{
    ASSERT_EQ(0, ::mkfifo("fifo", 0600));
    logging::start_log("fifo", true, false, false);
    EXPECT_TRUE(logging::is_debug_log());
    logging::start_log("fifo", false, false, false);
    EXPECT_FALSE(logging::is_debug_log());
}

TEST_F(LogStart, OpenSetsTheMaskFlag)
{
    EXPECT_TRUE(logging::open_log({}, true, false));
    EXPECT_TRUE(m_log->is_mask_sensitive());
    EXPECT_TRUE(logging::open_log({}, false, false));
    EXPECT_FALSE(m_log->is_mask_sensitive());
}

TEST_F(LogStart, OpenReplacesTheReceiverBeforeItSetsTheMaskFlag)
{
    lines_receiver_t old;
    bool masked = true;
    const auto note = [&](lines_receiver_t*) { masked = m_log->is_mask_sensitive(); };
    m_log->set_receiver(logging::log_t::receiver_ptr_t(&old, note));
    EXPECT_TRUE(logging::open_log({}, true, false));
    EXPECT_FALSE(masked);
    EXPECT_TRUE(m_log->is_mask_sensitive());
}

TEST_F(LogStart, OpenWithoutReceiverLeavesTheLogAsItWas)
{
    const auto receiver = boost::make_shared<lines_receiver_t>("/x/a.log");
    m_log->set_receiver(receiver);
    ASSERT_EQ(0, ::mkfifo("fifo", 0600));
    EXPECT_FALSE(logging::open_log({"fifo"}, true, true));
    EXPECT_EQ(receiver, m_log->get_receiver());
    EXPECT_FALSE(m_log->is_mask_sensitive());
}

TEST_F(LogStart, OpenWithoutReceiverLeavesTheSizeCheckAsItWas)
{
    CountAnew(*m_log);
    ASSERT_EQ(0, ::mkfifo("fifo", 0600));
    logging::start_log("a.log", false, false, false);
    EXPECT_FALSE(logging::open_log({"fifo"}, false, true));
    MakeBigLog("a.log");
    LogTimes(2000);
    EXPECT_THAT(Names(), ElementsAre("a.log", "fifo"));

    logging::start_log("b.log", false, false, true);
    EXPECT_FALSE(logging::open_log({"fifo"}, false, false));
    MakeBigLog("b.log");
    LogTimes(1000);
    EXPECT_THAT(Names(), ElementsAre("a.log", "b.log", "b.log.gz", "fifo"));
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

TEST_F(LogParams, PathsThatWereThereBeforeDoNotCount)
{
    paths_t paths = {"before"};
    EXPECT_FALSE(logging::parse_log_params("cout,+x", paths));
    EXPECT_EQ((paths_t{"before"}), paths);
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

TEST_F(LogParams, PathsAreUnpacked) { EXPECT_EQ(":[a,b_c]", Parsed("a_Ab__c")); }

TEST_F(LogParams, PathThatCannotBeUnpackedLeavesThoseBeforeIt)
{
    paths_t paths = {"before"};
    EXPECT_THROW(logging::parse_log_params("a.log,my_log.log", paths), exc::runtime_exc_t);
    EXPECT_EQ((paths_t{"before", "a.log"}), paths);
}

TEST_F(LogParams, PathThatCannotBeUnpackedLeavesTheKeywordsBeforeIt)
{
    paths_t paths;
    EXPECT_THROW(logging::parse_log_params("my_log.log,debug", paths), exc::runtime_exc_t);
    EXPECT_FALSE(logging::is_debug_log());
    EXPECT_THROW(logging::parse_log_params("debug,my_log.log", paths), exc::runtime_exc_t);
    EXPECT_TRUE(logging::is_debug_log());
}

TEST_F(LogParams, FirstLineIsFlushed)
{
    flushed_buffer_t buffer;
    const redirected_stream_t redirected(std::cout, &buffer);
    paths_t paths;
    logging::parse_log_params("a.log", paths);
    EXPECT_EQ(1, buffer.m_flushes);
    EXPECT_EQ(kParsing, buffer.str());
}

TEST_F(LogParams, KeywordsAloneOpenNoLog)
{
    logging::start_log_from_params("cout,debug", true);
    EXPECT_EQ(std::string(kParsing) + kDisabled, m_captured.text());
    EXPECT_EQ(nullptr, m_log->get_receiver());
    EXPECT_FALSE(m_log->is_mask_sensitive());
    EXPECT_TRUE(logging::is_debug_log());
}

TEST_F(LogParams, LogThatIsOpenedIsPrinted)
{
    logging::start_log_from_params("flush,+x,a_B1.log,b.log", true);
    Log("a");
    EXPECT_EQ(std::string(kParsing) + "LOG: a-1.log\n", m_captured.text());
    EXPECT_EQ("vhd    | a\n", WithoutHeads(ReadFile("a-1.log")));
    EXPECT_TRUE(m_log->is_mask_sensitive());
}

TEST_F(LogParams, NumberedLogIsPrintedAsItIs)
{
    const posix::posix_log_file_t other("a.log");
    logging::start_log_from_params("a.log", false);
    EXPECT_EQ(std::string(kParsing) + "LOG: a.1.log\n", m_captured.text());
}

TEST_F(LogParams, SizeIsNotChecked)
{
    logging::start_log_from_params("a.log", false);
    MakeBigLog("a.log");
    LogTimes(2000);
    EXPECT_THAT(Names(), ElementsAre("a.log"));
}

TEST_F(LogParams, PathThatCannotBeOpenedDisablesTheLog)
{
    ASSERT_EQ(0, ::mkfifo("fifo", 0600));
    logging::start_log_from_params("fifo", false);
    EXPECT_EQ(kParsing + NoLog("fifo") + kDisabled, m_captured.text());
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
    logging::start_log_from_params_safe("a.log", true);
    Log("a");
    EXPECT_EQ(std::string(kParsing) + "LOG: a.log\n", m_captured.text());
    EXPECT_EQ("vhd    | a\n", WithoutHeads(ReadFile("a.log")));
    EXPECT_TRUE(m_log->is_mask_sensitive());
}

TEST_F(LogParams, SafeStartOpensNoLogForKeywordsAlone)
{
    logging::start_log_from_params_safe("flush", false);
    EXPECT_EQ(std::string(kParsing) + kDisabled, m_captured.text());
}

TEST_F(LogStart, ResetStartsTheFileAnew)
{
    logging::start_log("a.log", false, true, true);
    Log("old");
    WriteFile("a.log.gz", "archive");
    ASSERT_EQ(0, ::link("a.log", "old inode"));
    logging::reset_log();
    Log("new");
    EXPECT_EQ("vhd    | new\n", WithoutHeads(ReadFile("a.log")));
    EXPECT_EQ("vhd    | old\n", WithoutHeads(ReadFile("old inode")));
    EXPECT_EQ("a.log", logging::get_log_file_path());
    EXPECT_TRUE(m_log->is_mask_sensitive());
    EXPECT_THAT(Names(), ElementsAre("a.log", "a.log.gz", "old inode"));
    EXPECT_EQ("", m_captured.text());
}

TEST_F(LogStart, ResetKeepsTheNumber)
{
    const posix::posix_log_file_t other("a.log");
    logging::start_log("a.log", false, false, false);
    logging::reset_log();
    Log("new");
    EXPECT_EQ("vhd    | new\n", WithoutHeads(ReadFile("a.1.log")));
    EXPECT_THAT(Names(), ElementsAre("a.1.log", "a.log"));
}

TEST_F(LogStart, ResetOfALogWithoutAPathIsNothing)
{
    EXPECT_NO_THROW(logging::reset_log());
    EXPECT_EQ(nullptr, m_log->get_receiver());

    logging::start_log("", false, false, false);
    const auto receiver = m_log->get_receiver();
    logging::reset_log();
    EXPECT_EQ(receiver, m_log->get_receiver());
    EXPECT_EQ(Frame(), m_captured.text());
}

TEST_F(LogStart, ResetNeedsNoFileThatIsStillThere)
{
    logging::start_log("x/a.log", false, false, false);
    fs::remove_all("x");
    logging::reset_log();
    Log("new");
    EXPECT_EQ("vhd    | new\n", WithoutHeads(ReadFile("x/a.log")));
}

TEST_F(LogStart, ResetThatCannotDeleteLeavesTheLogSilent)
{
    logging::start_log("a.log", false, false, false);
    fs::remove("a.log");
    fs::create_directories("a.log/x");
    EXPECT_THROW(logging::reset_log(), boost::filesystem::filesystem_error);
    EXPECT_EQ(nullptr, m_log->get_receiver());
    EXPECT_EQ("", m_captured.text());
}

TEST_F(LogStart, ResetThatCannotReopenFallsBackToTheBackupFolder)
{
    logging::start_log("x/a.log", false, false, false);
    fs::remove_all("x");
    WriteFile("x", "");
    logging::reset_log();
    EXPECT_EQ("/tmp/NelvoBackup/a.log", logging::get_log_file_path());
}

TEST_F(LogStart, ResetThatCannotReopenAtAllLeavesTheLogSilent)
{
    logging::start_log("x/a.log", false, false, false);
    fs::remove_all("x");
    WriteFile("x", "");
    WriteFile("/tmp/NelvoBackup", "");
    logging::reset_log();
    EXPECT_EQ(nullptr, m_log->get_receiver());
    EXPECT_EQ("Failed to initialize log [x/a.log].\n"
              "Not a directory\n"
              "POSIX: Failed to create or open file [/tmp/NelvoBackup/a.log].\n",
              m_captured.text());
}

TEST(LogAtExit, StaticObjectsMayLogAndTheClosingLineComesLast)
{
    const std::string output = OutputOf(LOG_AT_EXIT);
    ASSERT_LT(2 * Frame().size(), output.size());
    EXPECT_EQ(Frame(), output.substr(0, Frame().size()));
    EXPECT_EQ("vhd    | in main\n       | ERR |from a later one\n       | from a static object\n",
              WithoutHeads(output.substr(Frame().size(), output.size() - 2 * Frame().size())));
    EXPECT_EQ(Frame(), output.substr(output.size() - Frame().size()));
}

TEST(LogBeforeMain, LogOnStandardOutputIsWhole)
{
    const std::string output = OutputOf(LOG_BEFORE_MAIN);
    ASSERT_LT(2 * Frame().size(), output.size());
    EXPECT_EQ(Frame(), output.substr(0, Frame().size()));
    EXPECT_EQ("early  | before main\n",
              WithoutHeads(output.substr(Frame().size(), output.size() - 2 * Frame().size())));
    EXPECT_EQ(Frame(), output.substr(output.size() - Frame().size()));
}
