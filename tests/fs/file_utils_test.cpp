#include "nelvo/fs/file_utils.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <new>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/posix/posix_file.h"
#include "tests/fs/child.h"
#include "tests/support/failing_memory.h"
#include "tests/support/file_status.h"
#include "tests/support/temp_folder.h"
#include "tests/support/thrown.h"

namespace
{

[[maybe_unused]] const bool g_errno_changes = ChangeErrnoWithMemory();

void Link(const std::string& path, const std::string& target)
{
    EXPECT_EQ(0, ::symlink(target.c_str(), path.c_str())) << path;
}

template <class function_t>
std::string FailureOf(const function_t& function)
{
    return Thrown<posix::errno_exc_t>(function);
}

// A folder with one object of each kind, named after it.
class FileUtils : public testing::Test
{
protected:
    FileUtils()
    {
        WriteFile(Path("file"), "text");
        EXPECT_EQ(0, ::mkdir(Path("folder").c_str(), 0700));
        EXPECT_EQ(0, ::mkfifo(Path("fifo").c_str(), 0600));
        EXPECT_EQ(0, ::symlink("file", Path("link").c_str()));
        EXPECT_EQ(0, ::symlink("none", Path("dangling").c_str()));
        EXPECT_EQ(0, ::symlink("circle", Path("circle").c_str()));
    }

    std::string Path(const std::string& name) const { return m_folder / name; }

    static bool Stands(const std::string& path)
    {
        struct stat info = {};
        return ::lstat(path.c_str(), &info) == 0;
    }

    temp_folder_t m_folder;
};

std::string NoInfo(const std::string& cause, const std::string& path)
{
    return cause + "\nFailed to get file system object info: '" + path + "'";
}

const std::string kLongName(256, 'x');
const char* const kOddNames[] = {" a b ", "a\nb", "\xff\xc3(", "%1", "'", "\\"};

} // namespace

// What the tests of failures in this program rest on.
TEST(FileUtilsErrno, TakingMemoryChangesErrno)
{
    errno = 0;
    void* const memory = ::operator new(1);
    const int error = errno;
    ::operator delete(memory);
    EXPECT_EQ(ENOTUNIQ, error);
}

// ---- ExistsByStat ----

TEST(ExistsByStat, FindsFilesFoldersAndFifos)
{
    const temp_folder_t folder;
    WriteFile(folder / "file", "");
    ASSERT_EQ(0, ::mkfifo((folder / "fifo").c_str(), 0600));

    EXPECT_TRUE(util::ExistsByStat(folder / "file"));
    EXPECT_TRUE(util::ExistsByStat(folder / "fifo"));
    EXPECT_TRUE(util::ExistsByStat(folder.path()));
    EXPECT_TRUE(util::ExistsByStat(folder.path() + "/"));
}

TEST(ExistsByStat, MissingNameOrFolderIsAbsence)
{
    const temp_folder_t folder;

    EXPECT_FALSE(util::ExistsByStat(folder / "absent"));
    EXPECT_FALSE(util::ExistsByStat(folder / "absent/below"));
    EXPECT_FALSE(util::ExistsByStat(""));
}

TEST(ExistsByStat, FollowsLinks)
{
    const temp_folder_t folder;
    WriteFile(folder / "file", "");
    Link(folder / "link", "file");
    Link(folder / "dangling", "absent");

    EXPECT_TRUE(util::ExistsByStat(folder / "link"));
    EXPECT_FALSE(util::ExistsByStat(folder / "dangling"));
}

TEST(ExistsByStat, FileInThePlaceOfAFolderIsAFailure)
{
    const temp_folder_t folder;
    WriteFile(folder / "file", "");
    const std::string path = folder / "file/below";

    EXPECT_EQ("Not a directory\nFailed to get file system object info: '" + path + "'",
              FailureOf([&] { util::ExistsByStat(path); }));
}

TEST(ExistsByStat, LoopOfLinksIsAFailure)
{
    const temp_folder_t folder;
    const std::string path = folder / "loop";
    Link(path, "loop");

    EXPECT_EQ("Too many levels of symbolic links\nFailed to get file system object info: '" + path + "'",
              FailureOf([&] { util::ExistsByStat(path); }));
}

