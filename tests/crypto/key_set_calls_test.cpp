// Looks at the locks of key sets, and answers for gmtime_r: this program is linked with calls of its own.

#include <cerrno>
#include <ctime>
#include <dlfcn.h>
#include <functional>
#include <map>
#include <pthread.h>
#include <string>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/errno_exc.h"
#include "tests/crypto/key_set_vocabulary.h"
#include "tests/support/thrown.h"

using crypto::CKeySet;

namespace
{

// A set whose mutex is watched, and what was done to it: "+" for each lock and "-" for each unlock, behind
// the name of the set.
struct watched_t
{
    const CKeySet* key_set = nullptr;
    char name = ' ';
};

watched_t g_watched[2];
std::string g_calls;
int g_depth = 0;
int g_gmtime_errno = 0;

void Note(const void* mutex, char call)
{
    for (const watched_t& watched : g_watched)
    {
        const auto* const begin = reinterpret_cast<const char*>(watched.key_set);
        const auto* const place = static_cast<const char*>(mutex);
        if (begin == nullptr || place < begin || place >= begin + sizeof(CKeySet))
            continue;
        g_calls += {watched.name, call};
        g_depth += call == '+' ? 1 : -1;
    }
}

int CallNext(const char* name, pthread_mutex_t* mutex)
{
    return reinterpret_cast<int (*)(pthread_mutex_t*)>(::dlsym(RTLD_NEXT, name))(mutex);
}

// The calls for one set, or two, that an operation makes.
std::string Calls(const CKeySet& key_set, const std::function<void()>& operation,
                  const CKeySet* other = nullptr)
{
    g_calls.clear();
    g_watched[0] = {&key_set, 'a'};
    g_watched[1] = {other, 'b'};
    operation();
    g_watched[0] = {};
    g_watched[1] = {};
    return g_calls;
}

// Fails unless a watched set is locked whenever something is written.
class watching_dev_t : public io::io_dev_t
{
public:
    std::uint64_t write(const void*, std::uint64_t count) override
    {
        EXPECT_EQ(1, g_depth);
        ++m_writes;
        return count;
    }
    std::uint64_t read(void*, std::uint64_t) override { return 0; }

    int writes() const { return m_writes; }

private:
    int m_writes = 0;
};

} // namespace

extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept
{
    const int result = CallNext("pthread_mutex_lock", mutex);
    Note(mutex, '+');
    return result;
}

extern "C" int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept
{
    Note(mutex, '-');
    return CallNext("pthread_mutex_unlock", mutex);
}

// The linker puts what wraps in the place of the calls of this function.
extern "C" std::tm* BreakDown(const std::time_t* time, std::tm* fields) __asm__("__real_gmtime_r");
extern "C" std::tm* BreakDownOrFail(const std::time_t* time, std::tm* fields) __asm__("__wrap_gmtime_r");

std::tm* BreakDownOrFail(const std::time_t* time, std::tm* fields)
{
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
        {"GetCreationTimeText", [&] { key_set->GetCreationTimeText(); }},
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

TEST(KeySetCalls, TextIsMadeUnderOneLock)
{
    const CKeySet::ptr_t key_set = GoldenSet();
    EXPECT_EQ("a+a+a-a-", Calls(*key_set, [&] { key_set->ToString(); }));
}

TEST(KeySetCalls, SetIsLockedWhileItIsWritten)
{
    const CKeySet::ptr_t key_set = GoldenSet();
    watching_dev_t device;
    EXPECT_EQ("a+a-", Calls(*key_set, [&] { key_set->Serialize(device); }));
    EXPECT_LT(9, device.writes());
}

TEST(KeySetCalls, FailureGivesTheLockBack)
{
    const CKeySet::ptr_t key_set = GoldenSet();
    full_dev_t device(0);
    EXPECT_EQ("a+a-", Calls(*key_set, [&] { EXPECT_ANY_THROW(key_set->Serialize(device)); }));
}

TEST(KeySet, EqualityTakesTheOthersLockUnderItsOwn)
{
    const CKeySet::ptr_t left = MakeSet(1, {MakeKey(0, "a")});
    const CKeySet::ptr_t right = MakeSet(2, {MakeKey(0, "a")});
    // Algorithm, role, hint, number of keys and the one key.
    EXPECT_EQ("a+b+b-b+b-b+b-b+b-b+b-a-",
              Calls(
                  *left, [&] { EXPECT_TRUE(left->IsEqual(right)); }, right.get()));
}

TEST(KeySetCalls, TimeThatCannotBeBrokenDownTellsWhy)
{
    const CKeySet::ptr_t key_set = GoldenSet();
    g_gmtime_errno = EOVERFLOW;
    EXPECT_EQ("Value too large for defined data type\nFailed to convert time to readable format",
              Thrown<posix::errno_exc_t>([&] { key_set->GetCreationTimeText(); }));
    g_gmtime_errno = 0;
}
