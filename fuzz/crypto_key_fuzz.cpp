// Stored keys, and the blobs that those of one type hold.

#include "nelvo/crypto/key.h"

#include "fuzz/stream.h"

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    const auto key = TryMade<crypto::CKey>(Array(data, size));
    if (key == nullptr)
        return;
    Require(key->Clone()->Equals(key));
    Reads([&] { key->ToAesKeyIVBlob(); });
    key->Wipe();
    Require(key->GetData().empty());
}