TEST(ExistsByStat, PathInAFailureIsNotScannedForReferences)
{
    const std::string path(300, '%');

    EXPECT_EQ("File name too long\nFailed to get file system object info: '" + path + "1'",
              FailureOf([&] { util::ExistsByStat(path + "1"); }));
}

// ---- CreateDirectory ----

TEST(CreateDirectory, ModeIsTheUmasksPartOf755)
{
    const temp_folder_t folder;
    InChild(
        [&]
        {
            ::umask(0);
            util::CreateDirectory(folder / "open");
            ::umask(027);
            util::CreateDirectory(folder / "closed");
        });

    EXPECT_EQ(static_cast<mode_t>(S_IFDIR | 0755), StatusOf(folder / "open").st_mode);
    EXPECT_EQ(static_cast<mode_t>(S_IFDIR | 0750), StatusOf(folder / "closed").st_mode);
}

TEST(CreateDirectory, NameThatExistsIsAFailure)
{
    const temp_folder_t folder;

    EXPECT_EQ("File exists\nFailed to create directory '" + folder.path() + "'",
              FailureOf([&] { util::CreateDirectory(folder.path()); }));
}

TEST(CreateDirectory, MissingParentIsAFailure)
{
    const temp_folder_t folder;
    const std::string path = folder / "a/b";

    EXPECT_EQ("No such file or directory\nFailed to create directory '" + path + "'",
              FailureOf([&] { util::CreateDirectory(path); }));
}

TEST(CreateDirectory, PathInAFailureIsNotScannedForReferences)
{
    const temp_folder_t folder;
    const std::string path = folder / "%01/% 1 %2\n\xff";

    EXPECT_EQ("No such file or directory\nFailed to create directory '" + path + "'",
              FailureOf([&] { util::CreateDirectory(path); }));
}

// ---- CreateParentFolders ----

TEST(CreateParentFolders, CreatesAllButTheLastComponent)
{
    const temp_folder_t folder;
    util::CreateParentFolders(folder / "a/b/file");

    EXPECT_TRUE(util::ExistsByStat(folder / "a/b"));
    EXPECT_FALSE(util::ExistsByStat(folder / "a/b/file"));
}

TEST(CreateParentFolders, SeparatorAtTheEndMakesTheLastComponentAFolder)
{
    const temp_folder_t folder;
    util::CreateParentFolders(folder / "a/b/");

    EXPECT_TRUE(util::ExistsByStat(folder / "a/b"));
}

TEST(CreateParentFolders, ExistingFoldersAndLinksToThemStay)
{
    const temp_folder_t folder;
    util::CreateDirectory(folder / "real");
    Link(folder / "link", "real");
    util::CreateParentFolders(folder / "link/a/file");

    EXPECT_TRUE(util::ExistsByStat(folder / "real/a"));
}

TEST(CreateParentFolders, DoubledSeparatorsDoNoHarm)
{
    const temp_folder_t folder;
    util::CreateParentFolders(folder / "/a//b//file");

    EXPECT_TRUE(util::ExistsByStat(folder / "a/b"));
}

TEST(CreateParentFolders, RelativePathStartsAtTheWorkingFolder)
{
    const temp_folder_t folder;
    InChild(
        [&]
        {
            ASSERT_EQ(0, ::chdir(folder.path().c_str()));
            util::CreateParentFolders("a/b/file");
            util::CreateParentFolders("file");
        });

    EXPECT_TRUE(util::ExistsByStat(folder / "a/b"));
    EXPECT_FALSE(util::ExistsByStat(folder / "file"));
}

TEST(CreateParentFolders, DanglingLinkIsAFailure)
{
    const temp_folder_t folder;
    const std::string link = folder / "link";
    Link(link, "absent");

    EXPECT_EQ("File exists\nFailed to create directory '" + link + "'",
              FailureOf([&] { util::CreateParentFolders(link + "/file"); }));
}

TEST(CreateParentFolders, FileInThePlaceOfAFolderIsAFailure)
{
    const temp_folder_t folder;
    WriteFile(folder / "file", "");

    EXPECT_EQ("Not a directory\nFailed to get file system object info: '" + (folder / "file/a") + "'",
              FailureOf([&] { util::CreateParentFolders(folder / "file/a/b"); }));
}

// ---- Existence ----

