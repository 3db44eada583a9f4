#pragma once

#include <cerrno>
#include <sys/mount.h>

// From now on nobody outside the mount namespace of this process sees what is mounted in it. Null, or what
// failed, with the reason in errno. Calls nothing but the system.
inline const char* FailureToMakeMountsPrivate()
{
    if (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0)
        return nullptr;
    if (errno != EINVAL)
        return "mount /";
    return "mount /, which is no mount point: enter its folder by pivot_root, or bind it onto itself before chroot";
}
