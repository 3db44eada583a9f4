#include "tests/support/failing_new.h"

#include <cstdlib>
#include <new>

namespace
{

thread_local bool t_fail_next = false;

} // namespace

fail_next_new_t::fail_next_new_t() { t_fail_next = true; }

fail_next_new_t::~fail_next_new_t() { t_fail_next = false; }

void* operator new(std::size_t size)
{
    if (t_fail_next)
    {
        t_fail_next = false;
        throw std::bad_alloc();
    }
    if (void* const memory = std::malloc(size != 0 ? size : 1))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { std::free(memory); }

void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
