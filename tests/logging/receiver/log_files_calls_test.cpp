// How the test of a log's path opens the file; the call is answered here.

#include "nelvo/logging/receiver/log_files.h"

#include <cerrno>
#include <cstdarg>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

#include <gtest/gtest.h>

#include "nelvo/core/exc/errno_exc.h"
#include "tests/support/temp_folder.h"
#include "tests/support/thrown.h"

namespace
{

// The next call fails, and is tried in earnest only after that.
int g_open_error = 0;
int g_opens = 0;
int g_flags = 0;
unsigned g_mode = 0;

} // namespace

extern "C" int open(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    g_mode = va_arg(arguments, unsigned);
    va_end(arguments);
    g_flags = flags;
    ++g_opens;
    const int error = std::exchange(g_open_error, 0);
    if (error == 0)
        return static_cast<int>(::syscall(SYS_open, path, flags, g_mode));
    errno = error;
    return -1;
}

TEST(LogFilesCalls, TestOpensForReadingAndWritingAndCreates)
{
    const temp_folder_t folder;
    g_opens = 0;
    logging::receiver::create_test(folder / "a.log");
    EXPECT_EQ(1, g_opens);
    EXPECT_EQ(O_RDWR | O_CREAT, g_flags);
    EXPECT_EQ(0664u, g_mode);
}

TEST(LogFilesCalls, InterruptedTestIsNotTriedAgain)
{
    const temp_folder_t folder;
    g_opens = 0;
    g_open_error = EINTR;
    EXPECT_EQ("Interrupted system call\nCannot create a log file.",
              Thrown<posix::errno_exc_t>([&] { logging::receiver::create_test(folder / "a.log"); }));
    EXPECT_EQ(1, g_opens);
}
