#pragma once

// What programs ask of the file system by path: existence and folders.

#include <string>

namespace util
{

// True if stat(2) finds something at the path, links followed; false if it says ENOENT. Throws
// posix::errno_exc_t for any other failure, with "Failed to get file system object info: '<path>'".
bool ExistsByStat(const std::string& path);

// Creates each missing folder above the path's last component ("/a/b/" asks for /a and /a/b). Throws what
// ExistsByStat and CreateDirectory throw.
void CreateParentFolders(const std::string& path);

// mkdir(2) with mode 0755, less the umask. Throws posix::errno_exc_t with "Failed to create directory
// '<path>'".
void CreateDirectory(const std::string& path);

} // namespace util
