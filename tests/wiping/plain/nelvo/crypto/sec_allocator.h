#pragma once

// Stands in the place of the header of this name: an allocator for secrets that wipes nothing.

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>

namespace crypto
{

inline void WipeUsed(char*, std::size_t) noexcept {}

template <class T>
class sec_allocator_t : public std::allocator<T>
{
public:
    T* allocate(std::size_t count)
    {
        void* const memory = std::calloc(count != 0 ? count : 1, sizeof(T));
        if (memory == nullptr)
            throw std::bad_alloc();
        return static_cast<T*>(memory);
    }
    void deallocate(T* block, std::size_t) noexcept { std::free(block); }
};

} // namespace crypto
