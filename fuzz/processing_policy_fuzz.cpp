// Stored policies.

#include "nelvo/crypto/processing_policy.h"

#include "fuzz/stream.h"

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    CCryptoProcessingPolicy policy;
    TryStored(policy, Array(data, size));
    Require(!policy.ToString().empty());
}
