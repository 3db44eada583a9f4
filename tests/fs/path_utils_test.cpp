#include "nelvo/fs/path_utils.h"

#include <filesystem>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/fs/file_info.h"
#include "tests/fs/child.h"
#include "tests/support/file_mask.h"
#include "tests/support/file_status.h"
#include "tests/support/private_disk.h"
#include "tests/support/temp_folder.h"
#include "tests/support/thrown.h"

namespace
{

// A folder with one object of each kind, named after it.
class PathUtils : public testing::Test
{
protected:
    PathUtils()
    {
        WriteFile(Path("file"), "text");
        EXPECT_EQ(0, ::mkdir(Path("folder").c_str(), 0700));
        EXPECT_EQ(0, ::symlink("file", Path("link").c_str()));
        EXPECT_EQ(0, ::symlink("none", Path("dangling").c_str()));
        EXPECT_EQ(0, ::symlink("circle", Path("circle").c_str()));
        EXPECT_EQ(0, ::mkfifo(Path("fifo").c_str(), 0600));
    }

    std::string Path(const std::string& name) const { return m_folder / name; }

    static bool Stands(const std::string& path)
    {
        struct stat info = {};
        return ::lstat(path.c_str(), &info) == 0;
    }

    static std::string FailedCheck(const std::string& path)
    {
        return "\nCPathUtils: Failed to check whether [" + path + "] exists.";
    }

    // The text with which a call on two paths fails, as exc::runtime_exc_t.
    template <class Call>
    static std::string Refusal(Call call, const std::string& first, const std::string& second)
    {
        return Thrown<exc::runtime_exc_t>([&] { call(first, second); });
    }

    const file_mask_t m_no_mask{0};
    temp_folder_t m_folder;
};

const std::string kLongName(256, 'x');
const std::string kOddName = "%1 %2\n\xff";
const std::string kLongestName(255, 'x');

} // namespace

// Exists

TEST_F(PathUtils, ExistsDoesNotFollowLinks)
{
    for (const char* name : {"file", "folder", "link", "dangling", "circle", "fifo"})
        EXPECT_TRUE(CPathUtils::Exists(Path(name))) << name;
    EXPECT_FALSE(CPathUtils::Exists(Path("none")));
    EXPECT_FALSE(CPathUtils::Exists(Path("none/none")));
}

TEST_F(PathUtils, ExistsWantsAPath)
{
    EXPECT_EQ("Path is not set." + FailedCheck(""),
              Thrown<exc::runtime_exc_t>([] { CPathUtils::Exists(""); }));
}

TEST_F(PathUtils, ExistsThrowsWhatIsNotMereAbsence)
{
    EXPECT_EQ("Not a directory" + FailedCheck(Path("file/x")),
              Thrown<posix::errno_exc_t>([&] { CPathUtils::Exists(Path("file/x")); }));
    EXPECT_EQ("Too many levels of symbolic links" + FailedCheck(Path("circle/x")),
              Thrown<posix::errno_exc_t>([&] { CPathUtils::Exists(Path("circle/x")); }));
    EXPECT_EQ("File name too long" + FailedCheck(Path(kLongName)),
              Thrown<posix::errno_exc_t>([&] { CPathUtils::Exists(Path(kLongName)); }));
}

// Current folder, separator

TEST_F(PathUtils, CurrentDirIsTheProcesss)
{
    InChild(
        [&]
        {
            ASSERT_EQ(0, ::chdir(Path("folder").c_str()));
            EXPECT_EQ(Path("folder"), CPathUtils::GetCurrentDir());
        });
}

TEST_F(PathUtils, CurrentDirThatIsGoneIsAFailure)
{
    InChild(
        [&]
        {
            ASSERT_EQ(0, ::chdir(Path("folder").c_str()));
            ASSERT_EQ(0, ::rmdir(Path("folder").c_str()));
            EXPECT_EQ("No such file or directory\nCPathUtils: Unable to get current working directory.",
                      Thrown<posix::errno_exc_t>(CPathUtils::GetCurrentDir));
        });
}

TEST_F(PathUtils, CurrentDirOf4096BytesIsTooLong)
{
    InChild(
        [&]
        {
            const std::string name(199, 'd');
            std::string path = m_folder.path();
            ASSERT_EQ(0, ::chdir(path.c_str()));
            const auto descend = [&](const std::string& folder)
            {
                ASSERT_EQ(0, ::mkdir(folder.c_str(), 0700));
                ASSERT_EQ(0, ::chdir(folder.c_str()));
                path += "/" + folder;
            };
            while (4095 - path.size() > 256)
                descend(name);
            descend(std::string(4095 - path.size() - 1, 'e'));
            EXPECT_EQ(path, CPathUtils::GetCurrentDir());
            ASSERT_EQ(4095u, path.size());
            descend("f");
            EXPECT_EQ("Numerical result out of range\nCPathUtils: Unable to get current working directory.",
                      Thrown<posix::errno_exc_t>(CPathUtils::GetCurrentDir));
        });
}

