#pragma once

#include <cstddef>
#include <cstring>

// The place of a virtual operation in its class's table, counted from 0: under the Itanium C++ ABI a pointer
// to it holds 1 and the offset in bytes.
template <class Operation>
std::size_t VtableSlot(Operation operation)
{
    std::size_t value = 0;
    static_assert(sizeof(operation) == 2 * sizeof(value));
    std::memcpy(&value, &operation, sizeof(value));
    return (value - 1) / sizeof(void*);
}
