#pragma once

// Memory that runs out for a moment. A program that uses this has an operator new of its own.

// Makes the calling thread's next allocation by operator new throw std::bad_alloc, and none after it.
void FailNextAllocation();

// True if an allocation has failed since then. Ends the wait for one.
bool HasAllocationFailed();
