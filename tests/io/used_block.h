#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>

// Leaves a block full of 'x' in the heap, for who asks for this many bytes next. The compiler cannot see that
// nobody reads them.
inline void LeaveUsedBlock(std::size_t size)
{
    void* volatile block = std::malloc(size);
    std::memset(block, 'x', size);
    std::free(block);
}
