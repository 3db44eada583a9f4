#include "nelvo/fs/file_info.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "tests/fs/record_checks.h"
#include "tests/support/file_status.h"
#include "tests/support/golden.h"
#include "tests/support/temp_folder.h"
#include "tests/support/thrown.h"

using datetime::CDateTime;
using util::FileInfo;

namespace
{

// The records of tests/data.

FileInfo Link()
{
    FileInfo info;
    info.type = 2;
    info.link_count = 1;
    info.name = "link";
    info.size = 4;
    info.meta.changed = CDateTime(86403, true);
    info.meta.modified = CDateTime(86402, true);
    info.meta.accessed = CDateTime(86401, true);
    info.meta.uid = 1000;
    info.meta.gid = 100;
    return info;
}

FileInfo Full()
{
    FileInfo info = Link();
    info.type = 0;
    info.link_count = 2;
    info.name = "a.dat";
    info.size = 0x100000001;
    info.meta.attributes = CFileAttributes(0x81020304);
    info.meta.mode = 644;
    info.meta.acl = {"u:", "d"};
    info.extra_data = {"x\0\xff", 3};
    return info;
}

// The same for whoever runs the test.
FileInfo OwnFull()
{
    FileInfo info = Full();
    info.meta.uid = ::geteuid();
    info.meta.gid = ::getegid();
    return info;
}

std::string Stored(const FileInfo& info)
{
    return Written([&](io::io_dev_t& stream) { util::SerializeFileInfo(info, stream); });
}

FileInfo Read(const std::string& bytes)
{
    record_stream_t stream(bytes);
    FileInfo info = Full();
    util::DeserializeFileInfo(info, stream);
    EXPECT_EQ(0u, stream.GetRemaining());
    return info;
}

void ReadOne(io::io_dev_t& stream)
{
    FileInfo info;
    util::DeserializeFileInfo(info, stream);
}

void ReadNew(io::io_dev_t& stream) { const FileInfo info(stream); }

void WriteFull(io::io_dev_t& stream) { util::SerializeFileInfo(Full(), stream); }

std::string BytesOf(const cnt::plain_array_t& bytes) { return {bytes.begin(), bytes.end()}; }

// A folder with one object of each kind, named after it.
class FileInfoOfAFile : public testing::Test
{
protected:
    FileInfoOfAFile()
    {
        WriteFile(Path("file"), "text");
        EXPECT_EQ(0, ::mkdir(Path("folder").c_str(), 0700));
        EXPECT_EQ(0, ::symlink("file", Path("link").c_str()));
        EXPECT_EQ(0, ::symlink("none", Path("dangling").c_str()));
        EXPECT_EQ(0, ::mkfifo(Path("fifo").c_str(), 0600));
    }

    std::string Path(const std::string& name) const { return m_folder / name; }

    static void SetTimes(const std::string& path, timespec accessed, timespec modified)
    {
        const timespec times[] = {accessed, modified};
        EXPECT_EQ(0, ::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW)) << path;
    }

    std::optional<std::uint32_t> ModeRead(mode_t mode) const
    {
        EXPECT_EQ(0, ::chmod(Path("file").c_str(), mode));
        return util::ReadFileInfo(Path("file")).meta.mode;
    }

    temp_folder_t m_folder;
};

} // namespace

// The stored form

TEST(FileInfo, StoredFormIsItsFieldsInTheirOrder)
{
    EXPECT_EQ(Hex(Golden("file_info")), Hex(Stored(Full())));
}

TEST(FileInfo, LinkIsStoredWithoutAMode)
{
    EXPECT_EQ(Hex(Golden("file_info_link")), Hex(Stored(Link())));
    const FileInfo info = Read(Golden("file_info_link"));
    EXPECT_FALSE(info.meta.mode.has_value() || info.meta.attributes.has_value());
    EXPECT_TRUE(info.extra_data.empty());
    EXPECT_EQ(Hex(Golden("file_info_link")), Hex(Stored(info)));
}

