#include "nelvo/context/common_lib_ctx.h"

#include <atomic>
#include <future>
#include <new>
#include <type_traits>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>
#include <unistd.h>

#include "nelvo/context/path_access.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/str.h"
#include "nelvo/logging/channels.h"
#include "nelvo/logging/log.h"
#include "nelvo/logging/receiver/log_files.h"
#include "tests/support/failing_memory.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/program_output.h"
#include "tests/support/temp_folder.h"
#include "tests/support/thrown.h"

namespace
{

using texts_t = std::vector<std::string>;

// Notes each path, and refuses one.
class noting_permissions_t : public security::IFilesAccessPermissions
{
public:
    void CheckAccess(const util::str_t& path) override
    {
        asked.push_back(path.narrow());
        if (path.narrow() == "/refused")
            throw exc::runtime_exc_t("refused");
    }

    texts_t asked;
};

class no_factory_t : public io::io_dev_factory_t
{
public:
    boost::shared_ptr<io::io_dev_t> Create(const std::string&) override { return {}; }
};

class CommonLibCtx : public ::testing::Test
{
protected:
    CommonLibCtx() { logging::GetProcessLog()->set_receiver(m_receiver); }
    ~CommonLibCtx() override { logging::GetProcessLog()->set_receiver({}); }

    std::string Log() const { return WithoutHeads(m_receiver->text()); }

    boost::shared_ptr<noting_permissions_t> Restrict()
    {
        auto permissions = boost::make_shared<noting_permissions_t>();
        m_context.SetFilesAccessPermissions(permissions);
        return permissions;
    }

    boost::shared_ptr<lines_receiver_t> m_receiver = boost::make_shared<lines_receiver_t>();
    CCommonLibCtx m_context;
};

} // namespace

static_assert(!std::is_copy_constructible_v<CCommonLibCtx>);

TEST_F(CommonLibCtx, HasAllItsServicesFromTheStart)
{
    ASSERT_NE(nullptr, m_context.GetRuntimeKeyStore());
    std::vector<std::string> ids;
    m_context.GetRuntimeKeyStore()->ListIds(ids);
    EXPECT_EQ(texts_t(), ids);
    EXPECT_EQ(CCryptoProcessingPolicy::enNoCryptoProcessing, m_context.GetCryptoPolicy().GetType());
    EXPECT_EQ(1U, m_context.GetDevRegistry().AllocPoolId());
    EXPECT_EQ("There is no factory for the specified type of reader/writer: 'file'.",
              Thrown<exc::runtime_exc_t>([&] { m_context.GetDevRegistry().GetFactory("file"); }));
    EXPECT_EQ("", Log());
}

TEST_F(CommonLibCtx, GivesTheSameServicesEachTime)
{
    EXPECT_EQ(m_context.GetRuntimeKeyStore(), m_context.GetRuntimeKeyStore());
    EXPECT_EQ(&m_context.GetDevRegistry(), &m_context.GetDevRegistry());
    EXPECT_EQ(&m_context.GetCoutMultiplexor(), &m_context.GetCoutMultiplexor());
    m_context.GetCryptoPolicy() = CCryptoProcessingPolicy(true, nullptr, false);
    EXPECT_EQ(CCryptoProcessingPolicy::enDecrypt, m_context.GetCryptoPolicy().GetType());
}

TEST_F(CommonLibCtx, HasOnePoolUnderTheKey0)
{
    const auto pool = m_context.FindDevPool(0);
    ASSERT_NE(nullptr, pool);
    EXPECT_EQ(pool, m_context.FindDevPool(0));
    EXPECT_EQ("Tape control connection not found.",
              Thrown<exc::runtime_exc_t>([&] { pool->GetTapeControlConnection(); }));
    EXPECT_EQ(nullptr, m_context.FindDevPool(1));
    EXPECT_EQ(nullptr, m_context.FindDevPool(0xFFFFFFFF));
}

TEST_F(CommonLibCtx, LetsEveryPathPassUnlessItIsRestricted)
{
    EXPECT_NE(nullptr, boost::dynamic_pointer_cast<security::CUnrestrictedFilesAccessPermissions>(
                           m_context.GetFilesAccessPermissions()));
    for (const char* const path : {"", "/", "/refused", "a"})
        EXPECT_NO_THROW(m_context.CheckAccess(path));
}

