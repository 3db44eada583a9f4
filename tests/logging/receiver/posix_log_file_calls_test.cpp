// A file log's calls of the system, some of which this program answers itself.

#include <cerrno>
#include <functional>
#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/file_locked_exc.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/logging/receiver/posix_log_file.h"
#include "nelvo/logging/receiver/zip_writer.h"
#include "tests/support/failing_memory.h"
#include "tests/support/temp_folder.h"

using posix::posix_log_file_t;

namespace
{

struct calls_t
{
    bool noted = false;
    std::string text; // those of lock, close and flush so far
    std::function<void()> before_lock;
    int lock_error = 0;
    int unlock_error = 0;
    int close_error = 0; // the file is closed nevertheless
    int flush_error = 0;
};

calls_t g_calls;

void Note(const std::string& call)
{
    if (g_calls.noted)
        g_calls.text += call + "\n";
}

int Answer(long result, int error)
{
    if (error == 0)
        return static_cast<int>(result);
    errno = error;
    return -1;
}

} // namespace

extern "C" int flock(int descriptor, int operation) noexcept
{
    Note("flock " + std::to_string(operation));
    if (g_calls.before_lock)
        g_calls.before_lock();
    const int error = (operation & LOCK_UN) != 0 ? g_calls.unlock_error : g_calls.lock_error;
    return error != 0 ? Answer(-1, error) : Answer(::syscall(SYS_flock, descriptor, operation), 0);
}

extern "C" int close(int descriptor)
{
    Note("close");
    const long result = ::syscall(SYS_close, descriptor);
    return Answer(result, g_calls.noted ? g_calls.close_error : 0);
}

extern "C" int fsync(int)
{
    Note("fsync");
    return Answer(0, g_calls.flush_error);
}

namespace
{

// A log that flushes after each write.
class flushing_log_t : public posix_log_file_t
{
public:
    explicit flushing_log_t(const std::string& name) : posix_log_file_t(name) { m_flush = true; }
};

std::string Lock() { return "flock " + std::to_string(LOCK_EX | LOCK_NB) + "\n"; }
std::string Unlock() { return "flock " + std::to_string(LOCK_UN) + "\n"; }

class PosixLogFileCalls : public ::testing::Test
{
protected:
    void SetUp() override { g_calls.noted = true; }
    void TearDown() override { g_calls = {}; }

    // What a new log says that fails to lock its file.
    template <class Exception>
    std::string LockFailure()
    {
        try
        {
            const posix_log_file_t log(m_name);
        }
        catch (const Exception& e)
        {
            return e.what();
        }
        return "no failure";
    }

    temp_folder_t m_folder;
    const std::string m_name = m_folder / "a.log";
};

} // namespace

TEST_F(PosixLogFileCalls, LockDoesNotWaitAndEndsBeforeTheFileDoes)
{
    boost::make_shared<posix_log_file_t>(m_name);
    EXPECT_EQ(Lock() + Unlock() + "close\n", g_calls.text);
}

// The last text of the one that held the lock may come after the file has been opened.
TEST_F(PosixLogFileCalls, EndIsSoughtWhenTheFileIsLocked)
{
    g_calls.before_lock = [this] { WriteFile(m_name, "text of another\n"); };
    posix_log_file_t log(m_name);
    g_calls.before_lock = {};
    log.write("text\n");
    EXPECT_EQ("text of another\ntext\n", ReadFile(m_name));
}

TEST_F(PosixLogFileCalls, FailedLockNamesTheFile)
{
    g_calls.lock_error = ENOLCK;
    EXPECT_EQ("No locks available\nFailed to lock file [" + m_name + "].", LockFailure<posix::errno_exc_t>());
    EXPECT_EQ(Lock() + "close\n", g_calls.text);
}

TEST_F(PosixLogFileCalls, InterruptedLockIsNotTriedAgain)
{
    g_calls.lock_error = EINTR;
    EXPECT_EQ("Interrupted system call\nFailed to lock file [" + m_name + "].",
              LockFailure<posix::errno_exc_t>());
    EXPECT_EQ(Lock() + "close\n", g_calls.text);
}

TEST_F(PosixLogFileCalls, ErrnoOfAFailedLockIsReadAfterTheClose)
{
    g_calls.lock_error = EWOULDBLOCK;
    g_calls.close_error = EIO;
    EXPECT_EQ("Input/output error\nFailed to lock file [" + m_name + "].", LockFailure<posix::errno_exc_t>());

    g_calls.lock_error = ENOLCK;
    g_calls.close_error = EWOULDBLOCK;
    EXPECT_EQ("File [" + m_name + "] is locked.", LockFailure<exc::file_locked_exc_t>());
}

TEST_F(PosixLogFileCalls, FailureToUnlockIsDropped)
{
    auto log = boost::make_shared<posix_log_file_t>(m_name);
    g_calls.unlock_error = EINTR;
    g_calls.text.clear();
    EXPECT_NO_THROW(log.reset());
    EXPECT_EQ(Unlock() + "close\n", g_calls.text);
}

TEST_F(PosixLogFileCalls, WriteDoesNotFlushUnlessItIsAskedTo)
{
    posix_log_file_t log(m_name);
    g_calls.text.clear();
    log.write("a");
    EXPECT_EQ("", g_calls.text);
}

TEST_F(PosixLogFileCalls, FlushComesOnceAfterEachWrite)
{
    flushing_log_t log(m_name);
    g_calls.text.clear();
    log.write(std::string(5000, 'a'));
    EXPECT_EQ("fsync\n", g_calls.text);
    log.write("b");
    EXPECT_EQ("fsync\nfsync\n", g_calls.text);
}

TEST_F(PosixLogFileCalls, FailedFlushLeavesTheTextWritten)
{
    flushing_log_t log(m_name);
    g_calls.flush_error = EIO;
    try
    {
        log.write("a");
        ADD_FAILURE() << "flushed";
    }
    catch (const posix::errno_exc_t& e)
    {
        EXPECT_EQ("Input/output error\nPOSIX: Failed to flush file buffers. File: [" + m_name + "].",
                  e.what());
    }
    EXPECT_EQ("a", ReadFile(m_name));
}

// The memory for copying is asked for when the position is at the start already.
TEST_F(PosixLogFileCalls, NextTextAfterAFailureToGetMemoryIsWrittenOverTheFirst)
{
    util::zip_writer_t writer(m_folder / "a.log.gz", 9);
    posix_log_file_t log(m_name);
    log.write("old text\n");
    try
    {
        FailNextAllocation();
        log.compress_to(writer);
        ADD_FAILURE() << "compressed";
    }
    catch (const exc::runtime_exc_t& e)
    {
        EXPECT_EQ("std::bad_alloc\nCannot compress log file. Log: [" + m_name + "].", e.what());
    }
    log.write("new");
    EXPECT_EQ("new text\n", ReadFile(m_name));
}