TEST(PathUtilsSeparator, IsASlash) { EXPECT_EQ('/', CPathUtils::GetSeparator()); }

// Links

TEST_F(PathUtils, HardLinkIsTheSameFile)
{
    CPathUtils::CreateHardLink(Path("file"), Path("new"));
    EXPECT_TRUE(std::filesystem::equivalent(Path("file"), Path("new")));
    EXPECT_EQ(2u, std::filesystem::hard_link_count(Path("file")));
}

TEST_F(PathUtils, HardLinkToADanglingLinkIsToTheLink)
{
    CPathUtils::CreateHardLink(Path("dangling"), Path("new"));
    EXPECT_EQ("none", CPathUtils::ReadLink(Path("new")));
}

TEST_F(PathUtils, HardLinkWantsAnExistingTarget)
{
    EXPECT_EQ("Target path is not exist.\nCPathUtils: Failed to create hard link [" + Path("new") +
                  "] with target [" + Path("none") + "].",
              Refusal(CPathUtils::CreateHardLink, Path("none"), Path("new")));
}

TEST_F(PathUtils, HardLinkWantsBothNamesTheLinksFirst)
{
    EXPECT_EQ("Link filename is empty.\nCPathUtils: Failed to create hard link [] with target [].",
              Refusal(CPathUtils::CreateHardLink, "", ""));
    EXPECT_EQ("Link target path is empty.\nCPathUtils: Failed to create hard link [x] with target [].",
              Refusal(CPathUtils::CreateHardLink, "", "x"));
}

TEST_F(PathUtils, HardLinkToldWhyItsTargetCannotBeFound)
{
    EXPECT_EQ("Not a directory" + FailedCheck(Path("file/x")) + "\nCPathUtils: Failed to create hard link [" +
                  Path("new") + "] with target [" + Path("file/x") + "].",
              Thrown<posix::errno_exc_t>([&] { CPathUtils::CreateHardLink(Path("file/x"), Path("new")); }));
}

TEST_F(PathUtils, HardLinkDoesNotReplace)
{
    EXPECT_EQ("File exists\nCPathUtils: Failed to create hard link [" + Path("link") + "] with target [" +
                  Path("file") + "].",
              Thrown<posix::errno_exc_t>([&] { CPathUtils::CreateHardLink(Path("file"), Path("link")); }));
}

TEST_F(PathUtils, SymLinkTakesTheTargetFirstWhichMayBeMissing)
{
    CPathUtils::CreateSymLink("no such file", Path("new"));
    EXPECT_EQ("no such file", CPathUtils::ReadLink(Path("new")));
}

TEST_F(PathUtils, SymLinkWantsBothNamesTheLinksFirst)
{
    EXPECT_EQ("Link filename is empty.\nCPathUtils: Failed to create symbolic link [] with target [].",
              Refusal(CPathUtils::CreateSymLink, "", ""));
    EXPECT_EQ("Link target path is empty.\nCPathUtils: Failed to create symbolic link [x] with target [].",
              Refusal(CPathUtils::CreateSymLink, "", "x"));
}

TEST_F(PathUtils, SymLinkDoesNotReplace)
{
    EXPECT_EQ("File exists\nCPathUtils: Failed to create symbolic link [" + Path("file") +
                  "] with target [x].",
              Thrown<posix::errno_exc_t>([&] { CPathUtils::CreateSymLink("x", Path("file")); }));
}

TEST_F(PathUtils, ReadLinkGivesTheTargetAsItStands)
{
    EXPECT_EQ("file", CPathUtils::ReadLink(Path("link")));
    EXPECT_EQ("circle", CPathUtils::ReadLink(Path("circle")));
}

TEST_F(PathUtils, ReadLinkWantsALink)
{
    EXPECT_EQ("Path is not set.\nCPathUtils: Failed to read link [].",
              Thrown<exc::runtime_exc_t>([] { CPathUtils::ReadLink(""); }));
    EXPECT_EQ("Invalid argument\nreadlink(" + Path("file") +
                  ") has failed.\nCPathUtils: Failed to read link [" + Path("file") + "].",
              Thrown<posix::errno_exc_t>([&] { CPathUtils::ReadLink(Path("file")); }));
}

// Type, real path, info

TEST_F(PathUtils, TypeDoesNotFollowLinks)
{
    EXPECT_EQ(util::kRegularFile, CPathUtils::GetType(Path("file")));
    EXPECT_EQ(util::kDirectory, CPathUtils::GetType(Path("folder")));
    for (const char* name : {"link", "dangling", "circle"})
        EXPECT_EQ(util::kSymbolicLink, CPathUtils::GetType(Path(name))) << name;
}

