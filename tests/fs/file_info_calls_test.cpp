#include "nelvo/fs/file_info.h"

#include <cerrno>

#include <gtest/gtest.h>

#include "nelvo/core/exc/errno_exc.h"
#include "tests/fs/system_script.h"
#include "tests/support/thrown.h"

using util::FileInfo;

namespace
{

class FileInfoCalls : public testing::Test
{
protected:
    FileInfoCalls()
    {
        m_status.st_mode = S_IFREG | 0640;
        m_status.st_nlink = 3;
        m_status.st_uid = 0xFFFFFFFE;
        m_status.st_gid = 0xFFFFFFFD;
        m_status.st_size = 0x7FFFFFFFFFFFFFFF;
        m_status.st_atim = {0x7FFFFFFFFFFFFFFF, 999999999};
        m_status.st_mtim = {-1, 999999999};
        m_status.st_ctim = {5, 999999999};
    }

    FileInfo Read()
    {
        m_system.Find(m_status);
        return util::ReadFileInfo("x");
    }

    std::optional<std::uint32_t> TypeRead(mode_t mode)
    {
        m_status.st_mode = mode;
        return Read().type;
    }

    system_script_t m_system;
    struct stat64 m_status = {};
};

} // namespace

TEST_F(FileInfoCalls, OneLstatTellsAll)
{
    EXPECT_EQ("lstat64(x); ", m_system.Calls([&] { Read(); }));
}

TEST_F(FileInfoCalls, ValuesAreTheSystemsInFullWidth)
{
    const FileInfo info = Read();
    EXPECT_EQ(3u, info.link_count);
    EXPECT_EQ(0x7FFFFFFFFFFFFFFFu, info.size);
    EXPECT_EQ(0xFFFFFFFEu, info.meta.uid);
    EXPECT_EQ(0xFFFFFFFDu, info.meta.gid);
    EXPECT_EQ(0x7FFFFFFFFFFFFFFF, info.meta.accessed.GetSeconds());
    EXPECT_EQ(-1, info.meta.modified.GetSeconds());
    EXPECT_EQ(5, info.meta.changed.GetSeconds());
    EXPECT_EQ(640u, info.meta.mode);
}

TEST_F(FileInfoCalls, EachKindOfObjectHasItsType)
{
    EXPECT_EQ(0u, TypeRead(0100000));
    EXPECT_EQ(1u, TypeRead(0040000));
    EXPECT_EQ(2u, TypeRead(0120000));
    for (const mode_t other : {0010000u, 0020000u, 0060000u, 0140000u, 0u})
        EXPECT_EQ(4u, TypeRead(other)) << other;
}

TEST_F(FileInfoCalls, LinkHasNoModeWhateverItsBits)
{
    m_status.st_mode = S_IFLNK | 0777;
    EXPECT_EQ(std::nullopt, Read().meta.mode);
    m_status.st_mode = S_IFSOCK | 0777;
    EXPECT_EQ(777u, Read().meta.mode);
}

TEST_F(FileInfoCalls, FailureIsToldWithItsErrno)
{
    m_system.Fail("lstat64", EACCES);
    EXPECT_EQ("Permission denied\nlstat failed.", Thrown<posix::errno_exc_t>([&] { Read(); }));
}

TEST_F(FileInfoCalls, ExistenceIsAskedForFirst)
{
    m_system.Find(m_status);
    EXPECT_EQ("lstat64(x); lstat64(x); ", m_system.Calls([] { util::GetFileInfo("x", false); }));
    m_system.Fail("lstat64", ENOENT);
    EXPECT_EQ("lstat64(x); ", m_system.Calls([] { util::GetFileInfo("x", true); }));
    m_system.Fail("lstat64", EACCES);
    EXPECT_EQ("Permission denied\nCPathUtils: Failed to check whether [x] exists.\nCan't get info for file "
              "[x].",
              Thrown<posix::errno_exc_t>([] { util::GetFileInfo("x", true); }));
}

TEST_F(FileInfoCalls, MetadataIsGivenInThreeSteps)
{
    const FileInfo info = Read();
    EXPECT_EQ("lutimes(x, 9223372036854775807.0, -1.0); lchown(x, 4294967294, 4294967293); chmod(x, 0640); ",
              m_system.Calls([&] { util::ApplyFileInfo(info, "x"); }));
}

TEST_F(FileInfoCalls, LinksMetadataIsGivenInTwo)
{
    m_status.st_mode = S_IFLNK | 0777;
    const FileInfo info = Read();
    EXPECT_EQ("lutimes(x, 9223372036854775807.0, -1.0); lchown(x, 4294967294, 4294967293); ",
              m_system.Calls([&] { util::ApplyFileInfo(info, "x"); }));
}

TEST_F(FileInfoCalls, OwnerNeedsUserAndGroup)
{
    FileInfo info = Read();
    info.meta.accessed = datetime::CDateTime(6, true);
    info.meta.uid.reset();
    EXPECT_EQ("lutimes(x, 6.0, -1.0); chmod(x, 0640); ",
              m_system.Calls([&] { util::ApplyFileInfo(info, "x"); }));
    info.meta.uid = 7;
    info.meta.gid.reset();
    EXPECT_EQ("lutimes(x, 6.0, -1.0); chmod(x, 0640); ",
              m_system.Calls([&] { util::ApplyFileInfo(info, "x"); }));
}

TEST_F(FileInfoCalls, EmptyRecordGivesEmptyDatesAlone)
{
    EXPECT_EQ("lutimes(x, 0.0, 0.0); ", m_system.Calls([] { util::ApplyFileInfo(FileInfo(), "x"); }));
}

TEST_F(FileInfoCalls, EachFailureHasItsTextWithoutContext)
{
    const FileInfo info = Read();
    const auto failure = [&](const std::string& call)
    {
        m_system.Fail(call, EPERM);
        return Thrown<posix::errno_exc_t>([&] { util::ApplyFileInfo(info, "x"); });
    };
    EXPECT_EQ("Operation not permitted\nFailed to set permissions.", failure("chmod"));
    EXPECT_EQ("Operation not permitted\nFailed to set owner and group.", failure("lchown"));
    EXPECT_EQ("Operation not permitted\nFailed to set file access time.", failure("lutimes"));
}