TEST_F(FileUtils, ExistsByLstatLooksAtTheLinkItself)
{
    for (const char* name : {"file", "folder", "fifo", "link", "dangling", "circle", "folder/"})
        EXPECT_TRUE(util::ExistsByLstat(Path(name))) << name;
    EXPECT_FALSE(util::ExistsByLstat(Path("none")));
    EXPECT_FALSE(util::ExistsByLstat(Path("none/none")));
    EXPECT_FALSE(util::ExistsByLstat(""));
}

TEST_F(FileUtils, ExistsByLstatThrowsWhatIsNotMereAbsence)
{
    const std::string below_file = Path("file/x");
    const std::string below_circle = Path("circle/x");
    const std::string long_path = Path(kLongName);
    EXPECT_EQ(NoInfo("Not a directory", below_file),
              Thrown<posix::errno_exc_t>([&] { util::ExistsByLstat(below_file); }));
    EXPECT_EQ(NoInfo("Too many levels of symbolic links", below_circle),
              Thrown<posix::errno_exc_t>([&] { util::ExistsByLstat(below_circle); }));
    EXPECT_EQ(NoInfo("File name too long", long_path),
              Thrown<posix::errno_exc_t>([&] { util::ExistsByLstat(long_path); }));
}

TEST_F(FileUtils, ExistsByStatOfAWidePathIsThatOfItsUtf8Form)
{
    WriteFile(Path("\xC3\xA4"), "");
    const std::wstring folder(m_folder.path().begin(), m_folder.path().end());
    EXPECT_TRUE(util::ExistsByStat(folder + L"/\u00E4"));
    EXPECT_FALSE(util::ExistsByStat(folder + L"/dangling"));
    EXPECT_THROW(util::ExistsByStat(L"\xD800"), exc::runtime_exc_t);
}

TEST_F(FileUtils, FileExistsFollowsLinks)
{
    for (const char* name : {"file", "folder", "fifo", "link", "folder/"})
        EXPECT_TRUE(util::FileExists(Path(name))) << name;
    for (const char* name : {"none", "none/none", "dangling"})
        EXPECT_FALSE(util::FileExists(Path(name))) << name;
    EXPECT_FALSE(util::FileExists(""));
}

TEST_F(FileUtils, NothingExistsBelowAFileForFileExists)
{
    EXPECT_FALSE(util::FileExists(Path("file/x")));
    EXPECT_EQ(NoInfo("Not a directory", Path("file/x")),
              Thrown<posix::errno_exc_t>([&] { util::ExistsByStat(Path("file/x")); }));
}

TEST_F(FileUtils, FileExistsThrowsForCirclesAndLongNames)
{
    EXPECT_EQ("boost::filesystem::status: Too many levels of symbolic links: \"" + Path("circle") + "\"",
              Thrown<boost::filesystem::filesystem_error>([&] { util::FileExists(Path("circle")); }));
    EXPECT_EQ("boost::filesystem::status: File name too long: \"" + Path(kLongName) + "\"",
              Thrown<boost::filesystem::filesystem_error>([&] { util::FileExists(Path(kLongName)); }));
}

TEST_F(FileUtils, FileExistsOfAWidePathIsThatOfItsUtf8Form)
{
    WriteFile(Path("\xC3\xA4"), "");
    const std::wstring folder(m_folder.path().begin(), m_folder.path().end());
    EXPECT_TRUE(util::FileExists(folder + L"/\u00E4"));
    EXPECT_FALSE(util::FileExists(folder + L"/none"));
    EXPECT_THROW(util::FileExists(L"\xD800"), exc::runtime_exc_t);
}

TEST_F(FileUtils, OddNamesAreNamesLikeOthers)
{
    for (const std::string name : kOddNames)
    {
        const std::string path = Path(name);
        EXPECT_FALSE(util::FileExists(path) || util::ExistsByStat(path) || util::ExistsByLstat(path)) << name;
        util::CreateEmptyFile(path);
        EXPECT_TRUE(util::FileExists(path) && util::ExistsByStat(path) && util::ExistsByLstat(path)) << name;
        util::RenameFile(path, path + "2");
        util::CopyFile(path + "2", path, false);
        util::RemoveFile(path + "2");
        EXPECT_TRUE(Stands(path) && !Stands(path + "2")) << name;
    }
}

