#pragma once

// Threads with ids of the test's choice: pthread_self() is an address at the top of the thread's stack, and a
// stack can be put anywhere.
//
//   RunOnThreadAt(kBelow2To31, [] { EXPECT_GT(1UL << 31, pthread_self()); });

#include <cstdint>
#include <functional>

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/mman.h>

constexpr std::uintptr_t kBelow2To31 = 0x4000'0000;

// The address sanitizer keeps its own memory from 2^31 on.
#ifndef __SANITIZE_ADDRESS__
constexpr std::uintptr_t kBelow2To32 = 0xC000'0000;
// With the low half of the first.
constexpr std::uintptr_t kAbove2To32 = 0x1'4000'0000;
#endif

// Calls the body on a new thread whose stack stands at the address, and waits for its end. Ids at one address
// are all the same. Fails the test if something else stands there.
inline void RunOnThreadAt(std::uintptr_t address, const std::function<void()>& body)
{
    constexpr std::size_t kSize = 0x100'000;
    void* const place = reinterpret_cast<void*>(address);
    void* const stack = ::mmap(place, kSize, PROT_READ | PROT_WRITE,
                               MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK | MAP_FIXED_NOREPLACE, -1, 0);
    ASSERT_EQ(place, stack);

    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, stack, kSize);
    pthread_t thread = 0;
    const int result = pthread_create(
        &thread, &attributes,
        [](void* argument) -> void*
        {
            (*static_cast<const std::function<void()>*>(argument))();
            return nullptr;
        },
        const_cast<std::function<void()>*>(&body));
    pthread_attr_destroy(&attributes);
    EXPECT_EQ(0, result);
    if (result == 0)
        pthread_join(thread, nullptr);
    ::munmap(stack, kSize);
}
