#pragma once

#include <sys/resource.h>

// The most memory that the process has had so far, in kibibytes.
inline long MostMemory()
{
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}
