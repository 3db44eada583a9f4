// Stored key sets with what stands in them, and what is asked of one that came from outside.

#include "nelvo/crypto/key_set.h"

#include "fuzz/stream.h"
#include "nelvo/crypto/runtime_key_store.h"

using crypto::CKeySet;
using crypto::CKeySetId;

namespace
{

fuzz::array_ptr_t Bytes(const CKeySet& key_set)
{
    return fuzz::Stored(key_set, [](const CKeySet& from, io::io_dev_t& stream) { from.Serialize(stream); });
}

// The store has the set by its id, and by the id's text in either case.
void TryStore(const CKeySet::ptr_t& key_set)
{
    crypto::CRuntimeKeyStore store;
    store.Add(key_set);
    const CKeySetId id = CKeySetId::ValueOf(key_set->GetId());
    std::string text = id.ToString();
    const CKeySet::ptr_t found = store.Find(id);
    fuzz::Require(found != nullptr && *Bytes(*found) == *Bytes(*key_set) && store.Find(text) == found);
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char letter) { return letter >= 'a' ? letter - ('a' - 'A') : letter; });
    fuzz::Require(store.Find(text) == found && store.Find(text + "0") == nullptr);
}

void TryClones(const CKeySet::ptr_t& key_set)
{
    const CKeySet::ptr_t deep = key_set->CloneDeep();
    fuzz::Require(key_set->IsEqual(deep) == key_set->IsEqual(key_set) && !deep->HasRepairRecords());
    fuzz::Require(*Bytes(*key_set->Clone()) == *Bytes(*key_set));
    fuzz::Require(!key_set->CloneWithoutSensitiveKeys()->HasKeys());
}

void TryKeySet(const fuzz::array_ptr_t& bytes)
{
    const auto key_set = fuzz::TryMade<CKeySet>(bytes);
    if (key_set == nullptr)
        return;
    fuzz::Require(key_set->ToString().find(CKeySetId::ValueOf(key_set->GetId()).ToString()) !=
                  std::string::npos);
    fuzz::Reads([&] { key_set->GetCreationTimeText(); });
    fuzz::Require(!key_set->GetAlgorithmName().empty() && !key_set->GetRoleName().empty());
    TryClones(key_set);
    TryStore(key_set);
    key_set->WipeKeys();
    for (const auto& key : key_set->GetKeys())
        fuzz::Require(key->GetData().empty());
}

void TryId(const fuzz::array_ptr_t& bytes)
{
    const auto id = fuzz::TryMade<CKeySetId>(bytes);
    if (id != nullptr)
        fuzz::Require(*CKeySetId::FromBlob(id->ToBlob()) == *id);
    CKeySetId::ptr_t from_blob;
    const bool is_read = fuzz::Reads([&] { from_blob = CKeySetId::FromBlob(*bytes); });
    fuzz::Require(is_read == (bytes->size() == crypto::SRawKeySetId::kSize));
    fuzz::Require(!is_read || *from_blob->ToBlob() == *bytes);
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    const array_ptr_t bytes = Array(data, size);
    TryKeySet(bytes);
    TryId(bytes);
    TryMade<crypto::CRestoreKeyRepairRec>(bytes);
    Require(crypto::CRuntimeKeyStore().Find(Text(data, size)) == nullptr);
}