TEST(FileInfo, IsReadAsItWasWritten)
{
    const FileInfo info = Read(Golden("file_info"));
    EXPECT_EQ(util::kRegularFile, info.type);
    EXPECT_EQ(2u, info.link_count);
    EXPECT_EQ("a.dat", info.name);
    EXPECT_EQ(0x100000001u, info.size);
    EXPECT_EQ(86403, info.meta.changed.GetSeconds());
    EXPECT_EQ(86402, info.meta.modified.GetSeconds());
    EXPECT_EQ(86401, info.meta.accessed.GetSeconds());
    EXPECT_EQ(644u, info.meta.mode);
    EXPECT_EQ("u:", info.meta.acl.access_acl);
    EXPECT_EQ(std::string("x\0\xff", 3), BytesOf(info.extra_data));
}

TEST(FileInfo, NewRecordHasNothing)
{
    const FileInfo info;
    EXPECT_FALSE(info.type.has_value() || info.link_count.has_value() || info.name.has_value() ||
                 info.size.has_value());
    EXPECT_TRUE(info.extra_data.empty());
    EXPECT_EQ(84u, Stored(info).size());
    EXPECT_EQ(Hex(Stored(info)), Hex(Stored(Read(Stored(info)))));
}

TEST(FileInfo, EmptyNameIsNotAbsent)
{
    FileInfo info;
    info.name = "";
    EXPECT_EQ("00 00 00 00 00 00 00 00 01 00 00 00 00 00 00 00", Hex(Stored(info).substr(0, 16)));
    EXPECT_EQ("", Read(Stored(info)).name);
    EXPECT_EQ(std::nullopt, Read(Stored({})).name);
}

TEST(FileInfo, UnknownTypeIsCarried)
{
    FileInfo info;
    info.type = 0xFFFFFFFF;
    EXPECT_EQ(0xFFFFFFFFu, Read(Stored(info)).type);
}

TEST(FileInfo, IsMadeFromAStreamToo)
{
    record_stream_t stream(Golden("file_info") + "x");
    EXPECT_EQ(Hex(Golden("file_info")), Hex(Stored(FileInfo(stream))));
    EXPECT_EQ(1u, stream.GetRemaining());
}

TEST(FileInfo, WritingLeavesTheRecord)
{
    const FileInfo info = Full();
    EXPECT_EQ(Hex(Stored(info)), Hex(Stored(info)));
}

TEST(FileInfo, ShortTransferHasItsContext)
{
    ExpectEachPrefixToFail("file_info", InfoFields(), ReadOne);
    ExpectEachPrefixToFail("file_info", InfoFields(), ReadNew);
    ExpectEachFullDeviceToFail("file_info", InfoFields(), WriteFull);
}

TEST(FileInfo, WrongLengthsFail) { ExpectWrongLengthsToFail("file_info", InfoFields(), ReadOne); }

TEST(FileInfo, ExtraDataIsAsLongAsItsLengthSays)
{
    std::string bytes = Golden("file_info_link");
    EXPECT_EQ("", BytesOf(Read(bytes).extra_data));
    bytes[bytes.size() - 4] = 1;
    EXPECT_EQ("x", BytesOf(Read(bytes + "x").extra_data));
}

// Nobody touches the memory.
TEST(FileInfo, ExtraDataOf4GiBIsRefused)
{
    FileInfo info;
    info.extra_data = cnt::plain_array_t(4294967296);
    EXPECT_EQ("Unable to cast value from [m] to [j].\nFailed to serialize file info.",
              Thrown<exc::runtime_exc_t>([&] { Stored(info); }));
}

TEST(FileInfo, BrokenFormIsReadOrRefused) { ExpectEachBitFlipToBeReadOrRefused("file_info", ReadOne); }

TEST(FileInfo, BrokenFormOfALinkIsReadOrRefused)
{
    ExpectEachBitFlipToBeReadOrRefused("file_info_link", ReadOne);
}

