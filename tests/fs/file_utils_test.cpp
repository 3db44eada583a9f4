#include "nelvo/fs/file_utils.h"

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "nelvo/core/exc/errno_exc.h"
#include "tests/support/temp_folder.h"

namespace
{

void Link(const std::string& path, const std::string& target)
{
    EXPECT_EQ(0, ::symlink(target.c_str(), path.c_str())) << path;
}

mode_t Mode(const std::string& path)
{
    struct stat info = {};
    EXPECT_EQ(0, ::stat(path.c_str(), &info)) << path;
    return info.st_mode;
}

template <class function_t>
std::string FailureOf(const function_t& function)
{
    try
    {
        function();
    }
    catch (const posix::errno_exc_t& e)
    {
        return e.what();
    }
    return "no failure";
}

} // namespace

// ---- ExistsByStat ----

TEST(ExistsByStat, FindsFilesAndFolders)
{
    const temp_folder_t folder;
    WriteFile(folder / "file", "");

    EXPECT_TRUE(util::ExistsByStat(folder / "file"));
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
    const mode_t before = ::umask(0);
    util::CreateDirectory(folder / "open");
    ::umask(027);
    util::CreateDirectory(folder / "closed");
    ::umask(before);

    EXPECT_EQ(static_cast<mode_t>(S_IFDIR | 0755), Mode(folder / "open"));
    EXPECT_EQ(static_cast<mode_t>(S_IFDIR | 0750), Mode(folder / "closed"));
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
    ASSERT_EQ(0, ::chdir(folder.path().c_str()));
    util::CreateParentFolders("a/b/file");
    util::CreateParentFolders("file");
    ASSERT_EQ(0, ::chdir("/"));

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
