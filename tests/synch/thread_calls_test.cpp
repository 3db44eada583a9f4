// How threads are started, and how events fail. The functions below stand in the place of the C library's.

#include <cerrno>
#include <ctime>
#include <functional>
#include <memory>
#include <new>
#include <utility>

#include <boost/make_shared.hpp>
#include <boost/weak_ptr.hpp>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/format.h"
#include "nelvo/logging/log.h"
#include "nelvo/synch/thread.h"
#include "nelvo/synch/thread_context.h"
#include "tests/support/failing_memory.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/thrown.h"

namespace
{

using event_t = posix::posix_manual_reset_event_t;
using synch::thread_t;
using body_t = std::function<void()>;

// What is done about the next thread that is started.
struct launch_t
{
    int result = 0;
    body_t on_new_thread; // before anything else
    body_t on_creator;    // before it knows of the thread
};

launch_t g_launch;

// What the calling thread's next calls result in, if not 0, and what is done when it begins to wait.
thread_local int g_wait_result = 0;
thread_local int g_lock_result = 0;
thread_local body_t* g_on_wait = nullptr;

// When the calling thread's last wait would have ended, in seconds.
thread_local std::time_t g_deadline = 0;

// What is done when the calling thread next wakes those who wait.
thread_local body_t* g_on_broadcast = nullptr;

struct routine_t
{
    void* (*routine)(void*);
    void* argument;
    body_t before;
};

void* RunRoutine(void* argument)
{
    const std::unique_ptr<routine_t> routine(static_cast<routine_t*>(argument));
    if (routine->before)
        routine->before();
    return routine->routine(routine->argument);
}

// The function that stands behind this program's: the C library's, or a sanitizer's.
template <class Function>
Function* Real(const char* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*routine)(void*),
                              void* argument)
{
    static auto* const real = Real<decltype(pthread_create)>("pthread_create");
    const launch_t launch = std::exchange(g_launch, {});
    if (launch.result != 0)
        return launch.result;
    auto ours = std::make_unique<routine_t>(routine_t{routine, argument, launch.on_new_thread});
    const int result = real(thread, attributes, &RunRoutine, ours.get());
    if (result == 0)
        static_cast<void>(ours.release());
    if (launch.on_creator)
        launch.on_creator();
    return result;
}

extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex)
{
    static auto* const real = Real<decltype(pthread_mutex_lock)>("pthread_mutex_lock");
    const int result = std::exchange(g_lock_result, 0);
    return result != 0 ? result : real(mutex);
}

extern "C" int pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex,
                                      const timespec* deadline)
{
    static auto* const real = Real<decltype(pthread_cond_timedwait)>("pthread_cond_timedwait");
    if (body_t* const on_wait = std::exchange(g_on_wait, nullptr))
        (*on_wait)();
    g_deadline = deadline->tv_sec;
    const int result = std::exchange(g_wait_result, 0);
    return result != 0 ? result : real(condition, mutex, deadline);
}

extern "C" int pthread_cond_broadcast(pthread_cond_t* condition)
{
    static auto* const real = Real<decltype(pthread_cond_broadcast)>("pthread_cond_broadcast");
    if (body_t* const on_broadcast = std::exchange(g_on_broadcast, nullptr))
        (*on_broadcast)();
    return real(condition);
}

namespace
{

void* Call(void* body)
{
    (*static_cast<const body_t*>(body))();
    return nullptr;
}

// The wrapper's shares, which no operation gives out or takes away.
auto& IdHolder(thread_t& thread);
auto& FinishedEvent(thread_t& thread);
auto& BoostThread(thread_t& thread);

template <auto IdMember, auto EventMember, auto ThreadMember>
struct shares_tt
{
    friend auto& IdHolder(thread_t& thread) { return thread.*IdMember; }
    friend auto& FinishedEvent(thread_t& thread) { return thread.*EventMember; }
    friend auto& BoostThread(thread_t& thread) { return thread.*ThreadMember; }
};
template struct shares_tt<&thread_t::m_ptr_thread_id, &thread_t::m_ptr_finished_event,
                          &thread_t::m_ptr_boost_thread>;

// From now on the share's last owner leaves its name in the list.
template <class Object>
void NoteEnd(boost::shared_ptr<Object>& share, const std::string& name, std::vector<std::string>& ended)
{
    const auto note = [share, name, &ended](Object*) { ended.push_back(name); };
    share = boost::shared_ptr<Object>(share.get(), note);
}

// Memory for a wrapper whose place the body knows before its constructor has returned.
class wrapper_t
{
public:
    ~wrapper_t() { Destroy(); }
    wrapper_t() = default;
    wrapper_t(const wrapper_t&) = delete;
    wrapper_t& operator=(const wrapper_t&) = delete;

