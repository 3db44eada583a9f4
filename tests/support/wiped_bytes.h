#pragma once

// Bytes of a test that are keys, or hold some. Their memory is wiped before it goes back to the heap, as that
// of the keys themselves is: what a test holds shall not look like what the library has left.

#include <cstring> // explicit_bzero
#include <memory>
#include <string>
#include <vector>

template <class T>
struct wiping_tt
{
    using value_type = T;

    wiping_tt() = default;
    template <class Other>
    // NOLINTNEXTLINE(google-explicit-constructor): what the allocator requirements ask for
    wiping_tt(const wiping_tt<Other>&) noexcept
    {
    }

    T* allocate(std::size_t count) { return std::allocator<T>().allocate(count); }
    void deallocate(T* block, std::size_t count) noexcept
    {
        ::explicit_bzero(static_cast<void*>(block), count * sizeof(T));
        std::allocator<T>().deallocate(block, count);
    }

    friend bool operator==(const wiping_tt&, const wiping_tt&) noexcept { return true; }
    friend bool operator!=(const wiping_tt&, const wiping_tt&) noexcept { return false; }
};

using wiped_bytes_t = std::basic_string<char, std::char_traits<char>, wiping_tt<char>>;

// A list, since short bytes stand in the objects themselves.
using wiped_list_t = std::vector<wiped_bytes_t, wiping_tt<wiped_bytes_t>>;
