#pragma once

// Memory of which no large piece is there. A program that uses this is linked with -Wl,--wrap=calloc, by
// which byte arrays are allocated.

#include <cstddef>

// While one lives, calloc has no block of more bytes.
class block_limit_t
{
public:
    explicit block_limit_t(std::size_t most);
    ~block_limit_t();
    block_limit_t(const block_limit_t&) = delete;
    block_limit_t& operator=(const block_limit_t&) = delete;

private:
    std::size_t m_before;
};
