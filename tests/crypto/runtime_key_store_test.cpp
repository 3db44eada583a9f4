#include "nelvo/crypto/runtime_key_store.h"

#include <future>
#include <type_traits>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "tests/support/made_secret.h"
#include "tests/support/thrown.h"

using crypto::CKey;
using crypto::CKeySet;
using crypto::CKeySetId;

namespace
{

using texts_t = std::vector<std::string>;
using sets_t = std::vector<CKeySet::ptr_t>;

CKeySetId Id(std::uint8_t first, std::uint8_t last = 0)
{
    crypto::SRawKeySetId raw = {};
    raw.bytes[0] = first;
    raw.bytes[15] = last;
    return CKeySetId(raw);
}

CKeySetId::ptr_t Shared(const CKeySetId& id) { return boost::make_shared<CKeySetId>(id); }

CKeySet::ptr_t Set(const CKeySetId::ptr_t& id, std::uint32_t role = 1, const CKeySet::keys_t& keys = {})
{
    return boost::make_shared<CKeySet>(id, 0, L"hint", role, keys, CKeySet::repair_records_t(),
                                       crypto::SKeySetTime{1, 2});
}

CKeySet::ptr_t Set(const CKeySetId& id, std::uint32_t role = 1, const CKeySet::keys_t& keys = {})
{
    return Set(Shared(id), role, keys);
}

boost::shared_ptr<CKey> MakeKey()
{
    crypto::secure_array_t bytes(16);
    MakeSecret(bytes.data(), bytes.size());
    return boost::make_shared<CKey>(crypto::enPrivateKey, bytes);
}

class RuntimeKeyStore : public ::testing::Test
{
protected:
    texts_t Ids() const
    {
        texts_t ids;
        m_store.ListIds(ids);
        return ids;
    }

    template <class Call>
    static std::string Failure(Call call)
    {
        return Thrown<exc::runtime_exc_t>(call);
    }

    crypto::CRuntimeKeyStore m_store;
};

} // namespace

TEST_F(RuntimeKeyStore, HasNoVirtualOperations)
{
    EXPECT_FALSE(std::is_polymorphic_v<crypto::CRuntimeKeyStore>);
}

TEST_F(RuntimeKeyStore, SetIsFoundByItsId)
{
    m_store.Add(Set(Id(1), 3));
    m_store.Add(Set(Id(2), 4));
    const auto found = m_store.Find(Id(1));
    ASSERT_NE(nullptr, found);
    EXPECT_EQ(3U, found->GetRole());
    EXPECT_EQ(found, m_store.Find(Id(1)));
    EXPECT_EQ(nullptr, m_store.Find(Id(3)));
    EXPECT_EQ(nullptr, m_store.Find(CKeySetId()));
}

TEST_F(RuntimeKeyStore, SetIsFoundByTheTextOfItsId)
{
    m_store.Add(Set(Id(0xAB, 0xCD)));
    const auto found = m_store.Find(Id(0xAB, 0xCD));
    ASSERT_NE(nullptr, found);
    EXPECT_EQ(found, m_store.Find("ab0000000000000000000000000000cd"));
    EXPECT_EQ(found, m_store.Find("AB0000000000000000000000000000cD"));
    EXPECT_EQ(nullptr, m_store.Find("ab0000000000000000000000000000ce"));
}

TEST_F(RuntimeKeyStore, TextThatIsNoIdFindsNothing)
{
    m_store.Add(Set(Id(0)));
    ASSERT_NE(nullptr, m_store.Find("00000000000000000000000000000000"));
    for (const std::string text :
         {"", "0", "00", "0000000000000000000000000000000", "000000000000000000000000000000",
          "000000000000000000000000000000000", "0000000000000000000000000000000000",
          "0000000000000000000000000000000g", "0x000000000000000000000000000000",
          "0x00000000000000000000000000000000", " 0000000000000000000000000000000",
          "{00000000-0000-0000-0000-000000000000}"})
        EXPECT_EQ(nullptr, m_store.Find(text)) << text;
    EXPECT_EQ(nullptr, m_store.Find(std::string(32, '\0')));
}

TEST_F(RuntimeKeyStore, GetGivesTheSetItself)
{
    m_store.Add(Set(Id(1)));
    EXPECT_EQ(m_store.Find(Id(1)), m_store.Get(Id(1)));
    EXPECT_EQ(m_store.Find(Id(1)), m_store.Get(Shared(Id(1))));
}

