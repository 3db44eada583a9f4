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

TEST_F(CommonLibCtxMutex, LockAndUnlockAreRepeatedAfterASignal)
{
    for (const char* const call : {"lock", "lock", "unlock"})
        Answer(call, EINTR);
    EXPECT_EQ((calls_t{"lock", "lock", "lock", "unlock", "unlock"}), CallsOfACheck());
    EXPECT_EQ("no failure", failure());
}
