#include "nelvo/fs/file_meta.h"

#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/fs/file_info.h"
#include "tests/fs/record_checks.h"
#include "tests/support/file_status.h"
#include "tests/support/golden.h"
#include "tests/support/temp_folder.h"
#include "tests/support/thrown.h"

using datetime::CDateTime;
using util::FileMeta;

namespace
{

constexpr char kEmpty[] = "00 00 00 00 "
                          "01 00 00 00 00 00 00 00 00 00 00 00 "
                          "01 00 00 00 00 00 00 00 00 00 00 00 "
                          "01 00 00 00 00 00 00 00 00 00 00 00 "
                          "00 00 00 00 00 00 00 00 00 00 00 00 "
                          "61 63 6c 64 00 00 00 00 00 00 00 00";

// The record of tests/data.
FileMeta Full()
{
    FileMeta meta;
    meta.attributes = CFileAttributes(0x81020304);
    meta.changed = CDateTime(86403, true);
    meta.modified = CDateTime(0x100000002, false);
    meta.accessed = CDateTime(-1, true);
    meta.uid = 1000;
    meta.gid = 0x700000064;
    meta.mode = 644;
    meta.acl = {"u:", "d"};
    return meta;
}

std::string Stored(const FileMeta& meta)
{
    return Written([&](io::io_dev_t& stream) { util::SerializeFileMeta(meta, stream); });
}

FileMeta Read(const std::string& bytes)
{
    record_stream_t stream(bytes);
    FileMeta meta = Full();
    util::DeserializeFileMeta(meta, stream);
    EXPECT_EQ(0u, stream.GetRemaining());
    return meta;
}

void ReadOne(io::io_dev_t& stream)
{
    FileMeta meta;
    util::DeserializeFileMeta(meta, stream);
}

void ReadNew(io::io_dev_t& stream) { const FileMeta meta(stream); }

void WriteFull(io::io_dev_t& stream) { util::SerializeFileMeta(Full(), stream); }

FileMeta WithDates(std::int64_t changed, std::int64_t modified, std::int64_t accessed)
{
    FileMeta meta;
    meta.changed = CDateTime(changed, true);
    meta.modified = CDateTime(modified, true);
    meta.accessed = CDateTime(accessed, true);
    return meta;
}

// A file, and links to it and to nothing.
class FileMetaApplied : public testing::Test
{
protected:
    FileMetaApplied()
    {
        WriteFile(m_file, "text");
        EXPECT_EQ(0, ::chmod(m_file.c_str(), 0640));
        EXPECT_EQ(0, ::symlink("file", m_link.c_str()));
        EXPECT_EQ(0, ::symlink("none", m_dangling.c_str()));
    }

    temp_folder_t m_folder;
    const std::string m_file = m_folder / "file";
    const std::string m_link = m_folder / "link";
    const std::string m_dangling = m_folder / "dangling";
};

} // namespace

// The stored form

TEST(FileMeta, StoredFormIsItsFieldsInTheirOrder)
{
    EXPECT_EQ(Hex(Golden("file_meta")), Hex(Stored(Full())));
}

TEST(FileMeta, IsReadAsItWasWritten)
{
    const FileMeta meta = Read(Golden("file_meta"));
    EXPECT_EQ(0x81020304u, meta.attributes.value().GetAttributes());
    EXPECT_EQ(86403, meta.changed.GetSeconds());
    EXPECT_TRUE(meta.changed.IsUtc());
    EXPECT_EQ(0x100000002, meta.modified.GetSeconds());
    EXPECT_FALSE(meta.modified.IsUtc());
    EXPECT_EQ(-1, meta.accessed.GetSeconds());
    EXPECT_TRUE(meta.accessed.IsUtc());
    EXPECT_EQ(1000u, meta.uid);
    EXPECT_EQ(0x700000064u, meta.gid);
    EXPECT_EQ(644u, meta.mode);
    EXPECT_EQ("u:", meta.acl.access_acl);
    EXPECT_EQ("d", meta.acl.default_acl);
}

TEST(FileMeta, NewRecordHasNothing)
{
    EXPECT_EQ(kEmpty, Hex(Stored({})));
    const FileMeta meta = Read(Unhex(kEmpty));
    EXPECT_FALSE(meta.attributes.has_value() || meta.uid.has_value() || meta.gid.has_value() ||
                 meta.mode.has_value());
    EXPECT_FALSE(meta.acl.access_acl.has_value() || meta.acl.default_acl.has_value());
    EXPECT_EQ(0, meta.changed.GetSeconds() | meta.modified.GetSeconds() | meta.accessed.GetSeconds());
}

