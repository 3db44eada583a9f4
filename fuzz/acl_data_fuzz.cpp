// Stored access control lists.

#include "nelvo/fs/acl_data.h"

#include "fuzz/stream.h"

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    util::AclData acl;
    TryStored(acl, Array(data, size), util::DeserializeAcl, util::SerializeAcl);
}
