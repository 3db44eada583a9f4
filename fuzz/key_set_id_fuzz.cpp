// Stored ids of key sets.

#include "nelvo/crypto/key_set_id.h"

#include "fuzz/stream.h"

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    const auto id = TryMade<crypto::CKeySetId>(Array(data, size));
    if (id != nullptr)
        Require(*crypto::CKeySetId::FromBlob(id->ToBlob()) == *id);
    Reads([&] { crypto::CKeySetId::FromBlob(*Array(data, size)); });
}
