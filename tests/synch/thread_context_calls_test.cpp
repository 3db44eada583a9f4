#include <optional>

#include <boost/make_shared.hpp>
#include <gmock/gmock.h>

#include "nelvo/synch/thread_context.h"
#include "tests/support/pthread_calls.h"

namespace
{

using synch::CThreadContext;

class ThreadContextCalls : public PthreadCalls
{
protected:
    ThreadContextCalls()
    {
        m_child->SetParent(m_root);
        m_grandchild->SetParent(m_child);
    }

    // The mutex of a context.
    const void* MutexOf(CThreadContext& context)
    {
        return Locked([&] { context.ResetOwnerThread(); }).at(0);
    }

    boost::shared_ptr<CThreadContext> m_root = boost::make_shared<CThreadContext>();
    boost::shared_ptr<CThreadContext> m_child = boost::make_shared<CThreadContext>();
    boost::shared_ptr<CThreadContext> m_grandchild = boost::make_shared<CThreadContext>();
};

} // namespace

TEST_F(ThreadContextCalls, MutexIsRecursive)
{
    std::optional<CThreadContext> context;
    EXPECT_EQ((calls_t{"mutexattr_init", "mutexattr_settype(recursive)", "mutex_init of some kind"}),
              Calls([&] { context.emplace(); }));
    EXPECT_EQ(calls_t{"mutex_destroy"}, Calls([&] { context.reset(); }));
}

TEST_F(ThreadContextCalls, OwnerIsAskedForFromTheChildUpWithAllMutexesHeld)
{
    const auto ask = [&] { m_grandchild->GetOwnerThread(); };
    EXPECT_EQ((calls_t{"lock", "lock", "lock", "unlock", "unlock", "unlock"}), Calls(ask));
    EXPECT_THAT(Locked(ask),
                ::testing::ElementsAre(MutexOf(*m_grandchild), MutexOf(*m_child), MutexOf(*m_root)));
}

TEST_F(ThreadContextCalls, AncestorsOfAnOwnerAreNotAsked)
{
    m_child->SetOwnerThread(boost::this_thread::get_id());
    const auto ask = [&] { m_grandchild->GetOwnerThread(); };
    EXPECT_EQ((calls_t{"lock", "lock", "unlock", "unlock"}), Calls(ask));
}

TEST_F(ThreadContextCalls, OwnerIsSetUnderTheLock)
{
    EXPECT_EQ((calls_t{"lock", "unlock"}),
              Calls([&] { m_child->SetOwnerThread(boost::this_thread::get_id()); }));
    EXPECT_EQ((calls_t{"lock", "unlock"}), Calls([&] { m_child->ResetOwnerThread(); }));
}

TEST_F(ThreadContextCalls, ParentIsSetWithoutTheLock)
{
    EXPECT_EQ(calls_t(), Calls([&] { m_grandchild->SetParent(m_root); }));
}

TEST_F(ThreadContextCalls, MemFsTakesNoLock)
{
    EXPECT_EQ(calls_t(), Calls([&] { EXPECT_FALSE(m_grandchild->IsMemFsDisabled()); }));
    EXPECT_EQ(calls_t(), Calls([&] { m_root->DisableMemFs(); }));
    EXPECT_EQ(calls_t(), Calls([&] { EXPECT_TRUE(m_grandchild->IsMemFsDisabled()); }));
}