TEST(FileInfo, FailedReadLeavesTheFieldsThatCame)
{
    ExpectFailedReadsToLeave("file_info", InfoFields(),
                             [](const std::string& before, io::io_dev_t& stream)
                             {
                                 record_stream_t old(before);
                                 FileInfo info(old);
                                 EXPECT_ANY_THROW(util::DeserializeFileInfo(info, stream));
                                 return Stored(info);
                             });
}

// What is read of a file

TEST_F(FileInfoOfAFile, HasItsSizeNameLinksAndOwner)
{
    ASSERT_EQ(0, ::link(Path("file").c_str(), Path("second").c_str()));
    const FileInfo info = util::ReadFileInfo(Path("file"));
    EXPECT_EQ("file", info.name);
    EXPECT_EQ(4u, info.size);
    EXPECT_EQ(2u, info.link_count);
    EXPECT_EQ(::geteuid(), info.meta.uid);
    EXPECT_EQ(StatusOf(Path("file")).st_gid, info.meta.gid);
}

TEST_F(FileInfoOfAFile, HasTheTypeOfWhatStandsThere)
{
    EXPECT_EQ(0u, util::ReadFileInfo(Path("file")).type);
    EXPECT_EQ(1u, util::ReadFileInfo(Path("folder")).type);
    EXPECT_EQ(2u, util::ReadFileInfo(Path("link")).type);
    EXPECT_EQ(2u, util::ReadFileInfo(Path("dangling")).type);
    EXPECT_EQ(4u, util::ReadFileInfo(Path("fifo")).type);
    EXPECT_EQ(4u, util::ReadFileInfo("/dev/null").type);
}

TEST_F(FileInfoOfAFile, DatesAreWholeSecondsInUtc)
{
    SetTimes(Path("file"), {1000, 999999999}, {-2000, 1});
    const util::FileMeta meta = util::ReadFileInfo(Path("file")).meta;
    EXPECT_EQ(1000, meta.accessed.GetSeconds());
    EXPECT_EQ(-2000, meta.modified.GetSeconds());
    EXPECT_EQ(StatusOf(Path("file")).st_ctim.tv_sec, meta.changed.GetSeconds());
    EXPECT_TRUE(meta.changed.IsUtc() && meta.modified.IsUtc() && meta.accessed.IsUtc());
}

TEST_F(FileInfoOfAFile, ModeIsItsOctalDigits)
{
    EXPECT_EQ(0u, ModeRead(0));
    EXPECT_EQ(644u, ModeRead(0644));
    EXPECT_EQ(7u, ModeRead(07));
    EXPECT_EQ(1755u, ModeRead(01755));
    EXPECT_EQ(7777u, ModeRead(07777));
}

TEST_F(FileInfoOfAFile, LinkIsToldOfItselfAndHasNoMode)
{
    SetTimes(Path("link"), {7, 0}, {8, 0});
    const FileInfo info = util::ReadFileInfo(Path("link"));
    EXPECT_EQ(std::nullopt, info.meta.mode);
    EXPECT_EQ(4u, info.size);
    EXPECT_EQ(8, info.meta.modified.GetSeconds());
    EXPECT_EQ(7, info.meta.accessed.GetSeconds());
    EXPECT_EQ(::geteuid(), info.meta.uid);
    EXPECT_TRUE(info.meta.gid.has_value());
    EXPECT_TRUE(util::ReadFileInfo(Path("fifo")).meta.mode.has_value());
}

TEST_F(FileInfoOfAFile, AttributesAclAndExtraDataAreNotRead)
{
    const FileInfo info = util::ReadFileInfo(Path("file"));
    EXPECT_FALSE(info.meta.attributes.has_value());
    EXPECT_FALSE(info.meta.acl.access_acl.has_value() || info.meta.acl.default_acl.has_value());
    EXPECT_TRUE(info.extra_data.empty());
}

