#pragma once

// What describes a file apart from its name, type and content: times, owner, permissions. ReadFileInfo
// (file_info.h) fills it from a file.

#include <cstdint>
#include <optional>
#include <string>

#include "nelvo/core/date_time.h"
#include "nelvo/fs/acl_data.h"
#include "nelvo/fs/file_attributes.h"

namespace util
{

struct FileMeta
{
    FileMeta() = default;

    // What DeserializeFileMeta reads.
    explicit FileMeta(io::io_dev_t& stream);

    std::optional<CFileAttributes> attributes;
    datetime::CDateTime changed; // when owner, permissions or the like last changed; never applied
    datetime::CDateTime modified;
    datetime::CDateTime accessed;
    std::optional<std::uint64_t> uid;
    std::optional<std::uint64_t> gid;
    std::optional<std::uint32_t> mode; // the octal digits as a decimal number: 755 is 0755
    AclData acl;
};

// All fields in their order, each as its type is written, with a boolean before an optional one (see
// io/binary_value.h). Throws what these throw, with the context "Failed to serialize file metadata."
void SerializeFileMeta(const FileMeta& meta, io::io_dev_t& stream);

// The same way back, with the context "Failed to deserialize file metadata." After a failure the fields that
// were read stay in the record, but for the texts of the ACL data, which stay as they were unless both came.
void DeserializeFileMeta(FileMeta& meta, io::io_dev_t& stream);

// Whether none of the three dates is empty (0 seconds).
//
// 1 January 1970 00:00:00 is an empty date, so that what is read of a file with this time is not valid, and
// ApplyFileMeta does not give it to another.
// Kept: FileMetaApplied.TimesOfAFileFromTheFirstSecondOf1970AreRefused
bool IsValid(const FileMeta& meta);

// Gives the metadata to a file, in three steps: the times accessed and modified, in whole seconds as they
// stand, whether they are UTC or not; the owner, if uid and gid are both there; the permissions, if mode is
// there, a mode of 0 too. Later steps are not tried after one that fails, and earlier ones stay done. A path
// ends at its first zero byte; no access check is asked.
//
// Throws posix::errno_exc_t with "Failed to set file access time.", "Failed to set owner and group." or
// "Failed to set permissions.", and what util::NumericCast throws for a uid or gid that the system has no
// room for. ApplyFileMeta begins with exc::runtime_exc_t and "FileMeta is not valid." unless IsValid, and all
// that it throws has the context "Can't apply meta for file [<path>]." ApplyFileMetaUnchecked has neither.
//
// Times and owner are those of a link itself, the permissions go through it.
// Kept: FileMetaApplied.GivesPermissionsToTheTargetAndAllElseToTheLink
void ApplyFileMeta(const FileMeta& meta, const std::string& path);
void ApplyFileMetaUnchecked(const FileMeta& meta, const std::string& path);

} // namespace util
