#include "nelvo/core/cnt/array.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "nelvo/core/exc/runtime_exc.h"

namespace cnt
{
namespace
{

// Zeroed blocks of a known size.
template <class Allocator>
struct heap_tt;

template <>
struct heap_tt<std::allocator<char>>
{
    static char* Take(std::size_t size)
    {
        void* const block = std::calloc(size, 1);
        if (block == nullptr)
            throw std::bad_alloc();
        return static_cast<char*>(block);
    }
    static void Give(char* block, std::size_t) noexcept { std::free(block); }
};

template <>
struct heap_tt<crypto::sec_allocator_t<char>>
{
    static char* Take(std::size_t size) { return crypto::sec_allocator_t<char>().allocate(size); }
    static void Give(char* block, std::size_t size) noexcept
    {
        crypto::sec_allocator_t<char>().deallocate(block, size);
    }
};

} // namespace

void ThrowOutOfBound(std::uint64_t index, std::uint64_t size)
{
    throw exc::runtime_exc_t(
        "Out of the array bound. Index of the requested array element: [%1]. Array size: [%2].", index, size);
}

template <class T, class Allocator>
T* array_t<T, Allocator>::NewBlock(std::size_t size)
{
    // Beyond this, pointers can't be subtracted.
    if (size > PTRDIFF_MAX)
        throw std::bad_alloc();
    return heap_tt<Allocator>::Take(size);
}

template <class T, class Allocator>
void array_t<T, Allocator>::FreeBlock(T* block, std::size_t size) noexcept
{
    if (block != nullptr)
        heap_tt<Allocator>::Give(block, size);
}

template <class T, class Allocator>
void array_t<T, Allocator>::Move(std::size_t needed)
{
    const std::size_t old_size = size();
    const std::size_t new_capacity = old_size + std::max(old_size, needed - old_size);
    T* const block = NewBlock(new_capacity);
    if (old_size != 0)
        std::memcpy(block, m_begin, old_size);
    FreeBlock(m_begin, capacity());
    m_begin = block;
    m_end = block + old_size;
    m_end_of_capacity = block + new_capacity;
}

template <class T, class Allocator>
void array_t<T, Allocator>::assign(const T* data, std::size_t size)
{
    if (size > capacity())
    {
        array_t copy(size);
        std::memcpy(copy.m_begin, data, size);
        swap(copy);
        return;
    }
    if (size != 0)
        std::memmove(m_begin, data, size);
    resize(size);
}

template class array_t<char, std::allocator<char>>;
template class array_t<char, crypto::sec_allocator_t<char>>;

} // namespace cnt