TEST_F(CommonLibCtx, AsksItsPermissionsAboutEachPath)
{
    const auto permissions = Restrict();
    m_context.CheckAccess("/a");
    m_context.CheckAccess(L"/\x20ac");
    m_context.CheckAccess("");
    EXPECT_EQ(texts_t({"/a", "/\xe2\x82\xac", ""}), permissions->asked);
    EXPECT_EQ(permissions, m_context.GetFilesAccessPermissions());
}

TEST_F(CommonLibCtx, RefusalPassesOnAndLeavesTheCheckUnlocked)
{
    Restrict();
    EXPECT_EQ("refused", Thrown<exc::runtime_exc_t>([&] { m_context.CheckAccess("/refused"); }));
    std::async(std::launch::async, [&] { m_context.CheckAccess("/a"); }).get();
}

TEST_F(CommonLibCtx, ReplacedPermissionsAreReleasedAndAskedNoMore)
{
    const auto first = Restrict();
    const auto second = Restrict();
    EXPECT_EQ(1, first.use_count());
    m_context.CheckAccess("/a");
    EXPECT_EQ(texts_t(), first->asked);
    EXPECT_EQ(texts_t({"/a"}), second->asked);
}

TEST_F(CommonLibCtx, ReplacedPermissionsEndWhenTheCheckIsUnlocked)
{
    struct asking_permissions_t : security::CUnrestrictedFilesAccessPermissions
    {
        explicit asking_permissions_t(CCommonLibCtx& asked) : context(asked) {}
        ~asking_permissions_t() override { context.CheckAccess("/a"); }
        CCommonLibCtx& context;
    };
    m_context.SetFilesAccessPermissions(boost::make_shared<asking_permissions_t>(m_context));
    const auto second = Restrict();
    EXPECT_EQ(texts_t({"/a"}), second->asked);
}

TEST_F(CommonLibCtx, PermissionsAreAskedByOneThreadAtATime)
{
    const auto permissions = Restrict();
    const auto ask = [this]
    {
        for (int i = 0; i != 500; ++i)
            m_context.CheckAccess("/a");
    };
    auto other = std::async(std::launch::async, ask);
    ask();
    other.get();
    EXPECT_EQ(1000U, permissions->asked.size());
}

TEST_F(CommonLibCtx, DestroyingTheConnectionPoolsIsOneLine)
{
    const auto pool = boost::make_shared<io::io_dev_pool_t>();
    m_context.GetDevRegistry().AddPool(5, pool);
    m_context.DestroyConnectionPools();
    EXPECT_EQ("       | Destroying connection pools.\n", Log());
    EXPECT_EQ("Unable to find connections pool by id: 5.",
              Thrown<exc::runtime_exc_t>([&] { m_context.GetDevRegistry().GetPool(5); }));
    EXPECT_NE(nullptr, m_context.FindDevPool(0));
    logging::channels::default_log.info("behind");
    EXPECT_EQ("       | Destroying connection pools.\n"
              "       | behind\n",
              Log());
}

TEST_F(CommonLibCtx, ConnectionPoolsAreStillThereWhenTheirEndIsLogged)
{
    const auto pool = boost::make_shared<io::io_dev_pool_t>();
    m_context.GetDevRegistry().AddPool(5, pool);
    bool found = false;
    m_receiver->set_hook([&] { found = m_context.GetDevRegistry().GetPool(5) == pool; });
    m_context.DestroyConnectionPools();
    EXPECT_TRUE(found);
}

TEST_F(CommonLibCtx, DestroyingTheConnectionPoolsLeavesFactoriesAndPrefixes)
{
    io::dev_registry_t& registry = m_context.GetDevRegistry();
    registry.AddFactory("file", nullptr);
    registry.SetPrefixPath("/a", "b");
    m_context.DestroyConnectionPools();
    EXPECT_EQ(nullptr, registry.GetFactory("file"));
    EXPECT_EQ("/a", registry.FindPrefixPath("b"));
}

TEST_F(CommonLibCtx, EndLogsNothingAndReleasesAllItHas)
{
    auto context = boost::make_shared<CCommonLibCtx>();
    const auto permissions = boost::make_shared<noting_permissions_t>();
    const auto factory = boost::make_shared<no_factory_t>();
    const auto key_set = boost::make_shared<crypto::CKeySetId>();
    const auto store = context->GetRuntimeKeyStore();
    const auto dev_pool = context->FindDevPool(0);
    context->SetFilesAccessPermissions(permissions);
    context->GetDevRegistry().AddFactory("file", factory);
    context->GetDevRegistry().AddPool(1, dev_pool);
    context->GetCryptoPolicy() = CCryptoProcessingPolicy(true, key_set, false);
    context.reset();
    EXPECT_EQ("", Log());
    EXPECT_EQ(1, permissions.use_count());
    EXPECT_EQ(1, factory.use_count());
    EXPECT_EQ(1, key_set.use_count());
    EXPECT_EQ(1, store.use_count());
    EXPECT_EQ(1, dev_pool.use_count());
}