TEST_F(FileInfoOfAFile, NameIsWhatStandsBehindTheLastSeparator)
{
    EXPECT_EQ("file", util::ReadFileInfo(Path("folder/../file")).name);
    EXPECT_EQ(".", util::ReadFileInfo(Path("folder/.")).name);
    EXPECT_EQ(".", util::ReadFileInfo(".").name);
    EXPECT_EQ("", util::ReadFileInfo(Path("folder/")).name);
    EXPECT_EQ("", util::ReadFileInfo("/").name);
    EXPECT_EQ("file", util::ReadFileInfo(Path(std::string("file\0/x", 7))).name);
}

TEST_F(FileInfoOfAFile, NameBeginsBehindABackslashToo)
{
    WriteFile(Path("a\\b"), "");
    EXPECT_EQ("b", util::ReadFileInfo(Path("a\\b")).name);
}

TEST_F(FileInfoOfAFile, NothingThereIsAFailureWithoutContext)
{
    EXPECT_EQ("No such file or directory\nlstat failed.",
              Thrown<posix::errno_exc_t>([&] { util::ReadFileInfo(Path("none")); }));
    EXPECT_EQ("No such file or directory\nlstat failed.",
              Thrown<posix::errno_exc_t>([] { util::ReadFileInfo(""); }));
    EXPECT_EQ("Not a directory\nlstat failed.",
              Thrown<posix::errno_exc_t>([&] { util::ReadFileInfo(Path("file/x")); }));
}

// What may be missing

TEST_F(FileInfoOfAFile, OfWhatExistsIsTheSameEitherWay)
{
    for (const char* name : {"file", "folder", "link", "dangling", "fifo"})
    {
        const std::string stored = Stored(util::ReadFileInfo(Path(name)));
        EXPECT_EQ(Hex(stored), Hex(Stored(util::GetFileInfo(Path(name), false)))) << name;
        EXPECT_EQ(Hex(stored), Hex(Stored(util::GetFileInfo(Path(name), true)))) << name;
    }
}

TEST_F(FileInfoOfAFile, OfNothingIsEmptyForWhoToleratesIt)
{
    EXPECT_EQ(Hex(Stored({})), Hex(Stored(util::GetFileInfo(Path("none"), true))));
    EXPECT_EQ("File not found.\nCan't get info for file [" + Path("none") + "].",
              Thrown<exc::runtime_exc_t>([&] { util::GetFileInfo(Path("none"), false); }));
}

TEST_F(FileInfoOfAFile, FailureToLookIsNotTolerated)
{
    EXPECT_EQ("Not a directory\nCPathUtils: Failed to check whether [" + Path("file/x") +
                  "] exists.\nCan't get info for file [" + Path("file/x") + "].",
              Thrown<posix::errno_exc_t>([&] { util::GetFileInfo(Path("file/x"), true); }));
    EXPECT_EQ("Path is not set.\nCPathUtils: Failed to check whether [] exists.\nCan't get info for file [].",
              Thrown<exc::runtime_exc_t>([] { util::GetFileInfo("", true); }));
}

// What is given to a file

TEST_F(FileInfoOfAFile, IsGivenToAFile)
{
    util::ApplyFileInfo(OwnFull(), Path("folder"));
    const struct stat info = StatusOf(Path("folder"));
    EXPECT_EQ(86402, info.st_mtim.tv_sec);
    EXPECT_EQ(86401, info.st_atim.tv_sec);
    EXPECT_EQ(0644u, info.st_mode & 07777);
}

TEST_F(FileInfoOfAFile, EmptyDatesAreGivenToo)
{
    util::ApplyFileInfo(FileInfo(), Path("file"));
    EXPECT_EQ(0, StatusOf(Path("file")).st_mtim.tv_sec);
    EXPECT_EQ(0, StatusOf(Path("file")).st_atim.tv_sec);
}

TEST_F(FileInfoOfAFile, FailureToGiveItHasNoContext)
{
    EXPECT_EQ("No such file or directory\nFailed to set file access time.",
              Thrown<posix::errno_exc_t>([&] { util::ApplyFileInfo(FileInfo(), Path("none")); }));
}