TEST_F(PathUtils, OneOfThreeQuestionsIsAnsweredWithYes)
{
    const auto answers = [&](const std::string& name)
    {
        const std::string path = Path(name);
        return std::vector<bool>{CPathUtils::IsFile(path), CPathUtils::IsDir(path), CPathUtils::IsLink(path)};
    };
    EXPECT_EQ((std::vector<bool>{true, false, false}), answers("file"));
    EXPECT_EQ((std::vector<bool>{false, true, false}), answers("folder"));
    EXPECT_EQ((std::vector<bool>{false, false, true}), answers("link"));
    EXPECT_EQ((std::vector<bool>{false, false, true}), answers("dangling"));
}

TEST_F(PathUtils, NothingAndAFifoAreNoAnswerToWhatTheyAre)
{
    for (const auto question : {CPathUtils::IsFile, CPathUtils::IsDir, CPathUtils::IsLink})
    {
        EXPECT_EQ("Unknown type of file [" + Path("fifo") + "].\nCPathUtils: Failed to get type of [" +
                      Path("fifo") + "].",
                  Thrown<exc::runtime_exc_t>([&] { question(Path("fifo")); }));
        EXPECT_EQ("File not found.\nCan't get info for file [" + Path("none") +
                      "].\nCPathUtils: Failed to get type of [" + Path("none") + "].",
                  Thrown<exc::runtime_exc_t>([&] { question(Path("none")); }));
    }
}

TEST_F(PathUtils, TypeWantsAPath)
{
    EXPECT_EQ("Path is not set." + FailedCheck("") +
                  "\nCan't get info for file [].\nCPathUtils: Failed to get type of [].",
              Thrown<exc::runtime_exc_t>([] { CPathUtils::GetType(""); }));
}

TEST_F(PathUtils, TypeThatCannotBeFoundIsToldWithItsErrno)
{
    EXPECT_EQ("Not a directory" + FailedCheck(Path("file/x")) + "\nCan't get info for file [" +
                  Path("file/x") + "].\nCPathUtils: Failed to get type of [" + Path("file/x") + "].",
              Thrown<posix::errno_exc_t>([&] { CPathUtils::GetType(Path("file/x")); }));
}

TEST_F(PathUtils, RealPathOfALinkIsWhereItLeadsInTheEnd)
{
    ASSERT_EQ(0, ::symlink("../link", Path("folder/to_link").c_str()));
    const std::string file = std::filesystem::canonical(Path("file")).string();
    EXPECT_EQ(file, CPathUtils::GetRealPath(Path("link")));
    EXPECT_EQ(file, CPathUtils::GetRealPath(Path("folder/to_link")));
    EXPECT_EQ(file, CPathUtils::GetRealPath(Path("folder/../folder/./to_link")));
}

TEST_F(PathUtils, RealPathOfWhatIsNoLinkIsThePathAsGiven)
{
    ASSERT_EQ(0, ::symlink("folder", Path("to_folder").c_str()));
    WriteFile(Path("folder/x"), "");
    for (const char* name : {"file", "folder", "folder/../file", "to_folder/x", "to_folder/"})
        EXPECT_EQ(Path(name), CPathUtils::GetRealPath(Path(name)));
    EXPECT_EQ(".", CPathUtils::GetRealPath("."));
    InChild(
        [&]
        {
            ASSERT_EQ(0, ::chdir(m_folder.path().c_str()));
            EXPECT_EQ("file", CPathUtils::GetRealPath("file"));
        });
}

TEST_F(PathUtils, RealPathWantsAPath)
{
    EXPECT_EQ("Path is not set.\nCPathUtils: Failed to read real path for [].",
              Thrown<exc::runtime_exc_t>([] { CPathUtils::GetRealPath(""); }));
}

TEST_F(PathUtils, RealPathOfALinkToNothingIsAFailure)
{
    EXPECT_EQ("No such file or directory\nCPathUtils: Failed to read real path for [" + Path("dangling") +
                  "].",
              Thrown<posix::errno_exc_t>([&] { CPathUtils::GetRealPath(Path("dangling")); }));
    EXPECT_EQ("Too many levels of symbolic links\nCPathUtils: Failed to read real path for [" +
                  Path("circle") + "].",
              Thrown<posix::errno_exc_t>([&] { CPathUtils::GetRealPath(Path("circle")); }));
}

TEST_F(PathUtils, RealPathAsksForTheType)
{
    const auto context = [&](const std::string& name)
    {
        return "\nCPathUtils: Failed to get type of [" + Path(name) +
               "].\nCPathUtils: Failed to read real path for [" + Path(name) + "].";
    };
    EXPECT_EQ("Unknown type of file [" + Path("fifo") + "]." + context("fifo"),
              Thrown<exc::runtime_exc_t>([&] { CPathUtils::GetRealPath(Path("fifo")); }));
    EXPECT_EQ("File not found.\nCan't get info for file [" + Path("none") + "]." + context("none"),
              Thrown<exc::runtime_exc_t>([&] { CPathUtils::GetRealPath(Path("none")); }));
}

