#pragma once

// What describes a file: type, name, size and the metadata (file_meta.h).
//
//   const util::FileInfo info = util::ReadFileInfo("/etc/hosts");
//   io::plain_mem_stream_t stream;
//   util::SerializeFileInfo(info, stream);
//
// A path ends at its first zero byte. GetFileInfo asks security::CheckPathAccess, nothing else here does.

#include <cstdint>
#include <optional>
#include <string>

#include "nelvo/core/cnt/array.h"
#include "nelvo/fs/file_meta.h"

namespace util
{

// Values of FileInfo::type. They stand in stored records.
constexpr std::uint32_t kRegularFile = 0;
constexpr std::uint32_t kDirectory = 1;
constexpr std::uint32_t kSymbolicLink = 2;
constexpr std::uint32_t kOtherObject = 4;

struct FileInfo
{
    FileInfo() = default;

    // What DeserializeFileInfo reads.
    explicit FileInfo(io::io_dev_t& stream);

    std::optional<std::uint32_t> type;
    std::optional<std::uint32_t> link_count;
    std::optional<std::string> name; // without folders
    std::optional<std::uint64_t> size;
    FileMeta meta;
    cnt::plain_array_t extra_data; // comes from a stream and goes to one; without meaning here
};

// All fields in their order, each as its type is written, with a boolean before an optional one (see
// io/binary_value.h). Throws what these throw, with the context "Failed to serialize file info."
void SerializeFileInfo(const FileInfo& info, io::io_dev_t& stream);

// The same way back, with the context "Failed to deserialize file info." After a failure the fields that were
// read stay in the record, but for name and extra_data, which stay as they were unless all came; the texts of
// the ACL data are as DeserializeFileMeta leaves them.
void DeserializeFileInfo(FileInfo& info, io::io_dev_t& stream);

// By lstat(2), so that a link is told of itself; a link has no mode. Dates are whole seconds in UTC. The
// name is what stands behind the path's last separator, present and empty for a path that ends with one.
// Attributes, ACL data and extra_data are left empty. Throws posix::errno_exc_t with "lstat failed."
//
// A backslash in a name counts as a separator: the name of the file a\b is b.
// Kept: FileInfoOfAFile.NameBeginsBehindABackslashToo
FileInfo ReadFileInfo(const std::string& path);

// ReadFileInfo, of something that CPathUtils::Exists finds. If it does not, an empty record for who tolerates
// that, or else exc::runtime_exc_t with "File not found." Everything that is thrown has the context "Can't
// get info for file [<path>]."
FileInfo GetFileInfo(const std::string& path, bool tolerate_missing);

// Gives the file the metadata as it stands, empty dates too (ApplyFileMetaUnchecked).
void ApplyFileInfo(const FileInfo& info, const std::string& path);

} // namespace util
