#include "nelvo/logging/receiver/log_files.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <memory>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include <boost/make_shared.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "nelvo/context/common_lib_ctx.h"
#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/str.h"
#include "nelvo/fs/access_permissions.h"
#include "nelvo/logging/receiver/posix_log_file.h"
#include "tests/support/failing_memory.h"
#include "tests/support/file_mask.h"
#include "tests/support/file_status.h"
#include "tests/support/gz.h"
#include "tests/support/private_disk.h"
#include "tests/support/stdout_capture.h"
#include "tests/support/temp_folder.h"
#include "tests/support/thrown.h"

using logging::receiver::create_file_log;
using logging::receiver::create_test;
using logging::receiver::fallback_log_path;
using logging::receiver::numbered_log_name;
using logging::receiver::open_unlocked_log_file;
using logging::receiver::pick_log_path;
using logging::receiver::reopen_file_log;
using testing::ElementsAre;
using testing::IsEmpty;

namespace fs = std::filesystem;

namespace
{

// Holds in all of this program, whatever file a case stands in.
[[maybe_unused]] const bool g_errno_changes = ChangeErrnoWithMemory();

constexpr std::size_t kLimit = 15728639;

using names_t = std::vector<std::string>;
using receiver_ptr_t = boost::shared_ptr<logging::receiver::log_file_t>;

// Holds a file locked, as another process would.
class locked_file_t
{
public:
    explicit locked_file_t(const std::string& path)
        : m_descriptor(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600))
    {
        EXPECT_EQ(0, ::flock(m_descriptor, LOCK_EX | LOCK_NB)) << path;
    }
    ~locked_file_t() { ::close(m_descriptor); }
    locked_file_t(const locked_file_t&) = delete;
    locked_file_t& operator=(const locked_file_t&) = delete;

private:
    int m_descriptor;
};

names_t NamesIn(const std::string& folder)
{
    names_t names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

// Answers in its own way when it is asked about one path, and allows all others.
class path_permissions_t : public security::IFilesAccessPermissions
{
public:
    path_permissions_t(const std::string& path, std::function<void()> answer)
        : m_path(path), m_answer(std::move(answer))
    {
    }
    void CheckAccess(const util::str_t& path) override
    {
        if (path.narrow() == m_path)
            m_answer();
    }

private:
    std::string m_path;
    std::function<void()> m_answer;
};

// While one lives, asking about the path is answered so.
class path_answer_t
{
public:
    path_answer_t(const std::string& path, std::function<void()> answer)
    {
        GetCommonLibCtx()->SetFilesAccessPermissions(
            boost::make_shared<path_permissions_t>(path, std::move(answer)));
    }
    ~path_answer_t() { GetCommonLibCtx()->SetFilesAccessPermissions(m_before); }
    path_answer_t(const path_answer_t&) = delete;
    path_answer_t& operator=(const path_answer_t&) = delete;

private:
    const boost::shared_ptr<security::IFilesAccessPermissions> m_before =
        GetCommonLibCtx()->GetFilesAccessPermissions();
};

// The folder /tmp is this process's own.
class LogFiles : public ::testing::Test
{
protected:
    static std::string PathOf(const receiver_ptr_t& receiver)
    {
        return receiver ? receiver->get_path() : "no log";
    }

    static std::string CreateTestFailure(const std::string& path)
    {
        return Thrown<posix::errno_exc_t>([&] { create_test(path); });
    }

    std::string Printed() const { return m_captured.text(); }

    const private_disk_t m_tmp{"/tmp", 32'000'000};
    temp_folder_t m_folder;
    const std::string m_file = m_folder / "file"; // what stands below it cannot be opened
    const std::string m_bad = m_file + "/bad.log";
    stdout_capture_t m_captured;
};

} // namespace

TEST(NumberedLogName, NumberStandsBeforeTheEnding)
{
    EXPECT_EQ("a.1.log", numbered_log_name("a.log", "1"));
    EXPECT_EQ("a.1.LOG", numbered_log_name("a.LOG", "1"));
    EXPECT_EQ("a.1.Log", numbered_log_name("a.Log", "1"));
    EXPECT_EQ("a.log.999.log", numbered_log_name("a.log.log", "999"));
    EXPECT_EQ("a.1.2.log", numbered_log_name("a.1.log", "2"));
    EXPECT_EQ(".1.log", numbered_log_name(".log", "1"));
}