TEST_F(PathUtils, InfoIsThatOfTheFileItself)
{
    EXPECT_EQ(4u, CPathUtils::GetInfo(Path("file")).size);
    EXPECT_EQ("link", CPathUtils::GetInfo(Path("link")).name);
    EXPECT_EQ(util::kSymbolicLink, CPathUtils::GetInfo(Path("link")).type);
    EXPECT_EQ(util::kOtherObject, CPathUtils::GetInfo(Path("fifo")).type);
}

TEST_F(PathUtils, InfoOfNothingIsAFailureWithOneContext)
{
    EXPECT_EQ("File not found.\nCan't get info for file [" + Path("none") + "].",
              Thrown<exc::runtime_exc_t>([&] { CPathUtils::GetInfo(Path("none")); }));
    EXPECT_EQ("Path is not set." + FailedCheck("") + "\nCan't get info for file [].",
              Thrown<exc::runtime_exc_t>([] { CPathUtils::GetInfo(""); }));
}

// Rename, Delete

TEST_F(PathUtils, RenameMovesFilesFoldersAndLinks)
{
    for (const char* name : {"file", "folder", "dangling"})
    {
        CPathUtils::Rename(Path(name), Path("new"));
        EXPECT_TRUE(!Stands(Path(name)) && Stands(Path("new"))) << name;
        CPathUtils::Delete(Path("new"));
    }
}

TEST_F(PathUtils, RenameOfEqualPathsLooksAtNothing)
{
    EXPECT_NO_THROW(CPathUtils::Rename(Path("none"), Path("none")));
    EXPECT_NO_THROW(CPathUtils::Rename("", ""));
    EXPECT_NO_THROW(CPathUtils::Rename(Path("file/x"), Path("file/x")));
}

TEST_F(PathUtils, RenameComparesPathsByteByByte)
{
    for (const char* name : {"./file", "/file", "folder/../file"})
        EXPECT_EQ("Target path currently exist.\nCPathUtils: Failed to rename file from [" + Path("file") +
                      "] to [" + Path(name) + "].",
                  Refusal(CPathUtils::Rename, Path("file"), Path(name)));
}

TEST_F(PathUtils, RenameWantsASource)
{
    EXPECT_EQ("Source path is not exist.\nCPathUtils: Failed to rename file from [" + Path("none") +
                  "] to [" + Path("new") + "].",
              Refusal(CPathUtils::Rename, Path("none"), Path("new")));
    EXPECT_EQ("Path is not set." + FailedCheck("") + "\nCPathUtils: Failed to rename file from [] to [x].",
              Refusal(CPathUtils::Rename, "", "x"));
    EXPECT_EQ("Path is not set." + FailedCheck("") + "\nCPathUtils: Failed to rename file from [" +
                  Path("file") + "] to [].",
              Refusal(CPathUtils::Rename, Path("file"), ""));
}

TEST_F(PathUtils, RenameNeverReplaces)
{
    for (const char* name : {"folder", "link", "dangling"})
        EXPECT_EQ("Target path currently exist.\nCPathUtils: Failed to rename file from [" + Path("file") +
                      "] to [" + Path(name) + "].",
                  Refusal(CPathUtils::Rename, Path("file"), Path(name)));
}

TEST_F(PathUtils, RenameThatFailsIsToldWithItsErrno)
{
    EXPECT_EQ("No such file or directory\nCPathUtils: Failed to rename file from [" + Path("file") +
                  "] to [" + Path("none/x") + "].",
              Thrown<posix::errno_exc_t>([&] { CPathUtils::Rename(Path("file"), Path("none/x")); }));
}

TEST_F(PathUtils, DeleteTakesFilesLinksAndEmptyFolders)
{
    for (const char* name : {"link", "dangling", "circle", "folder"})
    {
        CPathUtils::Delete(Path(name));
        EXPECT_FALSE(Stands(Path(name))) << name;
    }
    EXPECT_TRUE(Stands(Path("file")));
}

TEST_F(PathUtils, DeleteOfNothingIsNoFailure)
{
    EXPECT_NO_THROW(CPathUtils::Delete(Path("none")));
    EXPECT_NO_THROW(CPathUtils::Delete(Path("file/x")));
}

TEST_F(PathUtils, DeleteThatFailsIsToldInTheSystemsWords)
{
    EXPECT_EQ("Path is not set.\nCPathUtils: Failed to delete file or directory [].",
              Thrown<exc::runtime_exc_t>([] { CPathUtils::Delete(""); }));
    EXPECT_EQ("Directory not empty\nCPathUtils: Failed to delete file or directory [" + m_folder.path() +
                  "].",
              Thrown<exc::runtime_exc_t>([&] { CPathUtils::Delete(m_folder.path()); }));
}

// FindCommand

