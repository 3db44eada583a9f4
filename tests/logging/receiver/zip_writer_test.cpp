#include "nelvo/logging/receiver/zip_writer.h"

#include <csignal>
#include <cstring>
#include <sys/mman.h>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/logging/log.h"
#include "tests/support/file_mask.h"
#include "tests/support/file_status.h"
#include "tests/support/gz.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/resource_limit.h"
#include "tests/support/temp_folder.h"

namespace
{

constexpr std::size_t kMebibyte = 1'048'576;

class ZipWriter : public ::testing::Test
{
protected:
    void SetUp() override { logging::GetProcessLog()->set_receiver(m_reported); }
    void TearDown() override { logging::GetProcessLog()->set_receiver({}); }

    static void ArchiveNothing(const std::string& name, int level = 9)
    {
        const util::zip_writer_t writer(name, level);
    }

    static void Add(util::zip_writer_t& writer, const std::string& bytes)
    {
        writer.write(bytes.data(), static_cast<unsigned>(bytes.size()));
    }

    std::string OpenFailure(const std::string& name)
    {
        try
        {
            ArchiveNothing(name);
        }
        catch (const posix::errno_exc_t& e)
        {
            return e.what();
        }
        return "no failure";
    }

    std::string Reported() const { return WithoutHeads(m_reported->text()); }

    temp_folder_t m_folder;
    const std::string m_name = m_folder / "a.gz";
    boost::shared_ptr<lines_receiver_t> m_reported = boost::make_shared<lines_receiver_t>();
};

// No file can be made larger than this.
class file_size_limit_t
{
public:
    explicit file_size_limit_t(rlim_t most)
        : m_handler(std::signal(SIGXFSZ, SIG_IGN)), m_limit(RLIMIT_FSIZE, most)
    {
    }
    ~file_size_limit_t() { std::signal(SIGXFSZ, m_handler); }
    file_size_limit_t(const file_size_limit_t&) = delete;
    file_size_limit_t& operator=(const file_size_limit_t&) = delete;

private:
    void (*m_handler)(int);
    resource_limit_t m_limit;
};

} // namespace

TEST_F(ZipWriter, GzipReadsWhatWasWritten)
{
    const std::string noise = Noise(3 * kMebibyte + 1);
    {
        util::zip_writer_t writer(m_name, 9);
        Add(writer, "first");
        Add(writer, "");
        Add(writer, std::string("\0\n\xff", 3));
        Add(writer, noise);
    }
    EXPECT_EQ("first" + std::string("\0\n\xff", 3) + noise, Unpack(m_name));
    EXPECT_EQ("", Reported());
}

TEST_F(ZipWriter, HoldsTheNameAndTheArchive)
{
    EXPECT_EQ(sizeof(std::string) + sizeof(void*), sizeof(util::zip_writer_t));
}

TEST_F(ZipWriter, ArchiveOfNothingIsWhole)
{
    ArchiveNothing(m_name);
    EXPECT_EQ("", Unpack(m_name));
}

// The byte in front of the last tells the level: 2 for the best, 4 for the fastest.
TEST_F(ZipWriter, HeaderTellsTheLevel)
{
    ArchiveNothing(m_name);
    EXPECT_EQ(std::string("\x1f\x8b\x08\0\0\0\0\0\x02\x03", 10), ReadFile(m_name).substr(0, 10));
    ArchiveNothing(m_name, 1);
    EXPECT_EQ(std::string("\x1f\x8b\x08\0\0\0\0\0\x04\x03", 10), ReadFile(m_name).substr(0, 10));
    ArchiveNothing(m_name, 6);
    EXPECT_EQ(std::string("\x1f\x8b\x08\0\0\0\0\0\0\x03", 10), ReadFile(m_name).substr(0, 10));
}

TEST_F(ZipWriter, LevelZeroOnlyPacksUp)
{
    {
        util::zip_writer_t writer(m_name, 0);
        Add(writer, std::string(kMebibyte, 'a'));
    }
    EXPECT_LT(kMebibyte, ReadFile(m_name).size());
    EXPECT_EQ(std::string(kMebibyte, 'a'), Unpack(m_name));
}

TEST_F(ZipWriter, EmptiesAFileThatIsThere)
{
    WriteFile(m_name, std::string(kMebibyte, 'x'));
    {
        util::zip_writer_t writer(m_name, 9);
        Add(writer, "text");
    }
    EXPECT_EQ("text", Unpack(m_name));
}

