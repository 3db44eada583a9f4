#include "nelvo/fs/file_meta.h"

#include <cerrno>

#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/rethrow.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/format.h"
#include "nelvo/core/util/numeric_cast.h"
#include "nelvo/fs/convert_base.h"
#include "nelvo/io/binary_value.h"

namespace util
{

namespace
{

void WriteAttributes(io::io_dev_t& stream, const std::optional<CFileAttributes>& attributes)
{
    io::WriteValue(stream, attributes.has_value());
    if (attributes.has_value())
        attributes->Serialize(stream);
}

void ReadAttributes(io::io_dev_t& stream, std::optional<CFileAttributes>& attributes)
{
    if (io::ReadValue<bool>(stream))
        attributes = CFileAttributes::FromStream(stream);
    else
        attributes.reset();
}

void ApplyTimes(const FileMeta& meta, const char* path)
{
    const timeval times[] = {{meta.accessed.GetSeconds(), 0}, {meta.modified.GetSeconds(), 0}};
    if (::lutimes(path, times) != -1)
        return;
    const int error = errno;
    throw posix::errno_exc_t("Failed to set file access time.", error);
}

void ApplyOwner(const FileMeta& meta, const char* path)
{
    if (!meta.uid.has_value() || !meta.gid.has_value())
        return;
    if (::lchown(path, NumericCast<uid_t>(*meta.uid), NumericCast<gid_t>(*meta.gid)) != -1)
        return;
    const int error = errno;
    throw posix::errno_exc_t("Failed to set owner and group.", error);
}

void ApplyMode(const FileMeta& meta, const char* path)
{
    if (!meta.mode.has_value())
        return;
    if (::chmod(path, static_cast<mode_t>(ConvertBase(*meta.mode, 10, 8))) != -1)
        return;
    const int error = errno;
    throw posix::errno_exc_t("Failed to set permissions.", error);
}

} // namespace

FileMeta::FileMeta(io::io_dev_t& stream) { DeserializeFileMeta(*this, stream); }

void SerializeFileMeta(const FileMeta& meta, io::io_dev_t& stream)
try
{
    WriteAttributes(stream, meta.attributes);
    meta.changed.Serialize(stream);
    meta.modified.Serialize(stream);
    meta.accessed.Serialize(stream);
    io::WriteOptionalValue(stream, meta.uid);
    io::WriteOptionalValue(stream, meta.gid);
    io::WriteOptionalValue(stream, meta.mode);
    SerializeAcl(meta.acl, stream);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "Failed to serialize file metadata.", e);
}

void DeserializeFileMeta(FileMeta& meta, io::io_dev_t& stream)
try
{
    ReadAttributes(stream, meta.attributes);
    meta.changed.DeSerialize(stream);
    meta.modified.DeSerialize(stream);
    meta.accessed.DeSerialize(stream);
    io::ReadOptionalValue(stream, meta.uid);
    io::ReadOptionalValue(stream, meta.gid);
    io::ReadOptionalValue(stream, meta.mode);
    DeserializeAcl(meta.acl, stream);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "Failed to deserialize file metadata.", e);
}

bool IsValid(const FileMeta& meta)
{
    return meta.changed.GetSeconds() != 0 && meta.modified.GetSeconds() != 0 &&
           meta.accessed.GetSeconds() != 0;
}

void ApplyFileMeta(const FileMeta& meta, const std::string& path)
try
{
    if (!IsValid(meta))
        throw exc::runtime_exc_t("FileMeta is not valid.");
    ApplyFileMetaUnchecked(meta, path);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, Format("Can't apply meta for file [%1].", path), e);
}

void ApplyFileMetaUnchecked(const FileMeta& meta, const std::string& path)
{
    ApplyTimes(meta, path.c_str());
    ApplyOwner(meta, path.c_str());
    ApplyMode(meta, path.c_str());
}

} // namespace util
