// Stored policies.

#include "nelvo/crypto/processing_policy.h"

#include "fuzz/stream.h"

using policy_t = CCryptoProcessingPolicy;

namespace
{

// An unknown type is taken for enCrypt.
fuzz::array_ptr_t WithKnownType(const fuzz::array_ptr_t& bytes)
{
    auto known = boost::make_shared<cnt::plain_array_t>(*bytes);
    std::uint32_t type = 0;
    if (known->size() < sizeof(type))
        return known;
    std::memcpy(&type, known->data(), sizeof(type));
    type = std::min(type, policy_t::enCrypt);
    std::memcpy(known->data(), &type, sizeof(type));
    return known;
}

bool TryPolicy(policy_t& policy, const fuzz::array_ptr_t& bytes)
{
    const bool is_read = fuzz::TryStored(policy, WithKnownType(bytes));
    policy_t as_given;
    io::plain_mem_stream_t stream(bytes);
    fuzz::Require(fuzz::Reads([&] { as_given.DeSerialize(stream); }) == is_read);
    fuzz::Require(as_given.ToString() == policy.ToString() &&
                  as_given.GetExtraFlag() == policy.GetExtraFlag());
    return is_read;
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    policy_t policy;
    const bool is_read = TryPolicy(policy, Array(data, size));
    const std::uint32_t type = policy.GetType();
    const bool has_key = policy.GetTargetKeySetId() != nullptr;
    Require(type <= policy_t::enCrypt && has_key == (type == policy_t::enCrypt));
    Require(is_read || type == policy_t::enNoCryptoProcessing);
    Require(Reads([&] { policy.RequireKey(); }) == has_key);
    const std::string id = has_key ? policy.GetTargetKeySetId()->ToString() : "null";
    Require(policy.ToString() ==
            "Policy: '" + policy_t::TypeToString(type) + "', target keyset ID: '" + id + "'");
}
