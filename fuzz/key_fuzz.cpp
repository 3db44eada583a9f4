// Stored keys, and AES keys with their vectors, which those of one type hold.

#include "nelvo/crypto/key.h"

#include "fuzz/stream.h"

using crypto::CAesKeyIVBlob;

namespace
{

constexpr std::size_t kReserved = 18;

boost::shared_ptr<CAesKeyIVBlob> Read(const crypto::secure_array_t& bytes)
{
    return CAesKeyIVBlob::FromBlob(boost::make_shared<crypto::secure_array_t>(bytes));
}

// Behind the reserved bytes, the stored form is what was read, with zeros for what was missing.
bool IsForm(const crypto::secure_array_t& stored, const crypto::secure_array_t& bytes)
{
    const auto is_zero = [](char byte) { return byte == 0; };
    const std::size_t begin = std::min(kReserved, bytes.size());
    const std::size_t end = std::min(stored.size(), bytes.size());
    return std::all_of(stored.begin(), stored.begin() + kReserved, is_zero) &&
           std::equal(bytes.begin() + begin, bytes.begin() + end, stored.begin() + begin) &&
           std::all_of(stored.begin() + end, stored.end(), is_zero);
}

void TryAesKey(const crypto::secure_array_t& bytes)
{
    boost::shared_ptr<CAesKeyIVBlob> blob;
    if (!fuzz::Reads([&] { blob = Read(bytes); }))
        return;
    fuzz::Require((blob->GetIvBytes() == nullptr) == blob->GetIv()->empty());
    // Two arrays that there is memory for may be too much in one.
    fuzz::Reads(
        [&]
        {
            const crypto::secure_array_t stored = blob->ToBlob();
            fuzz::Require(IsForm(stored, bytes) && Read(stored)->ToBlob() == stored);
        });
}

void TryKey(const fuzz::array_ptr_t& bytes)
{
    const auto key = fuzz::TryMade<crypto::CKey>(bytes);
    if (key == nullptr)
        return;
    fuzz::Require(key->Clone()->Equals(key) && *key->CopyData() == key->GetData());
    if (!fuzz::Reads([&] { key->ToAesKeyIVBlob(); }))
        fuzz::Require(key->GetType() != crypto::enAESIVKey || key->GetData().size() >= kReserved);
    TryAesKey(key->GetData());
    const bool had_bytes = !key->GetData().empty();
    key->Wipe();
    fuzz::Require(key->GetData().empty() && (!had_bytes || key->GetType() == crypto::enUnknownKey));
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    TryKey(Array(data, size));
    TryAesKey({reinterpret_cast<const char*>(data), size});
}
