#include "nelvo/io/dev_pool.h"

#include <functional>
#include <map>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "tests/support/mutex_watch.h"
#include "tests/support/stub_dev.h"

TEST(DevPoolCalls, EachOperationLocksThePoolOnce)
{
    io::io_dev_pool_t pool;
    const auto connection = boost::make_shared<stub_dev_t>();
    const auto add = [&] { pool.AddConnection(1, io::connection_kind_t::kTapeControl, connection); };
    add();
    const std::map<std::string, std::function<void()>> operations = {
        {"AddConnection", add},
        {"GetConnection", [&] { pool.GetConnection(1); }},
        {"GetConnection, nothing", [&] { EXPECT_ANY_THROW(pool.GetConnection(2)); }},
        {"GetTapeControlConnection", [&] { pool.GetTapeControlConnection(); }},
        {"RemoveConnection, nothing", [&] { pool.RemoveConnection(2); }},
    };
    for (const auto& [name, operation] : operations)
        EXPECT_EQ("p+p-", MutexCalls({Watched(pool, 'p')}, operation)) << name;
}
