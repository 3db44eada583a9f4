#include "nelvo/fs/file_utils.h"

#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include <boost/filesystem/operations.hpp>

#include "nelvo/context/path_access.h"
#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/path_text.h"
#include "nelvo/core/util/str.h"
#include "nelvo/core/util/wide.h"
#include "nelvo/fs/impersonation.h"
#include "nelvo/posix/posix_file.h"

namespace util
{

namespace
{

using stat_call_t = int (*)(const char* path, struct stat64* info);

[[noreturn]] void ThrowNoInfo(const std::string& path, int error)
{
    throw posix::errno_exc_t("Failed to get file system object info: '" + path + "'", error);
}

bool Exists(stat_call_t call, const std::string& path)
{
    security::CheckPathAccess(path.c_str());
    struct stat64 info = {};
    if (call(path.c_str(), &info) == 0)
        return true;
    const int error = errno;
    if (error == ENOENT)
        return false;
    ThrowNoInfo(path, error);
}

} // namespace

bool ExistsByStat(const std::string& path) { return Exists(::stat64, path); }

bool ExistsByStat(const std::wstring& path) { return ExistsByStat(WideToUtf8(path)); }

bool ExistsByLstat(const std::string& path) { return Exists(::lstat64, path); }

bool FileExists(const std::string& path)
{
    security::CheckPathAccess(path.c_str());
    return boost::filesystem::exists(path);
}

bool FileExists(const std::wstring& path) { return FileExists(WideToUtf8(path)); }

file_short_stat_t fs_short_stat(const std::string& path)
{
    security::CheckPathAccess(path.c_str());
    struct stat64 info = {};
    if (::lstat64(path.c_str(), &info) == -1)
    {
        const int error = errno;
        ThrowNoInfo(path, error);
    }
    const bool is_dir = S_ISDIR(info.st_mode);
    return {static_cast<std::uint64_t>(info.st_size), !is_dir, is_dir, S_ISLNK(info.st_mode)};
}

std::uint32_t GetDeviceId(const std::string& path)
{
    security::CheckPathAccess(path.c_str());
    struct stat64 info = {};
    if (::stat64(path.c_str(), &info) == -1)
    {
        const int error = errno;
        throw posix::errno_exc_t("Problem with getting statistics on file: '" + path + "'", error);
    }
    return static_cast<std::uint32_t>(info.st_dev);
}

bool IsSameDevice(const std::string& left, const std::string& right)
{
    const std::uint32_t left_device = GetDeviceId(left);
    return left_device == GetDeviceId(right);
}

void CreateParentFolders(const std::string& path)
{
    security::CheckPathAccess(path.c_str());
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
    security::CheckPathAccess(path.c_str());
    if (::mkdir(path.c_str(), 0755) == 0)
        return;
    const int error = errno;
    throw posix::errno_exc_t("Failed to create directory '" + path + "'", error);
}

std::wstring GetHomeTempDir()
{
    std::string folder = "/tmp/";
    if (const char* const home = std::getenv("HOME"))
        folder = JoinPath(home, folder);
    if (!FileExists(folder))
        CreateDirectory(folder);
    return Utf8ToWide(folder);
}

void RemoveFile(const std::string& path)
{
    security::CheckPathAccess(path.c_str());
    boost::filesystem::remove(path);
}

void RenameFile(const std::string& old_path, const std::string& new_path)
{
    security::CheckPathAccess(new_path.c_str());
    security::CheckPathAccess(old_path.c_str());
    boost::filesystem::rename(old_path, new_path);
}

void CopyFile(const std::string& source, const std::string& target, bool overwrite)
{
    security::CheckPathAccess(source.c_str());
    security::CheckPathAccess(target.c_str());
    const stub_impersonation_session_ptr_t source_session = HoldImpersonation();
    const stub_impersonation_session_ptr_t target_session = HoldImpersonation();
    if (boost::filesystem::exists(target))
    {
        if (!overwrite)
            throw exc::runtime_exc_t("Destination file already exists");
        boost::filesystem::remove(target);
    }
    boost::filesystem::copy_file(source, target);
}

void CopyFile(const std::wstring& source, const std::wstring& target, bool overwrite)
{
    CopyFile(WideToUtf8(source), WideToUtf8(target), overwrite);
}

bool CreateSymlink(const std::string& link, const std::string& target)
{
    security::CheckPathAccess(link.c_str());
    security::CheckPathAccess(target.c_str());
    if (::symlink(target.c_str(), link.c_str()) == 0)
        return true;
    const int error = errno;
    throw posix::errno_exc_t("Failed to create symbolic link.", error);
}

bool RemoveSymlink(const std::string& path)
{
    security::CheckPathAccess(path.c_str());
    if (!ExistsByLstat(path))
        throw exc::runtime_exc_t("Failed to remove symlink: Symlink does not found by path '" + path + "'");
    if (::unlink(path.c_str()) == 0)
        return true;
    const int error = errno;
    throw posix::errno_exc_t("Failed to remove symlink", error);
}

void CreateEmptyFile(const std::string& path) { posix::posix_file_t::CreateWithPrealloc(path, 0); }

void CreateEmptyFile(const std::wstring& path) { posix::posix_file_t::CreateWithPrealloc(path, 0); }

posix_file_ptr_t OpenForAppendOrCreate(const std::wstring& path)
{
    return posix::posix_file_t::CreateOrOpen(path);
}

std::string ReplaceBadFileNameChars(const std::string& name)
{
    constexpr char kBadChars[] = "><|?*/\\:\"";
    std::string result = name;
    for (std::size_t at = result.find_first_of(kBadChars); at != std::string::npos;
         at = result.find_first_of(kBadChars, at))
        result[at] = '_';
    return result;
}

std::wstring fs_get_volume_path_by_path(const std::wstring&)
{
    throw exc::runtime_exc_t("wstr fs_get_volume_path_by_path( const wstr& path ): Not implemented in Linux");
}

void addFilesFromDir(const std::string&)
{
    throw std::runtime_error("linux addFilesFromDir not implemented");
}

} // namespace util
