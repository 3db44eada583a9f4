#include "nelvo/crypto/runtime_key_store.h"

#include <functional>
#include <map>

#include <gtest/gtest.h>

#include "tests/crypto/key_set_vocabulary.h"
#include "tests/support/mutex_watch.h"

using crypto::CKeySet;

namespace
{

class RuntimeKeyStoreCalls : public ::testing::Test
{
protected:
    RuntimeKeyStoreCalls() { m_store.Add(m_set); }

    std::string Calls(const std::function<void()>& operation) const
    {
        return MutexCalls({Watched(m_store, 's')}, operation);
    }

    // With those of a set.
    std::string Calls(const CKeySet& key_set, const std::function<void()>& operation) const
    {
        return MutexCalls({Watched(m_store, 's'), Watched(key_set, 'k')}, operation);
    }

    crypto::CRuntimeKeyStore m_store;
    const CKeySet::ptr_t m_set = MakeSet(1);
    std::vector<CKeySet::ptr_t> m_sets;
    std::vector<std::string> m_ids;
};

} // namespace

TEST_F(RuntimeKeyStoreCalls, LockIsTheFirstOfWhatAStoreHas)
{
    EXPECT_EQ("s+s-",
              MutexCalls({{&m_store, sizeof(boost::recursive_mutex), 's'}}, [&] { m_store.Find(*IdOf(1)); }));
}

TEST_F(RuntimeKeyStoreCalls, EachOperationLocksTheStore)
{
    const std::map<std::string, std::function<void()>> operations = {
        {"Find", [&] { m_store.Find(*IdOf(1)); }},
        {"Find, nothing", [&] { m_store.Find(*IdOf(2)); }},
        {"Find, no id", [&] { m_store.Find("0100"); }},
        {"Find, no text", [&] { m_store.Find(""); }},
        {"Get, no pointer", [&] { EXPECT_ANY_THROW(m_store.Get(crypto::CKeySetId::ptr_t())); }},
        {"Add", [&] { m_store.Add(m_set); }},
        {"Add, nothing", [&] { EXPECT_ANY_THROW(m_store.Add(nullptr)); }},
        {"AddAll, nothing", [&] { m_store.AddAll({}); }},
        {"CollectByRole", [&] { m_store.CollectByRole(5, m_sets); }},
        {"CloneAll", [&] { m_store.CloneAll(m_sets); }},
        {"ListIds", [&] { m_store.ListIds(m_ids); }},
        {"GetPolicy", [&] { m_store.GetPolicy(); }},
        {"SetPolicy", [&] { m_store.SetPolicy({}); }},
    };
    for (const auto& [name, operation] : operations)
        EXPECT_EQ("s+s-", Calls(operation)) << name;
}

TEST_F(RuntimeKeyStoreCalls, OneOperationStandsOnAnotherUnderItsOwnLock)
{
    EXPECT_EQ("s+s+s-s-", Calls([&] { m_store.Find("01000000000000000000000000000000"); }));
    EXPECT_EQ("s+s+s-s-", Calls([&] { m_store.Get(*IdOf(1)); }));
    EXPECT_EQ("s+s+s-s-", Calls([&] { EXPECT_ANY_THROW(m_store.Get(*IdOf(2))); }));
    EXPECT_EQ("s+s+s+s-s-s-", Calls([&] { m_store.Get(IdOf(1)); }));
    EXPECT_EQ("s+s+s+s-s-s-", Calls([&] { EXPECT_ANY_THROW(m_store.Get(IdOf(2))); }));
}

TEST_F(RuntimeKeyStoreCalls, SeveralSetsAreAddedUnderOneLock)
{
    EXPECT_EQ("s+s+s-s+s-s-", Calls([&] { m_store.AddAll({MakeSet(2), MakeSet(3)}); }));
    EXPECT_EQ("s+s+s-s+s-s-", Calls(
                                  [&] {
                                      EXPECT_ANY_THROW(m_store.AddAll({MakeSet(2), nullptr, MakeSet(3)}));
                                  }));
}

TEST_F(RuntimeKeyStoreCalls, LockOfASetIsTakenUnderTheStores)
{
    EXPECT_EQ("s+k+k-s-", Calls(*m_set, [&] { m_store.Add(m_set); }));
    const CKeySet::ptr_t stored = m_store.Get(*IdOf(1));
    EXPECT_EQ("s+k+k-s-", Calls(*stored, [&] { m_store.CollectByRole(5, m_sets); }));
    EXPECT_EQ("s+k+k-s-", Calls(*stored, [&] { m_store.CloneAll(m_sets); }));
}
