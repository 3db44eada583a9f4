#pragma once

// Owner and permissions of a file, as a record of 27 bytes to keep beside a copy of it.
//
//   cnt::plain_array_t buffer;
//   posix::posix_file_security::ReadFromFile("/etc/x")->Serialize(buffer);
//   ...
//   posix::posix_file_security::Deserialize(buffer)->ApplyToFile("/etc/x");
//
// The bytes "NIX", then uid, gid and mode in 8 bytes each, little-endian. util::GetFileSecurity and
// util::SetFileSecurity do the same and log failures instead of throwing them.
//
// A path ends at its first zero byte; no access check is asked.

#include <cstdint>
#include <string>

#include <boost/shared_ptr.hpp>

#include "nelvo/core/cnt/array.h"

namespace posix
{

struct posix_file_security;
// How records are handed around; never null.
using posix_file_security_ptr_t = boost::shared_ptr<posix_file_security>;

struct posix_file_security
{
    std::uint32_t uid = 0;
    std::uint32_t gid = 0;
    std::uint32_t mode = 0; // the lowest 12 bits of a file's mode

    // Of the file that a link leads to. Each field is asked for by a stat(2) of its own, in the order of the
    // fields. Throws what posix_file_t::GetOwnerUid and its like throw, with the context "posix_file_security
    // failed to get file security, path: <path>".
    //
    // The context ends without a full stop.
    // Kept: PosixFileSecurity.FailureToReadAFileHasNoFullStop
    static posix_file_security_ptr_t ReadFromFile(const std::string& path);

    // First the permissions, then the owner. Throws what posix_file_t::SetPermissions and SetOwner throw,
    // with the context "posix_file_security failed to apply security for file: <path>."
    //
    // The permissions go through a link, the owner is that of the link itself.
    // Kept: PosixFileSecurity.ApplyGivesPermissionsToTheTargetAndTheOwnerToTheLink
    //
    // Giving an owner takes the set-user-id and set-group-id bits of a program away again, even if it is the
    // owner that the program has.
    // Kept: PosixFileSecurity.ApplyLosesTheSetUserIdBitOfAProgram
    void ApplyToFile(const std::string& path) const;

    // Replaces what the buffer holds. Throws when memory runs out, with the context "posix_file_security
    // failed to serialize."; the buffer stays then.
    void Serialize(cnt::plain_array_t& buffer) const;

    // Throws exc::runtime_exc_t with "Invalid security buffer size: <size> != 27", or "Invalid security
    // buffer data, header: <c> <c> <c>." with the three bytes as they are if they are not "NIX", and the
    // context "posix_file_security failed to deserialize."
    //
    // A value above 32 bits is cut to its lower 32, so that the owner 2^32 reads as root.
    // Kept: PosixFileSecurityForm.ValuesAbove32BitsAreCut
    static posix_file_security_ptr_t Deserialize(const cnt::plain_array_t& buffer);
};

} // namespace posix
