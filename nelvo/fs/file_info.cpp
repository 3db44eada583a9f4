#include "nelvo/fs/file_info.h"

#include <cerrno>
#include <utility>

#include <sys/stat.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/rethrow.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/format.h"
#include "nelvo/core/util/path_text.h"
#include "nelvo/fs/convert_base.h"
#include "nelvo/fs/path_utils.h"
#include "nelvo/io/binary_value.h"

namespace util
{

namespace
{

constexpr mode_t kPermissionBits = 07777;

std::uint32_t TypeOf(mode_t mode)
{
    switch (mode & S_IFMT)
    {
    case S_IFREG: return kRegularFile;
    case S_IFDIR: return kDirectory;
    case S_IFLNK: return kSymbolicLink;
    default: return kOtherObject;
    }
}

FileMeta MetaOf(const struct stat64& status)
{
    FileMeta meta;
    meta.changed = datetime::CDateTime(status.st_ctime, true);
    meta.modified = datetime::CDateTime(status.st_mtime, true);
    meta.accessed = datetime::CDateTime(status.st_atime, true);
    meta.uid = status.st_uid;
    meta.gid = status.st_gid;
    if (!S_ISLNK(status.st_mode))
        meta.mode = static_cast<std::uint32_t>(ConvertBase(status.st_mode & kPermissionBits, 8, 10));
    return meta;
}

} // namespace

FileInfo::FileInfo(io::io_dev_t& stream) { DeserializeFileInfo(*this, stream); }

void SerializeFileInfo(const FileInfo& info, io::io_dev_t& stream)
try
{
    io::WriteOptionalValue(stream, info.type);
    io::WriteOptionalValue(stream, info.link_count);
    io::WriteOptionalString(stream, info.name);
    io::WriteOptionalValue(stream, info.size);
    SerializeFileMeta(info.meta, stream);
    io::WriteArray(stream, info.extra_data);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "Failed to serialize file info.", e);
}

void DeserializeFileInfo(FileInfo& info, io::io_dev_t& stream)
try
{
    io::ReadOptionalValue(stream, info.type);
    io::ReadOptionalValue(stream, info.link_count);
    std::optional<std::string> name = io::ReadOptionalString(stream);
    io::ReadOptionalValue(stream, info.size);
    DeserializeFileMeta(info.meta, stream);
    info.extra_data = io::ReadArray<cnt::plain_array_t>(stream);
    info.name = std::move(name);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "Failed to deserialize file info.", e);
}

FileInfo ReadFileInfo(const std::string& path)
{
    struct stat64 status = {};
    const int result = ::lstat64(path.c_str(), &status);
    const int error = errno;
    if (result == -1)
        throw posix::errno_exc_t("lstat failed.", error);
    FileInfo info;
    info.type = TypeOf(status.st_mode);
    info.link_count = static_cast<std::uint32_t>(status.st_nlink);
    info.name = FileName(path.c_str());
    info.size = static_cast<std::uint64_t>(status.st_size);
    info.meta = MetaOf(status);
    return info;
}

FileInfo GetFileInfo(const std::string& path, bool tolerate_missing)
try
{
    if (CPathUtils::Exists(path))
        return ReadFileInfo(path);
    if (!tolerate_missing)
        throw exc::runtime_exc_t("File not found.");
    return {};
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, Format("Can't get info for file [%1].", path), e);
}

void ApplyFileInfo(const FileInfo& info, const std::string& path) { ApplyFileMetaUnchecked(info.meta, path); }

} // namespace util
