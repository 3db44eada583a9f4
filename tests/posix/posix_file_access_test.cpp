#include <cstdarg>
#include <functional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "nelvo/context/path_access.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/str.h"
#include "nelvo/posix/posix_file.h"
#include "tests/support/temp_folder.h"

using posix::posix_file_t;

namespace
{

using events_t = std::vector<std::string>;

events_t g_events;
bool g_refuses = false;

} // namespace

namespace security
{

void CheckPathAccess(const util::str_t& path)
{
    g_events.push_back("ask " + path.narrow());
    if (g_refuses)
        throw exc::runtime_exc_t("refused");
}

} // namespace security

extern "C" int open64(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const unsigned mode = va_arg(arguments, unsigned);
    va_end(arguments);
    g_events.push_back(std::string("open ") + path);
    return static_cast<int>(::syscall(SYS_open, path, flags, mode));
}

namespace
{

class PosixFileAccess : public testing::Test
{
protected:
    PosixFileAccess() { WriteFile(m_path, "text"); }

    ~PosixFileAccess() override { g_refuses = false; }

    // What the call asks and opens. Whether it fails is no matter.
    static events_t Events(const std::function<void()>& call)
    {
        g_events.clear();
        m_failure.clear();
        try
        {
            call();
        }
        catch (const std::exception& e)
        {
            m_failure = e.what();
        }
        return g_events;
    }

    temp_folder_t m_folder;
    const std::string m_path = m_folder / "file";
    const std::string m_missing = m_folder / "missing";
    static inline std::string m_failure;

    using factory_t = posix_file_ptr_t (*)(const util::str_t& path);
    const std::vector<factory_t> m_factories = {
        [](const util::str_t& path) { return posix_file_t::CreateOrOpen(path); },
        [](const util::str_t& path) { return posix_file_t::CreateWithPrealloc(path, 0); },
        [](const util::str_t& path) { return posix_file_t::CreateWithPrealloc(path, 10); },
        [](const util::str_t& path) { return posix_file_t::OpenRead(path); },
        [](const util::str_t& path) { return posix_file_t::OpenReadWrite(path); },
        [](const util::str_t& path) { return posix_file_t::OpenByAccess(path, true); },
        [](const util::str_t& path) { return posix_file_t::OpenByAccess(path, false); },
        [](const util::str_t& path) { return posix_file_t::OpenReadWriteSync(path); },
        [](const util::str_t& path) { return posix_file_t::OpenReadWithoutCache(path); },
        [](const util::str_t& path) { return posix_file_t::OpenReadWriteWithoutCache(path); },
    };
};

} // namespace

TEST_F(PosixFileAccess, EveryFactoryAsksAboutThePathOnceAndThenOpensIt)
{
    for (const factory_t factory : m_factories)
        EXPECT_EQ((events_t{"ask " + m_path, "open " + m_path}), Events([&] { factory(m_path); }));
}

TEST_F(PosixFileAccess, RefusedPathStaysUnopenedAndTheRefusalPassesOn)
{
    g_refuses = true;
    for (const factory_t factory : m_factories)
    {
        EXPECT_EQ(events_t{"ask " + m_missing}, Events([&] { factory(m_missing); }));
        EXPECT_EQ("refused", m_failure);
    }
    EXPECT_NE(0, ::access(m_missing.c_str(), F_OK));
}

TEST_F(PosixFileAccess, PathIsAskedAboutAsFarAsTheSystemSeesIt)
{
    const std::string path = m_path + std::string("\0more", 5);
    for (const factory_t factory : m_factories)
        EXPECT_EQ((events_t{"ask " + m_path, "open " + m_path}), Events([&] { factory(path); }));
}

TEST_F(PosixFileAccess, OperationsOfOtherPlatformsDoNotAsk)
{
    const posix_file_ptr_t file = posix_file_t::OpenRead(m_path);
    EXPECT_EQ(events_t(), Events([&] { posix_file_t::CreateNewWithoutCache(m_path, 1); }));
    EXPECT_EQ(events_t(), Events([&] { posix_file_t::SparseFileCreate(m_path, 1); }));
    EXPECT_EQ(events_t(), Events([&] { posix_file_t::SparseFileSetZeroData(file, 0, 1); }));
}

TEST_F(PosixFileAccess, OperationsByPathDoNotAsk)
{
    const std::string link = m_folder / "link";
    ASSERT_EQ(0, ::symlink("file", link.c_str()));
    bool is_link = false;
    uid_t uid = 0;
    gid_t gid = 0;
    const char* const path = m_path.c_str();

    EXPECT_EQ(events_t(), Events([&] { posix_file_t::GetOwnerUid(path); }));
    EXPECT_EQ(events_t(), Events([&] { posix_file_t::GetOwnerGid(path); }));
    EXPECT_EQ(events_t(), Events([&] { posix_file_t::GetPermissions(path); }));
    EXPECT_EQ(events_t(), Events([&] { posix_file_t::SetPermissions(path, 0600); }));
    EXPECT_EQ(events_t(), Events([&] { posix_file_t::GetLinkOwner(path, is_link, uid, gid); }));
    EXPECT_EQ(events_t(), Events([&] { posix_file_t::IsSymlink(path); }));
    EXPECT_EQ(events_t(), Events([&] { posix_file_t::SetOwner(path, ::geteuid(), ::getegid()); }));
    EXPECT_EQ(events_t(), Events([&] { posix_file_t::GetFileTimes(path, nullptr, nullptr); }));
    EXPECT_EQ(events_t(), Events([&] { posix_file_t::SetFileTimes(path, 1, 2); }));
    EXPECT_EQ(events_t(), Events([&] { posix_file_t::ReadSymlink(link); }));
    EXPECT_EQ("", m_failure);
}

TEST_F(PosixFileAccess, OpenFileIsNotAskedAboutAgain)
{
    const posix_file_ptr_t file = posix_file_t::OpenReadWrite(m_path);
    std::string text;
    EXPECT_EQ(events_t(), Events(
                              [&]
                              {
                                  file->ReadAllText(text);
                                  file->WriteText("more");
                                  file->set_size(file->GetSize());
                                  file->SeekFromBegin(0);
                                  file->Close();
                              }));
    EXPECT_EQ("", m_failure);
}
