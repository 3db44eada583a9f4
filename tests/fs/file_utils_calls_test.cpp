#include "nelvo/fs/file_utils.h"

#include <cstring>
#include <dlfcn.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

namespace
{

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
