#include "nelvo/io/dev_registry.h"

#include <algorithm>
#include <future>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/guid.h"
#include "nelvo/logging/channels.h"
#include "nelvo/logging/log.h"
#include "nelvo/logging/progress_scope.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/stub_dev.h"
#include "tests/support/thrown.h"

namespace
{

using texts_t = std::vector<std::string>;

class stub_factory_t : public io::io_dev_factory_t
{
public:
    boost::shared_ptr<io::io_dev_t> Create(const std::string& path) override
    {
        return boost::make_shared<stub_dev_t>(path);
    }
};

class DevRegistry : public ::testing::Test
{
protected:
    DevRegistry() { logging::GetProcessLog()->set_receiver(m_receiver); }
    ~DevRegistry() override { logging::GetProcessLog()->set_receiver({}); }

    std::string Log() const { return WithoutHeads(m_receiver->text()); }

    // Ids whose pools are alive for as long as the test runs.
    void Take(std::initializer_list<std::uint32_t> ids)
    {
        for (const std::uint32_t id : ids)
            m_registry.AddPool(id, m_pool);
    }

    template <class Call>
    static std::string Failure(Call call)
    {
        return Thrown<exc::runtime_exc_t>(call);
    }

    boost::shared_ptr<lines_receiver_t> m_receiver = boost::make_shared<lines_receiver_t>();
    boost::shared_ptr<io::io_dev_pool_t> m_pool = boost::make_shared<io::io_dev_pool_t>();
    io::dev_registry_t m_registry;
};

} // namespace

TEST_F(DevRegistry, FactoryIsFoundByTheNameOfItsType)
{
    const auto file = boost::make_shared<stub_factory_t>();
    const auto empty = boost::make_shared<stub_factory_t>();
    m_registry.AddFactory("file", file);
    m_registry.AddFactory("", empty);
    EXPECT_EQ(file, m_registry.GetFactory("file"));
    EXPECT_EQ(empty, m_registry.GetFactory(""));
    EXPECT_NE(nullptr, m_registry.GetFactory("file")->Create("a path"));
}

TEST_F(DevRegistry, NamesOfTypesAreComparedByteByByteAndThenByLength)
{
    m_registry.AddFactory("file", boost::make_shared<stub_factory_t>());
    for (const std::string type : {"File", "fil", "files", "file "})
        EXPECT_EQ("There is no factory for the specified type of reader/writer: '" + type + "'.",
                  Failure([&] { m_registry.GetFactory(type); }));
    EXPECT_THROW(m_registry.GetFactory(std::string("file\0x", 6)), exc::runtime_exc_t);
}

TEST_F(DevRegistry, TypeWithoutAFactoryIsAFailure)
{
    EXPECT_EQ("There is no factory for the specified type of reader/writer: ''.",
              Failure([&] { m_registry.GetFactory(""); }));
    EXPECT_EQ("There is no factory for the specified type of reader/writer: '%1'.",
              Failure([&] { m_registry.GetFactory("%1"); }));
}

TEST_F(DevRegistry, SecondFactoryOfATypeReplacesTheFirst)
{
    const auto first = boost::make_shared<stub_factory_t>();
    const auto second = boost::make_shared<stub_factory_t>();
    m_registry.AddFactory("file", first);
    m_registry.AddFactory("file", second);
    EXPECT_EQ(second, m_registry.GetFactory("file"));
    EXPECT_EQ(1, first.use_count());
}

TEST_F(DevRegistry, FactoriesLiveAsLongAsTheRegistry)
{
    const auto factory = boost::make_shared<stub_factory_t>();
    {
        io::dev_registry_t registry;
        registry.AddFactory("file", factory);
        registry.RemovePools();
        EXPECT_EQ(2, factory.use_count());
    }
    EXPECT_EQ(1, factory.use_count());
}

TEST_F(DevRegistry, PoolIsFoundByItsIdAndNotKeptAlive)
{
    m_registry.AddPool(5, m_pool);
    EXPECT_EQ(m_pool, m_registry.GetPool(5));
    EXPECT_EQ(1, m_pool.use_count());
}

TEST_F(DevRegistry, PoolThatIsNotThereIsAFailure)
{
    Take({5});
    EXPECT_EQ("Unable to find connections pool by id: 6.", Failure([&] { m_registry.GetPool(6); }));
    EXPECT_EQ("Unable to find connections pool by id: 4294967295.",
              Failure([&] { m_registry.GetPool(0xFFFFFFFF); }));
}

TEST_F(DevRegistry, PoolThatHasBeenReleasedIsAnotherFailure)
{
    Take({5});
    m_pool.reset();
    EXPECT_EQ("Connections pool [5] has already been destroyed.", Failure([&] { m_registry.GetPool(5); }));
}

