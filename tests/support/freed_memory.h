#pragma once

// What stands in memory when it goes back to the heap. A program that uses this is linked with
// -Wl,--wrap=free, so that free of the library's sources and of its own is __wrap_free.

#include <cstddef>
#include <string>

// The next free of the block is looked at. Forgets what was watched before.
void WatchFree(const void* block, std::size_t size);

// The bytes that the watched block had then; fails the test if it has not been freed.
std::string FreedBytes();
