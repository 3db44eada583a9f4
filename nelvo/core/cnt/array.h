#pragma once

// The byte container of the library: contiguous, growing, new bytes always zero. There are two, told apart
// by the allocator: the plain one, and the one for key material, whose bytes are overwritten with zeros
// before their memory goes back to the heap, also when growing moves them.
//
//   cnt::plain_array_t bytes(3);   // 00 00 00
//   bytes[0] = 'x';
//   bytes.resize(5);               // 78 00 00 00 00
//
// Memory that is new from the system is zero already: a large array that is used in part takes memory for
// that part alone, also when it is wiped. Memory that the heap had before is cleared. What allocates throws
// std::bad_alloc, and the array is unchanged then. Pointers into an array hold until it grows.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <type_traits>
#include <utility>

#include "nelvo/crypto/sec_allocator.h"

namespace cnt
{

// exc::runtime_exc_t with "Out of the array bound. Index of the requested array element: [<index>]. Array
// size: [<size>]."
[[noreturn]] void ThrowOutOfBound(std::uint64_t index, std::uint64_t size);

// Copies bytes as std::memcpy does. Nearly all that records write and read has a size of 4 or 8 bytes, for
// which no function need be called. For a size of 0 either pointer may be null.
inline void CopyBytes(void* target, const void* source, std::size_t size)
{
    if (size == sizeof(std::uint32_t))
        std::memcpy(target, source, sizeof(std::uint32_t));
    else if (size == sizeof(std::uint64_t))
        std::memcpy(target, source, sizeof(std::uint64_t));
    else if (size != 0)
        std::memcpy(target, source, size);
}

template <class T, class Allocator>
class array_t;

// Defined for these two.
using plain_array_t = array_t<char, std::allocator<char>>;
using secure_array_t = array_t<char, crypto::sec_allocator_t<char>>;

template <class T, class Allocator>
class array_t
{
public:
    // Empty, or of a size, all zero.
    array_t() = default;
    explicit array_t(std::size_t size) { resize(size); }

    // A copy of the data, as assign makes it.
    array_t(const T* data, std::size_t size) { assign(data, size); }

    // A copy has memory of its own; an array that was moved from is empty.
    array_t(const array_t& other) : array_t(other.data(), other.size()) {}
    array_t(array_t&& other) noexcept { swap(other); }

    // By swapping: the old bytes go with the argument.
    array_t& operator=(array_t other) noexcept
    {
        swap(other);
        return *this;
    }

    ~array_t() { FreeBlock(m_begin, capacity()); }

    // No byte moves: pointers into either array stay good, and point into the other.
    void swap(array_t& other) noexcept
    {
        std::swap(m_begin, other.m_begin);
        std::swap(m_end, other.m_end);
        std::swap(m_end_of_capacity, other.m_end_of_capacity);
    }

    // Null for an array that never held anything.
    T* data() { return m_begin; }
    const T* data() const { return m_begin; }

    // In bytes. The capacity is what the block in hand has room for.
    std::size_t size() const { return static_cast<std::size_t>(m_end - m_begin); }
    std::size_t capacity() const { return static_cast<std::size_t>(m_end_of_capacity - m_begin); }
    bool empty() const { return m_begin == m_end; }

    // What can be added without moving.
    std::size_t spare() const { return static_cast<std::size_t>(m_end_of_capacity - m_end); }

    // As data, and behind the last byte.
    T* begin() { return m_begin; }
    T* end() { return m_end; }
    const T* begin() const { return m_begin; }
    const T* end() const { return m_end; }

    // Bounds are checked, by ThrowOutOfBound.
    T& operator[](std::size_t index)
    {
        if (index >= size())
            ThrowOutOfBound(index, size());
        return m_begin[index];
    }
    const T& operator[](std::size_t index) const { return const_cast<array_t&>(*this)[index]; }

    // Keeps the first bytes; those that are added are zero, and those that a secure array drops too. An array
    // that must move gets a capacity of its old size plus the greater of that size and the growth. It never
    // gives capacity back.
    void resize(std::size_t size)
    {
        if (size > capacity())
            Move(size);
        else if (size > this->size())
            std::memset(m_end, 0, size - this->size());
        else if (kSecret && size < this->size())
            crypto::WipeUsed(m_begin + size, this->size() - size);
        m_end = m_begin + size;
    }

    // Adds bytes at the end, as resize does but for zeroing them first. The data does not lie within the
    // array, and is not null unless the size is 0.
    void append(const T* data, std::size_t size)
    {
        if (size > spare())
            MakeRoom(size);
        CopyBytes(m_end, data, size);
        m_end += size;
    }

    // Replaces the contents. The data may lie within the array. It is not null unless the size is 0.
    void assign(const T* data, std::size_t size);

    // Byte by byte.
    friend bool operator==(const array_t& left, const array_t& right)
    {
        return left.size() == right.size() &&
               (left.empty() || std::memcmp(left.m_begin, right.m_begin, left.size()) == 0);
    }
    friend bool operator!=(const array_t& left, const array_t& right) { return !(left == right); }

private:
    static constexpr bool kSecret = std::is_same_v<Allocator, crypto::sec_allocator_t<T>>;

    static void FreeBlock(T* block, std::size_t size) noexcept;
    std::size_t GrownCapacity(std::size_t growth) const;
    void Move(std::size_t needed);
    void MakeRoom(std::size_t growth);

    T* m_begin = nullptr;
    T* m_end = nullptr;
    T* m_end_of_capacity = nullptr;
};

extern template class array_t<char, std::allocator<char>>;
extern template class array_t<char, crypto::sec_allocator_t<char>>;

} // namespace cnt
