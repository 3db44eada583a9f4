#include "tests/support/pthread_calls.h"

#include <atomic>
#include <cerrno>
#include <ctime>
#include <deque>
#include <iomanip>
#include <map>
#include <sstream>
#include <utility>

#include <boost/system/system_error.hpp>
#include <dlfcn.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

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

std::string DeadlineText(const timespec& deadline)
{
    std::ostringstream text;
    text << "timedwait(" << deadline.tv_sec << '.' << std::setw(9) << std::setfill('0') << deadline.tv_nsec
         << ')';
    return text.str();
}

// Notes and answers the call, or makes that which stands behind this program's: the C library's, or a
// sanitizer's.
template <auto* Function, class... Args>
int Call(const char* name, const char* function, Args... args)
{
    if (g_watched)
        return Answered(name, name);
    static const auto real = reinterpret_cast<decltype(Function)>(::dlsym(RTLD_NEXT, function));
    return real(args...);
}

} // namespace

extern "C" int pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes) noexcept
{
    if (g_watched && attributes != nullptr)
        return Answered("mutex_init", "mutex_init of some kind");
    return Call<&pthread_mutex_init>("mutex_init", "pthread_mutex_init", mutex, attributes);
}

extern "C" int pthread_mutex_destroy(pthread_mutex_t* mutex) noexcept
{
    return Call<&pthread_mutex_destroy>("mutex_destroy", "pthread_mutex_destroy", mutex);
}

extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept
{
    if (g_watched)
        g_script.locked.push_back(mutex);
    return Call<&pthread_mutex_lock>("lock", "pthread_mutex_lock", mutex);
}

extern "C" int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept
{
    return Call<&pthread_mutex_unlock>("unlock", "pthread_mutex_unlock", mutex);
}

extern "C" int pthread_mutexattr_init(pthread_mutexattr_t* attributes) noexcept
{
    return Call<&pthread_mutexattr_init>("mutexattr_init", "pthread_mutexattr_init", attributes);
}

extern "C" int pthread_mutexattr_settype(pthread_mutexattr_t* attributes, int type) noexcept
{
    if (g_watched && type == PTHREAD_MUTEX_RECURSIVE)
        return Answered("mutexattr_settype", "mutexattr_settype(recursive)");
    return Call<&pthread_mutexattr_settype>("mutexattr_settype", "pthread_mutexattr_settype", attributes,
                                            type);
}

extern "C" int pthread_cond_init(pthread_cond_t* condition, const pthread_condattr_t* attributes) noexcept
{
    if (g_watched && attributes != nullptr)
        return Answered("cond_init", "cond_init of some kind");
    return Call<&pthread_cond_init>("cond_init", "pthread_cond_init", condition, attributes);
}

extern "C" int pthread_cond_destroy(pthread_cond_t* condition) noexcept
{
    return Call<&pthread_cond_destroy>("cond_destroy", "pthread_cond_destroy", condition);
}

extern "C" int pthread_cond_broadcast(pthread_cond_t* condition) noexcept
{
    return Call<&pthread_cond_broadcast>("broadcast", "pthread_cond_broadcast", condition);
}

extern "C" int pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex,
                                      const timespec* deadline)
{
    if (!g_watched)
    {
        ++g_wait_count;
        return Call<&pthread_cond_timedwait>("timedwait", "pthread_cond_timedwait", condition, mutex,
                                             deadline);
    }
    const int answer = Answered("timedwait", DeadlineText(*deadline), ETIMEDOUT);
    if (const auto hook = std::exchange(g_script.hook, nullptr))
        hook();
    return answer;
}

extern "C" int gettimeofday(timeval* time, void* zone) noexcept
{
    if (!g_watched)
        return static_cast<int>(::syscall(SYS_gettimeofday, time, zone));
    *time = g_script.time;
    return Answered("gettimeofday", "gettimeofday");
}

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept
{
    if (!g_watched)
        return static_cast<int>(::syscall(SYS_clock_gettime, clock, time));
    *time = {g_script.time.tv_sec, g_script.time.tv_usec * 1000};
    return Answered("clock_gettime",
                    clock == CLOCK_REALTIME ? "clock_gettime" : "clock_gettime of some kind");
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
