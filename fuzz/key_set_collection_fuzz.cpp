// Stored collections of key sets.

#include "nelvo/crypto/key_set_collection.h"

#include "fuzz/stream.h"

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    TryMade<crypto::CKeySetCollection>(Array(data, size));
}
