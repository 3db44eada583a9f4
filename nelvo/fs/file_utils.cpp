#include "nelvo/fs/file_utils.h"

#include <cerrno>
#include <sys/stat.h>

#include "nelvo/core/exc/errno_exc.h"

namespace util
{

bool ExistsByStat(const std::string& path)
{
    struct stat64 info = {};
    if (::stat64(path.c_str(), &info) == 0)
        return true;
    const int error = errno;
    if (error == ENOENT)
        return false;
    throw posix::errno_exc_t("Failed to get file system object info: '" + path + "'", error);
}

void CreateParentFolders(const std::string& path)
{
    // A separator at the start names the root, which exists.
    for (std::size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1))
    {
        const std::string folder = path.substr(0, end);
        if (!ExistsByStat(folder))
            CreateDirectory(folder);
    }
}

void CreateDirectory(const std::string& path)
{
    if (::mkdir(path.c_str(), 0755) == 0)
        return;
    const int error = errno;
    throw posix::errno_exc_t("Failed to create directory '" + path + "'", error);
}

} // namespace util
