#include "nelvo/fs/path_utils.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include <boost/filesystem/operations.hpp>

#include "nelvo/context/path_access.h"
#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/rethrow.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/format.h"
#include "nelvo/core/util/path_text.h"
#include "nelvo/core/util/str.h"
#include "nelvo/fs/convert_base.h"
#include "nelvo/fs/file_utils.h"
#include "nelvo/posix/posix_file.h"

namespace
{

constexpr char kClassName[] = "CPathUtils";
constexpr std::uint16_t kDefaultMode = 755;

// The result of a system call that has just been made.
void CheckCall(int result)
{
    const int error = errno;
    if (result == -1)
        throw posix::errno_exc_t(error);
}

void CheckPathIsSet(const std::string& path)
{
    if (path.empty())
        throw exc::runtime_exc_t("Path is not set.");
}

void CheckLinkIsSet(const std::string& target, const std::string& link_name)
{
    if (link_name.empty())
        throw exc::runtime_exc_t("Link filename is empty.");
    if (target.empty())
        throw exc::runtime_exc_t("Link target path is empty.");
}

void CheckSourceAlone(const std::string& source, const std::string& target)
{
    if (!CPathUtils::Exists(source))
        throw exc::runtime_exc_t("Source path is not exist.");
    if (CPathUtils::Exists(target))
        throw exc::runtime_exc_t("Target path currently exist.");
}

// A failed read ends the copy and is not told: a folder gives an empty one.
// Kept: PathUtils.CopyOfAFolderIsAnEmptyFile
//
// A failed write is not looked at: a full disk gives a short copy.
// Kept: PathUtils.CopyToAFullDiskIsShortWithoutAWord
void CopyContent(std::istream& source, std::ostream& target)
{
    std::array<char, 4096> block;
    while (source.good())
    {
        source.read(block.data(), block.size());
        const std::streamsize count = source.gcount();
        if (count == 0)
            break;
        target.write(block.data(), count);
    }
}

} // namespace

bool CPathUtils::Exists(const std::string& path)
try
{
    CheckPathIsSet(path);
    security::CheckPathAccess(path.c_str());
    struct stat64 info = {};
    const int result = ::lstat64(path.c_str(), &info);
    const int error = errno;
    if (result == -1 && error != ENOENT)
        throw posix::errno_exc_t(error);
    return result == 0;
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, util::Format("%1: Failed to check whether [%2] exists.", kClassName, path),
                            e);
}

std::string CPathUtils::GetCurrentDir()
try
{
    std::array<char, PATH_MAX> buffer = {};
    CheckCall(::getcwd(buffer.data(), buffer.size()) != nullptr ? 0 : -1);
    return buffer.data();
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, util::Format("%1: Unable to get current working directory.", kClassName),
                            e);
}

void CPathUtils::CreateHardLink(const std::string& target, const std::string& link_name)
try
{
    CheckLinkIsSet(target, link_name);
    if (!Exists(target))
        throw exc::runtime_exc_t("Target path is not exist.");
    CheckCall(::link(target.c_str(), link_name.c_str()));
}
catch (std::exception& e)
{
    exc::RethrowWithContext(
        false,
        util::Format("%1: Failed to create hard link [%2] with target [%3].", kClassName, link_name, target),
        e);
}

void CPathUtils::CreateSymLink(const std::string& target, const std::string& link_name)
try
{
    CheckLinkIsSet(target, link_name);
    CheckCall(::symlink(target.c_str(), link_name.c_str()));
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false,
                            util::Format("%1: Failed to create symbolic link [%2] with target [%3].",
                                         kClassName, link_name, target),
                            e);
}

void CPathUtils::Rename(const std::string& source, const std::string& target)
try
{
    if (source == target)
        return;
    CheckSourceAlone(source, target);
    CheckCall(::rename(source.c_str(), target.c_str()));
}
catch (std::exception& e)
{
    exc::RethrowWithContext(
        false, util::Format("%1: Failed to rename file from [%2] to [%3].", kClassName, source, target), e);
}

void CPathUtils::Delete(const std::string& path)
try
{
    CheckPathIsSet(path);
    boost::filesystem::remove(path);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(
        false, util::Format("%1: Failed to delete file or directory [%2].", kClassName, path), e);
}

std::string CPathUtils::FindCommand(const std::string& command)
{
    for (const char* const folder : {"/usr/bin/", "/bin/", "/usr/local/bin/"})
    {
        std::string path = util::JoinPath(folder, command);
        if (util::ExistsByStat(path))
            return path;
    }
    throw exc::runtime_exc_t("Failed to find command [%1] full path.", command);
}

void CPathUtils::CreateDir(const std::string& path, bool parents, std::uint16_t mode)
try
{
    CheckPathIsSet(path);
    if (Exists(path))
        return;
    const auto converted_mode = static_cast<mode_t>(util::ConvertBase(mode, 10, 8));
    const std::string parent = util::SplitPath(path).folder;
    if (parents && !parent.empty())
        CreateDir(parent, parents, mode);
    if (::mkdir(path.c_str(), converted_mode) == -1)
    {
        const int error = errno;
        throw posix::errno_exc_t("Unable to create directory [%1].", path, error);
    }
}
catch (std::exception& e)
{
    exc::RethrowWithContext(
        false,
        util::Format("%1: Failed to create directory (path = [%2], parents = [%3], mode = [%4]).", kClassName,
                     path, parents, mode),
        e);
}

void CPathUtils::CreateDirParents(const std::string& path, bool parents)
{
    CreateDir(path, parents, kDefaultMode);
}

void CPathUtils::CreateDirPlain(const std::string& path) { CreateDir(path, false, kDefaultMode); }

void CPathUtils::Copy(const std::string& source, const std::string& target)
try
{
    CheckSourceAlone(source, target);
    std::ifstream source_file(source, std::ios::binary);
    if (!source_file)
        throw exc::runtime_exc_t("Unable to open source file: [%1].", source);

    // The folder of a file in the root is the empty text, which CreateDir refuses: nothing can be copied to
    // there.
    // Kept: PathUtils.CopyIntoTheRootFails
    if (target.find('/') != std::string::npos)
        CreateDir(util::SplitPath(target).folder, true, kDefaultMode);

    std::ofstream target_file(target, std::ios::binary | std::ios::trunc);
    if (!target_file)
        throw exc::runtime_exc_t("Unable to open target file: [%1].", target);
    CopyContent(source_file, target_file);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(
        false, util::Format("%1: Failed to copy file from [%2] to [%3].", kClassName, source, target), e);
}

std::string CPathUtils::ReadLink(const std::string& path)
try
{
    CheckPathIsSet(path);
    return posix::posix_file_t::ReadSymlink(path);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, util::Format("%1: Failed to read link [%2].", kClassName, path), e);
}
