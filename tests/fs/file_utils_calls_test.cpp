#include "nelvo/fs/file_utils.h"

#include <cerrno>
#include <cstring>
#include <dlfcn.h>
#include <new>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "nelvo/core/exc/errno_exc.h"
#include "tests/support/failing_memory.h"
#include "tests/support/thrown.h"

namespace
{

[[maybe_unused]] const bool g_errno_changes = ChangeErrnoWithMemory();

// The device of a path that a test made up; 0 if it did not.
dev_t ScriptedDevice(const char* path)
{
    if (std::strcmp(path, "scripted:a") == 0)
        return 0x100000005;
    if (std::strcmp(path, "scripted:b") == 0)
        return 0x200000005;
    return std::strcmp(path, "scripted:c") == 0 ? 0x100000006 : 0;
}

} // namespace

extern "C" int stat64(const char* path, struct stat64* info) noexcept
{
    using call_t = int (*)(const char*, struct stat64*);
    static const auto real = reinterpret_cast<call_t>(::dlsym(RTLD_NEXT, "stat64"));
    const dev_t device = ScriptedDevice(path);
    if (device == 0)
        return real(path, info);
    info->st_dev = device;
    return 0;
}

TEST(FileUtilsCalls, DeviceIsItsLower32Bits)
{
    EXPECT_EQ(5u, util::GetDeviceId("scripted:a"));
    EXPECT_EQ(6u, util::GetDeviceId("scripted:c"));
}

TEST(FileUtilsCalls, DevicesThatDifferAboveThemAreTheSame)
{
    EXPECT_TRUE(util::IsSameDevice("scripted:a", "scripted:b"));
    EXPECT_FALSE(util::IsSameDevice("scripted:a", "scripted:c"));
}

// What the tests of failures in this program rest on.
TEST(FileUtilsCalls, TakingMemoryChangesErrno)
{
    errno = 0;
    void* const memory = ::operator new(1);
    const int error = errno;
    ::operator delete(memory);
    EXPECT_EQ(ENOTUNIQ, error);
}

TEST(FileUtilsCalls, ErrnoOfTheCallIsTold)
{
    const std::string path = "/proc/a name beyond the room that a string keeps in itself";
    EXPECT_EQ("No such file or directory\nProblem with getting statistics on file: '" + path + "'",
              Thrown<posix::errno_exc_t>([&] { util::GetDeviceId(path); }));
    EXPECT_EQ("No such file or directory\nFailed to get file system object info: '" + path + "'",
              Thrown<posix::errno_exc_t>([&] { util::fs_short_stat(path); }));
    EXPECT_EQ("No such file or directory\nFailed to create directory '" + path + "'",
              Thrown<posix::errno_exc_t>([&] { util::CreateDirectory(path); }));
}