    void Start(const body_t& body)
    {
        m_body = [this, body]
        {
            m_context = synch::CThreadContext::GetCurrent();
            body();
        };
        new (&m_memory) thread_t(&Call, &m_body, "backup");
        m_there = true;
    }
    void Destroy()
    {
        if (std::exchange(m_there, false))
            thread().~thread_t();
    }
    // Of the thread, whose body has begun.
    void WaitForTheEnd() const
    {
        while (!m_context.expired())
            boost::this_thread::yield();
    }
    thread_t& thread() { return *std::launder(reinterpret_cast<thread_t*>(&m_memory)); }

private:
    body_t m_body;
    boost::weak_ptr<synch::CThreadContext> m_context;
    bool m_there = false;
    std::aligned_storage_t<sizeof(thread_t), alignof(thread_t)> m_memory = {};
};

class ThreadCalls : public ::testing::Test
{
protected:
    void SetUp() override { logging::GetProcessLog()->set_receiver(m_receiver); }
    void TearDown() override { logging::GetProcessLog()->set_receiver({}); }

    std::string Logged() const { return WithoutHeads(m_receiver->text()); }

    event_t m_may_end{false};
    wrapper_t m_wrapper;
    boost::shared_ptr<lines_receiver_t> m_receiver = boost::make_shared<lines_receiver_t>();
};

} // namespace

TEST_F(ThreadCalls, LaunchThatFailsIsBoostsFailure)
{
    for (const int result : {EAGAIN, EPERM})
    {
        g_launch.result = result;
        try
        {
            m_wrapper.Start([] {});
            ADD_FAILURE() << "nothing was thrown";
        }
        catch (const boost::thread_resource_error& e)
        {
            EXPECT_EQ(11, e.code().value());
            EXPECT_STREQ("boost::thread_resource_error: Resource temporarily unavailable", e.what());
        }
    }
    EXPECT_EQ("", Logged());
}

TEST_F(ThreadCalls, BodyThatOutrunsTheConstructorHasNoThreadYet)
{
    std::string id_failure;
    std::string checked_failure;
    bool is_running = false;
    int unused_lock_result = 0;
    event_t asked(false);
    g_launch.on_creator = [&] { asked.wait(-1); };
    m_wrapper.Start(
        [&]
        {
            thread_t& thread = m_wrapper.thread();
            id_failure = Thrown<exc::runtime_exc_t>([&] { thread.get_id(); });
            g_lock_result = EINVAL; // of the event, which is not asked
            checked_failure = Thrown<exc::runtime_exc_t>([&] { thread.is_running_checked(); });
            unused_lock_result = std::exchange(g_lock_result, 0);
            is_running = thread.is_running();
            asked.set();
        });
    EXPECT_EQ("Cannot get thread id. m_ptr_boost_thread not set.", id_failure);
    EXPECT_EQ("Cannot get thread id: m_ptr_boost_thread not set.", checked_failure);
    EXPECT_EQ(EINVAL, unused_lock_result);
    EXPECT_TRUE(is_running);
    m_wrapper.thread().join(-1);
    EXPECT_FALSE(m_wrapper.thread().is_running_checked());
}

TEST_F(ThreadCalls, ThreadThatHasNotRunYetIsJoinedAsZero)
{
    g_launch.on_new_thread = [&] { m_may_end.wait(-1); };
    m_wrapper.Start([] {});
    EXPECT_EQ("Thread not finished within [0] milliseconds.\n--tr:Failed to wait for thread [0] to finish.",
              Thrown<exc::runtime_exc_t>([&] { m_wrapper.thread().join(0); }));
    EXPECT_TRUE(m_wrapper.thread().is_running_checked());
    m_may_end.set();
    m_wrapper.thread().join(-1);
}

