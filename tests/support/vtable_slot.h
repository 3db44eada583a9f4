#pragma once

// Where the Itanium C++ ABI puts an operation. A pointer to a virtual one holds 1 and the offset in bytes of
// its place in its class's table; one to any other holds an address, which is even.

#include <cstddef>
#include <cstring>

template <class Operation>
std::size_t FirstWordOf(Operation operation)
{
    std::size_t value = 0;
    static_assert(sizeof(operation) == 2 * sizeof(value));
    std::memcpy(&value, &operation, sizeof(value));
    return value;
}

// The place of a virtual operation in its class's table, counted from 0.
template <class Operation>
std::size_t VtableSlot(Operation operation)
{
    return (FirstWordOf(operation) - 1) / sizeof(void*);
}

template <class... Operations>
bool IsAnyVirtual(Operations... operations)
{
    return ((FirstWordOf(operations) % 2 != 0) || ...);
}
