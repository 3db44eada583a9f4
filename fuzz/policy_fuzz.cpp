// Stored policies.

#include "nelvo/crypto/processing_policy.h"

#include "fuzz/stream.h"

using policy_t = CCryptoProcessingPolicy;

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    policy_t policy;
    TryStored(policy, Array(data, size));
    const std::uint32_t type = policy.GetType();
    const bool has_key = policy.GetTargetKeySetId() != nullptr;
    Require(type <= policy_t::enCrypt && has_key == (type == policy_t::enCrypt));
    Require(Reads([&] { policy.RequireKey(); }) == has_key);
    const std::string id = has_key ? policy.GetTargetKeySetId()->ToString() : "null";
    Require(policy.ToString() ==
            "Policy: '" + policy_t::TypeToString(type) + "', target keyset ID: '" + id + "'");
}
