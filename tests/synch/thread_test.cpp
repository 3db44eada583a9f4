#include "nelvo/synch/thread.h"

#include <atomic>
#include <csignal>
#include <functional>
#include <memory>
#include <stdexcept>
#include <thread>
#include <type_traits>
#include <vector>

#include <boost/make_shared.hpp>
#include <boost/weak_ptr.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/format.h"
#include "nelvo/logging/log.h"
#include "nelvo/synch/stop_events.h"
#include "nelvo/synch/thread_context.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/placed_thread.h"

namespace
{

using event_t = posix::posix_manual_reset_event_t;
using synch::CStopEvtCollection;
using synch::CThreadContext;
using synch::thread_t;

using body_t = std::function<void()>;

void* Call(void* body)
{
    (*static_cast<const body_t*>(body))();
    return body;
}

// The body is there for as long as the thread.
class Thread : public ::testing::Test
{
protected:
    void SetUp() override { logging::GetProcessLog()->set_receiver(m_receiver); }
    void TearDown() override { logging::GetProcessLog()->set_receiver({}); }

    std::unique_ptr<thread_t> Start(body_t body)
    {
        m_bodies.push_back(std::make_unique<body_t>(std::move(body)));
        return std::make_unique<thread_t>(&Call, m_bodies.back().get(), "backup");
    }

    void RunToTheEnd(body_t body) { Start(std::move(body)); }

    std::string Logged() const { return WithoutHeads(m_receiver->text()); }

    // The line on the start, with the ids cut out, and what follows it.
    std::string LoggedWithoutIds() const
    {
        std::string text = Logged();
        const std::size_t begin = text.find("Thread id");
        return begin == std::string::npos ? text : text.erase(begin, text.find("role:") - begin);
    }

    std::vector<std::unique_ptr<body_t>> m_bodies;
    boost::shared_ptr<lines_receiver_t> m_receiver = boost::make_shared<lines_receiver_t>();
};

const char kStarted[] = "       | Thread started. role: backup\n";
const char kFinished[] = "       | Thread finished. Role: 'backup'.\n";

// Sets the event at the end of the thread that asks for it, after the body has been left.
class end_teller_t
{
public:
    void Tell(const boost::shared_ptr<event_t>& event) { m_event = event; }
    end_teller_t() = default;
    ~end_teller_t()
    {
        if (m_event != nullptr)
            m_event->set();
    }
    end_teller_t(const end_teller_t&) = delete;
    end_teller_t& operator=(const end_teller_t&) = delete;

private:
    boost::shared_ptr<event_t> m_event;
};

void TellAtTheEndOfThisThread(const boost::shared_ptr<event_t>& event)
{
    static thread_local end_teller_t teller;
    teller.Tell(event);
}

// A context that was changed goes with its thread.
void RunOnThread(const body_t& body) { std::thread(body).join(); }

// What joining throws, or "nothing".
std::string JoinFailure(const thread_t& thread, std::int32_t timeout)
{
    try
    {
        thread.join(timeout);
    }
    catch (const exc::runtime_exc_t& e)
    {
        return e.what();
    }
    return "nothing";
}

} // namespace

TEST_F(Thread, CallsTheBodyWithTheArgument)
{
    int argument = 1;
    {
        const thread_t thread(
            [](void* number) -> void*
            {
                ++*static_cast<int*>(number);
                return nullptr;
            },
            &argument, "count");
    }
    EXPECT_EQ(2, argument);
    static_assert(!std::is_polymorphic_v<thread_t> && !std::is_copy_constructible_v<thread_t>);
}

TEST_F(Thread, StartAndEndStandInTheLog)
{
    pthread_t id = 0;
    {
        const std::unique_ptr<thread_t> thread = Start([&] { id = pthread_self(); });
    }
    EXPECT_EQ(util::Format("       | Thread started. Thread id: %1, parent id: %2, role: backup\n"
                           "       | Thread finished. Role: 'backup'.\n",
                           id, pthread_self()),
              Logged());
    EXPECT_NE(pthread_self(), id);
}

TEST_F(Thread, FailureStandsBehindTheFinishedLineAndWithoutAThreadLine)
{
    const auto thread = Start([] { throw exc::runtime_exc_t("It failed\nfor %1 reason"); });
    thread->join(-1);
    EXPECT_FALSE(thread->is_running());
    EXPECT_EQ(kStarted + (kFinished + std::string("       | ERR |It failed\n"
                                                  "       | >>  |for %1 reason\n")),
              LoggedWithoutIds());
    EXPECT_EQ(3u, m_receiver->messages().size());
}

TEST_F(Thread, FailureOutsideTheFamilyOfOurOwnIsLoggedToo)
{
    RunToTheEnd([] { throw std::out_of_range("too far"); });
    EXPECT_EQ(kStarted + (kFinished + std::string("       | ERR |too far\n")), LoggedWithoutIds());
}

