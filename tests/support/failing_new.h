#pragma once

// Memory that runs out: a program that includes this has operator new fail on demand.

// While one of these lives, the next allocation by operator new on this thread throws std::bad_alloc; those
// after it succeed.
class fail_next_new_t
{
public:
    fail_next_new_t();
    ~fail_next_new_t();
    fail_next_new_t(const fail_next_new_t&) = delete;
    fail_next_new_t& operator=(const fail_next_new_t&) = delete;
};
