#include "nelvo/fs/free_space.h"

#include <cerrno>
#include <deque>
#include <sys/statvfs.h>
#include <sys/types.h>

#include <gtest/gtest.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "tests/support/thrown.h"

namespace
{

constexpr pid_t kChild = 4711;
constexpr int kStopped = 0x137F; // by SIGSTOP
constexpr int kContinued = 0xFFFF;
constexpr int kKilled = 9;

bool g_fork_fails = false;
std::deque<int> g_statuses; // what waitpid tells of the child; it fails when there is no more

} // namespace

extern "C" pid_t fork()
{
    errno = EAGAIN;
    return g_fork_fails ? -1 : kChild;
}

extern "C" pid_t waitpid(pid_t child, int* status, int options)
{
    EXPECT_EQ(kChild, child);
    EXPECT_EQ(0, *status);
    EXPECT_EQ(0, options);
    if (g_statuses.empty())
    {
        errno = EINTR;
        return -1;
    }
    *status = g_statuses.front();
    g_statuses.pop_front();
    return child;
}

extern "C" int statvfs64(const char*, struct statvfs64* info)
{
    *info = {};
    info->f_bsize = 1;
    info->f_frsize = 1000;
    info->f_blocks = 900;
    info->f_bfree = 500;
    info->f_bavail = 20;
    return 0;
}

namespace
{

const std::string kContext = "\nFailed to retrieve the amount of free space available of the VMFS volume. "
                             "Volume: [/vmfs/volumes/ds1].";

// The check where waitpid tells of these statuses and then fails.
bool Check(const std::deque<int>& statuses)
{
    g_statuses = statuses;
    return util::CheckVmfsFreeSpace("/vmfs/volumes/ds1", 1);
}

} // namespace

TEST(VmfsFreeSpaceCalls, FailedForkIsToldWithItsErrno)
{
    g_fork_fails = true;
    EXPECT_EQ("Resource temporarily unavailable\nfork() function call has failed." + kContext,
              Thrown<posix::errno_exc_t>([] { Check({0}); }));
    g_fork_fails = false;
}

TEST(VmfsFreeSpaceCalls, InterruptedWaitIsNotRepeated)
{
    EXPECT_EQ("Interrupted system call\nwaitpid() function call has failed." + kContext,
              Thrown<posix::errno_exc_t>([] { Check({}); }));
}

TEST(VmfsFreeSpaceCalls, OnlyStatusZeroIsYes)
{
    EXPECT_TRUE(Check({0}));
    EXPECT_FALSE(Check({0x100}));
    EXPECT_FALSE(Check({0xFF00}));
}

TEST(VmfsFreeSpaceCalls, StoppedChildIsToldAndWaitedForAgain)
{
    testing::internal::CaptureStderr();
    EXPECT_TRUE(Check({kStopped, kStopped, 0}));
    EXPECT_EQ("WaitPid:\nWaitPid:\n", testing::internal::GetCapturedStderr());
}

TEST(VmfsFreeSpaceCalls, KilledChildIsAFailure)
{
    EXPECT_EQ("Child was terminated by signal." + kContext,
              Thrown<exc::runtime_exc_t>([] { Check({kKilled}); }));
}

TEST(VmfsFreeSpaceCalls, AnyOtherStatusIsAFailure)
{
    EXPECT_EQ("Child was terminated." + kContext, Thrown<exc::runtime_exc_t>([] { Check({kContinued}); }));
}

TEST(FreeSpaceCalls, WhatIsKeptForRootDoesNotCount)
{
    EXPECT_EQ(20000u, util::GetFreeSpace("/"));
    util::CheckFreeSpace("/", 20000);
    EXPECT_EQ(
        "Insufficient disk space. Folder: [/]. Requested space: [20,001]. Available free space: [20,000].",
        Thrown<exc::runtime_exc_t>([] { util::CheckFreeSpace("/", 20001); }));
}