TEST_F(ZipWriter, ModeIsThatOfANewFile)
{
    const file_mask_t narrow(027);
    ArchiveNothing(m_name);
    EXPECT_EQ(0640u, ModeOf(m_name));
}

TEST_F(ZipWriter, FailureToOpenNamesTheArchive)
{
    const std::string missing = m_folder / "no/a.gz";
    EXPECT_EQ("No such file or directory\nFailed to open GZ archive [" + missing + "].",
              OpenFailure(missing));
    EXPECT_EQ("Is a directory\nFailed to open GZ archive [" + m_folder.path() + "].",
              OpenFailure(m_folder.path()));
    EXPECT_EQ("No such file or directory\nFailed to open GZ archive [].", OpenFailure(""));
    EXPECT_EQ("No such file or directory\nFailed to open GZ archive [no/%1 %%].", OpenFailure("no/%1 %%"));
    EXPECT_EQ("", Reported());
}

TEST_F(ZipWriter, SystemFailureToAddNamesTheArchive)
{
    const std::string noise = Noise(kMebibyte);
    {
        util::zip_writer_t writer("/dev/full", 9);
        try
        {
            Add(writer, noise);
            ADD_FAILURE() << "taken";
        }
        catch (const posix::errno_exc_t& e)
        {
            EXPECT_STREQ("No space left on device\nCannot add data to the GZ archive [/dev/full].", e.what());
        }
    }
    EXPECT_EQ("       | ERR |Cannot close GZ archive [/dev/full].\n"
              "       | ERR |Error code: -1\n",
              Reported());
}

TEST_F(ZipWriter, NothingIsAddedBehindASystemFailureWithoutAnother)
{
    util::zip_writer_t writer("/dev/full", 9);
    EXPECT_THROW(Add(writer, Noise(kMebibyte)), posix::errno_exc_t);
    EXPECT_THROW(Add(writer, "more"), posix::errno_exc_t);
    EXPECT_THROW(Add(writer, ""), posix::errno_exc_t);
}

// The disk is full for a moment only, and the data's memory is gone by the time the archive is closed.
TEST_F(ZipWriter, DataThatFailedIsNotReadAgain)
{
    const std::string noise = Noise(kMebibyte);
    void* const pages =
        ::mmap(nullptr, kMebibyte, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(MAP_FAILED, pages);
    std::memcpy(pages, noise.data(), kMebibyte);
    {
        util::zip_writer_t writer(m_name, 9);
        const file_size_limit_t full(0);
        EXPECT_THROW(writer.write(pages, kMebibyte), posix::errno_exc_t);
        ASSERT_EQ(0, ::munmap(pages, kMebibyte));
    }
    EXPECT_EQ("", Reported());
}

// Two GiB at once are refused before a byte of them is read. From then on the archive takes nothing more.
TEST_F(ZipWriter, RefusalWithoutSystemErrorLosesTheData)
{
    const char byte = 'x';
    {
        util::zip_writer_t writer(m_name, 9);
        Add(writer, "before");
        EXPECT_NO_THROW(writer.write(&byte, 0x80000000u));
        EXPECT_NO_THROW(writer.write(&byte, 0xffffffffu));
        EXPECT_NO_THROW(Add(writer, "after"));
    }
    EXPECT_EQ("before", Unpack(m_name));
    EXPECT_EQ("", Reported());
}

TEST_F(ZipWriter, LittleDataFailsOnlyAtTheEnd)
{
    {
        util::zip_writer_t writer("/dev/full", 9);
        EXPECT_NO_THROW(Add(writer, "a"));
        EXPECT_NO_THROW(Add(writer, std::string(kMebibyte, 'a')));
        EXPECT_EQ("", Reported());
    }
    EXPECT_EQ(2u, m_reported->messages().size());
    EXPECT_EQ("       | ERR |Cannot close GZ archive [/dev/full].\n"
              "       | ERR |Error code: -1\n",
              Reported());
}

TEST_F(ZipWriter, NothingLeavesTheDestructor)
{
    m_reported->set_hook([] { throw exc::runtime_exc_t("no log either"); });
    EXPECT_NO_THROW(ArchiveNothing("/dev/full"));
    EXPECT_EQ("", Reported());
}
