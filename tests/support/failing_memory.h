#pragma once

// Memory that runs out for a moment. A program that uses this has an operator new of its own.

// Makes the calling thread's next allocation by operator new throw std::bad_alloc, and none after it.
void FailNextAllocation();

// True if an allocation has failed since then. Ends the wait for one.
bool HasAllocationFailed();

// From now on each allocation by operator new leaves ENOTUNIQ in errno, so that a failure that reads errno
// too late carries a text that none should. Returns true, so that a program can begin with it:
//
//   const bool g_errno_changes = ChangeErrnoWithMemory();
bool ChangeErrnoWithMemory();