TEST_F(FileUtils, NameOf255BytesIsANameLikeOthers)
{
    const std::string path = Path(std::string(255, 'x'));
    util::CreateEmptyFile(path);
    EXPECT_TRUE(util::FileExists(path));
    util::RemoveFile(path);
    EXPECT_FALSE(util::FileExists(path));
}

// ---- What a path is ----

TEST_F(FileUtils, ShortStatTellsSizeAndKind)
{
    const auto tell = [&](const std::string& name)
    {
        const util::file_short_stat_t stat = util::fs_short_stat(Path(name));
        return std::string(stat.is_file ? "file " : "") + (stat.is_dir ? "dir " : "") +
               (stat.is_symlink ? "symlink " : "") + (stat.is_dir ? "" : std::to_string(stat.size));
    };
    EXPECT_EQ("file 4", tell("file"));
    EXPECT_EQ("dir ", tell("folder"));
    EXPECT_EQ("file 0", tell("fifo"));
    EXPECT_EQ("file symlink 4", tell("link"));
    EXPECT_EQ("file symlink 4", tell("dangling"));
    EXPECT_EQ("file symlink 6", tell("circle"));
}

TEST_F(FileUtils, ShortStatTellsTheSizeOfAFolderAsTheSystemDoes)
{
    struct stat info = {};
    ASSERT_EQ(0, ::lstat(m_folder.path().c_str(), &info));
    ASSERT_NE(0, info.st_size);
    EXPECT_EQ(static_cast<std::uint64_t>(info.st_size), util::fs_short_stat(m_folder.path()).size);
}

