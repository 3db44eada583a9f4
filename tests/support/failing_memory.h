#pragma once

// Memory that runs out for a moment. A program that uses this has an operator new of its own.

#include <cstddef>

// Makes one of the calling thread's allocations by operator new throw std::bad_alloc: the next one, or that
// after so many others. None after it does.
void FailNextAllocation(std::size_t after = 0);

// True if an allocation has failed since then. Ends the wait for one.
bool HasAllocationFailed();

// From now on each allocation by operator new leaves ENOTUNIQ in errno, so that a failure that reads errno
// too late carries a text that none should. Returns true, so that a program can begin with it:
//
//   const bool g_errno_changes = ChangeErrnoWithMemory();
bool ChangeErrnoWithMemory();
