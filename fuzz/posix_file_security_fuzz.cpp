// The buffer of a file's owner and permissions.

#include "nelvo/fs/posix_file_security.h"

#include "fuzz/stream.h"

using posix::posix_file_security;

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    posix::posix_file_security_ptr_t security;
    if (!Reads([&] { security = posix_file_security::Deserialize(*Array(data, size)); }))
        return;
    cnt::plain_array_t stored;
    security->Serialize(stored);
    const auto again = posix_file_security::Deserialize(stored);
    Require(again->uid == security->uid && again->gid == security->gid && again->mode == security->mode);
}