TEST_F(Thread, CountsAsRunningUntilAllIsLogged)
{
    std::vector<bool> running;
    event_t may_run(false);
    std::unique_ptr<thread_t> thread;
    m_receiver->set_hook(
        [&]
        {
            may_run.wait(-1);
            running.push_back(thread->is_running());
        });
    thread = Start([] { throw std::runtime_error("It failed"); });
    may_run.set();
    EXPECT_TRUE(thread->wait(-1));
    EXPECT_EQ((std::vector<bool>{true, true, true}), running);
    EXPECT_FALSE(thread->is_running());
}

// Interruption ends a thread of Boost without a word.
TEST_F(Thread, OtherExceptionsAreNotCaughtAndTheThreadNeverCountsAsFinished)
{
    const auto at_end = boost::make_shared<event_t>(false);
    const auto thread = Start(
        [&]
        {
            TellAtTheEndOfThisThread(at_end);
            throw boost::thread_interrupted();
        });
    EXPECT_TRUE(at_end->wait(-1));
    EXPECT_EQ(std::string(kStarted) + kFinished, LoggedWithoutIds());
    EXPECT_TRUE(thread->is_running());
    EXPECT_FALSE(thread->wait(0));
}

TEST_F(Thread, OtherExceptionsEndTheProcess)
{
    ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(RunToTheEnd([] { throw 1; }), ::testing::KilledBySignal(SIGABRT),
                "terminate called after throwing an instance of 'int'");
}

TEST_F(Thread, IsRunningUntilItsBodyHasEnded)
{
    event_t may_end(false);
    const auto thread = Start([&] { may_end.wait(-1); });
    EXPECT_TRUE(thread->is_running());
    EXPECT_TRUE(thread->is_running_checked());
    EXPECT_FALSE(thread->wait(0));
    EXPECT_FALSE(thread->wait(1));
    may_end.set();
    EXPECT_TRUE(thread->wait(-1));
    EXPECT_TRUE(thread->wait(0));
    EXPECT_FALSE(thread->is_running());
    EXPECT_FALSE(thread->is_running_checked());
}

TEST_F(Thread, FinishedThreadCanBeJoinedAgainAndAgain)
{
    const auto thread = Start([] {});
    thread->join(-1);
    for (const std::int32_t timeout : {0, 5, -1})
        EXPECT_EQ("nothing", JoinFailure(*thread, timeout)) << timeout;
}

TEST_F(Thread, JoinThatTimesOutNamesTheTimeoutAndTheThread)
{
    event_t runs(false);
    event_t may_end(false);
    pthread_t id = 0;
    const auto thread = Start(
        [&]
        {
            id = pthread_self();
            runs.set();
            may_end.wait(-1);
        });
    runs.wait(-1);
    for (const std::int32_t timeout : {0, 5})
        EXPECT_EQ(util::Format("Thread not finished within [%1] milliseconds.\n"
                               "--tr:Failed to wait for thread [%2] to finish.",
                               timeout, id),
                  JoinFailure(*thread, timeout));
    may_end.set();
    EXPECT_EQ("nothing", JoinFailure(*thread, -1));
}

TEST_F(Thread, IdIsBoosts)
{
    boost::thread::id id;
    const auto thread = Start([&] { id = boost::this_thread::get_id(); });
    thread->join(-1);
    EXPECT_EQ(id, thread->get_id());
    EXPECT_NE(boost::this_thread::get_id(), thread->get_id());
}

TEST_F(Thread, DestructorWaitsAfterAJoinThatTimedOut)
{
    event_t may_end(false);
    bool ended = false;
    auto thread = Start(
        [&]
        {
            may_end.wait(-1);
            ended = true;
        });
    EXPECT_NE("nothing", JoinFailure(*thread, 0));
    std::thread opener([&] { may_end.set(); });
    thread.reset();
    EXPECT_TRUE(ended);
    opener.join();
}

// What ends with the thread itself ends after the body, and after the event.
TEST_F(Thread, DestructorWaitsForTheThreadItself)
{
    const auto at_end = boost::make_shared<event_t>(false);
    boost::weak_ptr<CThreadContext> context;
    RunToTheEnd(
        [&]
        {
            TellAtTheEndOfThisThread(at_end);
            context = CThreadContext::GetCurrent();
        });
    EXPECT_TRUE(at_end->wait(0));
    EXPECT_TRUE(context.expired());
}

TEST_F(Thread, BodyMayDestroyItsWrapper)
{
    const auto at_end = boost::make_shared<event_t>(false);
    event_t may_run(false);
    std::unique_ptr<thread_t> thread;
    thread = Start(
        [&]
        {
            TellAtTheEndOfThisThread(at_end);
            may_run.wait(-1);
            thread.reset();
            throw std::runtime_error("It failed without its wrapper");
        });
    may_run.set();
    EXPECT_TRUE(at_end->wait(-1));
    EXPECT_EQ(kStarted + (kFinished + std::string("       | ERR |It failed without its wrapper\n")),
              LoggedWithoutIds());
}

