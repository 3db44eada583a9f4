#include "nelvo/fs/posix_file_security.h"

#include <cerrno>

#include <gtest/gtest.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "tests/fs/system_script.h"
#include "tests/support/failing_memory.h"
#include "tests/support/thrown.h"

using posix::posix_file_security;

namespace
{

[[maybe_unused]] const bool g_errno_changes = ChangeErrnoWithMemory();

class PosixFileSecurityCalls : public testing::Test
{
protected:
    PosixFileSecurityCalls()
    {
        m_security.uid = 7;
        m_security.gid = 8;
        m_security.mode = 04755;
    }

    static struct stat64 Status(uid_t uid, gid_t gid, mode_t mode)
    {
        struct stat64 status = {};
        status.st_uid = uid;
        status.st_gid = gid;
        status.st_mode = mode;
        return status;
    }

    system_script_t m_system;
    posix_file_security m_security;
};

} // namespace

TEST_F(PosixFileSecurityCalls, EachFieldIsAskedForByAStatOfItsOwn)
{
    m_system.Find(Status(0xFFFFFFFE, 1, 1));
    m_system.FindNext(Status(2, 0xFFFFFFFD, 2));
    m_system.FindNext(Status(3, 3, S_IFREG | 07777));
    posix::posix_file_security_ptr_t security;
    EXPECT_EQ("stat64(x); stat64(x); stat64(x); ",
              m_system.Calls([&] { security = posix_file_security::ReadFromFile("x"); }));
    EXPECT_EQ(0xFFFFFFFEu, security->uid);
    EXPECT_EQ(0xFFFFFFFDu, security->gid);
    EXPECT_EQ(07777u, security->mode);
}

TEST_F(PosixFileSecurityCalls, FirstFailureEndsTheReading)
{
    m_system.Fail("stat64", EACCES);
    EXPECT_EQ("stat64(x); ", m_system.Calls([] { posix_file_security::ReadFromFile("x"); }));
    EXPECT_EQ("Permission denied\nstat64(x) has failed.\nposix_file_security failed to get file security, "
              "path: x",
              Thrown<posix::errno_exc_t>([] { posix_file_security::ReadFromFile("x"); }));
}

TEST_F(PosixFileSecurityCalls, PermissionsAreAppliedBeforeTheOwner)
{
    EXPECT_EQ("chmod(x, 04755); lchown(x, 7, 8); ", m_system.Calls([&] { m_security.ApplyToFile("x"); }));
}

TEST_F(PosixFileSecurityCalls, OwnerIsNotTriedBehindAFailure)
{
    m_system.Fail("chmod", EPERM);
    EXPECT_EQ("chmod(x, 04755); ", m_system.Calls([&] { m_security.ApplyToFile("x"); }));
    EXPECT_EQ("Operation not permitted\nchmod(x) has failed.\nposix_file_security failed to apply security "
              "for file: x.",
              Thrown<posix::errno_exc_t>([&] { m_security.ApplyToFile("x"); }));
}

TEST_F(PosixFileSecurityCalls, FailureToGiveTheOwnerIsOneToo)
{
    m_system.Fail("lchown", EPERM);
    EXPECT_EQ("Operation not permitted\nchown(x) has failed.\nposix_file_security failed to apply security "
              "for file: x.",
              Thrown<posix::errno_exc_t>([&] { m_security.ApplyToFile("x"); }));
}

TEST_F(PosixFileSecurityCalls, PathEndsAtItsFirstZeroByte)
{
    const std::string path("x\0y", 3);
    EXPECT_EQ("stat64(x); stat64(x); stat64(x); ",
              m_system.Calls([&] { posix_file_security::ReadFromFile(path); }));
    EXPECT_EQ("chmod(x, 04755); lchown(x, 7, 8); ", m_system.Calls([&] { m_security.ApplyToFile(path); }));
}

TEST_F(PosixFileSecurityCalls, WithoutMemoryNothingIsStored)
{
    cnt::plain_array_t buffer(3);
    const cnt::plain_array_t before = buffer;
    FailNextAllocation();
    EXPECT_EQ("std::bad_alloc\nposix_file_security failed to serialize.",
              Thrown<exc::runtime_exc_t>([&] { m_security.Serialize(buffer); }));
    EXPECT_TRUE(HasAllocationFailed());
    EXPECT_TRUE(before == buffer);
}

TEST_F(PosixFileSecurityCalls, WithoutMemoryNothingIsRead)
{
    cnt::plain_array_t buffer;
    m_security.Serialize(buffer);
    FailNextAllocation();
    EXPECT_EQ("std::bad_alloc\nposix_file_security failed to deserialize.",
              Thrown<exc::runtime_exc_t>([&] { posix_file_security::Deserialize(buffer); }));
    EXPECT_TRUE(HasAllocationFailed());
}
