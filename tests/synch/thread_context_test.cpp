#include "nelvo/synch/thread_context.h"

#include <atomic>
#include <functional>
#include <thread>
#include <type_traits>
#include <vector>

#include <boost/make_shared.hpp>
#include <boost/weak_ptr.hpp>
#include <gtest/gtest.h>

#include "tests/support/program_output.h"

namespace
{

using synch::CThreadContext;
using context_ptr_t = boost::shared_ptr<CThreadContext>;

void RunOnThread(const std::function<void()>& body) { std::thread(body).join(); }

context_ptr_t ChildOf(const context_ptr_t& parent)
{
    auto context = boost::make_shared<CThreadContext>();
    context->SetParent(parent);
    return context;
}

// The youngest of so many contexts, each the parent of the next.
context_ptr_t Chain(const context_ptr_t& oldest, int count)
{
    context_ptr_t context = oldest;
    for (int i = 1; i != count; ++i)
        context = ChildOf(context);
    return context;
}

// "none", or the id.
std::string OwnerOf(const context_ptr_t& context)
{
    const CThreadContext::owner_id_t owner = context->GetOwnerThread();
    if (owner == nullptr)
        return "none";
    return *owner == boost::this_thread::get_id() ? "this" : "other";
}

boost::thread::id IdOfAnotherThread()
{
    boost::thread thread([] {});
    const boost::thread::id id = thread.get_id();
    thread.join();
    return id;
}

} // namespace

TEST(ThreadContext, IsTheSameThroughoutAThread)
{
    const context_ptr_t context = CThreadContext::GetCurrent();
    EXPECT_NE(nullptr, context);
    EXPECT_EQ(context, CThreadContext::GetCurrent());
    RunOnThread(
        [&]
        {
            EXPECT_NE(context, CThreadContext::GetCurrent());
            EXPECT_EQ(CThreadContext::GetCurrent(), CThreadContext::GetCurrent());
        });
    static_assert(!std::is_polymorphic_v<CThreadContext>);
}

// A parent's settings would show.
TEST(ThreadContext, OfAThreadThatTheSystemStartedIsARoot)
{
    RunOnThread(
        []
        {
            CThreadContext::GetCurrent()->DisableMemFs();
            CThreadContext::GetCurrent()->SetOwnerThread(boost::this_thread::get_id());
            RunOnThread(
                []
                {
                    EXPECT_FALSE(CThreadContext::GetCurrent()->IsMemFsDisabled());
                    EXPECT_EQ("none", OwnerOf(CThreadContext::GetCurrent()));
                });
        });
}

TEST(ThreadContext, GoesWithItsThread)
{
    boost::weak_ptr<CThreadContext> watched;
    RunOnThread(
        [&]
        {
            watched = CThreadContext::GetCurrent();
            EXPECT_FALSE(watched.expired());
        });
    EXPECT_TRUE(watched.expired());
}

TEST(ThreadContext, ShareOutlivesTheThread)
{
    context_ptr_t context;
    RunOnThread(
        [&]
        {
            context = CThreadContext::GetCurrent();
            context->DisableMemFs();
        });
    EXPECT_EQ(1, context.use_count());
    EXPECT_TRUE(context->IsMemFsDisabled());
}

TEST(ThreadContext, GoesWithTheProcessAndCanBeAskedForLater)
{
    EXPECT_EQ("gone\na new one\n", OutputOf(CONTEXT_AT_EXIT));
}

TEST(ThreadContext, MemFsIsDisabledBelowWhereItWasDisabled)
{
    const context_ptr_t root = boost::make_shared<CThreadContext>();
    const context_ptr_t child = ChildOf(root);
    const context_ptr_t grandchild = ChildOf(child);
    EXPECT_FALSE(grandchild->IsMemFsDisabled());

    child->DisableMemFs();
    EXPECT_FALSE(root->IsMemFsDisabled());
    EXPECT_TRUE(child->IsMemFsDisabled());
    EXPECT_TRUE(grandchild->IsMemFsDisabled());

    grandchild->SetParent(root);
    EXPECT_FALSE(grandchild->IsMemFsDisabled());
    root->DisableMemFs();
    EXPECT_TRUE(grandchild->IsMemFsDisabled());
}

TEST(ThreadContext, OwnerIsThatOfTheNearestAncestor)
{
    const context_ptr_t root = boost::make_shared<CThreadContext>();
    const context_ptr_t child = ChildOf(root);
    const context_ptr_t grandchild = ChildOf(child);
    EXPECT_EQ("none", OwnerOf(grandchild));

    root->SetOwnerThread(IdOfAnotherThread());
    EXPECT_EQ("other", OwnerOf(grandchild));
    EXPECT_EQ(root->GetOwnerThread(), grandchild->GetOwnerThread());

    child->SetOwnerThread(boost::this_thread::get_id());
    EXPECT_EQ("this", OwnerOf(grandchild));
    EXPECT_EQ("other", OwnerOf(root));
}