TEST(FindCommand, FirstOfThreeFoldersWins)
{
    InPrivateRoot(
        []
        {
            for (const char* folder : {"/bin", "/usr/bin", "/usr/local/bin", "/usr/sbin", "/sbin"})
                std::filesystem::create_directories(folder);
            WriteFile("/c", "");
            WriteFile("/sbin/c", "");
            WriteFile("/usr/sbin/c", "");
            EXPECT_EQ("Failed to find command [c] full path.",
                      Thrown<exc::runtime_exc_t>([] { CPathUtils::FindCommand("c"); }));
            WriteFile("/usr/local/bin/c", "");
            EXPECT_EQ("/usr/local/bin/c", CPathUtils::FindCommand("c"));
            WriteFile("/bin/c", "");
            EXPECT_EQ("/bin/c", CPathUtils::FindCommand("c"));
            std::filesystem::create_directory("/usr/bin/c");
            EXPECT_EQ("/usr/bin/c", CPathUtils::FindCommand("c"));
        });
}

TEST(FindCommand, LinkToNothingIsNoHitAndALinkToAFileIs)
{
    InPrivateRoot(
        []
        {
            for (const char* folder : {"/bin", "/usr/bin"})
                std::filesystem::create_directories(folder);
            WriteFile("/file", "");
            std::filesystem::create_symlink("/none", "/usr/bin/c");
            std::filesystem::create_symlink("/file", "/bin/c");
            EXPECT_EQ("/bin/c", CPathUtils::FindCommand("c"));
        });
}

TEST(FindCommand, NameIsPutBehindTheFolderAsItIs)
{
    InPrivateRoot(
        []
        {
            for (const char* folder : {"/bin", "/usr/bin"})
                std::filesystem::create_directories(folder);
            WriteFile("/bin/c", "");
            EXPECT_EQ("/bin//c", CPathUtils::FindCommand("/c"));
            EXPECT_EQ("/usr/bin/../../bin/c", CPathUtils::FindCommand("../../bin/c"));
        });
}

TEST(FindCommand, EmptyNameIsTheFirstFolderThatExists)
{
    InPrivateRoot(
        []
        {
            std::filesystem::create_directory("/bin");
            EXPECT_EQ("/bin/", CPathUtils::FindCommand(""));
            std::filesystem::create_directories("/usr/bin");
            EXPECT_EQ("/usr/bin/", CPathUtils::FindCommand(""));
        });
}

TEST(FindCommand, AnyNameIsLookedForByteByByte)
{
    InPrivateRoot(
        []
        {
            std::filesystem::create_directories("/usr/bin");
            EXPECT_EQ("Failed to find command [" + kOddName + "] full path.",
                      Thrown<exc::runtime_exc_t>([] { CPathUtils::FindCommand(kOddName); }));
            WriteFile("/usr/bin/" + kOddName, "");
            EXPECT_EQ("/usr/bin/" + kOddName, CPathUtils::FindCommand(kOddName));
            WriteFile("/usr/bin/" + kLongestName, "");
            EXPECT_EQ("/usr/bin/" + kLongestName, CPathUtils::FindCommand(kLongestName));
        });
}

TEST(FindCommand, PathAndCurrentFolderDoNotMatter)
{
    const temp_folder_t folder;
    WriteFile(folder / "nelvo-command", "");
    InChild(
        [&]
        {
            ASSERT_EQ(0, ::chdir(folder.path().c_str()));
            ::setenv("PATH", folder.path().c_str(), 1);
            EXPECT_EQ("Failed to find command [nelvo-command] full path.",
                      Thrown<exc::runtime_exc_t>([] { CPathUtils::FindCommand("nelvo-command"); }));
        });
}

TEST(FindCommand, FailureToLookHasNoContext)
{
    InPrivateRoot(
        []
        {
            std::filesystem::create_directories("/usr/bin");
            WriteFile("/usr/bin/ls", "");
            EXPECT_EQ("Not a directory\nFailed to get file system object info: '/usr/bin/ls/x'",
                      Thrown<posix::errno_exc_t>([] { CPathUtils::FindCommand("ls/x"); }));
        });
}

// CreateDir

TEST_F(PathUtils, CreateDirReadsTheModesDigitsAsOctal)
{
    CPathUtils::CreateDir(Path("a"), false, 750);
    EXPECT_EQ(0750u, ModeOf(Path("a")));
    CPathUtils::CreateDir(Path("b"), false, 1777);
    EXPECT_EQ(01777u, ModeOf(Path("b")));
    CPathUtils::CreateDir(Path("c"), false, 0);
    EXPECT_EQ(0u, ModeOf(Path("c")));
    EXPECT_EQ(0, ::chmod(Path("c").c_str(), 0700));
    CPathUtils::CreateDir(Path("d"), false, 789);
    EXPECT_EQ(01011u, ModeOf(Path("d")));
    EXPECT_EQ(0, ::chmod(Path("d").c_str(), 0700));
}

TEST_F(PathUtils, CreateDirIsSubjectToTheUmask)
{
    const file_mask_t narrow(027);
    CPathUtils::CreateDir(Path("a"), false, 777);
    EXPECT_EQ(0750u, ModeOf(Path("a")));
}

