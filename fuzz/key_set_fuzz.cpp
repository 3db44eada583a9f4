// Stored key sets, and what is asked of one that came from outside.

#include "nelvo/crypto/key_set.h"

#include "fuzz/stream.h"

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    const auto key_set = TryMade<crypto::CKeySet>(Array(data, size));
    if (key_set == nullptr)
        return;
    Reads([&] { key_set->ToString(); });
    Reads([&] { key_set->GetCreationTimeText(); });
    key_set->IsEqual(key_set->CloneDeep());
    key_set->WipeKeys();
}
