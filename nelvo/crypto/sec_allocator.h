#pragma once

// An allocator for secrets: memory that goes back to the heap holds zeros only. Any object serves any other's
// memory, as with std::allocator.

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring> // explicit_bzero
#include <new>
#include <type_traits>

namespace crypto
{

// Makes all of a block zero, and writes to no piece of it that is zero already: memory that was never touched
// is read at most, and the system need not find any for it.
inline void WipeUsed(char* block, std::size_t size) noexcept
{
    static constexpr char kZeros[4096] = {};
    for (std::size_t done = 0; done < size; done += sizeof(kZeros))
    {
        const std::size_t piece = std::min(sizeof(kZeros), size - done);
        if (std::memcmp(block + done, kZeros, piece) != 0)
            ::explicit_bzero(block + done, piece); // the compiler may not leave this out
    }
}

template <class T>
class sec_allocator_t
{
    static_assert(std::is_trivially_destructible_v<T>);

public:
    using value_type = T;
    using is_always_equal = std::true_type;

    // There is no state: each allocator frees what another gave.
    sec_allocator_t() = default;
    template <class Other>
    // NOLINTNEXTLINE(google-explicit-constructor): what the allocator requirements ask for
    sec_allocator_t(const sec_allocator_t<Other>&) noexcept
    {
    }

    // Room for count values, all bytes zero. Throws std::bad_alloc if there is none.
    T* allocate(std::size_t count)
    {
        void* const memory = std::calloc(count != 0 ? count : 1, sizeof(T));
        if (memory == nullptr)
            throw std::bad_alloc();
        return static_cast<T*>(memory);
    }

    // Overwrites each byte with 0, then frees the block. The count is that of allocate.
    void deallocate(T* block, std::size_t count) noexcept
    {
        // The compiler may not leave this out, though nobody reads the zeros.
        ::explicit_bzero(block, count * sizeof(T));
        std::free(block);
    }

    // All are equal.
    friend bool operator==(const sec_allocator_t&, const sec_allocator_t&) noexcept { return true; }
    friend bool operator!=(const sec_allocator_t&, const sec_allocator_t&) noexcept { return false; }
};

} // namespace crypto
