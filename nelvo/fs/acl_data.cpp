#include "nelvo/fs/acl_data.h"

#include <cstdint>
#include <utility>

#include "nelvo/core/exc/rethrow.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/io/binary_value.h"

namespace util
{

namespace
{

constexpr std::uint32_t kMagic = 0x646C6361; // "acld"

} // namespace

void SerializeAcl(const AclData& acl, io::io_dev_t& stream)
try
{
    io::WriteValue(stream, kMagic);
    io::WriteOptionalString(stream, acl.access_acl);
    io::WriteOptionalString(stream, acl.default_acl);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "Failed to serialize ACL data into stream.", e);
}

void DeserializeAcl(AclData& acl, io::io_dev_t& stream)
try
{
    if (io::ReadValue<std::uint32_t>(stream) != kMagic)
        throw exc::runtime_exc_t("Invalid ACL data.");
    std::optional<std::string> access_acl = io::ReadOptionalString(stream);
    std::optional<std::string> default_acl = io::ReadOptionalString(stream);
    acl.access_acl = std::move(access_acl);
    acl.default_acl = std::move(default_acl);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "Failed to unserialize ACL data into stream.", e);
}

} // namespace util