TEST(NumberedLogName, AnyOtherNameGetsTheEnding)
{
    EXPECT_EQ("a.1.log", numbered_log_name("a", "1"));
    EXPECT_EQ("a.txt.1.log", numbered_log_name("a.txt", "1"));
    EXPECT_EQ("a.log1.1.log", numbered_log_name("a.log1", "1"));
    EXPECT_EQ("alog.1.log", numbered_log_name("alog", "1"));
    EXPECT_EQ("log.1.log", numbered_log_name("log", "1"));
    EXPECT_EQ(".1.log", numbered_log_name("", "1"));
    EXPECT_EQ("a.log/.1.log", numbered_log_name("a.log/", "1"));
}

TEST(NumberedLogName, DotAtTheEndStandsForNoEnding)
{
    EXPECT_EQ("a.1", numbered_log_name("a.", "1"));
    EXPECT_EQ("a.log.1", numbered_log_name("a.log.", "1"));
    EXPECT_EQ("a..1", numbered_log_name("a..", "1"));
    EXPECT_EQ(".1", numbered_log_name(".", "1"));
}

TEST(NumberedLogName, FolderMayHoldTheLastDot)
{
    EXPECT_EQ("/d.log/x.1.log", numbered_log_name("/d.log/x", "1"));
    EXPECT_EQ("/d./x.1.log", numbered_log_name("/d./x", "1"));
    EXPECT_EQ("/d.log/x.1.log", numbered_log_name("/d.log/x.log", "1"));
}

TEST(NumberedLogName, TextIsTakenAsItIs)
{
    EXPECT_EQ("a b\n\xff%1.-7.log", numbered_log_name("a b\n\xff%1.log", "-7"));
    EXPECT_EQ("a..log", numbered_log_name("a.log", ""));
}

TEST_F(LogFiles, TestCreatesFileAndFolders)
{
    const file_mask_t none(0);
    create_test(m_folder / "a/b/c.log");
    EXPECT_EQ(0755u, ModeOf(m_folder / "a"));
    EXPECT_EQ(0755u, ModeOf(m_folder / "a/b"));
    EXPECT_EQ(0664u, ModeOf(m_folder / "a/b/c.log"));
    const file_mask_t narrow(027);
    create_test(m_folder / "d.log");
    EXPECT_EQ(0640u, ModeOf(m_folder / "d.log"));
}

TEST_F(LogFiles, TestLeavesAFileAsItIs)
{
    WriteFile(m_file, "text");
    ASSERT_EQ(0, ::chmod(m_file.c_str(), 0604));
    create_test(m_file);
    EXPECT_EQ("text", ReadFile(m_file));
    EXPECT_EQ(0604u, ModeOf(m_file));
}

TEST_F(LogFiles, TestDoesNotMindALock)
{
    const locked_file_t locked(m_file);
    EXPECT_NO_THROW(create_test(m_file));
}

TEST_F(LogFiles, TestClosesTheFile)
{
    const names_t before = NamesIn("/proc/self/fd");
    create_test(m_file);
    EXPECT_EQ(before, NamesIn("/proc/self/fd"));
}

TEST_F(LogFiles, TestTellsWhyNoFileCanBeCreated)
{
    WriteFile(m_file, "");
    fs::create_symlink(m_folder / "no/such", m_folder / "dangling");
    fs::create_symlink("circle", m_folder / "circle");
    const std::string long_name = m_folder / std::string(256, 'n');

    EXPECT_EQ("Is a directory\nCannot create a log file.", CreateTestFailure(m_folder.path()));
    EXPECT_EQ("Is a directory\nCannot create a log file.", CreateTestFailure(m_folder / "new/"));
    EXPECT_EQ("Not a directory\nCannot create a log file.", CreateTestFailure(m_file + "/x"));
    EXPECT_EQ("No such file or directory\nCannot create a log file.", CreateTestFailure(""));
    EXPECT_EQ("No such file or directory\nCannot create a log file.",
              CreateTestFailure(m_folder / "dangling"));
    EXPECT_EQ("Too many levels of symbolic links\nCannot create a log file.",
              CreateTestFailure(m_folder / "circle"));
    EXPECT_EQ("File name too long\nCannot create a log file.", CreateTestFailure(long_name));
}

