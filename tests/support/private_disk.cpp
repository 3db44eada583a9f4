#include "tests/support/private_disk.h"

#include <cerrno>
#include <cstring>
#include <sched.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/support/private_mounts.h"
#include "tests/support/temp_folder.h"

namespace
{

constexpr std::size_t kPageSize = 4096;

void MapIds()
{
    const std::string map_user = "0 " + std::to_string(::geteuid()) + " 1";
    const std::string map_group = "0 " + std::to_string(::getegid()) + " 1";
    ASSERT_EQ(0, ::unshare(CLONE_NEWNS | CLONE_NEWUSER)) << std::strerror(errno);
    WriteFile("/proc/self/setgroups", "deny");
    WriteFile("/proc/self/uid_map", map_user);
    WriteFile("/proc/self/gid_map", map_group);
}

// Once a process. Empty, or what failed and why.
std::string MakeMountsPrivate()
{
    if (::unshare(CLONE_NEWNS) != 0)
        MapIds();
    const char* const failure = FailureToMakeMountsPrivate();
    return failure == nullptr ? "" : std::string(failure) + ": " + std::strerror(errno);
}

} // namespace

private_disk_t::private_disk_t(const std::string& folder, std::size_t size) : m_folder(folder)
{
    static const std::string failure = MakeMountsPrivate();
    const std::string options = "mode=755,size=" + std::to_string(size);
    const bool good = failure.empty() && ::mount("tmpfs", folder.c_str(), "tmpfs", 0, options.c_str()) == 0;
    EXPECT_TRUE(good) << "no disk on " << folder << ": "
                      << (failure.empty() ? std::strerror(errno) : failure);
}

private_disk_t::~private_disk_t() { ::umount2(m_folder.c_str(), MNT_DETACH); }

void private_disk_t::Fill(std::size_t free_pages) const
{
    struct statvfs info = {};
    ASSERT_EQ(0, ::statvfs(m_folder.c_str(), &info));
    const std::size_t pages = info.f_bavail * info.f_frsize / kPageSize;
    ASSERT_LE(free_pages, pages);
    WriteFile(*this / "filler", std::string((pages - free_pages) * kPageSize, 'f'));
}
