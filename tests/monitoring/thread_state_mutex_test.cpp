#include "nelvo/monitoring/thread_state.h"

#include <cerrno>
#include <string>

#include <boost/thread/exceptions.hpp>
#include <gtest/gtest.h>

#include "tests/support/mutex_calls.h"

using monitoring::CThreadStatesCollection;

namespace
{

std::string FailureOfFirstUse(const std::string& call, int error)
{
    AnswerNext(call, {error});
    std::string failure = "no failure";
    try
    {
        CThreadStatesCollection::GetInstance();
    }
    catch (const boost::thread_resource_error& e)
    {
        failure = e.what();
    }
    EXPECT_EQ(0u, TakeUnasked());
    return failure;
}

} // namespace

// One case, since a process has one first use.
TEST(ThreadStatesCollectionMutex, TableThatCannotBeMadeIsAFailureAndTheNextUseTriesAgain)
{
    EXPECT_EQ("boost:: recursive_mutex constructor failed in pthread_mutexattr_init: Cannot allocate memory",
              FailureOfFirstUse("pthread_mutexattr_init", ENOMEM));
    EXPECT_EQ("boost:: recursive_mutex constructor failed in pthread_mutexattr_settype: Invalid argument",
              FailureOfFirstUse("pthread_mutexattr_settype", EINVAL));
    EXPECT_EQ("boost:: recursive_mutex constructor failed in pthread_mutex_init: Resource temporarily "
              "unavailable",
              FailureOfFirstUse("pthread_mutex_init", EAGAIN));
    EXPECT_NE(nullptr, CThreadStatesCollection::GetInstance());
    EXPECT_EQ(nullptr, CThreadStatesCollection::GetInstance()->GetCurrentState());
}