TEST(FileMeta, ZeroIsNotAbsent)
{
    FileMeta meta;
    meta.attributes = CFileAttributes();
    meta.uid = 0;
    meta.gid = 0;
    meta.mode = 0;
    const FileMeta back = Read(Stored(meta));
    EXPECT_EQ(0u, back.attributes.value().GetAttributes());
    EXPECT_EQ(0u, back.uid);
    EXPECT_EQ(0u, back.gid);
    EXPECT_EQ(0u, back.mode);
    EXPECT_EQ(88u, Stored(meta).size());
}

TEST(FileMeta, AnyFlagButZeroMeansPresent)
{
    std::string bytes = Golden("file_meta");
    bytes[1] = bytes[2] = bytes[3] = '\x80';
    bytes[0] = 0;
    EXPECT_EQ(Hex(Golden("file_meta")), Hex(Stored(Read(bytes))));
}

TEST(FileMeta, IsMadeFromAStreamToo)
{
    record_stream_t stream(Golden("file_meta") + "x");
    EXPECT_EQ(Hex(Golden("file_meta")), Hex(Stored(FileMeta(stream))));
    EXPECT_EQ(1u, stream.GetRemaining());
}

TEST(FileMeta, ShortTransferHasItsContext)
{
    ExpectEachPrefixToFail("file_meta", MetaFields(), ReadOne);
    ExpectEachPrefixToFail("file_meta", MetaFields(), ReadNew);
    ExpectEachFullDeviceToFail("file_meta", MetaFields(), WriteFull);
}

TEST(FileMeta, WrongLengthsFail) { ExpectWrongLengthsToFail("file_meta", MetaFields(), ReadOne); }

TEST(FileMeta, BrokenFormIsReadOrRefused) { ExpectEachBitFlipToBeReadOrRefused("file_meta", ReadOne); }

TEST(FileMeta, WrongMagicOfItsAclHasBothContexts)
{
    std::string bytes = Golden("file_meta");
    bytes[bytes.find("acld")] = 'A';
    record_stream_t stream(bytes);
    EXPECT_EQ("Invalid ACL data.\nFailed to unserialize ACL data into stream.\nFailed to deserialize file "
              "metadata.",
              Thrown<exc::runtime_exc_t>([&] { ReadOne(stream); }));
}

TEST(FileMeta, FailedReadLeavesTheFieldsThatCame)
{
    ExpectFailedReadsToLeave("file_meta", MetaFields(),
                             [](const std::string& before, io::io_dev_t& stream)
                             {
                                 record_stream_t old(before);
                                 FileMeta meta(old);
                                 EXPECT_ANY_THROW(util::DeserializeFileMeta(meta, stream));
                                 return Stored(meta);
                             });
}

// Validity

TEST(FileMeta, IsValidWithoutAnEmptyDate)
{
    EXPECT_TRUE(util::IsValid(WithDates(1, 1, 1)));
    EXPECT_TRUE(util::IsValid(WithDates(-1, -1, -1)));
    EXPECT_FALSE(util::IsValid(WithDates(0, 1, 1)));
    EXPECT_FALSE(util::IsValid(WithDates(1, 0, 1)));
    EXPECT_FALSE(util::IsValid(WithDates(1, 1, 0)));
    EXPECT_FALSE(util::IsValid(FileMeta()));
}

// Files

TEST_F(FileMetaApplied, GivesTimesAndPermissions)
{
    FileMeta meta = WithDates(1, 1000, 2000);
    meta.mode = 4751;
    util::ApplyFileMeta(meta, m_file);
    const struct stat info = StatusOf(m_file);
    EXPECT_EQ(1000, info.st_mtim.tv_sec);
    EXPECT_EQ(0, info.st_mtim.tv_nsec);
    EXPECT_EQ(2000, info.st_atim.tv_sec);
    EXPECT_EQ(0, info.st_atim.tv_nsec);
    EXPECT_EQ(04751u, info.st_mode & 07777);
}

TEST_F(FileMetaApplied, LocalDatesAreTakenAsTheyStand)
{
    FileMeta meta = WithDates(1, 0, 0);
    meta.modified = CDateTime(1000, false);
    meta.accessed = CDateTime(2000, false);
    util::ApplyFileMeta(meta, m_file);
    EXPECT_EQ(1000, StatusOf(m_file).st_mtim.tv_sec);
    EXPECT_EQ(2000, StatusOf(m_file).st_atim.tv_sec);
}