TEST_F(DevRegistry, PoolWithATakenIdReplacesTheOther)
{
    Take({5});
    const auto second = boost::make_shared<io::io_dev_pool_t>();
    m_registry.AddPool(5, second);
    EXPECT_EQ(second, m_registry.GetPool(5));
}

TEST_F(DevRegistry, FreeIdIsTheLowestFromTheStartOn)
{
    EXPECT_EQ(0U, m_registry.FindFreePoolId(0));
    EXPECT_EQ(5U, m_registry.FindFreePoolId(5));
    Take({5, 6, 8});
    EXPECT_EQ(4U, m_registry.FindFreePoolId(4));
    EXPECT_EQ(7U, m_registry.FindFreePoolId(5));
    EXPECT_EQ(7U, m_registry.FindFreePoolId(6));
    EXPECT_EQ(9U, m_registry.FindFreePoolId(8));
}

TEST_F(DevRegistry, FindingAFreeIdDoesNotTakeIt)
{
    EXPECT_EQ(1U, m_registry.AllocPoolId());
    EXPECT_EQ(1U, m_registry.AllocPoolId());
    EXPECT_EQ(1U, m_registry.FindFreePoolId(1));
}

TEST_F(DevRegistry, IdOfAReleasedPoolStaysTaken)
{
    Take({5});
    m_pool.reset();
    EXPECT_EQ(6U, m_registry.FindFreePoolId(5));
}

TEST_F(DevRegistry, GreatestFreeIdIs7FFFFFFE)
{
    EXPECT_EQ(0x7FFFFFFEU, m_registry.FindFreePoolId(0x7FFFFFFE));
    Take({0x7FFFFFFE});
    EXPECT_EQ(0x7FFFFFFDU, m_registry.FindFreePoolId(0x7FFFFFFD));
    Take({0x7FFFFFFD});
    EXPECT_EQ("Cannot find free pool id ( check started from pool id '2147483645').",
              Failure([&] { m_registry.FindFreePoolId(0x7FFFFFFD); }));
    EXPECT_EQ("Cannot find free pool id ( check started from pool id '2147483646').",
              Failure([&] { m_registry.FindFreePoolId(0x7FFFFFFE); }));
}

TEST_F(DevRegistry, StartAboveTheGreatestIdIsAFailureWhateverIsTaken)
{
    EXPECT_EQ("Cannot find free pool id ( check started from pool id '2147483647').",
              Failure([&] { m_registry.FindFreePoolId(0x7FFFFFFF); }));
    Take({0xFFFFFFFF});
    EXPECT_EQ("Cannot find free pool id ( check started from pool id '4294967295').",
              Failure([&] { m_registry.FindFreePoolId(0xFFFFFFFF); }));
}

TEST_F(DevRegistry, AllocatedIdIsTheLowestFreeFrom1On)
{
    Take({0, 1, 2, 4});
    EXPECT_EQ(3U, m_registry.AllocPoolId());
}

TEST_F(DevRegistry, AllocationWithoutAFreeIdIsAFailureOfItsOwn)
{
    io::dev_registry_t registry(3);
    for (const std::uint32_t id : {1U, 3U})
        registry.AddPool(id, m_pool);
    EXPECT_EQ(2U, registry.AllocPoolId());
    registry.AddPool(2, m_pool);
    EXPECT_EQ("Cannot find free pool id.", Failure([&] { registry.AllocPoolId(); }));
    EXPECT_EQ("Cannot find free pool id ( check started from pool id '1').",
              Failure([&] { registry.FindFreePoolId(1); }));
}

TEST_F(DevRegistry, RemovedPoolsAreUnknownAndTheirIdsFree)
{
    Take({1, 2});
    m_registry.RemovePools();
    EXPECT_EQ("Unable to find connections pool by id: 1.", Failure([&] { m_registry.GetPool(1); }));
    EXPECT_EQ(1U, m_registry.AllocPoolId());
    EXPECT_EQ("", Log());
}

TEST_F(DevRegistry, CloudAliasIsLoggedAndStoredAsItIsWritten)
{
    m_registry.SetCloudAliasPath("CloudDisk://Web", "/dev/sdb");
    EXPECT_EQ("       | Setting cloud VM alias [CloudDisk://Web] for path [/dev/sdb].\n", Log());
    EXPECT_EQ("/dev/sdb", m_registry.FindPrefixPath("CloudDisk://Web"));
    EXPECT_EQ("", m_registry.FindPrefixPath("clouddisk://Web"));
}

TEST_F(DevRegistry, CloudAliasMayBeThePrefixAlone)
{
    m_registry.SetCloudAliasPath("clouddisk://", "/a");
    EXPECT_EQ("/a", m_registry.FindPrefixPath("clouddisk://"));
}

