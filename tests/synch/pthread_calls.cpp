#include "tests/synch/pthread_calls.h"

#include <atomic>
#include <cerrno>
#include <deque>
#include <iomanip>
#include <map>
#include <sstream>
#include <utility>

#include <dlfcn.h>
#include <pthread.h>
#include <sys/time.h>

#include "nelvo/core/util/format.h"

namespace
{

struct script_t
{
    calls_t calls;
    std::vector<const void*> locked;
    std::map<std::string, std::deque<int>> answers;
    std::function<void()> hook;
    timeval time = {};
};

script_t g_script;
bool g_watched = false;
std::atomic<int> g_wait_count{0};

// Each call leaves a number in errno that no answer means, and what makes something another one.
int Answered(const std::string& name, const std::string& call, int otherwise = 0)
{
    g_script.calls.push_back(call);
    auto& answers = g_script.answers[name];
    int answer = otherwise;
    if (!answers.empty())
    {
        answer = answers.front();
        answers.pop_front();
    }
    errno = name.find("init") != std::string::npos ? EXFULL : EBADE;
    return answer;
}

// The function that stands behind this program's: the C library's, or a sanitizer's.
template <class Function>
Function* Real(const char* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

std::string DeadlineText(const timespec& deadline)
{
    std::ostringstream text;
    text << "timedwait(" << deadline.tv_sec << '.' << std::setw(9) << std::setfill('0') << deadline.tv_nsec
         << ')';
    return text.str();
}

} // namespace

extern "C" int pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes)
{
    if (g_watched)
        return Answered("mutex_init", attributes == nullptr ? "mutex_init" : "mutex_init of some kind");
    static auto* const real = Real<decltype(pthread_mutex_init)>("pthread_mutex_init");
    return real(mutex, attributes);
}

extern "C" int pthread_mutex_destroy(pthread_mutex_t* mutex)
{
    if (g_watched)
        return Answered("mutex_destroy", "mutex_destroy");
    static auto* const real = Real<decltype(pthread_mutex_destroy)>("pthread_mutex_destroy");
    return real(mutex);
}

extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex)
{
    if (g_watched)
    {
        g_script.locked.push_back(mutex);
        return Answered("lock", "lock");
    }
    static auto* const real = Real<decltype(pthread_mutex_lock)>("pthread_mutex_lock");
    return real(mutex);
}

extern "C" int pthread_mutex_unlock(pthread_mutex_t* mutex)
{
    if (g_watched)
        return Answered("unlock", "unlock");
    static auto* const real = Real<decltype(pthread_mutex_unlock)>("pthread_mutex_unlock");
    return real(mutex);
}

extern "C" int pthread_cond_init(pthread_cond_t* condition, const pthread_condattr_t* attributes)
{
    if (g_watched)
        return Answered("cond_init", attributes == nullptr ? "cond_init" : "cond_init of some kind");
    static auto* const real = Real<decltype(pthread_cond_init)>("pthread_cond_init");
    return real(condition, attributes);
}

extern "C" int pthread_cond_destroy(pthread_cond_t* condition)
{
    if (g_watched)
        return Answered("cond_destroy", "cond_destroy");
    static auto* const real = Real<decltype(pthread_cond_destroy)>("pthread_cond_destroy");
    return real(condition);
}

extern "C" int pthread_cond_broadcast(pthread_cond_t* condition)
{
    if (g_watched)
        return Answered("broadcast", "broadcast");
    static auto* const real = Real<decltype(pthread_cond_broadcast)>("pthread_cond_broadcast");
    return real(condition);
}

extern "C" int pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex,
                                      const timespec* deadline)
{
    if (!g_watched)
    {
        static auto* const real = Real<decltype(pthread_cond_timedwait)>("pthread_cond_timedwait");
        ++g_wait_count;
        return real(condition, mutex, deadline);
    }
    const int answer = Answered("timedwait", DeadlineText(*deadline), ETIMEDOUT);
    if (const auto hook = std::exchange(g_script.hook, nullptr))
        hook();
    return answer;
}

extern "C" int gettimeofday(timeval* time, void* zone)
{
    if (!g_watched)
    {
        static auto* const real = Real<int(timeval*, void*)>("gettimeofday");
        return real(time, zone);
    }
    *time = g_script.time;
    return Answered("gettimeofday", "gettimeofday");
}

PthreadCalls::PthreadCalls() { g_script = {}; }

PthreadCalls::~PthreadCalls() { g_script = {}; }

calls_t PthreadCalls::Calls(const std::function<void()>& work)
{
    struct watch_t
    {
        watch_t() { g_watched = true; }
        ~watch_t() { g_watched = false; }
    };

    m_failure = "no failure";
    try
    {
        const watch_t watch;
        work();
    }
    catch (const boost::system::system_error& e)
    {
        m_failure = util::Format("%1 (%2 %3)", e.what(), e.code().category().name(), e.code().value());
    }
    return std::exchange(g_script.calls, {});
}

std::vector<const void*> PthreadCalls::Locked(const std::function<void()>& work)
{
    g_script.locked.clear();
    Calls(work);
    return std::exchange(g_script.locked, {});
}

void PthreadCalls::Answer(const std::string& name, int result) { g_script.answers[name].push_back(result); }

void PthreadCalls::SetHook(std::function<void()> hook) { g_script.hook = std::move(hook); }

void PthreadCalls::SetTime(std::int64_t seconds, std::int64_t microseconds)
{
    g_script.time = {seconds, microseconds};
}

int PthreadCalls::WaitCount() { return g_wait_count; }
