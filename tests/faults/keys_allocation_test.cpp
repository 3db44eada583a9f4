// Keys, sets of keys and what holds them, while memory runs out.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/crypto/key_set_collection.h"
#include "nelvo/crypto/runtime_key_store.h"
#include "tests/faults/allocation_sweep.h"
#include "tests/support/failure_text.h"
#include "tests/support/flat_buffer.h"
#include "tests/support/golden.h"
#include "tests/support/record_stream.h"

using crypto::CAesKeyIVBlob;
using crypto::CKey;
using crypto::CKeySet;
using crypto::CKeySetCollection;
using crypto::CKeySetId;
using crypto::CRestoreKeyRepairRec;
using crypto::CRuntimeKeyStore;
using crypto::secure_array_t;

namespace
{

const std::string kText = "the quick brown fox jumps over it";
const std::string kId = "00112233445566778899aabbccddeeff";

template <class Record>
auto ReadGolden(const std::string& golden)
{
    record_stream_t stream(Golden(golden));
    return Record::DeSerialize(stream);
}

template <class Record>
std::string Stored(const Record& record)
{
    return Hex(Written([&](io::io_dev_t& stream) { record.Serialize(stream); }));
}

// Reads the record of tests/data, and writes it.
template <class Record>
void SweepRecord(const std::string& golden)
{
    const std::string bytes = Golden(golden);
    record_stream_t stream(bytes);
    boost::shared_ptr<Record> record;
    SweepAllocations({[&] { record = Record::DeSerialize(stream); },
                      [&]
                      {
                          stream.GetMemDevice()->SeekAbsolute(0);
                          const auto read = std::exchange(record, nullptr);
                          return read != nullptr ? Stored(*read) : "none";
                      },
                      Hex(bytes), "none"});

    const auto written = ReadGolden<Record>(golden);
    std::unique_ptr<record_stream_t> target = std::make_unique<record_stream_t>();
    SweepAllocations({[&] { written->Serialize(*target); },
                      [&]
                      {
                          std::string result = Hex(target->bytes());
                          target = std::make_unique<record_stream_t>();
                          return result;
                      },
                      Hex(bytes)});
}

// The result is what the call gives.
template <class Call, class Show>
void SweepCall(const std::string& expected, Call call, Show show)
{
    std::optional<decltype(call())> value;
    SweepAllocations({[&] { value = call(); },
                      [&]
                      {
                          const auto given = std::exchange(value, {});
                          return given ? show(*given) : "none";
                      },
                      expected, "none"});
}

template <class Call>
void SweepText(const std::string& expected, Call call)
{
    SweepCall(expected, call, [](const std::string& text) { return text; });
}

boost::shared_ptr<secure_array_t> Secret(const std::string& text)
{
    return boost::make_shared<secure_array_t>(text.data(), text.size());
}

} // namespace

TEST(KeysWithoutMemory, KeyIsBuiltAndCopiedOrThrows)
{
    const secure_array_t bytes(kText.data(), kText.size());
    const auto show = [](const auto& key) { return BytesOf(key->GetData()); };
    SweepCall(
        kText, [&] { return boost::make_shared<CKey>(crypto::enPublicKey, bytes); }, show);
    const CKey key(crypto::enPublicKey, bytes);
    SweepCall(
        kText, [&] { return key.Clone(); }, show);
    SweepCall(
        kText, [&] { return key.CopyData(); }, [](const auto& copy) { return BytesOf(*copy); });
}

TEST(KeysWithoutMemory, KeyIsReadAndWrittenOrThrows) { SweepRecord<CKey>("crypto_key"); }

TEST(KeysWithoutMemory, AesBlobIsReadAndWrittenOrThrows)
{
    const std::string bytes = Golden("aes_key_iv_blob");
    const auto blob = Secret(bytes);
    const auto show = [](const secure_array_t& array) { return Hex(BytesOf(array)); };
    SweepCall(
        Hex(bytes), [&] { return CAesKeyIVBlob::FromBlob(blob)->ToBlob(); }, show);
    const CKey key(crypto::enAESIVKey, *blob);
    SweepCall(
        Hex(bytes), [&] { return key.ToAesKeyIVBlob()->ToBlob(); }, show);
}

TEST(KeysWithoutMemory, IdIsReadAndWrittenOrThrows)
{
    SweepRecord<CKeySetId>("key_set_id");
    const auto id = ReadGolden<CKeySetId>("key_set_id");
    const std::string text = id->ToString();
    SweepText(text, [&] { return id->ToString(); });
    SweepText(text, [&] { return CKeySetId::FromBlob(id->ToBlob())->ToString(); });
}

TEST(KeysWithoutMemory, NamesAreMadeOrThrow)
{
    SweepText("unknown ('4294967295')", [] { return crypto::KeyRoleToString(UINT32_MAX); });
    SweepText("Unknown Algorithm", [] { return crypto::KeyAlgorithmToString(7); });
}

TEST(KeysWithoutMemory, RepairRecordIsReadAndWrittenOrThrows)
{
    SweepRecord<CRestoreKeyRepairRec>("repair_record");
}

TEST(KeysWithoutMemory, SetIsReadAndWrittenOrThrows) { SweepRecord<CKeySet>("key_set"); }