TEST_F(LogFiles, TestTellsWhichFolderCannotBeCreated)
{
    WriteFile(m_file, "");
    fs::create_symlink(m_folder / "no/such", m_folder / "dangling");
    EXPECT_EQ("Not a directory\nFailed to get file system object info: '" + m_file + "/x'",
              CreateTestFailure(m_file + "/x/y"));
    EXPECT_EQ("File exists\nFailed to create directory '" + m_folder / "dangling" + "'",
              CreateTestFailure(m_folder / "dangling/x"));
}

TEST_F(LogFiles, FirstPathThatCanBeUsedIsPicked)
{
    WriteFile(m_file, "");
    const std::string good = m_folder / "good.log";
    const std::string other = m_folder / "other.log";
    EXPECT_EQ(good, pick_log_path({good}));
    EXPECT_EQ(good, pick_log_path({good, other}));
    EXPECT_EQ(good, pick_log_path({m_bad, good, other}));
    EXPECT_EQ(good, pick_log_path({"", m_folder.path(), good}));
    EXPECT_FALSE(fs::exists(other));
    EXPECT_EQ("", Printed());
}

TEST_F(LogFiles, WithoutAPathNoneIsPicked)
{
    EXPECT_EQ("Log paths list is empty.", Thrown<exc::runtime_exc_t>([] { pick_log_path({}); }));
}

TEST_F(LogFiles, RefusedPathIsPassedOverUntouched)
{
    const path_answer_t refused(m_file, [] { throw exc::runtime_exc_t("refused"); });
    EXPECT_EQ(m_folder / "b.log", pick_log_path({m_file, m_folder / "b.log"}));
    EXPECT_EQ("/tmp/NelvoBackup/file", PathOf(reopen_file_log(m_file)));
    EXPECT_FALSE(fs::exists(m_file));
    EXPECT_EQ("", Printed());
}

TEST_F(LogFiles, OnlyStandardExceptionsAreFailures)
{
    const path_answer_t odd(m_file, [] { throw 1; });
    EXPECT_THROW(pick_log_path({m_file, m_folder / "b.log"}), int);
    EXPECT_THROW(create_file_log({m_file, m_folder / "b.log"}), int);
    EXPECT_THROW(reopen_file_log(m_file), int);
    EXPECT_FALSE(fs::exists(m_folder / "b.log"));
    EXPECT_EQ("", Printed());
}

TEST_F(LogFiles, FirstNameUnderTheBackupFolderStandsInForAll)
{
    WriteFile(m_file, "");
    EXPECT_FALSE(fs::exists("/tmp/NelvoBackup"));
    EXPECT_EQ("/tmp/NelvoBackup/bad.log", pick_log_path({m_bad, m_file + "/worse.log"}));
    EXPECT_EQ("/tmp/NelvoBackup/bad.log", pick_log_path({m_bad, ""}));
    EXPECT_EQ("/tmp/NelvoBackup/.", pick_log_path({"/tmp/"}));
    EXPECT_EQ("/tmp/NelvoBackup//", pick_log_path({"/"}));
    EXPECT_EQ("/tmp/NelvoBackup/..", pick_log_path({"/tmp/.."}));
    EXPECT_EQ("/tmp/NelvoBackup/" + m_folder.path().substr(m_folder.path().rfind('/') + 1),
              pick_log_path({m_folder.path()}));
    EXPECT_EQ(0755u, ModeOf("/tmp/NelvoBackup"));
    EXPECT_THAT(NamesIn("/tmp/NelvoBackup"), IsEmpty());
    EXPECT_EQ("", Printed());
}

// Nothing is in flight any more that could be thrown again.
TEST_F(LogFiles, PathsWithoutAFileNameEndTheProcess)
{
    EXPECT_EXIT(pick_log_path({""}), testing::KilledBySignal(SIGABRT), "terminate called");
    EXPECT_EXIT(pick_log_path({"", m_folder.path()}), testing::KilledBySignal(SIGABRT), "");
    EXPECT_EXIT(create_file_log({""}), testing::KilledBySignal(SIGABRT), "terminate called");
}

