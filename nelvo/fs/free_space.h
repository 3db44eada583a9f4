#pragma once

// Whether a disk has room. The volumes of a VMware host, below /vmfs/volumes/, do not tell the usual way and
// are asked through the host's own tool.
//
// The path or the volume is asked for access first (security::CheckPathAccess), up to its first zero byte; a
// refusal passes on without context. So does what Boost.Filesystem reports of a path, such as a missing one.

#include <cstdint>
#include <string>

namespace util
{

// Whether the path begins with "/vmfs/volumes/", in either case. If so, volume becomes what stands before the
// next separator of either kind, or the whole path; otherwise it stays as it is. A matter of text alone.
bool IsVmfsPath(const std::string& path, std::string& volume);

// Whether that many bytes are available on the volume, as /usr/sbin/vmkfstools says. A perl script asks it,
// as a child process that inherits standard output and error, and the caller waits for it without a limit in
// time. False if there is too little, and also if the tool, or perl itself, is missing or gives no answer:
// CheckFreeSpace then says that there is too little, and the child says why on standard error.
// Kept: VmfsFreeSpace.CheckTakesAMissingToolForTooLittle
//
// A wait that a signal interrupts is a failure too; the child goes on, and nobody waits for it any more.
// Kept: VmfsFreeSpaceCalls.InterruptedWaitIsNotRepeated
//
// Throws if the child cannot be made or waited for (posix::errno_exc_t) or does not end by itself
// (exc::runtime_exc_t), with the context "Failed to retrieve the amount of free space available of the VMFS
// volume. Volume: [<volume>]."
bool CheckVmfsFreeSpace(const std::string& volume, std::uint64_t required);

// Throws exc::runtime_exc_t with "Insufficient disk space. ..." unless that many bytes are available. Asks
// for access to the path, and for a VMFS volume to that as well.
void CheckFreeSpace(const std::string& path, std::uint64_t required);

// The bytes available to an ordinary user on the file system that holds the path.
std::uint64_t GetFreeSpace(const std::string& path);

} // namespace util
