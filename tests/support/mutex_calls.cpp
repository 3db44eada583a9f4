#include "tests/support/mutex_calls.h"

#include <atomic>
#include <utility>

#include <dlfcn.h>
#include <pthread.h>

namespace
{

struct answers_t
{
    std::string name;
    std::deque<int> left;
};

// Null on threads that have no answers.
thread_local answers_t* g_answers = nullptr;

template <class... Args>
int Call(const char* name, std::atomic<int (*)(Args...)>& next, Args... args)
{
    if (g_answers != nullptr && g_answers->name == name && !g_answers->left.empty())
    {
        const int answer = g_answers->left.front();
        g_answers->left.pop_front();
        if (answer != 0)
            return answer;
    }
    if (next == nullptr)
        next = reinterpret_cast<int (*)(Args...)>(::dlsym(RTLD_NEXT, name));
    return next.load()(args...);
}

} // namespace

void AnswerNext(const std::string& name, std::deque<int> answers)
{
    delete g_answers;
    g_answers = new answers_t{name, std::move(answers)};
}

std::size_t TakeUnasked()
{
    const std::size_t count = g_answers->left.size();
    delete std::exchange(g_answers, nullptr);
    return count;
}

extern "C" int pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes) noexcept
{
    static std::atomic<int (*)(pthread_mutex_t*, const pthread_mutexattr_t*)> next{nullptr};
    return Call("pthread_mutex_init", next, mutex, attributes);
}

extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept
{
    static std::atomic<int (*)(pthread_mutex_t*)> next{nullptr};
    return Call("pthread_mutex_lock", next, mutex);
}

extern "C" int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept
{
    static std::atomic<int (*)(pthread_mutex_t*)> next{nullptr};
    return Call("pthread_mutex_unlock", next, mutex);
}

extern "C" int pthread_mutexattr_init(pthread_mutexattr_t* attributes) noexcept
{
    static std::atomic<int (*)(pthread_mutexattr_t*)> next{nullptr};
    return Call("pthread_mutexattr_init", next, attributes);
}

extern "C" int pthread_mutexattr_settype(pthread_mutexattr_t* attributes, int type) noexcept
{
    static std::atomic<int (*)(pthread_mutexattr_t*, int)> next{nullptr};
    return Call("pthread_mutexattr_settype", next, attributes, type);
}