TEST_F(FileMetaApplied, KeepsTheSetUserIdBitOfAProgram)
{
    FileMeta meta = WithDates(1, 1, 1);
    meta.uid = ::geteuid();
    meta.gid = ::getegid();
    meta.mode = 4755;
    util::ApplyFileMeta(meta, m_file);
    EXPECT_EQ(04755u, ModeOf(m_file));
}

TEST_F(FileMetaApplied, WithoutModeLeavesThePermissions)
{
    util::ApplyFileMeta(WithDates(1, 1, 1), m_file);
    EXPECT_EQ(0640u, ModeOf(m_file));
}

TEST_F(FileMetaApplied, UnlessItIsValidNothingIsDone)
{
    FileMeta meta = WithDates(0, 1000, 2000);
    meta.mode = 777;
    EXPECT_EQ("FileMeta is not valid.\nCan't apply meta for file [" + m_file + "].",
              Thrown<exc::runtime_exc_t>([&] { util::ApplyFileMeta(meta, m_file); }));
    EXPECT_NE(1000, StatusOf(m_file).st_mtim.tv_sec);
    EXPECT_EQ(0640u, ModeOf(m_file));
}

TEST_F(FileMetaApplied, TimesOfAFileFromTheFirstSecondOf1970AreRefused)
{
    const timeval times[] = {{2000, 0}, {0, 0}};
    ASSERT_EQ(0, ::utimes(m_file.c_str(), times));
    const util::FileMeta meta = util::ReadFileInfo(m_file).meta;
    EXPECT_FALSE(util::IsValid(meta));
    EXPECT_EQ("FileMeta is not valid.\nCan't apply meta for file [" + m_file + "].",
              Thrown<exc::runtime_exc_t>([&] { util::ApplyFileMeta(meta, m_file); }));
}

TEST_F(FileMetaApplied, FailureHasTheContextOnlyIfChecked)
{
    const FileMeta meta = WithDates(1, 1, 1);
    const std::string path = m_folder / "none";
    const std::string cause = "No such file or directory\nFailed to set file access time.";
    EXPECT_EQ(cause + "\nCan't apply meta for file [" + path + "].",
              Thrown<posix::errno_exc_t>([&] { util::ApplyFileMeta(meta, path); }));
    EXPECT_EQ(cause, Thrown<posix::errno_exc_t>([&] { util::ApplyFileMetaUnchecked(meta, path); }));
}

TEST_F(FileMetaApplied, UncheckedTakesEmptyDates)
{
    util::ApplyFileMetaUnchecked(FileMeta(), m_file);
    EXPECT_EQ(0, StatusOf(m_file).st_mtim.tv_sec);
    EXPECT_EQ(0, StatusOf(m_file).st_atim.tv_sec);
}

// Another owner than one's own takes root; everybody else gives the own.
TEST_F(FileMetaApplied, GivesPermissionsToTheTargetAndAllElseToTheLink)
{
    const bool is_root = ::geteuid() == 0;
    FileMeta meta = WithDates(1, 1000, 2000);
    meta.uid = is_root ? 1234 : ::geteuid();
    meta.gid = is_root ? 5678 : ::getegid();
    meta.mode = 604;
    const struct stat before = StatusOf(m_file);
    util::ApplyFileMeta(meta, m_link);
    const struct stat link = LinkStatusOf(m_link);
    EXPECT_EQ(1000, link.st_mtim.tv_sec);
    EXPECT_EQ(meta.uid, link.st_uid);
    EXPECT_EQ(meta.gid, link.st_gid);
    const struct stat file = StatusOf(m_file);
    EXPECT_EQ(0604u, file.st_mode & 07777);
    EXPECT_EQ(before.st_mtim.tv_sec, file.st_mtim.tv_sec);
    EXPECT_EQ(before.st_uid, file.st_uid);
}

TEST_F(FileMetaApplied, LinkNeedNotLeadAnywhereWithoutAMode)
{
    util::ApplyFileMeta(WithDates(1, 1000, 2000), m_dangling);
    EXPECT_EQ(1000, LinkStatusOf(m_dangling).st_mtim.tv_sec);
    EXPECT_EQ(2000, LinkStatusOf(m_dangling).st_atim.tv_sec);
}

TEST_F(FileMetaApplied, ModeForADanglingLinkIsAFailureWithTheTimesGiven)
{
    FileMeta meta = WithDates(1, 1000, 2000);
    meta.mode = 600;
    EXPECT_EQ("No such file or directory\nFailed to set permissions.\nCan't apply meta for file [" +
                  m_dangling + "].",
              Thrown<posix::errno_exc_t>([&] { util::ApplyFileMeta(meta, m_dangling); }));
    EXPECT_EQ(1000, LinkStatusOf(m_dangling).st_mtim.tv_sec);
}
