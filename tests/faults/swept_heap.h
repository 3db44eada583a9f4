#pragma once

// A heap that runs out when it is told to, and that knows how many of its blocks are in use. A program that
// uses this has the operator new of failing_memory.h and is linked with
// -Wl,--wrap=malloc,--wrap=calloc,--wrap=realloc,--wrap=free, so that it sees what the library, what is
// linked statically and operator new ask of the heap. The C library's own blocks are not seen.

#include <cstddef>

enum class shortage_t
{
    kOfOne,     // one allocation fails, and none after it
    kFromThenOn // that one and all after it
};

enum class asking_t
{
    kThisThread,
    kAnyThread
};

// From now on allocations are counted, and the one that comes after so many others fails.
void BeginShortage(std::size_t after, shortage_t shortage, asking_t asking);

struct shortage_end_t
{
    std::size_t asked;  // allocations since the beginning
    std::size_t failed; // those of them that failed
};

// Memory is there again.
shortage_end_t EndShortage();

// The blocks that are in use, of all threads.
std::size_t BlocksInUse();
