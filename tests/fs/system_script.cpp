#include "tests/fs/system_script.h"

#include <cerrno>
#include <cstdio>
#include <deque>
#include <dlfcn.h>
#include <exception>
#include <map>
#include <sys/time.h>

#include "nelvo/core/util/format.h"

namespace
{

struct script_t
{
    // Not empty; the last one stays.
    std::deque<struct stat64> statuses{1};
    std::map<std::string, int> errors;
    std::string calls;
};

// Null while nobody listens.
script_t* g_script = nullptr;

// The library's own operation of this name.
template <class Operation>
Operation* Real(const char* name)
{
    return reinterpret_cast<Operation*>(::dlsym(RTLD_NEXT, name));
}

int Answer(const std::string& name, const std::string& arguments)
{
    g_script->calls += name + "(" + arguments + "); ";
    const auto error = g_script->errors.find(name);
    if (error == g_script->errors.end())
        return 0;
    errno = error->second;
    return -1;
}

int Stat(const char* name, const char* path, struct stat64* info)
{
    if (g_script == nullptr)
        return Real<int(const char*, struct stat64*)>(name)(path, info);
    *info = g_script->statuses.front();
    if (g_script->statuses.size() > 1)
        g_script->statuses.pop_front();
    return Answer(name, path);
}

std::string Octal(mode_t mode)
{
    char text[16];
    std::snprintf(text, sizeof(text), "0%o", mode);
    return text;
}

std::string TimeText(const struct timeval& time) { return util::Format("%1.%2", time.tv_sec, time.tv_usec); }

} // namespace

extern "C" int stat64(const char* path, struct stat64* info) noexcept { return Stat("stat64", path, info); }

extern "C" int lstat64(const char* path, struct stat64* info) noexcept { return Stat("lstat64", path, info); }

extern "C" int lutimes(const char* path, const struct timeval times[2]) noexcept
{
    if (g_script == nullptr)
        return Real<int(const char*, const struct timeval*)>("lutimes")(path, times);
    return Answer("lutimes", util::Format("%1, %2, %3", path, TimeText(times[0]), TimeText(times[1])));
}

extern "C" int chmod(const char* path, mode_t mode) noexcept
{
    if (g_script == nullptr)
        return Real<int(const char*, mode_t)>("chmod")(path, mode);
    return Answer("chmod", util::Format("%1, %2", path, Octal(mode)));
}

extern "C" int lchown(const char* path, uid_t uid, gid_t gid) noexcept
{
    if (g_script == nullptr)
        return Real<int(const char*, uid_t, gid_t)>("lchown")(path, uid, gid);
    return Answer("lchown", util::Format("%1, %2, %3", path, uid, gid));
}

system_script_t::system_script_t() { g_script = new script_t; }

system_script_t::~system_script_t()
{
    delete g_script;
    g_script = nullptr;
}

void system_script_t::Find(const struct stat64& status) { g_script->statuses = {status}; }

void system_script_t::FindNext(const struct stat64& status) { g_script->statuses.push_back(status); }

void system_script_t::Fail(const std::string& name, int error) { g_script->errors[name] = error; }

std::string system_script_t::Calls(const std::function<void()>& body)
{
    g_script->calls.clear();
    try
    {
        body();
    }
    catch (const std::exception&)
    {
    }
    return g_script->calls;
}
