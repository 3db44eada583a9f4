#pragma once

// How much of an array's memory has been touched.

#include <cstddef>
#include <cstdint>
#include <vector>

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "nelvo/core/cnt/array.h"

// Large arrays get memory of their own from the system, however much was freed before. A program that uses
// this begins with it.
inline const bool kLargeArraysAreMapped = ::mallopt(M_MMAP_THRESHOLD, 131072) == 1;

// The count of pages, of all that the array has room for, that the system has given memory to.
template <class Array>
std::size_t ResidentPages(const Array& array)
{
    EXPECT_TRUE(kLargeArraysAreMapped);
    const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    const auto begin = reinterpret_cast<std::uintptr_t>(array.data()) / page * page;
    const auto end = reinterpret_cast<std::uintptr_t>(array.data()) + array.capacity();
    std::vector<unsigned char> resident((end - begin + page - 1) / page);
    EXPECT_EQ(0, ::mincore(reinterpret_cast<void*>(begin), end - begin, resident.data()));
    std::size_t count = 0;
    for (const unsigned char state : resident)
        count += state & 1U;
    return count;
}
