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

// Zeroed blocks of a known size. What a block grows by is not zeroed.
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
    // Large blocks stay where they are, or the system moves their pages without copying them.
    static char* Grow(char* block, std::size_t, std::size_t new_size)
    {
        void* const grown = std::realloc(block, new_size);
        if (grown == nullptr)
            throw std::bad_alloc();
        return static_cast<char*>(grown);
    }
    static void Give(char* block, std::size_t) noexcept { std::free(block); }
};

template <>
struct heap_tt<crypto::sec_allocator_t<char>>
{
    static char* Take(std::size_t size) { return crypto::sec_allocator_t<char>().allocate(size); }
    static char* Grow(char* block, std::size_t old_size, std::size_t new_size)
    {
        char* const grown = Take(new_size);
        if (block != nullptr)
        {
            std::memcpy(grown, block, old_size);
            Give(block, old_size);
        }
        return grown;
    }
    // A record may have asked for much more than came.
    static void Give(char* block, std::size_t size) noexcept
    {
        crypto::WipeUsed(block, size);
        crypto::sec_allocator_t<char>().deallocate(block, 0);
    }
};

} // namespace

void ThrowOutOfBound(std::uint64_t index, std::uint64_t size)
{
    throw exc::runtime_exc_t(
        "Out of the array bound. Index of the requested array element: [%1]. Array size: [%2].", index, size);
}

template <class T, class Allocator>
void array_t<T, Allocator>::FreeBlock(T* block, std::size_t size) noexcept
{
    if (block != nullptr)
        heap_tt<Allocator>::Give(block, size);
}

template <class T, class Allocator>
std::size_t array_t<T, Allocator>::GrownCapacity(std::size_t growth) const
{
    // Beyond this, pointers can't be subtracted.
    if (growth > PTRDIFF_MAX - size())
        throw std::bad_alloc();
    return size() + std::max(size(), growth);
}

// Into new memory, so that what is added is zero without being touched.
template <class T, class Allocator>
void array_t<T, Allocator>::Move(std::size_t needed)
{
    const std::size_t old_size = size();
    const std::size_t new_capacity = GrownCapacity(needed - old_size);
    T* const block = heap_tt<Allocator>::Take(new_capacity);
    if (old_size != 0)
        std::memcpy(block, m_begin, old_size);
    FreeBlock(m_begin, capacity());
    m_begin = block;
    m_end = block + old_size;
    m_end_of_capacity = block + new_capacity;
}

template <class T, class Allocator>
void array_t<T, Allocator>::MakeRoom(std::size_t growth)
{
    const std::size_t old_size = size();
    const std::size_t new_capacity = GrownCapacity(growth);
    m_begin = heap_tt<Allocator>::Grow(m_begin, capacity(), new_capacity);
    m_end = m_begin + old_size;
    m_end_of_capacity = m_begin + new_capacity;
}

template <class T, class Allocator>
void array_t<T, Allocator>::assign(const T* data, std::size_t size)
{
    if (size > capacity())
    {
        array_t copy;
        copy.append(data, size);
        swap(copy);
        return;
    }
    if (size != 0)
        std::memmove(m_begin, data, size);
    if (size < this->size())
        resize(size);
    m_end = m_begin + size;
}

template class array_t<char, std::allocator<char>>;
template class array_t<char, crypto::sec_allocator_t<char>>;

} // namespace cnt