TEST_F(LogFiles, FallbackIsAskedForInsideAHandler)
{
    try
    {
        throw exc::runtime_exc_t("in flight");
    }
    catch (const std::exception&)
    {
        EXPECT_EQ("/tmp/NelvoBackup/x.log", fallback_log_path("/a/b/x.log"));
        EXPECT_EQ("/tmp/NelvoBackup/x.log", fallback_log_path("x.log"));
        EXPECT_EQ("in flight", Thrown<exc::runtime_exc_t>([] { fallback_log_path(""); }));
    }
    EXPECT_EQ(0755u, ModeOf("/tmp/NelvoBackup"));
}

TEST_F(LogFiles, FallbackNeedsItsFolder)
{
    fs::create_symlink("no/such", "/tmp/NelvoBackup");
    EXPECT_EQ("File exists\nFailed to create directory '/tmp/NelvoBackup'",
              Thrown<posix::errno_exc_t>([] { fallback_log_path("x.log"); }));
}

TEST_F(LogFiles, UnlockedFileIsOpenedUnderItsName)
{
    std::string real_path;
    const receiver_ptr_t receiver = open_unlocked_log_file(m_file, real_path);
    EXPECT_EQ(m_file, real_path);
    EXPECT_EQ(m_file, PathOf(receiver));
}

TEST_F(LogFiles, LockedFileIsPassedOverForTheNextNumber)
{
    std::string real_path;
    const receiver_ptr_t first = open_unlocked_log_file(m_folder / "a.log", real_path);
    const receiver_ptr_t second = open_unlocked_log_file(m_folder / "a.log", real_path);
    EXPECT_EQ(m_folder / "a.1.log", real_path);
    EXPECT_EQ(m_folder / "a.1.log", PathOf(second));

    const locked_file_t other(m_folder / "a.2.log");
    const receiver_ptr_t third = open_unlocked_log_file(m_folder / "a.log", real_path);
    EXPECT_EQ(m_folder / "a.3.log", real_path);
}

TEST_F(LogFiles, OtherFailureThanALockEndsTheSearch)
{
    const locked_file_t locked(m_folder / "a.log");
    ASSERT_TRUE(fs::create_directory(m_folder / "a.1.log"));
    std::string real_path = "as it was";
    EXPECT_EQ("Is a directory\nPOSIX: Failed to create or open file [" + m_folder / "a.1.log" + "].",
              Thrown<posix::errno_exc_t>([&] { open_unlocked_log_file(m_folder / "a.log", real_path); }));
    EXPECT_EQ("as it was", real_path);
}

TEST_F(LogFiles, NumberThatMakesTheNameTooLongEndsTheSearch)
{
    const std::string name = std::string(252, 'n') + ".lo";
    const locked_file_t locked(m_folder / name);
    std::string real_path;
    EXPECT_EQ("File name too long\nPOSIX: Failed to create or open file [" + m_folder / name + ".1.log].",
              Thrown<posix::errno_exc_t>([&] { open_unlocked_log_file(m_folder / name, real_path); }));
}

TEST_F(LogFiles, ThousandNamesAreTried)
{
    rlimit limit = {};
    ASSERT_EQ(0, ::getrlimit(RLIMIT_NOFILE, &limit));
    limit.rlim_cur = limit.rlim_max;
    ASSERT_EQ(0, ::setrlimit(RLIMIT_NOFILE, &limit));

    std::vector<std::unique_ptr<locked_file_t>> locked;
    locked.push_back(std::make_unique<locked_file_t>(m_folder / "a.log"));
    for (int i = 1; i <= 998; ++i)
        locked.push_back(std::make_unique<locked_file_t>(m_folder / "a." + std::to_string(i) + ".log"));

    std::string real_path;
    const receiver_ptr_t last = open_unlocked_log_file(m_folder / "a.log", real_path);
    EXPECT_EQ(m_folder / "a.999.log", real_path);
    EXPECT_EQ("All log files are locked.",
              Thrown<exc::runtime_exc_t>([&] { open_unlocked_log_file(m_folder / "a.log", real_path); }));
    EXPECT_EQ(m_folder / "a.999.log", real_path);
    EXPECT_EQ(nullptr, create_file_log({m_folder / "a.log"}));
    EXPECT_EQ("Failed to initialize log [" + m_folder / "a.log" + "].\nAll log files are locked.\n",
              Printed());
}