TEST_F(RuntimeKeyStore, GettingASetThatIsNotThereIsAFailure)
{
    m_store.Add(Set(Id(1)));
    const std::string text =
        "Key set (id: 'ff000000000000000000000000000001') doesn't exist in runtime store.";
    EXPECT_EQ(text, Failure([&] { m_store.Get(Id(0xFF, 1)); }));
    EXPECT_EQ(text, Failure([&] { m_store.Get(Shared(Id(0xFF, 1))); }));
}

TEST_F(RuntimeKeyStore, EmptyPointerIsNoIdButTheEmptyIdIsOne)
{
    EXPECT_EQ("Key set ID is not specified.", Failure([&] { m_store.Get(CKeySetId::ptr_t()); }));
    const std::string text =
        "Key set (id: '00000000000000000000000000000000') doesn't exist in runtime store.";
    EXPECT_EQ(text, Failure([&] { m_store.Get(CKeySetId()); }));
    EXPECT_EQ(text, Failure([&] { m_store.Get(Shared(CKeySetId())); }));
}

TEST_F(RuntimeKeyStore, SetWithoutAnIdStandsUnderTheEmptyId)
{
    m_store.Add(Set(nullptr, 5));
    ASSERT_NE(nullptr, m_store.Find(CKeySetId()));
    EXPECT_EQ(5U, m_store.Get(CKeySetId())->GetRole());
    m_store.Add(Set(CKeySetId(), 6));
    EXPECT_EQ(6U, m_store.Get(CKeySetId())->GetRole());
    EXPECT_EQ(1U, Ids().size());
}

TEST_F(RuntimeKeyStore, AddedSetIsStoredAsAClone)
{
    const auto key = MakeKey();
    const auto set = Set(Id(1), 2, {key});
    m_store.Add(set);
    const auto stored = m_store.Get(Id(1));
    EXPECT_NE(set, stored);
    EXPECT_EQ(CKeySet::keys_t({key}), stored->GetKeys());
    EXPECT_EQ(L"hint", stored->GetHint());
    EXPECT_EQ(1U, stored->GetCreationTime().low);
    EXPECT_EQ(2U, stored->GetCreationTime().high);
}

TEST_F(RuntimeKeyStore, LaterChangesOfAnAddedSetDoNotReachTheStore)
{
    const auto set = Set(Id(1), 2, {MakeKey()});
    m_store.Add(set);
    set->SetRole(3);
    set->SetKeys({});
    set->AddRepairRecord(Shared(Id(9)), boost::make_shared<crypto::secure_array_t>(1));
    const auto stored = m_store.Get(Id(1));
    EXPECT_EQ(2U, stored->GetRole());
    EXPECT_TRUE(stored->HasKeys());
    EXPECT_FALSE(stored->HasRepairRecords());
}

TEST_F(RuntimeKeyStore, WipeOfAnAddedSetReachesTheStore)
{
    const auto set = Set(Id(1), 2, {MakeKey()});
    m_store.Add(set);
    set->WipeKeys();
    const auto keys = m_store.Get(Id(1))->GetKeys();
    ASSERT_EQ(1U, keys.size());
    EXPECT_EQ(crypto::enUnknownKey, keys[0]->GetType());
    EXPECT_TRUE(keys[0]->GetData().empty());
}

TEST_F(RuntimeKeyStore, SecondSetWithAnIdReplacesTheFirst)
{
    m_store.Add(Set(Id(1), 2));
    const auto first = m_store.Get(Id(1));
    m_store.Add(Set(Id(1), 3));
    EXPECT_EQ(3U, m_store.Get(Id(1))->GetRole());
    EXPECT_EQ(1U, Ids().size());
    EXPECT_EQ(1, first.use_count());
}

TEST_F(RuntimeKeyStore, EmptyPointerIsNoSet)
{
    EXPECT_EQ("Key set is not specified.", Failure([&] { m_store.Add(nullptr); }));
    EXPECT_EQ(texts_t(), Ids());
}

TEST_F(RuntimeKeyStore, SeveralSetsAreAddedAsOneIs)
{
    const sets_t sets = {Set(Id(2), 1), Set(Id(1), 2), Set(Id(2), 3)};
    m_store.AddAll(sets);
    m_store.AddAll({});
    EXPECT_EQ(2U, Ids().size());
    EXPECT_EQ(3U, m_store.Get(Id(2))->GetRole());
    EXPECT_NE(sets[1], m_store.Get(Id(1)));
}

