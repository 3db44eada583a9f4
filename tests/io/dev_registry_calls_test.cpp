#include "nelvo/io/dev_registry.h"

#include <functional>
#include <map>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/logging/log.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/mutex_watch.h"

namespace
{

class DevRegistryCalls : public ::testing::Test
{
protected:
    DevRegistryCalls()
    {
        m_receiver->set_hook([] { NoteAmongCalls(" a line "); });
        logging::GetProcessLog()->set_receiver(m_receiver);
        m_registry.AddPool(1, m_pool);
    }
    ~DevRegistryCalls() override { logging::GetProcessLog()->set_receiver({}); }

    std::string Calls(const std::function<void()>& operation) const
    {
        return MutexCalls({Watched(m_registry, 'r')}, operation);
    }

    boost::shared_ptr<lines_receiver_t> m_receiver = boost::make_shared<lines_receiver_t>();
    boost::shared_ptr<io::io_dev_pool_t> m_pool = boost::make_shared<io::io_dev_pool_t>();
    io::dev_registry_t m_registry;
};

} // namespace

TEST_F(DevRegistryCalls, EachOperationLocksTheTablesOnce)
{
    const std::map<std::string, std::function<void()>> operations = {
        {"AddFactory", [&] { m_registry.AddFactory("file", nullptr); }},
        {"GetFactory", [&] { EXPECT_EQ(nullptr, m_registry.GetFactory("file")); }},
        {"GetFactory, nothing", [&] { EXPECT_ANY_THROW(m_registry.GetFactory("tape")); }},
        {"AddPool", [&] { m_registry.AddPool(2, m_pool); }},
        {"GetPool", [&] { m_registry.GetPool(1); }},
        {"GetPool, nothing", [&] { EXPECT_ANY_THROW(m_registry.GetPool(3)); }},
        {"AllocPoolId", [&] { m_registry.AllocPoolId(); }},
        {"FindFreePoolId", [&] { m_registry.FindFreePoolId(1); }},
        {"FindPrefixPath", [&] { m_registry.FindPrefixPath("b"); }},
        {"RemovePools", [&] { m_registry.RemovePools(); }},
    };
    for (const auto& [name, operation] : operations)
        EXPECT_EQ("r+r-", Calls(operation)) << name;
}

TEST_F(DevRegistryCalls, PrefixesAreLoggedUnderTheLock)
{
    EXPECT_EQ("r+ a line r-", Calls([&] { m_registry.SetPrefixPath("/a", "b"); }));
    EXPECT_EQ("r+ a line r-", Calls([&] { m_registry.AddDummyPrefix("/a"); }));
    EXPECT_EQ("r+ a line r-", Calls([&] { m_registry.SetCloudAliasPath("clouddisk://a", "/a"); }));
    EXPECT_EQ("r+ a line r-", Calls([&] { EXPECT_ANY_THROW(m_registry.SetCloudAliasPath("a", "/a")); }));
}
