#include "nelvo/fs/file_meta.h"

#include <cerrno>

#include <gtest/gtest.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "tests/fs/system_script.h"
#include "tests/support/thrown.h"

using datetime::CDateTime;
using util::FileMeta;

namespace
{

class FileMetaCalls : public testing::Test
{
protected:
    FileMetaCalls()
    {
        m_meta.changed = CDateTime(1, true);
        m_meta.modified = CDateTime(2, true);
        m_meta.accessed = CDateTime(-3, true);
        m_meta.uid = 7;
        m_meta.gid = 8;
        m_meta.mode = 755;
    }

    std::string Calls(const std::string& path = "x") const
    {
        return m_system.Calls([&] { util::ApplyFileMeta(m_meta, path); });
    }

    std::string Failure(const std::string& call)
    {
        m_system.Fail(call, EPERM);
        return Thrown<posix::errno_exc_t>([&] { util::ApplyFileMeta(m_meta, "x"); });
    }

    system_script_t m_system;
    FileMeta m_meta;
};

} // namespace

TEST_F(FileMetaCalls, TimesComeFirstThenTheOwnerThenThePermissions)
{
    EXPECT_EQ("lutimes(x, -3.0, 2.0); lchown(x, 7, 8); chmod(x, 0755); ", Calls());
    EXPECT_EQ("lutimes(x, -3.0, 2.0); lchown(x, 7, 8); chmod(x, 0755); ",
              m_system.Calls([&] { util::ApplyFileMetaUnchecked(m_meta, "x"); }));
}

TEST_F(FileMetaCalls, OwnerNeedsUserAndGroup)
{
    m_meta.uid.reset();
    EXPECT_EQ("lutimes(x, -3.0, 2.0); chmod(x, 0755); ", Calls());
    m_meta.gid.reset();
    EXPECT_EQ("lutimes(x, -3.0, 2.0); chmod(x, 0755); ", Calls());
    m_meta.uid = 7;
    EXPECT_EQ("lutimes(x, -3.0, 2.0); chmod(x, 0755); ", Calls());
}

TEST_F(FileMetaCalls, ModeOfZeroIsAMode)
{
    m_meta.mode = 0;
    EXPECT_EQ("lutimes(x, -3.0, 2.0); lchown(x, 7, 8); chmod(x, 00); ", Calls());
    m_meta.mode.reset();
    EXPECT_EQ("lutimes(x, -3.0, 2.0); lchown(x, 7, 8); ", Calls());
}

TEST_F(FileMetaCalls, ModesDigitsAreOctal)
{
    m_meta.mode = 7777;
    EXPECT_EQ("lutimes(x, -3.0, 2.0); lchown(x, 7, 8); chmod(x, 07777); ", Calls());
    m_meta.mode = 789;
    EXPECT_EQ("lutimes(x, -3.0, 2.0); lchown(x, 7, 8); chmod(x, 01011); ", Calls());
}

TEST_F(FileMetaCalls, EachFailureEndsTheSteps)
{
    m_system.Fail("chmod", EPERM);
    EXPECT_EQ("lutimes(x, -3.0, 2.0); lchown(x, 7, 8); chmod(x, 0755); ", Calls());
    m_system.Fail("lchown", EPERM);
    EXPECT_EQ("lutimes(x, -3.0, 2.0); lchown(x, 7, 8); ", Calls());
    m_system.Fail("lutimes", EPERM);
    EXPECT_EQ("lutimes(x, -3.0, 2.0); ", Calls());
}

TEST_F(FileMetaCalls, EachFailureHasItsText)
{
    const std::string context = "\nCan't apply meta for file [x].";
    EXPECT_EQ("Operation not permitted\nFailed to set permissions." + context, Failure("chmod"));
    EXPECT_EQ("Operation not permitted\nFailed to set owner and group." + context, Failure("lchown"));
    EXPECT_EQ("Operation not permitted\nFailed to set file access time." + context, Failure("lutimes"));
}

TEST_F(FileMetaCalls, OwnersTheSystemHasNoRoomForAreRefused)
{
    m_meta.uid = 0x100000000;
    EXPECT_EQ("lutimes(x, -3.0, 2.0); ", Calls());
    EXPECT_EQ("Unable to cast value from [m] to [j].\nCan't apply meta for file [x].",
              Thrown<exc::runtime_exc_t>([&] { util::ApplyFileMeta(m_meta, "x"); }));
    m_meta.uid = 0xFFFFFFFE;
    m_meta.gid = 0x100000000;
    EXPECT_EQ("lutimes(x, -3.0, 2.0); ", Calls());
    m_meta.gid = 0xFFFFFFFD;
    EXPECT_EQ("lutimes(x, -3.0, 2.0); lchown(x, 4294967294, 4294967293); chmod(x, 0755); ", Calls());
}

TEST_F(FileMetaCalls, UnlessItIsValidNothingIsAsked)
{
    m_meta.changed = CDateTime(0, true);
    EXPECT_EQ("", Calls());
}

TEST_F(FileMetaCalls, PathEndsAtItsFirstZeroByte)
{
    EXPECT_EQ("lutimes(x, -3.0, 2.0); lchown(x, 7, 8); chmod(x, 0755); ", Calls(std::string("x\0y", 3)));
}