TEST(ThreadContext, AncestorsOwnerShowsAgainAfterAReset)
{
    const context_ptr_t root = boost::make_shared<CThreadContext>();
    const context_ptr_t child = ChildOf(root);
    root->SetOwnerThread(boost::this_thread::get_id());
    child->SetOwnerThread(IdOfAnotherThread());
    EXPECT_EQ("other", OwnerOf(child));
    child->ResetOwnerThread();
    EXPECT_EQ("this", OwnerOf(child));
    root->ResetOwnerThread();
    root->ResetOwnerThread();
    EXPECT_EQ("none", OwnerOf(child));
}

TEST(ThreadContext, OwnerThatWasGivenOutStays)
{
    const context_ptr_t context = boost::make_shared<CThreadContext>();
    context->SetOwnerThread(boost::this_thread::get_id());
    const CThreadContext::owner_id_t before = context->GetOwnerThread();
    context->SetOwnerThread(boost::this_thread::get_id());
    EXPECT_NE(before, context->GetOwnerThread());
    context->SetOwnerThread(IdOfAnotherThread());
    EXPECT_EQ(boost::this_thread::get_id(), *before);
    context->ResetOwnerThread();
    EXPECT_EQ(boost::this_thread::get_id(), *before);
}

TEST(ThreadContext, KeepsItsAncestorsAlive)
{
    context_ptr_t root = boost::make_shared<CThreadContext>();
    root->DisableMemFs();
    root->SetOwnerThread(boost::this_thread::get_id());
    const boost::weak_ptr<CThreadContext> watched = root;
    context_ptr_t youngest = Chain(root, 4);
    root.reset();
    EXPECT_TRUE(youngest->IsMemFsDisabled());
    EXPECT_EQ("this", OwnerOf(youngest));
    youngest.reset();
    EXPECT_TRUE(watched.expired());
}

TEST(ThreadContext, AncestorThatOthersHoldKeepsItsOwn)
{
    const context_ptr_t root = boost::make_shared<CThreadContext>();
    root->DisableMemFs();
    const context_ptr_t child = ChildOf(root);
    const context_ptr_t grandchild = ChildOf(child);
    ChildOf(ChildOf(child)).reset();
    EXPECT_TRUE(child->IsMemFsDisabled());
    EXPECT_TRUE(grandchild->IsMemFsDisabled());
    EXPECT_EQ(2, child.use_count());
    EXPECT_EQ(2, root.use_count());
}

TEST(ThreadContext, MillionDescendantsAreAskedAndDestroyed)
{
    const context_ptr_t root = boost::make_shared<CThreadContext>();
    context_ptr_t youngest = Chain(root, 1'000'000);
    EXPECT_FALSE(youngest->IsMemFsDisabled());
    root->DisableMemFs();
    EXPECT_TRUE(youngest->IsMemFsDisabled());
    youngest.reset();
    EXPECT_EQ(1, root.use_count());
}

#ifndef __SANITIZE_THREAD__ // MillionMutexesAreHeldAtOnce: the thread sanitizer has room for 128 of a thread.
TEST(ThreadContext, MillionMutexesAreHeldAtOnce)
{
    const context_ptr_t root = boost::make_shared<CThreadContext>();
    const context_ptr_t youngest = Chain(root, 1'000'000);
    EXPECT_EQ("none", OwnerOf(youngest));
    root->SetOwnerThread(boost::this_thread::get_id());
    EXPECT_EQ("this", OwnerOf(youngest));
}
#endif

// Each owner that a descendant sees is one that some context really has.
TEST(ThreadContext, OwnersMayChangeWhileDescendantsAsk)
{
    const context_ptr_t root = boost::make_shared<CThreadContext>();
    const context_ptr_t child = ChildOf(root);
    const context_ptr_t grandchild = ChildOf(child);
    const boost::thread::id id = boost::this_thread::get_id();
    root->SetOwnerThread(id);

    std::atomic<int> rounds{0};
    std::vector<std::thread> askers(2);
    for (std::thread& asker : askers)
        asker = std::thread(
            [&]
            {
                for (; rounds < 1000; ++rounds)
                {
                    EXPECT_EQ(id, *grandchild->GetOwnerThread());
                    EXPECT_EQ(id, *child->GetOwnerThread());
                    root->DisableMemFs();
                }
            });
    while (rounds < 1000)
    {
        child->SetOwnerThread(id);
        grandchild->SetOwnerThread(id);
        child->ResetOwnerThread();
        grandchild->ResetOwnerThread();
        grandchild->IsMemFsDisabled();
    }
    for (std::thread& asker : askers)
        asker.join();
}
