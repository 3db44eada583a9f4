#pragma once

// The numbers by which stored records name key types, algorithms and roles, and their texts for people.

#include <cstdint>
#include <string>

namespace crypto
{

// Key types.
constexpr std::uint32_t enPrivateKey = 0;
constexpr std::uint32_t enPublicKey = 1;
constexpr std::uint32_t enAESIVKey = 2;
constexpr std::uint32_t enUnknownKey = 101; // of a key that was wiped

// "enPrivateKey" and so on; any other value in decimal, as a signed number.
// Kept: KeyNames.UnknownKeyTypeIsASignedNumber
std::string KeyTypeToString(std::uint32_t type);

// 0 is "AES256CBC", 1 "RSA", any other value "Unknown Algorithm".
std::string KeyAlgorithmToString(std::uint32_t algorithm);

// 1 to 6 are "session", "storage", "meta", "enterprise", "user" and "archive"; any other value, 0 as well, is
// "unknown ('<value>')".
std::string KeyRoleToString(std::uint32_t role);

} // namespace crypto