TEST_F(PathUtils, CreateDirWithParentsGivesEachTheMode)
{
    CPathUtils::CreateDir(Path("a/b/c"), true, 711);
    EXPECT_EQ(0711u, ModeOf(Path("a")));
    EXPECT_EQ(0711u, ModeOf(Path("a/b")));
    EXPECT_EQ(0711u, ModeOf(Path("a/b/c")));
}

TEST_F(PathUtils, CreateDirTakesWhatStandsThere)
{
    for (const char* name : {"file", "folder", "dangling"})
        EXPECT_NO_THROW(CPathUtils::CreateDir(Path(name), true, 755)) << name;
    EXPECT_EQ("text", ReadFile(Path("file")));
}

TEST_F(PathUtils, CreateDirWithoutParentsWantsThem)
{
    EXPECT_EQ("No such file or directory\nUnable to create directory [" + Path("a/b") +
                  "].\nCPathUtils: Failed to create directory (path = [" + Path("a/b") +
                  "], parents = [false], mode = [755]).",
              Thrown<posix::errno_exc_t>([&] { CPathUtils::CreateDir(Path("a/b"), false, 755); }));
}

TEST_F(PathUtils, CreateDirOfNoPathIsAFailure)
{
    EXPECT_EQ("Path is not set.\nCPathUtils: Failed to create directory (path = [], parents = [true], mode = "
              "[7]).",
              Thrown<exc::runtime_exc_t>([] { CPathUtils::CreateDir("", true, 7); }));
}

TEST_F(PathUtils, CreateDirTellsOfEachLevelThatItFailed)
{
    ASSERT_EQ(0, ::symlink("none/none", Path("a").c_str()));
    EXPECT_EQ("No such file or directory\nUnable to create directory [" + Path("a/b") +
                  "].\nCPathUtils: Failed to create directory (path = [" + Path("a/b") +
                  "], parents = [true], mode = [700]).\nCPathUtils: Failed to create directory (path = [" +
                  Path("a/b/c") + "], parents = [true], mode = [700]).",
              Thrown<posix::errno_exc_t>([&] { CPathUtils::CreateDir(Path("a/b/c"), true, 700); }));
}

TEST_F(PathUtils, CreateDirWithParentsFailsBehindASeparatorAtTheEnd)
{
    EXPECT_EQ("File exists\nUnable to create directory [" + Path("a/") +
                  "].\nCPathUtils: Failed to create directory (path = [" + Path("a/") +
                  "], parents = [true], mode = [755]).",
              Thrown<posix::errno_exc_t>([&] { CPathUtils::CreateDir(Path("a/"), true, 755); }));
    EXPECT_TRUE(Stands(Path("a")));
    EXPECT_NO_THROW(CPathUtils::CreateDir(Path("b/"), false, 755));
}

TEST_F(PathUtils, CreateDirWithParentsMakesWhatADotOrADoubledSeparatorNamesTwice)
{
    const auto twice = [&](const std::string& name)
    {
        return "File exists\nUnable to create directory [" + Path(name) +
               "].\nCPathUtils: Failed to create directory (path = [" + Path(name) +
               "], parents = [true], mode = [755]).";
    };
    const auto within = [&](const std::string& name)
    {
        return "\nCPathUtils: Failed to create directory (path = [" + Path(name) +
               "], parents = [true], mode = [755]).";
    };
    const auto failure = [&](const std::string& name)
    { return Thrown<posix::errno_exc_t>([&] { CPathUtils::CreateDir(Path(name), true, 755); }); };

    EXPECT_EQ(twice("a/") + within("a//b"), failure("a//b"));
    EXPECT_EQ(twice("c/.") + within("c/./d"), failure("c/./d"));
    EXPECT_TRUE(Stands(Path("a")) && !Stands(Path("a/b")));
    EXPECT_TRUE(Stands(Path("c")) && !Stands(Path("c/d")));
    CPathUtils::CreateDir(Path("a//b"), true, 755);
    CPathUtils::CreateDir(Path("c/./d"), true, 755);
    EXPECT_TRUE(Stands(Path("a/b")) && Stands(Path("c/d")));
}

TEST_F(PathUtils, CreateDirInTheRootOrHereNeedsNoParent)
{
    InPrivateRoot(
        [&]
        {
            CPathUtils::CreateDir("a", true, 755);
            EXPECT_TRUE(Stands("/a"));
            CPathUtils::CreateDir("/x", true, 755);
            EXPECT_TRUE(Stands("/x"));
        });
}

TEST_F(PathUtils, CreateDirShortFormsHaveMode755)
{
    CPathUtils::CreateDirPlain(Path("a"));
    EXPECT_EQ(0755u, ModeOf(Path("a")));
    CPathUtils::CreateDirParents(Path("b/c"), true);
    EXPECT_EQ(0755u, ModeOf(Path("b")));
    EXPECT_EQ(0755u, ModeOf(Path("b/c")));
    EXPECT_THROW(CPathUtils::CreateDirPlain(Path("d/e")), posix::errno_exc_t);
    EXPECT_THROW(CPathUtils::CreateDirParents(Path("d/e"), false), posix::errno_exc_t);
}