// The prefixes are logged under the mutex of the tables, and under the log's mutex its file asks about its
// path: with one mutex for tables and access, two threads would wait for each other.
TEST_F(CommonLibCtx, PrefixesAreSetWhileTheLogAsksAboutItsPath)
{
    const auto context = GetCommonLibCtx();
    m_receiver->set_hook([] { security::CheckPathAccess("/a"); });
    const auto set = [&]
    {
        for (int i = 0; i != 300; ++i)
        {
            context->GetDevRegistry().SetPrefixPath("/a", "b");
            context->GetDevRegistry().SetCloudAliasPath("clouddisk://a", "/b");
        }
    };
    auto other = std::async(std::launch::async, set);
    for (int i = 0; i != 300; ++i)
    {
        logging::channels::default_log.info("a line");
        security::CheckPathAccess("/b");
    }
    other.get();
    EXPECT_EQ(900U, m_receiver->messages().size());
}

TEST_F(CommonLibCtx, PrefixesAreSetWhileTheLogIsRotated)
{
    const auto context = GetCommonLibCtx();
    const temp_folder_t folder;
    logging::GetProcessLog()->set_receiver(logging::receiver::create_file_log({folder / "a.log"}));
    std::atomic<bool> done{false};
    const auto set = [&]
    {
        while (!done)
            context->GetDevRegistry().SetPrefixPath("/a", "b");
    };
    auto other = std::async(std::launch::async, set);
    for (int i = 0; i != 3; ++i)
    {
        EXPECT_EQ(0, ::truncate((folder / "a.log").c_str(), 16 << 20));
        EXPECT_NO_THROW(logging::GetProcessLog()->check_size());
    }
    done = true;
    other.get();
    for (const char* const name : {"a.log", "a.log.gz", "a.1.log.gz", "a.2.log.gz"})
        EXPECT_EQ(0, ::access((folder / name).c_str(), F_OK)) << name;
}

TEST_F(CommonLibCtx, PathsAreHeldAgainstThePermissionsOfTheProcess)
{
    const auto permissions = boost::make_shared<noting_permissions_t>();
    const auto before = GetCommonLibCtx()->GetFilesAccessPermissions();
    GetCommonLibCtx()->SetFilesAccessPermissions(permissions);
    security::CheckPathAccess("/a");
    EXPECT_EQ("refused", Thrown<exc::runtime_exc_t>([] { security::CheckPathAccess("/refused"); }));
    EXPECT_EQ(texts_t({"/a", "/refused"}), permissions->asked);
    GetCommonLibCtx()->SetFilesAccessPermissions(before);
}

TEST(GetCommonLibCtx, GivesEachCallerAShareOfTheSameContext)
{
    const auto context = GetCommonLibCtx();
    EXPECT_EQ(2, context.use_count());
    EXPECT_EQ(context, GetCommonLibCtx());
    EXPECT_EQ(context, std::async(std::launch::async, &GetCommonLibCtx).get());
}

// The leak sanitizer looks at what is left.
TEST_F(CommonLibCtx, CannotBeBuiltWhicheverPieceOfMemoryIsMissing)
{
    const auto is_built_without = [](std::size_t allocation)
    {
        FailNextAllocation(allocation);
        try
        {
            const CCommonLibCtx context;
            EXPECT_FALSE(HasAllocationFailed()) << allocation;
            return true;
        }
        catch (const std::bad_alloc&)
        {
            return false;
        }
    };
    std::size_t missing = 0;
    while (!is_built_without(missing))
        ++missing;
    EXPECT_LE(4U, missing);
    EXPECT_EQ("", Log());
}

TEST(GetCommonLibCtx, IsBuiltOnceByTheFirstThatAsksAndLivesAsLongAsItIsKept)
{
    EXPECT_EQ("log, values, streams and listeners: none is there\n"
              "Permission denied: none is there\n"
              "without memory, 4 failures: none is there\n"
              "64 threads, one builds what all have: one is there\n"
              "a path: one is there\n"
              "exit, kept by one, and refuses: one is there\n"
              "exit, another: two are there\n",
              OutputOf(LIBRARY_CONTEXT));
}
