#include "nelvo/context/common_lib_ctx.h"

#include <cerrno>

#include <boost/thread/exceptions.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/util/str.h"
#include "tests/support/mutex_calls.h"

TEST(CommonLibCtxMutex, LockThatFailsIsAFailureOfTheCheck)
{
    CCommonLibCtx context;
    AnswerNext("pthread_mutex_lock", {EINVAL});
    try
    {
        context.CheckAccess("/a");
        ADD_FAILURE() << "no failure";
    }
    catch (const boost::lock_error& e)
    {
        EXPECT_STREQ("boost: mutex lock failed in pthread_mutex_lock: Invalid argument", e.what());
        EXPECT_EQ(EINVAL, e.native_error());
    }
    EXPECT_EQ(0U, TakeUnasked());
    EXPECT_NO_THROW(context.CheckAccess("/a"));
}

TEST(CommonLibCtxMutex, LockAndUnlockAreRepeatedAfterASignal)
{
    CCommonLibCtx context;
    for (const char* const call : {"pthread_mutex_lock", "pthread_mutex_unlock"})
    {
        AnswerNext(call, {EINTR, EINTR});
        EXPECT_NO_THROW(context.CheckAccess("/a"));
        EXPECT_EQ(0U, TakeUnasked()) << call;
    }
    EXPECT_NO_THROW(context.CheckAccess("/a"));
}