TEST(KeysWithoutMemory, SetIsCopiedOrThrows)
{
    const auto key_set = ReadGolden<CKeySet>("key_set");
    const auto count = [](const CKeySet::ptr_t& copy)
    { return copy->ToString() + (copy->GetHint() == L"Gr\u00f6\u00dfe \u9375" ? "" : "?"); };
    const std::string head = "ID: " + kId + " (enterprise), keys: ";
    const std::string records = "repair records: 1 (master keys: 0f1e2d3c4b5a69788796a5b4c3d2e1f0)";
    SweepCall(
        head + "2, " + records, [&] { return key_set->Clone(); }, count);
    SweepCall(
        head + "2, repair records: 0 (master keys:)", [&] { return key_set->CloneDeep(); }, count);
    SweepCall(
        head + "0, " + records, [&] { return key_set->CloneWithoutSensitiveKeys(); }, count);
}

TEST(KeysWithoutMemory, SetBecomesTextOrThrows)
{
    const auto key_set = ReadGolden<CKeySet>("key_set");
    SweepText("ID: " + kId +
                  " (enterprise), keys: 2, repair records: 1 (master keys: 0f1e2d3c4b5a69788796a5b4c3d2e1f0)",
              [&] { return key_set->ToString(); });
    const std::string time = key_set->GetCreationTimeText();
    SweepText(time, [&] { return key_set->GetCreationTimeText(); });
}

TEST(KeysWithoutMemory, SetGetsAKeyOrStaysAsItWas)
{
    CKeySet::ptr_t key_set = ReadGolden<CKeySet>("key_set");
    const auto key = boost::make_shared<CKey>(crypto::enPublicKey, *Secret(kText));
    const auto result = [&]
    {
        const auto full = std::exchange(key_set, ReadGolden<CKeySet>("key_set"));
        return std::to_string(full->GetKeys().size()) + " " + std::to_string(full->GetRepairRecords().size());
    };
    SweepAllocations({[&] { key_set->AddKey(key); }, result, "3 1", "2 1"});
    SweepAllocations({[&] { key_set->AddRepairRecord(nullptr, nullptr); }, result, "2 2", "2 1"});
    SweepAllocations({[&] { key_set->SetKeys({key, key, key, key}); }, result, "4 1", "2 1"});
}

TEST(KeysWithoutMemory, CollectionIsReadAndWrittenOrThrows)
{
    SweepRecord<CKeySetCollection>("key_set_collection");
    const std::string bytes = Golden("key_set_collection");
    SweepCall(
        Hex(bytes),
        [&]
        {
            const auto array = Secret(bytes);
            const auto copy = boost::make_shared<secure_array_t>();
            CKeySetCollection::DeSerializeFromArray(array)->SerializeToArray(copy);
            return copy;
        },
        [](const auto& array) { return Hex(BytesOf(*array)); });
}

TEST(KeysWithoutMemory, CollectionIsSearchedAndCopiedOrThrows)
{
    const auto collection = ReadGolden<CKeySetCollection>("key_set_collection");
    const auto count = [](const auto& copy) { return std::to_string(copy->GetCount()); };
    const std::string all = count(collection);
    SweepCall(
        all, [&] { return collection->Clone(); }, count);
    SweepCall(
        "0", [&] { return collection->SubsetByRole(77); }, count);
    const CKeySetId other(crypto::SRawKeySetId{{0x77}});
    SweepText("Keyset '77000000000000000000000000000000' not found.",
              [&] { return FailureText([&] { collection->GetById(other); }); });
    boost::shared_ptr<CKeySetCollection> grown = collection->Clone();
    SweepAllocations({[&] { grown->AddAll(*collection); },
                      [&] { return count(std::exchange(grown, collection->Clone())); },
                      std::to_string(2 * collection->GetCount()), all});
}

TEST(KeysWithoutMemory, PolicyIsReadAndToldOrThrows)
{
    const std::string bytes = Golden("processing_policy");
    record_stream_t stream(bytes);
    CCryptoProcessingPolicy policy;
    SweepAllocations({[&] { policy.DeSerialize(stream); },
                      [&]
                      {
                          stream.GetMemDevice()->SeekAbsolute(0);
                          return Stored(std::exchange(policy, {}));
                      },
                      Hex(bytes), Stored(policy)});
    policy.DeSerialize(stream);
    const std::string text = policy.ToString();
    SweepText(text, [&] { return policy.ToString(); });
}

TEST(KeysWithoutMemory, StoreTakesASetOrStaysAsItWas)
{
    const auto key_set = ReadGolden<CKeySet>("key_set");
    boost::shared_ptr<CRuntimeKeyStore> store = boost::make_shared<CRuntimeKeyStore>();
    SweepAllocations({[&] { store->Add(key_set); },
                      [&]
                      {
                          const auto full = std::exchange(store, boost::make_shared<CRuntimeKeyStore>());
                          std::vector<std::string> ids;
                          full->ListIds(ids);
                          return ids.empty() ? "" : ids.front();
                      },
                      kId, ""});
}

TEST(KeysWithoutMemory, StoreFindsAndTellsOrThrows)
{
    CRuntimeKeyStore store;
    store.Add(ReadGolden<CKeySet>("key_set"));
    SweepCall(
        kId, [&] { return store.Find(kId); }, [](const auto& found) { return found->GetId()->ToString(); });
    SweepCall(
        "1",
        [&]
        {
            std::vector<CKeySet::ptr_t> clones;
            store.CloneAll(clones);
            return clones;
        },
        [](const auto& clones) { return std::to_string(clones.size()); });
    SweepText(kId,
              [&]
              {
                  std::vector<std::string> ids;
                  store.ListIds(ids);
                  return ids.front();
              });
    SweepText("Key set (id: '00000000000000000000000000000000') doesn't exist in runtime store.",
              [&] { return FailureText([&] { store.Get(CKeySetId()); }); });
}
