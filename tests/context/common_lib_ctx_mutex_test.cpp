#include "nelvo/context/common_lib_ctx.h"

#include <cerrno>

#include "nelvo/core/util/str.h"
#include "tests/support/pthread_calls.h"

namespace
{

class CommonLibCtxMutex : public PthreadCalls
{
protected:
    calls_t CallsOfACheck()
    {
        return Calls([this] { m_context.CheckAccess(m_path); });
    }

    CCommonLibCtx m_context;
    const util::str_t m_path = "/a";
};

} // namespace

TEST_F(CommonLibCtxMutex, IsHeldOnceForACheck) { EXPECT_EQ((calls_t{"lock", "unlock"}), CallsOfACheck()); }

TEST_F(CommonLibCtxMutex, IsHeldWhilePermissionsAreReplacedOrGiven)
{
    const calls_t once = {"lock", "unlock"};
    const auto permissions = m_context.GetFilesAccessPermissions();
    EXPECT_EQ(once, Calls([&] { m_context.SetFilesAccessPermissions(permissions); }));
    EXPECT_EQ(once, Calls([&] { m_context.GetFilesAccessPermissions(); }));
}

TEST_F(CommonLibCtxMutex, LockThatFailsIsAFailureOfTheCheck)
{
    Answer("lock", EINVAL);
    EXPECT_EQ(calls_t{"lock"}, CallsOfACheck());
    EXPECT_EQ("boost: mutex lock failed in pthread_mutex_lock: Invalid argument (generic 22)", failure());
    EXPECT_NO_THROW(m_context.CheckAccess(m_path));
}

// A plain mutex comes first. The key store, the pool under the key 0, the registry and the
// multiplexor have a recursive one each.
TEST_F(CommonLibCtxMutex, IsThereBeforeTheServicesAndTheirRecursiveOnes)
{
    calls_t expected = {"mutex_init"};
    for (int service = 0; service != 4; ++service)
        expected.insert(expected.end(),
                        {"mutexattr_init", "mutexattr_settype(recursive)", "mutex_init of some kind"});
    expected.insert(expected.end(), 5, "mutex_destroy");
    EXPECT_EQ(expected, Calls([] { const CCommonLibCtx context; }));
}

TEST_F(CommonLibCtxMutex, OfTheAccessorIsTakenByLaterCallsToo)
{
    const auto context = GetCommonLibCtx();
    const auto ask = [&] { EXPECT_EQ(context, GetCommonLibCtx()); };
    EXPECT_EQ((calls_t{"lock", "unlock"}), Calls(ask));
    EXPECT_EQ(Locked(ask), Locked(ask));

    for (const char* const call : {"lock", "lock", "unlock"})
        Answer(call, EINTR);
    EXPECT_EQ((calls_t{"lock", "lock", "lock", "unlock", "unlock"}), Calls(ask));
    Answer("lock", EINVAL);
    EXPECT_EQ(calls_t{"lock"}, Calls(ask));
    EXPECT_EQ("boost: mutex lock failed in pthread_mutex_lock: Invalid argument (generic 22)", failure());
}

TEST_F(CommonLibCtxMutex, LockAndUnlockAreRepeatedAfterASignal)
{
    for (const char* const call : {"lock", "lock", "unlock"})
        Answer(call, EINTR);
    EXPECT_EQ((calls_t{"lock", "lock", "lock", "unlock", "unlock"}), CallsOfACheck());
    EXPECT_EQ("no failure", failure());
}