TEST_F(LogFiles, LogIsCreatedAtThePickedPath)
{
    WriteFile(m_file, "");
    const receiver_ptr_t log = create_file_log({m_bad, m_folder / "a.log", m_folder / "b.log"});
    EXPECT_EQ(m_folder / "a.log", PathOf(log));
    EXPECT_THAT(NamesIn(m_folder.path()), ElementsAre("a.log", "file"));
    EXPECT_EQ("", Printed());
}

TEST_F(LogFiles, LogGoesOnBehindTheOldText)
{
    WriteFile(m_file, "old\n");
    create_file_log({m_file})->write("new\n");
    EXPECT_EQ("old\nnew\n", ReadFile(m_file));
}

TEST_F(LogFiles, RelativePathStartsAtTheWorkingFolder)
{
    ASSERT_EQ(0, ::chdir(m_folder.path().c_str()));
    EXPECT_EQ("a.log", PathOf(create_file_log({"a.log"})));
    EXPECT_EQ("x/../b.log", PathOf(create_file_log({"x/../b.log"})));
    EXPECT_THAT(NamesIn(m_folder.path()), ElementsAre("a.log", "b.log", "x"));
}

TEST_F(LogFiles, LinkAtThePathIsFollowed)
{
    WriteFile(m_file, "");
    fs::create_symlink("file", m_folder / "a.log");
    create_file_log({m_folder / "a.log"})->write("text");
    EXPECT_EQ("text", ReadFile(m_file));
}

TEST_F(LogFiles, WayToTheFileDecidesItsMode)
{
    const file_mask_t none(0);
    WriteFile(m_file, "");
    const receiver_ptr_t picked = create_file_log({m_folder / "a.log"});
    const receiver_ptr_t numbered = create_file_log({m_folder / "a.log"});
    const receiver_ptr_t fallback = create_file_log({m_bad});
    EXPECT_EQ(0664u, ModeOf(m_folder / "a.log"));
    EXPECT_EQ(0666u, ModeOf(m_folder / "a.1.log"));
    EXPECT_EQ(0666u, ModeOf("/tmp/NelvoBackup/bad.log"));
}

TEST_F(LogFiles, AllPathsBadEndInTheBackupFolder)
{
    WriteFile(m_file, "");
    const receiver_ptr_t first = create_file_log({m_bad, m_file + "/worse.log"});
    const receiver_ptr_t second = create_file_log({m_bad});
    EXPECT_EQ("/tmp/NelvoBackup/bad.log", PathOf(first));
    EXPECT_EQ("/tmp/NelvoBackup/bad.1.log", PathOf(second));
    EXPECT_EQ("", Printed());
}

TEST_F(LogFiles, NamesMayHoldAnyByte)
{
    for (const std::string name : {" ", "a b", "a\nb", "\xff\xfe.log", "%1", "\"'$(x)"})
        EXPECT_EQ(m_folder / name, PathOf(create_file_log({m_folder / name})));
    const std::string longest(255, 'n');
    EXPECT_EQ(m_folder / longest, PathOf(create_file_log({m_folder / longest})));
    EXPECT_EQ("", Printed());
}

TEST_F(LogFiles, FailureIsPrintedWithTheFirstPath)
{
    WriteFile(m_file, "");
    WriteFile("/tmp/NelvoBackup", "");
    EXPECT_EQ(nullptr, create_file_log({m_bad, m_file + "/worse.log"}));
    EXPECT_EQ("Failed to initialize log [" + m_bad +
                  "].\n"
                  "Not a directory\n"
                  "POSIX: Failed to create or open file [/tmp/NelvoBackup/bad.log].\n",
              Printed());
}

TEST_F(LogFiles, FailureWithoutAPathSaysSo)
{
    EXPECT_EQ(nullptr, create_file_log({}));
    EXPECT_EQ("Failed to initialize log [n/a].\nLog paths list is empty.\n", Printed());
}

