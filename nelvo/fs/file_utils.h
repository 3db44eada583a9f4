#pragma once

// What programs ask of the file system by path: existence, folders, removing, renaming and copying, links,
// the folder for temporary files.
//
// An operation that touches a path asks for access to it first (security::CheckPathAccess), one with two
// paths for both, in the order told; a refusal passes on. A failed system call throws posix::errno_exc_t with
// the text told. What Boost.Filesystem reports passes on without context. Wide paths are converted first
// (util::WideToUtf8). A path ends at its first zero byte, for the access check as for the system.

#include <cstdint>
#include <string>

#include "nelvo/posix/posix_file_fwd.h"

namespace util
{

// True if stat(2) finds something at the path, links followed; false if it says ENOENT. Text of other
// failures: "Failed to get file system object info: '<path>'".
bool ExistsByStat(const std::string& path);
bool ExistsByStat(const std::wstring& path);

// The same with lstat(2), so that a dangling link exists; the same text.
bool ExistsByLstat(const std::string& path);

// True if Boost.Filesystem finds something, links followed. Below a file nothing exists, whereas
// ExistsByStat throws there.
bool FileExists(const std::string& path);
bool FileExists(const std::wstring& path);

struct file_short_stat_t
{
    std::uint64_t size; // in bytes
    bool is_file;       // anything but a directory, so a link too
    bool is_dir;
    bool is_symlink;
};

// By lstat(2). A missing path is a failure like others, with ExistsByStat's text.
file_short_stat_t fs_short_stat(const std::string& path);

// The lower 32 bits of the number of the device that holds the file, links followed. Text: "Problem with
// getting statistics on file: '<path>'".
//
// Devices whose numbers differ above these bits pass for the same.
// Kept: FileUtilsCalls.DevicesThatDifferAboveThemAreTheSame
std::uint32_t GetDeviceId(const std::string& path);
bool IsSameDevice(const std::string& left, const std::string& right); // the left one first

// Creates each missing folder above the path's last component ("/a/b/" asks for /a and /a/b), as ExistsByStat
// and CreateDirectory do.
void CreateParentFolders(const std::string& path);

// mkdir(2) with mode 0755, less the umask. Text: "Failed to create directory '<path>'".
void CreateDirectory(const std::string& path);

// $HOME/tmp/, or /tmp/ if HOME is not set. It is created if it is missing; its parents are not.
std::wstring GetHomeTempDir();

// Removes a file, a link or an empty folder. Nothing at the path is no failure.
void RemoveFile(const std::string& path);

// Replaces what stands at the new path. Access: new path, then old.
void RenameFile(const std::string& old_path, const std::string& new_path);

// Copies content and mode. If the target exists, it is removed first, or without overwrite
// exc::runtime_exc_t with "Destination file already exists" is thrown. Access: source, then target.
//
// A file that is copied onto itself with overwrite is removed before it is read, and lost.
// Kept: FileUtils.CopyOntoItselfLosesTheFile
void CopyFile(const std::string& source, const std::string& target, bool overwrite);
void CopyFile(const std::wstring& source, const std::wstring& target, bool overwrite);

// True, or the failure "Failed to create symbolic link." Access: link, then target.
bool CreateSymlink(const std::string& link, const std::string& target);

// True, or the failure "Failed to remove symlink". Nothing at the path throws exc::runtime_exc_t with "Failed
// to remove symlink: Symlink does not found by path '<path>'".
//
// Only existence is tested, so a file is removed too.
// Kept: FileUtils.RemoveSymlinkTakesAFileToo
bool RemoveSymlink(const std::string& path);

// Creates a file. One that exists keeps its content, whatever the name says.
// Kept: FileUtils.CreateEmptyFileKeepsWhatAFileHolds
void CreateEmptyFile(const std::string& path);
void CreateEmptyFile(const std::wstring& path);

// posix_file_t::CreateOrOpen: the content stays, but what is written goes over its start and not behind its
// end.
// Kept: FileUtils.OpenForAppendOrCreateStandsAtTheStart
posix_file_ptr_t OpenForAppendOrCreate(const std::wstring& path);

// The name with "_" for each of the characters > < | ? * / \ : ".
std::string ReplaceBadFileNameChars(const std::string& name);

// There is no way to do these on this platform: the first throws exc::runtime_exc_t, the second
// std::runtime_error.
[[noreturn]] std::wstring fs_get_volume_path_by_path(const std::wstring& path);
[[noreturn]] void addFilesFromDir(const std::string& folder);

} // namespace util
