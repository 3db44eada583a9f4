#pragma once

// A wall clock of the test's choice: while it stands, gettimeofday(2) and the real-time clock of
// clock_gettime(2) show its time, on all threads, and the latter leaves ENOTUNIQ in errno. A program that
// uses this has these two calls of its own.
//
//   set_clock_t clock(1700000000, 123456789);
//   clock.Advance(1500);                       // nanoseconds

#include <cstdint>

class set_clock_t
{
public:
    explicit set_clock_t(std::uint64_t seconds, std::uint64_t nanoseconds = 0);
    ~set_clock_t();
    set_clock_t(const set_clock_t&) = delete;
    set_clock_t& operator=(const set_clock_t&) = delete;

    void Set(std::uint64_t seconds, std::uint64_t nanoseconds = 0);

    // By nanoseconds; back if below 0.
    void Advance(std::int64_t nanoseconds);

    // How often clock_gettime has been asked since the last call.
    int TakeReadings();
};