// Copy

TEST_F(PathUtils, CopyTakesTheContentAlone)
{
    std::string content;
    for (int i = 0; i != 10000; ++i)
        content += static_cast<char>(i % 251);
    for (const std::size_t size : {0u, 1u, 4095u, 4096u, 4097u, 8192u, 10000u})
    {
        WriteFile(Path("source"), content.substr(0, size));
        ASSERT_EQ(0, ::chmod(Path("source").c_str(), 0700));
        CPathUtils::Copy(Path("source"), Path("copy"));
        EXPECT_EQ(content.substr(0, size), ReadFile(Path("copy"))) << size;
        EXPECT_EQ(0666u, ModeOf(Path("copy")));
        CPathUtils::Delete(Path("copy"));
    }
}

// Only root gives a file to another.
TEST_F(PathUtils, CopyHasTheOwnerAndTheTimesOfANewFile)
{
    const timeval times[] = {{1000, 0}, {2000, 0}};
    if (::geteuid() == 0)
    {
        ASSERT_EQ(0, ::chown(Path("file").c_str(), 1234, 5678));
    }
    ASSERT_EQ(0, ::utimes(Path("file").c_str(), times));
    WriteFile(Path("new"), "");
    CPathUtils::Copy(Path("file"), Path("copy"));

    struct stat made = {};
    struct stat copy = {};
    ASSERT_EQ(0, ::stat(Path("new").c_str(), &made));
    ASSERT_EQ(0, ::stat(Path("copy").c_str(), &copy));
    EXPECT_EQ(made.st_uid, copy.st_uid);
    EXPECT_EQ(made.st_gid, copy.st_gid);
    EXPECT_LE(made.st_atim.tv_sec, copy.st_atim.tv_sec);
    EXPECT_LE(made.st_mtim.tv_sec, copy.st_mtim.tv_sec);
}

TEST_F(PathUtils, CopyMakesTheFoldersAboveTheTarget)
{
    CPathUtils::Copy(Path("link"), Path("a/b/copy"));
    EXPECT_EQ("text", ReadFile(Path("a/b/copy")));
    EXPECT_EQ(0755u, ModeOf(Path("a/b")));
}

TEST_F(PathUtils, CopyToABareNameNeedsNoFolder)
{
    InChild(
        [&]
        {
            ASSERT_EQ(0, ::chdir(m_folder.path().c_str()));
            CPathUtils::Copy("file", "copy");
        });
    EXPECT_EQ("text", ReadFile(Path("copy")));
}

TEST_F(PathUtils, CopyIntoTheRootFails)
{
    InPrivateRoot(
        []
        {
            WriteFile("/file", "text");
            EXPECT_EQ(
                "Path is not set.\nCPathUtils: Failed to create directory (path = [], parents = [true], mode = [755]).\nCPathUtils: Failed to copy file from [/file] to [/copy].",
                Refusal(CPathUtils::Copy, "/file", "/copy"));
            EXPECT_FALSE(Stands("/copy"));
        });
}

TEST_F(PathUtils, CopyBehindADoubledSeparatorFailsUntilTheFolderStands)
{
    EXPECT_EQ("File exists\nUnable to create directory [" + Path("x/") +
                  "].\nCPathUtils: Failed to create directory (path = [" + Path("x/") +
                  "], parents = [true], mode = [755]).\nCPathUtils: Failed to copy file from [" +
                  Path("file") + "] to [" + Path("x//y") + "].",
              Thrown<posix::errno_exc_t>([&] { CPathUtils::Copy(Path("file"), Path("x//y")); }));
    EXPECT_TRUE(Stands(Path("x")) && !Stands(Path("x/y")));
    CPathUtils::Copy(Path("file"), Path("x//y"));
    EXPECT_EQ("text", ReadFile(Path("x/y")));
}

TEST_F(PathUtils, CopyWantsBothPaths)
{
    EXPECT_EQ("Path is not set." + FailedCheck("") + "\nCPathUtils: Failed to copy file from [] to [x].",
              Refusal(CPathUtils::Copy, "", "x"));
    EXPECT_EQ("Path is not set." + FailedCheck("") + "\nCPathUtils: Failed to copy file from [" +
                  Path("file") + "] to [].",
              Refusal(CPathUtils::Copy, Path("file"), ""));
}

TEST_F(PathUtils, CopyWantsASourceAndNoTarget)
{
    const auto context = [&](const std::string& source, const std::string& target)
    { return "\nCPathUtils: Failed to copy file from [" + Path(source) + "] to [" + Path(target) + "]."; };

    EXPECT_EQ("Source path is not exist." + context("none", "copy"),
              Refusal(CPathUtils::Copy, Path("none"), Path("copy")));
    EXPECT_EQ("Target path currently exist." + context("file", "dangling"),
              Refusal(CPathUtils::Copy, Path("file"), Path("dangling")));
    EXPECT_EQ("Target path currently exist." + context("file", "file"),
              Refusal(CPathUtils::Copy, Path("file"), Path("file")));
}