TEST_F(DevRegistry, RefusedCloudAliasHasBeenLogged)
{
    for (const std::string alias : {"web", "", "clouddisk:/", " clouddisk://web", "MemFs://web"})
    {
        EXPECT_EQ("Invalid cloud alias prefix: " + alias,
                  Failure([&] { m_registry.SetCloudAliasPath(alias, "/a"); }));
        EXPECT_EQ("       | Setting cloud VM alias [" + alias + "] for path [/a].\n",
                  WithoutHeads(m_receiver->messages().back()));
        EXPECT_EQ("", m_registry.FindPrefixPath(alias));
    }
    EXPECT_EQ(5U, m_receiver->messages().size());
}

TEST_F(DevRegistry, PathOfAPrefixIsLoggedAndStored)
{
    m_registry.SetPrefixPath("/a", "any://");
    m_registry.SetPrefixPath("", "");
    EXPECT_EQ("       | Setting path [/a] for prefix [any://].\n"
              "       | Setting path [] for prefix [].\n",
              Log());
    EXPECT_EQ("/a", m_registry.FindPrefixPath("any://"));
    EXPECT_EQ("", m_registry.FindPrefixPath("Any://"));
    EXPECT_EQ("", m_registry.FindPrefixPath("any:/"));
}

TEST_F(DevRegistry, PathIsStoredBehindItsLine)
{
    texts_t paths;
    m_receiver->set_hook([&] { paths.push_back(m_registry.FindPrefixPath("clouddisk://a")); });
    m_registry.SetPrefixPath("/a", "clouddisk://a");
    m_registry.SetCloudAliasPath("clouddisk://a", "/b");
    m_registry.SetPrefixPath("/c", "clouddisk://a");
    EXPECT_EQ(texts_t({"", "/a", "/b"}), paths);
}

TEST_F(DevRegistry, SecondPathOfAPrefixReplacesTheFirst)
{
    m_registry.SetPrefixPath("/a", "clouddisk://web");
    m_registry.SetCloudAliasPath("clouddisk://web", "/b");
    EXPECT_EQ("/b", m_registry.FindPrefixPath("clouddisk://web"));
}

TEST_F(DevRegistry, DummyPrefixEndsInANewGuid)
{
    const std::string first = m_registry.AddDummyPrefix("/a");
    const std::string second = m_registry.AddDummyPrefix("/b");
    for (const std::string& prefix : {first, second})
    {
        EXPECT_EQ("dummy://", prefix.substr(0, 8));
        EXPECT_EQ(prefix.substr(8), Guid::Parse(prefix.substr(8)).ToString());
    }
    EXPECT_NE(first, second);
    EXPECT_EQ("/a", m_registry.FindPrefixPath(first));
    EXPECT_EQ("/b", m_registry.FindPrefixPath(second));
    EXPECT_EQ("       | Setting path [/a] for prefix [" + first +
                  "].\n"
                  "       | Setting path [/b] for prefix [" +
                  second + "].\n",
              Log());
}

TEST_F(DevRegistry, LinesStandAtTheThreadsIndent)
{
    const progress_scope_t scope(logging::channels::default_log, "Work");
    m_registry.SetPrefixPath("/a", "b");
    m_registry.SetCloudAliasPath("clouddisk://c", "/d");
    EXPECT_EQ("       | Work\n"
              "       |   Setting path [/a] for prefix [b].\n"
              "       |   Setting cloud VM alias [clouddisk://c] for path [/d].\n",
              Log());
}

TEST_F(DevRegistry, MemFsPathIsThePrefixAndTheName)
{
    EXPECT_EQ("MemFs://a", io::MakeMemFsPath("a"));
    EXPECT_EQ("MemFs://", io::MakeMemFsPath(""));
    EXPECT_EQ("MemFs://a.b", io::MakeMemFsPath("a.b"));
}

TEST_F(DevRegistry, MemFsPathWithASeparatorIsRefused)
{
    for (const std::string path : {"a/b", "a\\b", "/a", "a/", ".a", ".", "./a", "../a"})
        EXPECT_EQ("[" + path + "] is not a relative path.", Failure([&] { io::MakeMemFsPath(path); }));
}

TEST_F(DevRegistry, ThreadsShareARegistry)
{
    const auto use = [this](std::uint32_t first)
    {
        for (std::uint32_t id = first; id != first + 50; ++id)
        {
            m_registry.AddPool(id, m_pool);
            EXPECT_EQ(m_pool, m_registry.GetPool(id));
            EXPECT_EQ(first + 50, std::max(m_registry.FindFreePoolId(first), first + 50));
            EXPECT_EQ("/a", m_registry.FindPrefixPath(m_registry.AddDummyPrefix("/a")));
        }
    };
    auto other = std::async(std::launch::async, use, 1000);
    use(2000);
    other.get();
    EXPECT_EQ(1050U, m_registry.FindFreePoolId(1000));
    EXPECT_EQ(100U, m_receiver->messages().size());
}
