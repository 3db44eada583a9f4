#include "nelvo/crypto/key_names.h"

#include "nelvo/core/util/format.h"
#include "nelvo/core/util/to_text.h"

namespace crypto
{

std::string KeyTypeToString(std::uint32_t type)
{
    switch (type)
    {
    case enPrivateKey: return "enPrivateKey";
    case enPublicKey: return "enPublicKey";
    case enAESIVKey: return "enAESIVKey";
    case enUnknownKey: return "enUnknownKey";
    default: return util::ToText(static_cast<std::int32_t>(type));
    }
}

std::string KeyAlgorithmToString(std::uint32_t algorithm)
{
    switch (algorithm)
    {
    case 0: return "AES256CBC";
    case 1: return "RSA";
    default: return "Unknown Algorithm";
    }
}

std::string KeyRoleToString(std::uint32_t role)
{
    switch (role)
    {
    case 1: return "session";
    case 2: return "storage";
    case 3: return "meta";
    case 4: return "enterprise";
    case 5: return "user";
    case 6: return "archive";
    default: return util::Format("unknown ('%1')", role);
    }
}

} // namespace crypto
