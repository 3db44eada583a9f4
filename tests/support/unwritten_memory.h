#pragma once

// Blocks of memory are looked at whole, with what nobody has written to them yet. Memcheck shall not take
// that for a fault.

#include <cstddef>

#include <valgrind/memcheck.h>

inline void TakeAsWritten(const void* block, std::size_t size)
{
    static_cast<void>(VALGRIND_MAKE_MEM_DEFINED(block, size));
}