TEST_F(RuntimeKeyStore, SetsBeforeAnEmptyPointerAreAdded)
{
    EXPECT_EQ("Key set is not specified.", Failure(
                                               [&] {
                                                   m_store.AddAll({Set(Id(1)), nullptr, Set(Id(2))});
                                               }));
    EXPECT_EQ(texts_t({"01000000000000000000000000000000"}), Ids());
}

TEST_F(RuntimeKeyStore, IdsAreListedInTheOrderOfTheirBytes)
{
    m_store.AddAll({Set(Id(0x80)), Set(Id(1, 0xFF)), Set(Id(0, 2)), Set(Id(1)), Set(Id(0x7F))});
    texts_t ids = {"before"};
    m_store.ListIds(ids);
    EXPECT_EQ(texts_t({"before", "00000000000000000000000000000002", "01000000000000000000000000000000",
                       "010000000000000000000000000000ff", "7f000000000000000000000000000000",
                       "80000000000000000000000000000000"}),
              ids);
}

TEST_F(RuntimeKeyStore, SetsOfARoleAreSharedInTheOrderOfTheirIds)
{
    m_store.AddAll({Set(Id(3), 5), Set(Id(1), 5), Set(Id(2), 4)});
    sets_t found = {nullptr};
    m_store.CollectByRole(5, found);
    EXPECT_EQ(sets_t({nullptr, m_store.Get(Id(1)), m_store.Get(Id(3))}), found);
    m_store.CollectByRole(6, found);
    EXPECT_EQ(3U, found.size());
}

TEST_F(RuntimeKeyStore, RoleIsTheOneThatASetHasNow)
{
    m_store.Add(Set(Id(1), 5));
    m_store.Get(Id(1))->SetRole(6);
    sets_t found;
    m_store.CollectByRole(5, found);
    EXPECT_EQ(sets_t(), found);
    m_store.CollectByRole(6, found);
    EXPECT_EQ(sets_t({m_store.Get(Id(1))}), found);
}

TEST_F(RuntimeKeyStore, ClonesOfAllShareTheKeysInTheOrderOfTheIds)
{
    const auto key = MakeKey();
    m_store.AddAll({Set(Id(2), 7, {key}), Set(Id(1), 8)});
    sets_t clones = {nullptr};
    m_store.CloneAll(clones);
    ASSERT_EQ(3U, clones.size());
    EXPECT_EQ(nullptr, clones[0]);
    EXPECT_EQ(8U, clones[1]->GetRole());
    EXPECT_NE(m_store.Get(Id(1)), clones[1]);
    EXPECT_EQ(CKeySet::keys_t({key}), clones[2]->GetKeys());
    EXPECT_NE(m_store.Get(Id(2)), clones[2]);
}

TEST_F(RuntimeKeyStore, EmptyStoreAddsNothing)
{
    sets_t sets;
    m_store.CollectByRole(0, sets);
    m_store.CloneAll(sets);
    EXPECT_EQ(sets_t(), sets);
    EXPECT_EQ(texts_t(), Ids());
}

TEST_F(RuntimeKeyStore, PolicyIsNoProcessingUntilItIsSet)
{
    EXPECT_EQ("Policy: 'enNoCryptoProcessing', target keyset ID: 'null'", m_store.GetPolicy().ToString());
    m_store.SetPolicy(CCryptoProcessingPolicy(true, Shared(Id(1)), true));
    EXPECT_EQ("Policy: 'enCrypt', target keyset ID: '01000000000000000000000000000000'",
              m_store.GetPolicy().ToString());
    EXPECT_TRUE(m_store.GetPolicy().GetExtraFlag());
}

// The store's mutex is taken before a set's, never the other way round.
TEST_F(RuntimeKeyStore, ThreadsShareAStore)
{
    const auto use = [this](std::uint8_t first)
    {
        for (std::uint8_t i = 0; i != 50; ++i)
        {
            m_store.Add(Set(Id(first, i), first, {MakeKey()}));
            m_store.Get(Id(first, i))->WipeKeys();
            m_store.SetPolicy(m_store.GetPolicy());
            sets_t sets;
            m_store.CloneAll(sets);
            m_store.CollectByRole(first, sets);
            EXPECT_LE(2U, sets.size());
            EXPECT_LE(1U, Ids().size());
        }
    };
    auto other = std::async(std::launch::async, use, std::uint8_t{1});
    use(2);
    other.get();
    EXPECT_EQ(100U, Ids().size());
}
