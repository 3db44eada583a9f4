#pragma once

// The access control lists of a file, as texts that are carried and not interpreted. The library reads none
// from the file system and applies none: a record holds what its caller put in or what came from a stream.

#include <optional>
#include <string>

namespace io
{
class io_dev_t;
}

namespace util
{

struct AclData
{
    std::optional<std::string> access_acl;
    std::optional<std::string> default_acl;
};

// The bytes "acld", then each text as io::WriteOptionalString writes it. Throws what that throws, with the
// context "Failed to serialize ACL data into stream."
void SerializeAcl(const AclData& acl, io::io_dev_t& stream);

// Throws exc::runtime_exc_t with "Invalid ACL data." if other bytes come first, and what
// io::ReadOptionalString throws; the record stays then. Their context is "Failed to unserialize ACL data into
// stream."
//
// "into" stands there although the record is read from the stream.
// Kept: AclData.FailureToReadSaysInto
void DeserializeAcl(AclData& acl, io::io_dev_t& stream);

} // namespace util