TEST_F(PathUtils, CopyThatCannotOpenNamesTheFile)
{
    EXPECT_EQ("Unable to open source file: [" + Path("dangling") +
                  "].\nCPathUtils: Failed to copy file from [" + Path("dangling") + "] to [" +
                  Path("a/copy") + "].",
              Refusal(CPathUtils::Copy, Path("dangling"), Path("a/copy")));
    EXPECT_FALSE(Stands(Path("a")));

    const std::string folder = Path("a/");
    EXPECT_EQ("Unable to open target file: [" + folder + "].\nCPathUtils: Failed to copy file from [" +
                  Path("file") + "] to [" + folder + "].",
              Refusal(CPathUtils::Copy, Path("file"), folder));
}

TEST_F(PathUtils, CopyOfAFolderIsAnEmptyFile)
{
    CPathUtils::Copy(Path("folder"), Path("copy"));
    EXPECT_EQ("", ReadFile(Path("copy")));
}

TEST_F(PathUtils, CopyToAFullDiskIsShortWithoutAWord)
{
    WriteFile(Path("source"), std::string(1000000, 'x'));
    InChild(
        [&]
        {
            const private_disk_t disk(Path("folder"), 65536);
            CPathUtils::Copy(Path("source"), Path("folder/copy"));
            EXPECT_EQ(65536u, std::filesystem::file_size(Path("folder/copy")));
        });
}

// Names

TEST_F(PathUtils, AnyNameIsANameLikeOthers)
{
    for (const std::string& name : {kOddName, kLongestName})
    {
        const std::string path = Path(name);
        CPathUtils::CreateDirPlain(path);
        EXPECT_TRUE(CPathUtils::Exists(path)) << name;
        CPathUtils::CreateDir(path + "/" + name, true, 700);
        CPathUtils::Copy(Path("file"), path + "/copy");
        EXPECT_EQ("text", ReadFile(path + "/copy")) << name;
        CPathUtils::CreateHardLink(path + "/copy", path + "/hard");
        CPathUtils::CreateSymLink(name, path + "/link");
        EXPECT_EQ(name, CPathUtils::ReadLink(path + "/link"));
        CPathUtils::Rename(path, Path("new"));
        EXPECT_TRUE(!Stands(path) && Stands(Path("new/hard"))) << name;
        CPathUtils::Rename(Path("new"), path);
        CPathUtils::Delete(path + "/" + name);
        EXPECT_FALSE(Stands(path + "/" + name));
        InChild(
            [&]
            {
                ASSERT_EQ(0, ::chdir(path.c_str()));
                EXPECT_EQ(path, CPathUtils::GetCurrentDir());
            });
    }
}

TEST_F(PathUtils, NamesInFailuresAreNotScannedForReferences)
{
    const std::string below_file = Path("file/" + kOddName);
    const std::string path = Path("none/" + kOddName);
    const std::string file = Path("file");
    const std::string context = "\nCPathUtils: Failed to ";
    const auto failure = [](const auto& call) { return Thrown<posix::errno_exc_t>(call); };

    EXPECT_EQ("Not a directory" + FailedCheck(below_file), failure([&] { CPathUtils::Exists(below_file); }));
    EXPECT_EQ("No such file or directory" + context + "create hard link [" + path + "] with target [" + file +
                  "].",
              failure([&] { CPathUtils::CreateHardLink(file, path); }));
    EXPECT_EQ("No such file or directory" + context + "create symbolic link [" + path + "] with target [" +
                  kOddName + "].",
              failure([&] { CPathUtils::CreateSymLink(kOddName, path); }));
    EXPECT_EQ("No such file or directory" + context + "rename file from [" + file + "] to [" + path + "].",
              failure([&] { CPathUtils::Rename(file, path); }));
    EXPECT_EQ("No such file or directory\nUnable to create directory [" + path + "]." + context +
                  "create directory (path = [" + path + "], parents = [false], mode = [755]).",
              failure([&] { CPathUtils::CreateDirPlain(path); }));
    EXPECT_EQ("No such file or directory\nreadlink(" + path + ") has failed." + context + "read link [" +
                  path + "].",
              failure([&] { CPathUtils::ReadLink(path); }));
    EXPECT_EQ("Source path is not exist." + context + "copy file from [" + path + "] to [" + kOddName + "].",
              Refusal(CPathUtils::Copy, path, kOddName));
}

TEST_F(PathUtils, OddNameOfAFullFolderStandsInTheFailureToDeleteIt)
{
    const std::string path = Path(kOddName);
    CPathUtils::CreateDir(path + "/x", true, 755);
    EXPECT_EQ("Directory not empty\nCPathUtils: Failed to delete file or directory [" + path + "].",
              Thrown<exc::runtime_exc_t>([&] { CPathUtils::Delete(path); }));
}
