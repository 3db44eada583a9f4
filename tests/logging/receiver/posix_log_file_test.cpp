#include "nelvo/logging/receiver/posix_log_file.h"

#include <csignal>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/file_locked_exc.h"
#include "nelvo/logging/log.h"
#include "nelvo/logging/receiver/zip_writer.h"
#include "tests/support/file_mask.h"
#include "tests/support/file_status.h"
#include "tests/support/gz.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/temp_folder.h"

using posix::posix_log_file_t;

namespace
{

constexpr std::size_t kMebibyte = 1'048'576;

// Whether another open of the file could lock it.
bool IsLocked(const std::string& path)
{
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    EXPECT_NE(-1, descriptor) << path;
    const bool locked = ::flock(descriptor, LOCK_EX | LOCK_NB) != 0;
    ::close(descriptor);
    return locked;
}

// A log whose name and line end have been changed behind its back.
class changed_log_t : public posix_log_file_t
{
public:
    explicit changed_log_t(const std::string& name) : posix_log_file_t(name), m_first_path(m_path)
    {
        m_path = "changed";
        m_eol = "\r\n";
    }

    // Under which name it was made.
    const std::string m_first_path;
};

class PosixLogFile : public ::testing::Test
{
protected:
    void Write(const std::string& text) { posix_log_file_t(m_name).write(text); }

    void Compress(posix_log_file_t& log)
    {
        util::zip_writer_t writer(m_archive, 9);
        log.compress_to(writer);
    }

    // What compressing to a full disk says.
    std::string CompressFailure(posix_log_file_t& log)
    {
        util::zip_writer_t writer("/dev/full", 9);
        try
        {
            log.compress_to(writer);
        }
        catch (const posix::errno_exc_t& e)
        {
            return e.what();
        }
        return "no failure";
    }

    std::string OpenFailure(const std::string& name)
    {
        try
        {
            const posix_log_file_t log(name);
        }
        catch (const posix::errno_exc_t& e)
        {
            return e.what();
        }
        return "no failure";
    }

    temp_folder_t m_folder;
    const std::string m_name = m_folder / "a.log";
    const std::string m_archive = m_folder / "a.log.gz";
};

} // namespace

TEST_F(PosixLogFile, AddsTheFileAndNothingElse)
{
    EXPECT_EQ(sizeof(logging::receiver::log_file_t) + sizeof(posix_file_ptr_t), sizeof(posix_log_file_t));
}

TEST_F(PosixLogFile, KeepsItsNameAndTellsTheFiles)
{
    const changed_log_t log(m_name);
    EXPECT_EQ(m_name, log.m_first_path);
    EXPECT_EQ(m_name, log.get_path());
    EXPECT_EQ("\r\n", log.get_eol());
}

TEST_F(PosixLogFile, IsCreatedAsThePlainestFile)
{
    const file_mask_t none(0);
    Write("");
    EXPECT_EQ(0100666u, StatusOf(m_name).st_mode);
    const file_mask_t narrow(027);
    const posix_log_file_t log(m_folder / "b.log");
    EXPECT_EQ(0100640u, StatusOf(m_folder / "b.log").st_mode);
}

TEST_F(PosixLogFile, NewTextGoesBehindTheOld)
{
    WriteFile(m_name, "old, without an end");
    Write("new\n");
    Write("newer\n");
    EXPECT_EQ("old, without an endnew\nnewer\n", ReadFile(m_name));
}

TEST_F(PosixLogFile, TextIsWrittenAsItIs)
{
    const std::string text = Noise(5000) + std::string("\0\r\n%1", 5);
    Write(text);
    EXPECT_EQ(text, ReadFile(m_name));
}

TEST_F(PosixLogFile, TextStandsInTheFileAtOnce)
{
    posix_log_file_t log(m_name);
    log.write("a");
    EXPECT_EQ("a", ReadFile(m_name));
    log.write("");
    log.write("b");
    EXPECT_EQ("ab", ReadFile(m_name));
}

