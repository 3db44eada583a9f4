#include "nelvo/fs/free_space.h"

#include <cerrno>
#include <cstring>
#include <iostream>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

#include <boost/filesystem/operations.hpp>

#include "nelvo/context/path_access.h"
#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/rethrow.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/format.h"
#include "nelvo/core/util/str.h"
#include "nelvo/core/util/text.h"
#include "nelvo/core/util/to_text.h"
#include "nelvo/fs/impersonation.h"

namespace util
{

namespace
{

constexpr std::string_view kVmfsVolumes = "/vmfs/volumes/";

// Takes the volume and the number of bytes. Ends with 0 if there is room, and otherwise dies.
// clang-format off
constexpr char kVmfsScript[] = R"perl(my $space=&_getVmfsDevice($ARGV[0]);if($space->{available}<$ARGV[1]){die "Insufficient disk space on $space->{mount_point}. Only $space->{available} bytes available.";}else{print "available space:$space->{available} bytes on $space->{mount_point}\n";exit 0;}sub _getVmfsDevice($){my $path=shift;my $device={};my $fstools='/usr/sbin/vmkfstools';if(!( -x $fstools)){die "$fstools doesn't exists\n";}my $fs_info=`$fstools -P \"$path\"`;foreach (split('\n', $fs_info)){if(/^File system label \(if any\):\s*(\S.*)\s*$/){$device->{mount_point}="/vmfs/volumes/$1";}if (/Capacity ([0-9]*) .*, ([0-9]*) .*avail/){$device->{mount_device}=$path;$device->{size}=$1;$device->{available}=$2;$device->{used}=$device->{size}-$device->{available};$device->{used_percents}=int($device->{used}*100/$device->{size});}}if(defined($device->{mount_point})&&defined($device->{mount_device})){return $device;}else{die "vmkfstools command doesn't return necessary fields";}})perl";
// clang-format on

void SayFromChild(const char* text)
{
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, text, std::strlen(text));
}

// Becomes the script. Other threads may have held locks at the fork, that of the memory too, so nothing here
// takes one, and a failure to become the script ends the child here and now: on the way up it would run the
// caller's code a second time and write out a copy of the caller's buffered text.
[[noreturn]] void RunVmfsScript(const char* volume, const char* required)
{
    ::execlp("perl", "perl", "-e", kVmfsScript, volume, required, static_cast<char*>(nullptr));
    const int error = errno;
    SayFromChild(::strerrordesc_np(error));
    SayFromChild("\nexeclp() function call has failed.\n");
    ::_exit(1);
}

pid_t StartVmfsScript(const std::string& volume, std::uint64_t required)
{
    const std::string required_text = std::to_string(required);
    const pid_t child = ::fork();
    if (child == -1)
    {
        const int error = errno;
        throw posix::errno_exc_t("fork() function call has failed.", error);
    }
    if (child == 0)
        RunVmfsScript(volume.c_str(), required_text.c_str());
    return child;
}

bool WaitForVmfsScript(pid_t child)
{
    for (;;)
    {
        int status = 0;
        if (::waitpid(child, &status, 0) == -1)
        {
            const int error = errno;
            throw posix::errno_exc_t("waitpid() function call has failed.", error);
        }
        if (WIFEXITED(status))
            return status == 0;
        if (WIFSIGNALED(status))
            throw exc::runtime_exc_t("Child was terminated by signal.");
        if (!WIFSTOPPED(status))
            throw exc::runtime_exc_t("Child was terminated.");
        std::cerr << "WaitPid:" << std::endl;
    }
}

bool AskVmfsVolume(const std::string& volume, std::uint64_t required)
try
{
    return WaitForVmfsScript(StartVmfsScript(volume, required));
}
catch (std::exception& e)
{
    exc::RethrowWithContext(
        false,
        Format("Failed to retrieve the amount of free space available of the VMFS volume. Volume: [%1].",
               volume),
        e);
}

} // namespace

bool IsVmfsPath(const std::string& path, std::string& volume)
{
    if (!StartsWithNoCase(path, kVmfsVolumes))
        return false;
    volume = path.substr(0, path.find_first_of("/\\", kVmfsVolumes.size()));
    return true;
}

bool CheckVmfsFreeSpace(const std::string& volume, std::uint64_t required)
{
    security::CheckPathAccess(volume.c_str());
    return AskVmfsVolume(volume, required);
}

void CheckFreeSpace(const std::string& path, std::uint64_t required)
{
    security::CheckPathAccess(path.c_str());
    const stub_impersonation_session_ptr_t session = HoldImpersonation();
    std::string volume;
    if (IsVmfsPath(path, volume))
    {
        if (!CheckVmfsFreeSpace(volume, required))
            throw exc::runtime_exc_t("Insufficient disk space. VMFS volume [%1]. Requested space: [%2].",
                                     volume, GroupedText(required));
        return;
    }
    const std::uint64_t available = boost::filesystem::space(path).available;
    if (available < required)
        throw exc::runtime_exc_t(
            "Insufficient disk space. Folder: [%1]. Requested space: [%2]. Available free space: [%3].", path,
            GroupedText(required), GroupedText(available));
}

std::uint64_t GetFreeSpace(const std::string& path)
{
    security::CheckPathAccess(path.c_str());
    return boost::filesystem::space(path).available;
}

} // namespace util
