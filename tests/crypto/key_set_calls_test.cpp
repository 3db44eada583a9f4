// Looks at the locks of key sets, and answers for gmtime_r: this program is linked with calls of its own.

#include <cerrno>
#include <ctime>
#include <functional>
#include <map>
#include <string>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/crypto/key_set_collection.h"
#include "tests/crypto/key_set_vocabulary.h"
#include "tests/support/mutex_watch.h"
#include "tests/support/thrown.h"

using crypto::CKeySet;

namespace
{

int g_gmtime_errno = 0;

std::string Calls(const CKeySet& key_set, const std::function<void()>& operation)
{
    return MutexCalls({Watched(key_set, 'a')}, operation);
}

// What comparing two sets locks.
std::string CallsToCompare(const CKeySet::ptr_t& left, const CKeySet::ptr_t& right, bool equal)
{
    return MutexCalls({Watched(*left, 'a'), Watched(*right, 'b')},
                      [&] { EXPECT_EQ(equal, left->IsEqual(right)); });
}

// Notes each write.
class noting_dev_t : public io::io_dev_t
{
public:
    std::uint64_t write(const void*, std::uint64_t count) override
    {
        NoteAmongCalls("w");
        return count;
    }
    std::uint64_t read(void*, std::uint64_t) override { return 0; }
};

} // namespace

// The linker puts what wraps in the place of the calls of this function.
extern "C" std::tm* BreakDown(const std::time_t* time, std::tm* fields) __asm__("__real_gmtime_r");
extern "C" std::tm* BreakDownOrFail(const std::time_t* time, std::tm* fields) __asm__("__wrap_gmtime_r");

std::tm* BreakDownOrFail(const std::time_t* time, std::tm* fields)
{
    NoteAmongCalls("g");
    if (g_gmtime_errno == 0)
        return BreakDown(time, fields);
    errno = g_gmtime_errno;
    return nullptr;
}

TEST(KeySetCalls, EachOperationLocksTheSet)
{
    const CKeySet::ptr_t key_set = GoldenSet();
    const std::map<std::string, std::function<void()>> operations = {
        {"GetAlgorithm", [&] { key_set->GetAlgorithm(); }},
        {"GetRole", [&] { key_set->GetRole(); }},
        {"SetRole", [&] { key_set->SetRole(1); }},
        {"GetCreationTime", [&] { key_set->GetCreationTime(); }},
        {"GetId", [&] { key_set->GetId(); }},
        {"GetHint", [&] { key_set->GetHint(); }},
        {"GetAlgorithmName", [&] { key_set->GetAlgorithmName(); }},
        {"GetRoleName", [&] { key_set->GetRoleName(); }},
        {"GetKeys", [&] { key_set->GetKeys(); }},
        {"SetKeys", [&] { key_set->SetKeys({}); }},
        {"GetRepairRecords", [&] { key_set->GetRepairRecords(); }},
        {"SetRepairRecords", [&] { key_set->SetRepairRecords({}); }},
        {"AddKey", [&] { key_set->AddKey(MakeKey(0, "a")); }},
        {"AddRepairRecord", [&] { key_set->AddRepairRecord(IdOf(1), SharedSecure("")); }},
        {"FindKey", [&] { key_set->FindKey(0); }},
        {"HasKeys", [&] { key_set->HasKeys(); }},
        {"HasRepairRecords", [&] { key_set->HasRepairRecords(); }},
        {"WipeKeys", [&] { key_set->WipeKeys(); }},
        {"Clone", [&] { key_set->Clone(); }},
        {"CloneDeep", [&] { key_set->CloneDeep(); }},
        {"CloneWithoutSensitiveKeys", [&] { key_set->CloneWithoutSensitiveKeys(); }},
    };
    for (const auto& [name, operation] : operations)
        EXPECT_EQ("a+a-", Calls(*key_set, operation)) << name;
}

TEST(KeySetCalls, LockIsTheFirstOfWhatASetHas)
{
    const CKeySet::ptr_t key_set = GoldenSet();
    EXPECT_EQ("a+a-", MutexCalls({{key_set.get(), sizeof(boost::recursive_mutex), 'a'}},
                                 [&] { key_set->GetRole(); }));
}

TEST(KeySetCalls, TimeIsBrokenDownUnderTheLock)
{
    const CKeySet::ptr_t key_set = GoldenSet();
    EXPECT_EQ("a+ga-", Calls(*key_set, [&] { key_set->GetCreationTimeText(); }));
}

