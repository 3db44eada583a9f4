#pragma once

#include "tests/support/resource_limit.h"

// While one lives, the program gets 256 MiB at most. What it has already is counted.
class little_memory_t : public resource_limit_t
{
public:
    little_memory_t() : resource_limit_t(RLIMIT_AS, rlim_t{256} << 20U) {}
};
