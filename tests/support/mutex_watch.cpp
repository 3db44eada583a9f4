#include "tests/support/mutex_watch.h"

#include <utility>
#include <vector>

#include <dlfcn.h>
#include <pthread.h>

namespace
{

std::vector<watched_t> g_watched;
std::string g_calls;

void Note(const void* mutex, char call)
{
    for (const watched_t& watched : g_watched)
    {
        const auto* const begin = static_cast<const char*>(watched.object);
        const auto* const place = static_cast<const char*>(mutex);
        if (place >= begin && place < begin + watched.size)
            g_calls += {watched.name, call};
    }
}

int CallNext(const char* name, pthread_mutex_t* mutex)
{
    return reinterpret_cast<int (*)(pthread_mutex_t*)>(::dlsym(RTLD_NEXT, name))(mutex);
}

} // namespace

extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept
{
    const int result = CallNext("pthread_mutex_lock", mutex);
    Note(mutex, '+');
    return result;
}

extern "C" int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept
{
    Note(mutex, '-');
    return CallNext("pthread_mutex_unlock", mutex);
}

std::string MutexCalls(std::initializer_list<watched_t> objects, const std::function<void()>& operation)
{
    g_watched = objects;
    operation();
    g_watched.clear();
    return std::exchange(g_calls, {});
}

void NoteAmongCalls(const std::string& event)
{
    if (!g_watched.empty())
        g_calls += event;
}
