// The members of CPathUtils that ask for file info, which itself asks CPathUtils whether the file exists.

#include "nelvo/fs/path_utils.h"

#include <cerrno>
#include <cstdlib>
#include <memory>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/rethrow.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/format.h"
#include "nelvo/fs/file_info.h"

namespace
{

constexpr char kClassName[] = "CPathUtils";

std::string ResolveLink(const std::string& path)
{
    const std::unique_ptr<char, decltype(&std::free)> target(::realpath(path.c_str(), nullptr), &std::free);
    const int error = errno;
    if (target == nullptr)
        throw posix::errno_exc_t(error);
    return target.get();
}

} // namespace

std::uint32_t CPathUtils::GetType(const std::string& path)
try
{
    const util::FileInfo info = GetInfo(path);
    if (info.type == util::kOtherObject)
        throw exc::runtime_exc_t("Unknown type of file [%1].", path);
    return info.type.value();
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, util::Format("%1: Failed to get type of [%2].", kClassName, path), e);
}

bool CPathUtils::IsFile(const std::string& path) { return GetType(path) == util::kRegularFile; }

bool CPathUtils::IsDir(const std::string& path) { return GetType(path) == util::kDirectory; }

bool CPathUtils::IsLink(const std::string& path) { return GetType(path) == util::kSymbolicLink; }

std::string CPathUtils::GetRealPath(const std::string& path)
try
{
    if (path.empty())
        throw exc::runtime_exc_t("Path is not set.");
    return IsLink(path) ? ResolveLink(path) : path;
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, util::Format("%1: Failed to read real path for [%2].", kClassName, path),
                            e);
}

util::FileInfo CPathUtils::GetInfo(const std::string& path) { return util::GetFileInfo(path, false); }
