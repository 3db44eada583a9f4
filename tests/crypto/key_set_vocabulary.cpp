#include "tests/crypto/key_set_vocabulary.h"

#include <cstring>

#include <boost/make_shared.hpp>

#include "tests/support/golden.h"

using crypto::CKeySet;

namespace
{

crypto::CKeySetId::ptr_t IdOfBytes(const std::string& bytes)
{
    crypto::SRawKeySetId raw = {};
    std::memcpy(raw.bytes, bytes.data(), bytes.size());
    return boost::make_shared<crypto::CKeySetId>(raw);
}

// So many bytes for a name, which is a letter or nothing.
crypto::secure_array_ptr_t SecretOf(const std::string& name)
{
    auto secret = boost::make_shared<crypto::secure_array_t>(16 * name.size());
    MakeSecret(secret->data(), secret->size(), *name.c_str());
    return secret;
}

} // namespace

crypto::CKeySetId::ptr_t IdOf(std::uint8_t first) { return IdOfBytes({static_cast<char>(first)}); }

boost::shared_ptr<crypto::CKey> MakeKey(std::uint32_t type, const std::string& name)
{
    return boost::make_shared<crypto::CKey>(type, *SecretOf(name));
}

boost::shared_ptr<crypto::CRestoreKeyRepairRec> MakeRecord(std::uint8_t master, const std::string& name)
{
    return boost::make_shared<crypto::CRestoreKeyRepairRec>(IdOf(master), SecretOf(name));
}

CKeySet::ptr_t MakeSet(std::uint8_t id, const CKeySet::keys_t& keys, const CKeySet::repair_records_t& records)
{
    return boost::make_shared<CKeySet>(IdOf(id), 1, L"hint", 5, keys, records, crypto::SKeySetTime());
}

CKeySet::ptr_t SetWithAlgorithm(std::uint8_t id, std::uint32_t algorithm)
{
    return boost::make_shared<CKeySet>(IdOf(id), algorithm, L"hint", 5, CKeySet::keys_t(),
                                       CKeySet::repair_records_t(), crypto::SKeySetTime());
}

CKeySet::ptr_t SetWithRole(std::uint8_t id, std::uint32_t role)
{
    CKeySet::ptr_t key_set = MakeSet(id);
    key_set->SetRole(role);
    return key_set;
}

CKeySet::ptr_t GoldenSet()
{
    const CKeySet::keys_t keys = {boost::make_shared<crypto::CKey>(0, Secure(kGoldenKey)),
                                  boost::make_shared<crypto::CKey>(1, Secure(kGoldenOtherKey))};
    const auto record = boost::make_shared<crypto::CRestoreKeyRepairRec>(
        IdOfBytes(Unhex("0f1e2d3c4b5a69788796a5b4c3d2e1f0")), SharedSecure(kGoldenRepairData));
    return boost::make_shared<CKeySet>(IdOfBytes(Unhex("00112233445566778899aabbccddeeff")), 1,
                                       L"Gr\u00f6\u00dfe \u9375", 4, keys, CKeySet::repair_records_t{record},
                                       crypto::SKeySetTime{0x442e2000, 0x00383eab});
}

std::string Stored(const CKeySet& key_set)
{
    return WrittenHex([&](io::io_dev_t& stream) { key_set.Serialize(stream); });
}

std::string KeysOf(const CKeySet& key_set)
{
    std::string text;
    for (const auto& key : key_set.GetKeys())
        text += (text.empty() ? "" : " ") + std::to_string(key->GetType()) + ":" +
                std::string(Text(key->GetData()).substr(0, 1));
    return text;
}
