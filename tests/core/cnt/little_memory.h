#pragma once

#include <cstddef>

#include <sys/resource.h>

#include <gtest/gtest.h>

// While one lives, the program gets 256 MiB at most. What it has already is counted.
class little_memory_t
{
public:
    little_memory_t()
    {
        EXPECT_EQ(0, ::getrlimit(RLIMIT_AS, &m_before));
        const rlimit little = {std::size_t{256} << 20U, m_before.rlim_max};
        EXPECT_EQ(0, ::setrlimit(RLIMIT_AS, &little));
    }
    ~little_memory_t() { EXPECT_EQ(0, ::setrlimit(RLIMIT_AS, &m_before)); }

    little_memory_t(const little_memory_t&) = delete;
    little_memory_t& operator=(const little_memory_t&) = delete;

private:
    rlimit m_before = {};
};