// The file is not opened for appending.
TEST_F(PosixLogFile, PositionCountsAndNotTheEnd)
{
    posix_log_file_t log(m_name);
    log.write("abc");
    ASSERT_EQ(0, ::truncate(m_name.c_str(), 1));
    log.write("d");
    EXPECT_EQ(std::string("a\0\0d", 4), ReadFile(m_name));
}

TEST_F(PosixLogFile, SizeIsTheFiles)
{
    WriteFile(m_name, "1234");
    posix_log_file_t log(m_name);
    EXPECT_EQ(4u, log.get_size());
    log.write("56");
    EXPECT_EQ(6u, log.get_size());
    ASSERT_EQ(0, ::truncate(m_name.c_str(), 5'000'000'000));
    EXPECT_EQ(5'000'000'000u, log.get_size());
}

TEST_F(PosixLogFile, PathStaysAsGiven)
{
    ASSERT_EQ(0, ::chdir(m_folder.path().c_str()));
    const posix_log_file_t log(".//b \n\xff.log");
    EXPECT_EQ(".//b \n\xff.log", log.get_path());
    EXPECT_EQ(S_IFREG, StatusOf(m_folder / "b \n\xff.log").st_mode & S_IFMT);
}

TEST_F(PosixLogFile, LineEndIsALineFeed) { EXPECT_EQ("\n", posix_log_file_t(m_name).get_eol()); }

TEST_F(PosixLogFile, SecondOneOnTheFileFindsItLocked)
{
    const posix_log_file_t log(m_name);
    try
    {
        const posix_log_file_t second(m_name);
        ADD_FAILURE() << "not locked";
    }
    catch (const exc::file_locked_exc_t& e)
    {
        EXPECT_EQ("File [" + m_name + "] is locked.", e.what());
        EXPECT_EQ(m_name, e.GetFile());
    }
}

TEST_F(PosixLogFile, SharedLockOfAnotherCountsToo)
{
    Write("");
    const int descriptor = ::open(m_name.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(0, ::flock(descriptor, LOCK_SH));
    EXPECT_THROW(posix_log_file_t log(m_name), exc::file_locked_exc_t);
    ::close(descriptor);
    EXPECT_NO_THROW(posix_log_file_t log(m_name));
}

TEST_F(PosixLogFile, LockIsExclusiveAndEndsWithTheLog)
{
    auto log = boost::make_shared<posix_log_file_t>(m_name);
    EXPECT_TRUE(IsLocked(m_name));
    log.reset();
    EXPECT_FALSE(IsLocked(m_name));
}

// A child has the descriptor too, and only an explicit unlock frees the file while the child lives.
TEST_F(PosixLogFile, ChildProcessDoesNotKeepTheLock)
{
    auto log = boost::make_shared<posix_log_file_t>(m_name);
    const pid_t child = ::fork();
    if (child == 0)
    {
        ::pause();
        ::_exit(0);
    }
    log.reset();
    EXPECT_FALSE(IsLocked(m_name));
    ::kill(child, SIGKILL);
    EXPECT_EQ(child, ::waitpid(child, nullptr, 0));
}

// Descriptor 0 is never closed, so the unlock is all that frees the file.
TEST_F(PosixLogFile, LogOnDescriptorZeroIsUnlockedButNotClosed)
{
    ::close(STDIN_FILENO);
    auto log = boost::make_shared<posix_log_file_t>(m_name);
    log->write("a");
    log.reset();
    EXPECT_NE(-1, ::fcntl(STDIN_FILENO, F_GETFD));
    EXPECT_FALSE(IsLocked(m_name));
    EXPECT_EQ("a", ReadFile(m_name));
}

TEST_F(PosixLogFile, FailureToOpenIsTheFilesOwn)
{
    const std::string missing = m_folder / "no/a.log";
    EXPECT_EQ("Is a directory\nPOSIX: Failed to create or open file [" + m_folder.path() + "].",
              OpenFailure(m_folder.path()));
    EXPECT_EQ("No such file or directory\nPOSIX: Failed to create or open file [" + missing + "].",
              OpenFailure(missing));
}

TEST_F(PosixLogFile, FifoHasNoEndToGoTo)
{
    ASSERT_EQ(0, ::mkfifo(m_name.c_str(), 0666));
    const std::string failure = "Illegal seek\nPOSIX: Seek operation has failed. File: [" + m_name +
                                "]. Distance to move: [0]. Move method: [SEEK_END].";
    EXPECT_EQ(failure, OpenFailure(m_name));
    EXPECT_EQ(failure, OpenFailure(m_name));
}

TEST_F(PosixLogFile, CompressingMovesTheContent)
{
    const std::string old = Noise(2 * kMebibyte + 3);
    WriteFile(m_name, old);
    posix_log_file_t log(m_name);
    log.write("new\n");
    Compress(log);
    EXPECT_EQ(0u, log.get_size());
    EXPECT_EQ(old + "new\n", Unpack(m_archive));
    log.write("newer\n");
    EXPECT_EQ("newer\n", ReadFile(m_name));
}

TEST_F(PosixLogFile, CompressingAnEmptyFileIsNothingSpecial)
{
    posix_log_file_t log(m_name);
    Compress(log);
    EXPECT_EQ("", Unpack(m_archive));
    EXPECT_EQ(0u, log.get_size());
}

TEST_F(PosixLogFile, CompressingKeepsTheFileAndItsLock)
{
    posix_log_file_t log(m_name);
    log.write("a");
    const ino_t file = StatusOf(m_name).st_ino;
    Compress(log);
    EXPECT_EQ(file, StatusOf(m_name).st_ino);
    EXPECT_TRUE(IsLocked(m_name));
}

TEST_F(PosixLogFile, FailureToCompressNamesTheLog)
{
    WriteFile(m_name, Noise(kMebibyte));
    posix_log_file_t log(m_name);
    EXPECT_EQ("No space left on device\n"
              "Cannot add data to the GZ archive [/dev/full].\n"
              "Cannot compress log file. Log: [" +
                  m_name + "].",
              CompressFailure(log));
    EXPECT_TRUE(IsLocked(m_name));
}

// Nothing is cut, but the position stays behind the mebibyte that was read and not taken.
TEST_F(PosixLogFile, NextTextAfterAFailedCopyIsWrittenOverOldText)
{
    std::string content = Noise(3 * kMebibyte);
    WriteFile(m_name, content);
    posix_log_file_t log(m_name);
    log.write("the end\n");
    content += "the end\n";
    EXPECT_NE("no failure", CompressFailure(log));
    EXPECT_EQ(content, ReadFile(m_name));

    log.write("one\n");
    log.write("two\n");
    EXPECT_EQ(content.replace(kMebibyte, 8, "one\ntwo\n"), ReadFile(m_name));
}

// A text that packs into zlib's own memory is taken by a full disk, and cut, before the archive fails.
TEST_F(PosixLogFile, TextIsLostIfTheArchiveFailsOnlyAtItsEnd)
{
    const auto reported = boost::make_shared<lines_receiver_t>();
    logging::GetProcessLog()->set_receiver(reported);
    WriteFile(m_name, std::string(3 * kMebibyte, 'a'));
    posix_log_file_t log(m_name);
    EXPECT_EQ("no failure", CompressFailure(log));
    logging::GetProcessLog()->set_receiver({});

    EXPECT_EQ("", ReadFile(m_name));
    EXPECT_EQ("       | ERR |Cannot close GZ archive [/dev/full].\n"
              "       | ERR |Error code: -1\n",
              WithoutHeads(reported->text()));
}
