#pragma once

#include <sys/resource.h>

#include <gtest/gtest.h>

// While one lives, the process has no more of a resource (RLIMIT_AS: bytes of address space), see
// setrlimit(2).
class resource_limit_t
{
public:
    using resource_t = decltype(RLIMIT_AS);

    resource_limit_t(resource_t resource, rlim_t most) : m_resource(resource)
    {
        EXPECT_EQ(0, ::getrlimit(m_resource, &m_before));
        const rlimit less = {most, m_before.rlim_max};
        EXPECT_EQ(0, ::setrlimit(m_resource, &less));
    }
    ~resource_limit_t() { EXPECT_EQ(0, ::setrlimit(m_resource, &m_before)); }
    resource_limit_t(const resource_limit_t&) = delete;
    resource_limit_t& operator=(const resource_limit_t&) = delete;

private:
    const resource_t m_resource;
    rlimit m_before = {};
};
