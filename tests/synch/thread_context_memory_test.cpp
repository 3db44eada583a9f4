#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

#include "nelvo/synch/thread_context.h"
#include "tests/support/failing_memory.h"

// No case before this one may have asked for a context: each runs in a process of its own.
TEST(ThreadContextMemory, ProcessThatHadNoneForAContextExitsAsUsual)
{
    const auto run = []
    {
        FailNextAllocation();
        EXPECT_THROW(synch::CThreadContext::GetCurrent(), std::bad_alloc);
        FailNextAllocation();
        std::exit(testing::Test::HasFailure() ? 1 : 0);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}