TEST_F(Thread, InterruptionOfTheDestructorEndsTheProcess)
{
    ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
    const auto destroy_interrupted = [&]
    {
        boost::thread destroyer(
            [&]
            {
                while (!boost::this_thread::interruption_requested())
                    boost::this_thread::yield();
                event_t never(false);
                RunToTheEnd([&] { never.wait(-1); });
            });
        destroyer.interrupt();
        destroyer.join();
    };
    EXPECT_EXIT(destroy_interrupted(), ::testing::KilledBySignal(SIGABRT), "terminate called");
}

// The creator has no context before, and changes it while the thread runs.
TEST_F(Thread, ContextHangsBelowTheCreators)
{
    event_t may_look(false);
    bool disabled = false;
    CThreadContext::owner_id_t owner;
    const body_t look = [&]
    {
        may_look.wait(-1);
        disabled = CThreadContext::GetCurrent()->IsMemFsDisabled();
        owner = CThreadContext::GetCurrent()->GetOwnerThread();
    };
    RunOnThread(
        [&]
        {
            const auto thread = Start(look);
            CThreadContext::GetCurrent()->DisableMemFs();
            CThreadContext::GetCurrent()->SetOwnerThread(thread->get_id());
            may_look.set();
            thread->join(-1);
            EXPECT_TRUE(disabled);
            EXPECT_EQ(thread->get_id(), *owner);
        });
}

TEST_F(Thread, ContextDoesNotChangeTheCreators)
{
    RunToTheEnd(
        []
        {
            CThreadContext::GetCurrent()->DisableMemFs();
            CThreadContext::GetCurrent()->SetOwnerThread(boost::this_thread::get_id());
        });
    EXPECT_FALSE(CThreadContext::GetCurrent()->IsMemFsDisabled());
    EXPECT_EQ(nullptr, CThreadContext::GetCurrent()->GetOwnerThread());
}

TEST_F(Thread, ContextOfACreatorThatEndedStays)
{
    event_t may_look(false);
    bool disabled = false;
    std::unique_ptr<thread_t> thread;
    RunToTheEnd(
        [&]
        {
            CThreadContext::GetCurrent()->DisableMemFs();
            thread = Start(
                [&]
                {
                    may_look.wait(-1);
                    disabled = CThreadContext::GetCurrent()->IsMemFsDisabled();
                });
        });
    may_look.set();
    thread.reset();
    EXPECT_TRUE(disabled);
}

TEST_F(Thread, ContextStandsWhenTheStartIsLogged)
{
    std::vector<bool> disabled;
    m_receiver->set_hook([&] { disabled.push_back(CThreadContext::GetCurrent()->IsMemFsDisabled()); });
    RunOnThread(
        [&]
        {
            CThreadContext::GetCurrent()->DisableMemFs();
            RunToTheEnd([] {});
        });
    EXPECT_EQ((std::vector<bool>{true, true}), disabled);
}

TEST_F(Thread, StopEventIsTheCreatorsFromAfterTheStartUntilBeforeTheEnd)
{
    const auto current = [] { return CStopEvtCollection::GetInstance()->GetForCurrentThread(); };
    std::vector<boost::shared_ptr<event_t>> seen;
    m_receiver->set_hook([&] { seen.push_back(current()); });
    const auto event = boost::make_shared<event_t>(false);
    RunOnThreadAt(kBelow2To31,
                  [&]
                  {
                      CStopEvtCollection::GetInstance()->SetForCurrentThread(event);
                      RunToTheEnd([&] { seen.push_back(current()); });
                      CStopEvtCollection::GetInstance()->RemoveCurrentThread();
                  });
    EXPECT_THAT(seen, ::testing::ElementsAre(nullptr, event, nullptr));
}

TEST_F(Thread, StopEventOfACreatorWithAWiderIdIsNotShared)
{
    CStopEvtCollection::GetInstance()->SetForCurrentThread(boost::make_shared<event_t>(false));
    RunToTheEnd([] { EXPECT_EQ(nullptr, CStopEvtCollection::GetInstance()->GetForCurrentThread()); });
    EXPECT_NE(nullptr, CStopEvtCollection::GetInstance()->GetForCurrentThread());
    CStopEvtCollection::GetInstance()->RemoveCurrentThread();
}

TEST_F(Thread, ThousandShortThreadsStartAndEnd)
{
    std::atomic<int> count{0};
    for (int round = 0; round != 100; ++round)
    {
        std::vector<std::unique_ptr<thread_t>> threads;
        for (int i = 0; i != 10; ++i)
            threads.push_back(Start([&] { ++count; }));
        threads.front()->join(-1);
    }
    EXPECT_EQ(1000, count);
    EXPECT_EQ(2000u, m_receiver->messages().size());
}
