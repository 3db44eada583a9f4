// Who may do what with a file: the buffer of its owner and permissions, and stored access control lists.

#include "nelvo/fs/posix_file_security.h"

#include "fuzz/stream.h"
#include "nelvo/fs/acl_data.h"

using posix::posix_file_security;

namespace
{

constexpr std::size_t kHeadSize = 3;
constexpr std::size_t kFieldSize = 8;

// Of each field the lower four bytes are stored as they were read, the others as zeros.
bool IsCutForm(const cnt::plain_array_t& stored, const std::uint8_t* data)
{
    for (std::size_t i = kHeadSize; i != stored.size(); ++i)
    {
        const bool is_cut = (i - kHeadSize) % kFieldSize >= 4;
        if (static_cast<std::uint8_t>(stored[i]) != (is_cut ? 0 : data[i]))
            return false;
    }
    return true;
}

void TryBuffer(const std::uint8_t* data, std::size_t size)
{
    const bool is_whole = size == kHeadSize + 3 * kFieldSize && std::memcmp(data, "NIX", kHeadSize) == 0;
    posix::posix_file_security_ptr_t security;
    fuzz::Require(
        fuzz::Reads([&] { security = posix_file_security::Deserialize(*fuzz::Array(data, size)); }) ==
        is_whole);
    if (!is_whole)
        return;
    cnt::plain_array_t stored;
    security->Serialize(stored);
    fuzz::Require(stored.size() == size && IsCutForm(stored, data));
    const auto again = posix_file_security::Deserialize(stored);
    fuzz::Require(again->uid == security->uid && again->gid == security->gid &&
                  again->mode == security->mode);
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    TryBuffer(data, size);
    util::AclData acl;
    TryStored(acl, Array(data, size), util::DeserializeAcl, util::SerializeAcl);
}
