#pragma once

// What is asked of the system about paths, call by call. In a program with this, stat64, lstat64, lutimes,
// chmod and lchown are not the C library's while a script listens: they note the call and answer as told.

#include <functional>
#include <string>
#include <sys/stat.h>

class system_script_t
{
public:
    system_script_t();
    ~system_script_t();
    system_script_t(const system_script_t&) = delete;
    system_script_t& operator=(const system_script_t&) = delete;

    // What stat64 and lstat64 find from now on, and what the calls after the first find. Before, they find
    // zeros.
    void Find(const struct stat64& status);
    void FindNext(const struct stat64& status);

    // The call of that name fails from now on.
    void Fail(const std::string& name, int error);

    // The calls that the body makes, each with "; " behind it. Whether it throws is no matter.
    static std::string Calls(const std::function<void()>& body);
};