TEST(KeySetCalls, ListThatIsReplacedGoesUnderTheLock)
{
    const auto release = [](auto* element)
    {
        NoteAmongCalls("r");
        delete element;
    };
    const CKeySet::ptr_t key_set = MakeSet(1);
    key_set->SetKeys({{new crypto::CKey(0, Secure("")), release}});
    key_set->SetRepairRecords({{new crypto::CRestoreKeyRepairRec(IdOf(1), SharedSecure("")), release}});
    EXPECT_EQ("a+ra-", Calls(*key_set, [&] { key_set->SetKeys({}); }));
    EXPECT_EQ("a+ra-", Calls(*key_set, [&] { key_set->SetRepairRecords({}); }));
}

TEST(KeySetCalls, TextIsMadeUnderOneLock)
{
    const CKeySet::ptr_t key_set = GoldenSet();
    EXPECT_EQ("a+a+a-a-", Calls(*key_set, [&] { key_set->ToString(); }));
}

TEST(KeySetCalls, SetIsLockedWhileItIsWritten)
{
    const CKeySet::ptr_t key_set = GoldenSet();
    noting_dev_t device;
    // Nine values, two keys of three, a record of four and the id's two.
    EXPECT_EQ("a+" + std::string(21, 'w') + "a-", Calls(*key_set, [&] { key_set->Serialize(device); }));
}

TEST(KeySetCalls, FailureGivesTheLockBack)
{
    const CKeySet::ptr_t key_set = GoldenSet();
    full_dev_t device(0);
    EXPECT_EQ("a+a-", Calls(*key_set, [&] { EXPECT_ANY_THROW(key_set->Serialize(device)); }));
}

TEST(KeySet, EqualityTakesTheOthersLockUnderItsOwn)
{
    // Algorithm, role, hint, number of keys and the one key.
    EXPECT_EQ("a+b+b-b+b-b+b-b+b-b+b-a-",
              CallsToCompare(MakeSet(1, {MakeKey(0, "a")}), MakeSet(2, {MakeKey(0, "a")}), true));
}

TEST(KeySetCalls, ComparisonEndsWithTheFirstDifference)
{
    const CKeySet::ptr_t key_set = MakeSet(1);
    const auto with = [](std::uint32_t algorithm, std::uint32_t role, const std::wstring& hint)
    {
        return boost::make_shared<CKeySet>(IdOf(1), algorithm, hint, role, CKeySet::keys_t{MakeKey(0, "a")},
                                           CKeySet::repair_records_t(), crypto::SKeySetTime());
    };
    EXPECT_EQ("a+a-", Calls(*key_set, [&] { EXPECT_FALSE(key_set->IsEqual(nullptr)); }));
    EXPECT_EQ("a+b+b-a-", CallsToCompare(key_set, with(2, 6, L""), false));
    EXPECT_EQ("a+b+b-b+b-a-", CallsToCompare(key_set, with(1, 6, L""), false));
    EXPECT_EQ("a+b+b-b+b-b+b-a-", CallsToCompare(key_set, with(1, 5, L""), false));
    EXPECT_EQ("a+b+b-b+b-b+b-b+b-a-", CallsToCompare(key_set, with(1, 5, L"hint"), false));
}

TEST(KeySetCollectionCalls, ListHasNoLock)
{
    const CKeySet::ptr_t key_set = GoldenSet();
    crypto::CKeySetCollection collection;
    crypto::CKeySetCollection::key_sets_t found;
    EXPECT_EQ("", MutexCalls({Watched(collection, 'c')},
                             [&]
                             {
                                 collection.Add(key_set);
                                 collection.AddAll(*collection.Clone());
                                 collection.GetById(*key_set->GetId());
                                 collection.CollectByRole(key_set->GetRole(), found);
                             }));
    EXPECT_EQ(2u, found.size());
}

TEST(KeySetCalls, TimeThatCannotBeBrokenDownTellsWhy)
{
    const CKeySet::ptr_t key_set = GoldenSet();
    g_gmtime_errno = EOVERFLOW;
    EXPECT_EQ("Value too large for defined data type\nFailed to convert time to readable format",
              Thrown<posix::errno_exc_t>([&] { key_set->GetCreationTimeText(); }));
    g_gmtime_errno = 0;
}