TEST_F(LogFiles, FolderIsNoLog)
{
    EXPECT_EQ(nullptr, create_file_log({"/tmp/"}));
    EXPECT_EQ("Failed to initialize log [/tmp/].\n"
              "Is a directory\n"
              "POSIX: Failed to create or open file [/tmp/NelvoBackup/.].\n",
              Printed());
}

TEST_F(LogFiles, FifoIsNoLog)
{
    ASSERT_EQ(0, ::mkfifo(m_file.c_str(), 0600));
    EXPECT_EQ(nullptr, create_file_log({m_file, m_folder / "b.log"}));
    EXPECT_EQ("Failed to initialize log [" + m_file +
                  "].\n"
                  "Illegal seek\n"
                  "POSIX: Seek operation has failed. File: [" +
                  m_file + "]. Distance to move: [0]. Move method: [SEEK_END].\n",
              Printed());
}

TEST_F(LogFiles, BigLogIsRotatedBeforeItsFirstText)
{
    WriteFile(m_file, std::string(kLimit, 'a'));
    create_file_log({m_file})->write("b");
    EXPECT_THAT(NamesIn(m_folder.path()), ElementsAre("file"));

    create_file_log({m_file})->write("c");
    EXPECT_EQ("c", ReadFile(m_file));
    EXPECT_EQ(std::string(kLimit, 'a') + "b", Unpack(m_folder / "file.gz"));
}

TEST_F(LogFiles, BigLogThatCannotBeRotatedIsNoLog)
{
    WriteFile(m_file, std::string(kLimit + 1, 'a'));
    ASSERT_TRUE(fs::create_directories(m_folder / "file.gz.10/x"));
    EXPECT_EQ(nullptr, create_file_log({m_file, m_folder / "b.log"}));
    EXPECT_EQ("Failed to initialize log [" + m_file +
                  "].\n"
                  "Directory not empty\n"
                  "Cannot age file. File path: [" +
                  m_file +
                  ".gz]. Extension: [.log.gz]. Ages limit: [10].\n"
                  "Unable to validate log size limit. Log path: [" +
                  m_file + "].\n",
              Printed());
    EXPECT_EQ(kLimit + 1, fs::file_size(m_file));
    const locked_file_t not_locked_any_more(m_file);
}

TEST_F(LogFiles, ReopenedLogIsAtItsPath)
{
    const receiver_ptr_t log = reopen_file_log(m_folder / "x/a.log");
    EXPECT_EQ(m_folder / "x/a.log", PathOf(log));
    EXPECT_EQ(m_folder / "x/a.1.log", PathOf(reopen_file_log(m_folder / "x/a.log")));
    EXPECT_EQ("", Printed());
}

TEST_F(LogFiles, ReopenedLogIsRotated)
{
    WriteFile(m_file, std::string(kLimit + 1, 'a'));
    EXPECT_EQ(0u, reopen_file_log(m_file)->get_size());
    EXPECT_THAT(NamesIn(m_folder.path()), ElementsAre("file", "file.gz"));
}

TEST_F(LogFiles, ReopenedLogFallsBackToTheBackupFolder)
{
    WriteFile(m_file, "");
    EXPECT_EQ("/tmp/NelvoBackup/bad.log", PathOf(reopen_file_log(m_bad)));
    EXPECT_EQ("", Printed());
}

TEST_F(LogFiles, FailureToReopenIsPrintedWithThePath)
{
    WriteFile(m_file, "");
    WriteFile("/tmp/NelvoBackup", "");
    EXPECT_EQ(nullptr, reopen_file_log(m_bad));
    EXPECT_EQ("Failed to initialize log [" + m_bad +
                  "].\n"
                  "Not a directory\n"
                  "POSIX: Failed to create or open file [/tmp/NelvoBackup/bad.log].\n",
              Printed());
}

// Here the failure is still in flight when the fallback is asked for.
TEST_F(LogFiles, ReopeningWithoutAFileNameFailsAsTheTestDid)
{
    EXPECT_EQ(nullptr, reopen_file_log(""));
    EXPECT_EQ("Failed to initialize log [].\nNo such file or directory\nCannot create a log file.\n",
              Printed());
}