TEST_F(ThreadCalls, IdIsThereBeforeTheStartIsLogged)
{
    std::vector<std::string> failures;
    m_receiver->set_hook(
        [&] { failures.push_back(Thrown<exc::runtime_exc_t>([&] { m_wrapper.thread().join(0); })); });
    pthread_t id = 0;
    m_wrapper.Start([&] { id = pthread_self(); });
    m_wrapper.Destroy();
    const std::string failure = util::Format(
        "Thread not finished within [0] milliseconds.\n--tr:Failed to wait for thread [%1] to finish.", id);
    EXPECT_EQ((std::vector<std::string>{failure, failure}), failures);
}

TEST_F(ThreadCalls, LongestWaitMayEndBeforeTheThread)
{
    const auto expect_21_days = [before = std::time(nullptr)]
    {
        EXPECT_LE(before + 1'814'400, g_deadline);
        EXPECT_GE(std::time(nullptr) + 1'814'401, g_deadline); // time(2) may be a tick late
    };
    m_wrapper.Start([&] { m_may_end.wait(-1); });
    g_wait_result = ETIMEDOUT;
    EXPECT_FALSE(m_wrapper.thread().wait(-1));
    expect_21_days();
    g_deadline = 0;
    g_wait_result = ETIMEDOUT;
    EXPECT_EQ(0u, Thrown<exc::runtime_exc_t>([&] { m_wrapper.thread().join(-1); })
                      .find("Thread not finished within [-1] milliseconds.\n--tr:"));
    expect_21_days();
    m_may_end.set();
}

TEST_F(ThreadCalls, QuestionsAndWaitsOfZeroDoNotWait)
{
    body_t on_wait = [] { ADD_FAILURE() << "waited"; };
    m_wrapper.Start([&] { m_may_end.wait(-1); });
    const thread_t& thread = m_wrapper.thread();
    g_on_wait = &on_wait;
    EXPECT_TRUE(thread.is_running());
    EXPECT_TRUE(thread.is_running_checked());
    EXPECT_FALSE(thread.wait(0));
    Thrown<exc::runtime_exc_t>([&] { thread.join(0); });
    g_on_wait = nullptr;
    m_may_end.set();
}

TEST_F(ThreadCalls, RoleMayChangeOnceTheThreadIsLaunched)
{
    body_t body = [] {};
    std::string role = "backup";
    g_launch.on_new_thread = [&] { m_may_end.wait(-1); };
    {
        const thread_t thread(&Call, &body, role);
        role = "change";
        m_may_end.set();
    }
    EXPECT_NE(std::string::npos, Logged().find(", role: backup\n"));
    EXPECT_NE(std::string::npos, Logged().find("Thread finished. Role: 'backup'.\n"));
}

TEST_F(ThreadCalls, OnlyTheThreadItselfHoldsItsContextWhenItCountsAsFinished)
{
    long shares = 0;
    boost::weak_ptr<synch::CThreadContext> context;
    body_t on_broadcast = [&] { shares = context.use_count(); };
    m_wrapper.Start(
        [&]
        {
            context = synch::CThreadContext::GetCurrent();
            g_on_broadcast = &on_broadcast;
        });
    m_wrapper.Destroy();
    EXPECT_EQ(1, shares);
}

TEST_F(ThreadCalls, ThreadWithoutAHolderOfItsIdIsJoinedAsUnknown)
{
    m_wrapper.Start([&] { m_may_end.wait(-1); });
    const auto holder = std::exchange(IdHolder(m_wrapper.thread()), nullptr);
    EXPECT_EQ("Thread not finished within [0] milliseconds.\n"
              "--tr:Failed to wait for thread [unknown] to finish.",
              Thrown<exc::runtime_exc_t>([&] { m_wrapper.thread().join(0); }));
    IdHolder(m_wrapper.thread()) = holder;
    m_may_end.set();
}

TEST_F(ThreadCalls, FailedEventIsTheSystemsFailureWithTheThreadInAJoin)
{
    pthread_t id = 0;
    event_t runs(false);
    m_wrapper.Start(
        [&]
        {
            id = pthread_self();
            runs.set();
            m_may_end.wait(-1);
        });
    runs.wait(-1);
    g_wait_result = EINVAL;
    try
    {
        m_wrapper.thread().join(5);
        ADD_FAILURE() << "nothing was thrown";
    }
    catch (const exc::runtime_exc_t& e)
    {
        EXPECT_EQ(util::Format("Invalid argument\n--tr:Failed to wait for thread [%1] to finish.", id),
                  e.what());
        EXPECT_EQ(22u, e.GetErrorCode());
    }
    m_may_end.set();
}