TEST_F(FileUtils, ShortStatKnowsSizesBeyond32Bits)
{
    std::filesystem::resize_file(Path("file"), 5'000'000'000);
    EXPECT_EQ(5'000'000'000u, util::fs_short_stat(Path("file")).size);
}

TEST_F(FileUtils, ShortStatOfNothingIsAFailure)
{
    EXPECT_EQ(NoInfo("No such file or directory", Path("none")),
              Thrown<posix::errno_exc_t>([&] { util::fs_short_stat(Path("none")); }));
    EXPECT_EQ(NoInfo("Not a directory", Path("file/x")),
              Thrown<posix::errno_exc_t>([&] { util::fs_short_stat(Path("file/x")); }));
}

TEST_F(FileUtils, DeviceIsThatOfTheFileBehindALink)
{
    struct stat info = {};
    ASSERT_EQ(0, ::stat("/proc", &info));
    ASSERT_EQ(0, ::symlink("/proc", Path("proc").c_str()));
    EXPECT_EQ(info.st_dev, util::GetDeviceId(Path("proc")));
    EXPECT_TRUE(util::IsSameDevice("/proc", Path("proc")));
    EXPECT_TRUE(util::IsSameDevice(Path("file"), Path("folder")));
    EXPECT_FALSE(util::IsSameDevice(Path("file"), Path("proc")));
}

TEST_F(FileUtils, PathWithoutADeviceIsNotScannedForReferences)
{
    const std::string path = Path("%01");
    EXPECT_EQ("No such file or directory\nProblem with getting statistics on file: '" + path + "'",
              Thrown<posix::errno_exc_t>([&] { util::GetDeviceId(path); }));
}

TEST_F(FileUtils, DeviceOfNothingIsAFailure)
{
    EXPECT_EQ("No such file or directory\nProblem with getting statistics on file: '" + Path("none") + "'",
              Thrown<posix::errno_exc_t>([&] { util::GetDeviceId(Path("none")); }));
    EXPECT_EQ("No such file or directory\nProblem with getting statistics on file: '" + Path("none") + "'",
              Thrown<posix::errno_exc_t>([&] { util::IsSameDevice(Path("file"), Path("none")); }));
}

// ---- Removing, renaming, copying ----

TEST_F(FileUtils, RemoveTakesFilesLinksAndEmptyFolders)
{
    for (const char* name : {"link", "dangling", "circle", "fifo", "folder"})
    {
        util::RemoveFile(Path(name));
        EXPECT_FALSE(Stands(Path(name))) << name;
    }
    EXPECT_EQ("text", ReadFile(Path("file")));
}

TEST_F(FileUtils, RemoveOfNothingIsNoFailure)
{
    for (const char* name : {"none", "none/none", "file/x"})
        EXPECT_NO_THROW(util::RemoveFile(Path(name))) << name;
    EXPECT_NO_THROW(util::RemoveFile(""));
}

TEST_F(FileUtils, RemoveOfAFullFolderIsToldByBoost)
{
    EXPECT_EQ("boost::filesystem::remove: Directory not empty: \"" + m_folder.path() + "\"",
              Thrown<boost::filesystem::filesystem_error>([&] { util::RemoveFile(m_folder.path()); }));
}

TEST_F(FileUtils, RenameReplaces)
{
    WriteFile(Path("other"), "other text");
    util::RenameFile(Path("file"), Path("other"));
    EXPECT_FALSE(Stands(Path("file")));
    EXPECT_EQ("text", ReadFile(Path("other")));
}

TEST_F(FileUtils, RenameOfNothingIsToldByBoost)
{
    EXPECT_EQ(
        "boost::filesystem::rename: No such file or directory: \"" + Path("none") + "\", \"" + Path("other") +
            "\"",
        Thrown<boost::filesystem::filesystem_error>([&] { util::RenameFile(Path("none"), Path("other")); }));
}

TEST_F(FileUtils, CopyTakesContentAndMode)
{
    ASSERT_EQ(0, ::chmod(Path("file").c_str(), 0750));
    util::CopyFile(Path("file"), Path("copy"), false);
    EXPECT_EQ("text", ReadFile(Path("copy")));
    EXPECT_EQ(0750u, ModeOf(Path("copy")));
}

// The system takes the bit from a file that another user than root writes to.
TEST_F(FileUtils, CopyKeepsTheSetUserIdBitForRoot)
{
    ASSERT_EQ(0, ::chmod(Path("file").c_str(), 04750));
    util::CopyFile(Path("file"), Path("copy"), false);
    EXPECT_EQ(::geteuid() == 0 ? 04750u : 0750u, ModeOf(Path("copy")));
}

TEST_F(FileUtils, CopyOverAFileNeedsOverwrite)
{
    WriteFile(Path("other"), "a longer text");
    EXPECT_EQ("Destination file already exists",
              Thrown<exc::runtime_exc_t>([&] { util::CopyFile(Path("file"), Path("other"), false); }));
    EXPECT_EQ("a longer text", ReadFile(Path("other")));
    util::CopyFile(Path("file"), Path("other"), true);
    EXPECT_EQ("text", ReadFile(Path("other")));
}

TEST_F(FileUtils, CopyRemovesTheTargetFirst)
{
    util::CopyFile(Path("link"), Path("folder"), true);
    EXPECT_EQ("text", ReadFile(Path("folder")));
    WriteFile(Path("other"), "other text");
    util::CopyFile(Path("other"), Path("link"), true);
    EXPECT_EQ("other text", ReadFile(Path("link")));
    EXPECT_EQ("text", ReadFile(Path("file")));
}

TEST_F(FileUtils, CopyOntoADanglingLinkFindsNothingToRemoveAndFails)
{
    for (const bool overwrite : {false, true})
        EXPECT_EQ("boost::filesystem::copy_file: File exists: \"" + Path("file") + "\", \"" +
                      Path("dangling") + "\"",
                  Thrown<boost::filesystem::filesystem_error>(
                      [&] { util::CopyFile(Path("file"), Path("dangling"), overwrite); }));
    EXPECT_TRUE(Stands(Path("dangling")) && !Stands(Path("none")));
}

TEST_F(FileUtils, CopyOntoItselfLosesTheFile)
{
    EXPECT_THROW(util::CopyFile(Path("file"), Path("file"), true), boost::filesystem::filesystem_error);
    EXPECT_FALSE(Stands(Path("file")));
}

TEST_F(FileUtils, CopyOfAFolderOrOfNothingIsToldByBoost)
{
    EXPECT_EQ("boost::filesystem::copy_file: Function not implemented: \"" + Path("folder") + "\", \"" +
                  Path("copy") + "\"",
              Thrown<boost::filesystem::filesystem_error>(
                  [&] { util::CopyFile(Path("folder"), Path("copy"), true); }));
    EXPECT_EQ("boost::filesystem::copy_file: No such file or directory: \"" + Path("none") + "\", \"" +
                  Path("copy") + "\"",
              Thrown<boost::filesystem::filesystem_error>(
                  [&] { util::CopyFile(Path("none"), Path("copy"), true); }));
}

TEST_F(FileUtils, CopyOfAProcFileIsEmpty)
{
    util::CopyFile("/proc/self/status", Path("copy"), false);
    EXPECT_EQ("", ReadFile(Path("copy")));
}

TEST_F(FileUtils, CopyTakesWidePaths)
{
    const std::wstring folder(m_folder.path().begin(), m_folder.path().end());
    util::CopyFile(folder + L"/file", folder + L"/\u00E4", false);
    EXPECT_EQ("text", ReadFile(Path("\xC3\xA4")));
    EXPECT_EQ(
        "Destination file already exists",
        Thrown<exc::runtime_exc_t>([&] { util::CopyFile(folder + L"/file", folder + L"/\u00E4", false); }));
    WriteFile(Path("file"), "new text");
    util::CopyFile(folder + L"/file", folder + L"/\u00E4", true);
    EXPECT_EQ("new text", ReadFile(Path("\xC3\xA4")));
}

// ---- Links ----

TEST_F(FileUtils, CreateSymlinkTakesTheLinkFirst)
{
    EXPECT_TRUE(util::CreateSymlink(Path("new"), "file"));
    EXPECT_EQ("text", ReadFile(Path("new")));
}

TEST_F(FileUtils, CreateSymlinkWhereSomethingStandsIsAFailure)
{
    EXPECT_EQ("File exists\nFailed to create symbolic link.",
              Thrown<posix::errno_exc_t>([&] { util::CreateSymlink(Path("dangling"), "file"); }));
}

TEST_F(FileUtils, RemoveSymlinkTakesTheLinkAndNotItsTarget)
{
    for (const char* name : {"link", "dangling", "circle"})
    {
        EXPECT_TRUE(util::RemoveSymlink(Path(name)));
        EXPECT_FALSE(Stands(Path(name))) << name;
    }
    EXPECT_TRUE(Stands(Path("file")));
}

TEST_F(FileUtils, RemoveSymlinkTakesAFileToo)
{
    EXPECT_TRUE(util::RemoveSymlink(Path("file")));
    EXPECT_FALSE(Stands(Path("file")));
}

TEST_F(FileUtils, RemoveSymlinkOfNothingNamesThePath)
{
    EXPECT_EQ("Failed to remove symlink: Symlink does not found by path '" + Path("none") + "'",
              Thrown<exc::runtime_exc_t>([&] { util::RemoveSymlink(Path("none")); }));
    EXPECT_EQ("Failed to remove symlink: Symlink does not found by path '" + Path("%01 %1") + "'",
              Thrown<exc::runtime_exc_t>([&] { util::RemoveSymlink(Path("%01 %1")); }));
}

TEST_F(FileUtils, RemoveSymlinkThatFailsIsToldWithItsErrno)
{
    EXPECT_EQ("Is a directory\nFailed to remove symlink",
              Thrown<posix::errno_exc_t>([&] { util::RemoveSymlink(Path("folder")); }));
    EXPECT_EQ(NoInfo("Not a directory", Path("file/x")),
              Thrown<posix::errno_exc_t>([&] { util::RemoveSymlink(Path("file/x")); }));
}

// ---- Making and opening ----

TEST_F(FileUtils, CreateEmptyFileMakesAFile)
{
    util::CreateEmptyFile(Path("new"));
    EXPECT_EQ("", ReadFile(Path("new")));
    const std::wstring folder(m_folder.path().begin(), m_folder.path().end());
    util::CreateEmptyFile(folder + L"/\u00E4");
    EXPECT_EQ("", ReadFile(Path("\xC3\xA4")));
}

TEST_F(FileUtils, CreateEmptyFileKeepsWhatAFileHolds)
{
    util::CreateEmptyFile(Path("file"));
    EXPECT_EQ("text", ReadFile(Path("file")));
}

TEST_F(FileUtils, CreateEmptyFileThatFailsNamesThePath)
{
    EXPECT_EQ("No such file or directory\nPOSIX: Failed to create or open file [" + Path("none/x") + "].",
              Thrown<posix::errno_exc_t>([&] { util::CreateEmptyFile(Path("none/x")); }));
}

TEST_F(FileUtils, CreateEmptyFileLeavesNothingOpen)
{
    const int next = ::open("/dev/null", O_RDONLY);
    ASSERT_EQ(0, ::close(next));
    util::CreateEmptyFile(Path("new"));
    const std::wstring folder(m_folder.path().begin(), m_folder.path().end());
    util::CreateEmptyFile(folder + L"/other");
    EXPECT_EQ(next, ::open("/dev/null", O_RDONLY));
    EXPECT_EQ(0, ::close(next));
}

TEST_F(FileUtils, FolderIsNoFileToCreateOrToOpen)
{
    const std::wstring folder(m_folder.path().begin(), m_folder.path().end());
    const std::string failure =
        "Is a directory\nPOSIX: Failed to create or open file [" + Path("folder") + "].";
    EXPECT_EQ(failure, Thrown<posix::errno_exc_t>([&] { util::CreateEmptyFile(Path("folder")); }));
    EXPECT_EQ(failure, Thrown<posix::errno_exc_t>([&] { util::OpenForAppendOrCreate(folder + L"/folder"); }));
}

TEST_F(FileUtils, WidePathWithoutAnUtf8FormIsNoSystemFailure)
{
    EXPECT_THROW(util::CreateEmptyFile(L"\xD800"), exc::runtime_exc_t);
    EXPECT_THROW(util::OpenForAppendOrCreate(L"\xD800"), exc::runtime_exc_t);
    EXPECT_THROW(util::CopyFile(L"\xD800", L"x", true), exc::runtime_exc_t);
}

TEST_F(FileUtils, EmptyPathIsAPathToNothing)
{
    const std::string none = "No such file or directory\n";
    const auto failure = [](const auto& call) { return Thrown<posix::errno_exc_t>(call); };
    EXPECT_EQ(NoInfo("No such file or directory", ""), failure([] { util::fs_short_stat(""); }));
    EXPECT_EQ(none + "Problem with getting statistics on file: ''", failure([] { util::GetDeviceId(""); }));
    EXPECT_EQ(none + "Failed to create directory ''", failure([] { util::CreateDirectory(""); }));
    EXPECT_EQ(none + "Failed to create symbolic link.", failure([&] { util::CreateSymlink("", "file"); }));
    EXPECT_EQ(none + "Failed to create symbolic link.",
              failure([&] { util::CreateSymlink(Path("new"), ""); }));
    EXPECT_EQ(none + "POSIX: Failed to create or open file [].", failure([] { util::CreateEmptyFile(""); }));
    EXPECT_EQ(none + "POSIX: Failed to create or open file [].",
              failure([] { util::OpenForAppendOrCreate(L""); }));
    EXPECT_EQ("Failed to remove symlink: Symlink does not found by path ''",
              Thrown<exc::runtime_exc_t>([] { util::RemoveSymlink(""); }));
    EXPECT_NO_THROW(util::CreateParentFolders(""));
}

TEST_F(FileUtils, EmptyPathToRenameOrCopyIsToldByBoost)
{
    const auto failure = [](const auto& call) { return Thrown<boost::filesystem::filesystem_error>(call); };
    EXPECT_EQ("boost::filesystem::rename: No such file or directory, \"" + Path("new") + "\"",
              failure([&] { util::RenameFile("", Path("new")); }));
    EXPECT_EQ("boost::filesystem::rename: No such file or directory: \"" + Path("file") + "\"",
              failure([&] { util::RenameFile(Path("file"), ""); }));
    EXPECT_EQ("boost::filesystem::copy_file: No such file or directory, \"" + Path("new") + "\"",
              failure([&] { util::CopyFile("", Path("new"), true); }));
    EXPECT_EQ("boost::filesystem::copy_file: No such file or directory: \"" + Path("file") + "\"",
              failure([&] { util::CopyFile(Path("file"), "", true); }));
}

TEST_F(FileUtils, OpenForAppendOrCreateStandsAtTheStart)
{
    const std::wstring folder(m_folder.path().begin(), m_folder.path().end());
    util::OpenForAppendOrCreate(folder + L"/file")->WriteText("xy");
    EXPECT_EQ("xyxt", ReadFile(Path("file")));
    util::OpenForAppendOrCreate(folder + L"/\u00E4")->WriteText("new");
    EXPECT_EQ("new", ReadFile(Path("\xC3\xA4")));
}

// ---- Temporary folder ----

TEST_F(FileUtils, HomeTempDirIsJoinedToHomeAsTextAndMade)
{
    const std::wstring folder(m_folder.path().begin(), m_folder.path().end());
    InChild(
        [&]
        {
            ::setenv("HOME", m_folder.path().c_str(), 1);
            EXPECT_EQ(folder + L"/tmp/", util::GetHomeTempDir());
            EXPECT_TRUE(S_ISDIR(StatusOf(Path("tmp")).st_mode));

            ::setenv("HOME", (m_folder.path() + "/").c_str(), 1);
            EXPECT_EQ(folder + L"//tmp/", util::GetHomeTempDir());
        });
}

TEST_F(FileUtils, HomeTempDirWithoutAHomeIsTmp)
{
    InPrivateRoot(
        []
        {
            ::unsetenv("HOME");
            EXPECT_EQ(L"/tmp/", util::GetHomeTempDir());
            EXPECT_TRUE(S_ISDIR(StatusOf("/tmp").st_mode));
            ASSERT_EQ(0, ::rmdir("/tmp"));

            ::setenv("HOME", "", 1);
            EXPECT_EQ(L"/tmp/", util::GetHomeTempDir());
            EXPECT_TRUE(S_ISDIR(StatusOf("/tmp").st_mode));
            EXPECT_EQ(L"/tmp/", util::GetHomeTempDir());
        });
}

TEST_F(FileUtils, HomeTempDirBelowAMissingHomeOrAFileIsAFailure)
{
    InChild(
        [&]
        {
            ::setenv("HOME", Path("none").c_str(), 1);
            EXPECT_EQ("No such file or directory\nFailed to create directory '" + Path("none/tmp/") + "'",
                      Thrown<posix::errno_exc_t>(util::GetHomeTempDir));
            ::setenv("HOME", Path("file").c_str(), 1);
            EXPECT_EQ("Not a directory\nFailed to create directory '" + Path("file/tmp/") + "'",
                      Thrown<posix::errno_exc_t>(util::GetHomeTempDir));
        });
}

TEST_F(FileUtils, HomeTempDirIsUtf8)
{
    util::CreateDirectory(Path("\xC3\xA4"));
    util::CreateDirectory(Path("\xFF"));
    const std::wstring folder(m_folder.path().begin(), m_folder.path().end());
    InChild(
        [&]
        {
            ::setenv("HOME", Path("\xC3\xA4").c_str(), 1);
            EXPECT_EQ(folder + L"/\u00E4/tmp/", util::GetHomeTempDir());
            ::setenv("HOME", Path("\xFF").c_str(), 1);
            EXPECT_THROW(util::GetHomeTempDir(), exc::runtime_exc_t);
        });
}

// ---- Names ----

TEST(ReplaceBadFileNameChars, NineCharactersBecomeUnderscores)
{
    EXPECT_EQ("_________", util::ReplaceBadFileNameChars("><|?*/\\:\""));
    EXPECT_EQ("a_b__c", util::ReplaceBadFileNameChars("a>b??c"));
    EXPECT_EQ("C__x_y", util::ReplaceBadFileNameChars("C:\\x/y"));
}

TEST(ReplaceBadFileNameChars, OthersStay)
{
    const std::string name("a 'b' %1 {c}.\n\xFF\0d", 18);
    EXPECT_EQ(name, util::ReplaceBadFileNameChars(name));
    EXPECT_EQ("", util::ReplaceBadFileNameChars(""));
}

TEST(FileUtilsOfOtherPlatforms, FailWithoutLookingAtThePath)
{
    EXPECT_EQ("wstr fs_get_volume_path_by_path( const wstr& path ): Not implemented in Linux",
              Thrown<exc::runtime_exc_t>([] { util::fs_get_volume_path_by_path(L"/"); }));
    EXPECT_EQ("linux addFilesFromDir not implemented",
              Thrown<std::runtime_error>([] { util::addFilesFromDir("/"); }));
}