TEST_F(ThreadCalls, FailedEventPassesThroughTheOtherQuestions)
{
    m_wrapper.Start([&] { m_may_end.wait(-1); });
    const thread_t& thread = m_wrapper.thread();
    const auto failure = [](const body_t& work) { return Thrown<boost::system::system_error>(work); };
    const std::string lock_failure = "wait for event failed (lock): Invalid argument";

    g_wait_result = EINVAL;
    EXPECT_EQ("cannot wait for event: Invalid argument", failure([&] { thread.wait(5); }));
    g_lock_result = EINVAL;
    EXPECT_EQ(lock_failure, failure([&] { thread.wait(0); }));
    g_lock_result = EINVAL;
    EXPECT_EQ(lock_failure, failure([&] { thread.is_running(); }));
    g_lock_result = EINVAL;
    EXPECT_EQ(lock_failure, failure([&] { thread.is_running_checked(); }));
    m_may_end.set();
}

TEST_F(ThreadCalls, WaitersKeepWhatTheyNeedOfAWrapperThatGoes)
{
    const struct
    {
        body_t wait;
        long id_shares;
    } cases[] = {{[&] { EXPECT_TRUE(m_wrapper.thread().wait(-1)); }, 2},
                 {[&] { m_wrapper.thread().join(-1); }, 3}};
    for (const auto& [wait, expected_id_shares] : cases)
    {
        event_t has_begun(false);
        long shares = 0;
        long id_shares = 0;
        body_t on_wait = [&]
        {
            shares = FinishedEvent(m_wrapper.thread()).use_count();
            id_shares = IdHolder(m_wrapper.thread()).use_count();
            has_begun.set();
        };
        m_wrapper.Start(
            [&]
            {
                has_begun.wait(-1);
                m_wrapper.Destroy();
            });
        g_on_wait = &on_wait;
        wait();
        EXPECT_EQ(3, shares); // of the wrapper, of the thread and of the waiter
        EXPECT_EQ(expected_id_shares, id_shares);
        m_wrapper.WaitForTheEnd();
    }
}

TEST_F(ThreadCalls, WrapperWithoutAThreadGoesWithoutAWait)
{
    m_wrapper.Start([&] { m_may_end.wait(-1); });
    const auto thread = std::exchange(BoostThread(m_wrapper.thread()), nullptr);
    m_wrapper.Destroy();
    m_may_end.set();
    thread->join();
    EXPECT_EQ(std::string::npos, Logged().find("~thread_t"));
}

TEST_F(ThreadCalls, DestructorGivesUpTheThreadThenItsIdThenTheEvent)
{
    std::vector<std::string> ended;
    m_wrapper.Start([] {});
    NoteEnd(FinishedEvent(m_wrapper.thread()), "event", ended);
    NoteEnd(IdHolder(m_wrapper.thread()), "id", ended);
    NoteEnd(BoostThread(m_wrapper.thread()), "thread", ended);
    m_wrapper.Destroy();
    EXPECT_EQ((std::vector<std::string>{"thread", "id", "event"}), ended);
}

// Only a thread that has not run yet does not know itself.
TEST_F(ThreadCalls, ThreadThatDestroysItsWrapperBeforeItRunsLogsWhatBoostSays)
{
    event_t started(false);
    event_t runs(false);
    g_launch.on_new_thread = [&]
    {
        started.wait(-1);
        m_wrapper.Destroy();
    };
    m_wrapper.Start([&] { runs.set(); });
    started.set();
    runs.wait(-1);
    m_wrapper.WaitForTheEnd();
    const std::string failure =
        "       | ERR |~thread_t\n"
        "       | >>  |boost thread: trying joining itself: Resource deadlock avoided\n"
        "       | >>  |An exception was thrown from thread [n/a].\n"
        "       | Thread started.";
    EXPECT_EQ(failure, Logged().substr(0, failure.size()));
}

TEST_F(ThreadCalls, MemoryThatRunsOutBeforeTheBodyIsLoggedAndTheThreadCountsAsFinished)
{
    bool has_run = false;
    g_launch.on_new_thread = [] { FailNextAllocation(); };
    m_wrapper.Start([&] { has_run = true; });
    m_wrapper.thread().join(-1);
    EXPECT_EQ("       | ERR |std::bad_alloc\n", Logged());
    EXPECT_FALSE(has_run);
}
