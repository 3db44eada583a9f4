#include "nelvo/fs/file_aging.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "tests/support/temp_folder.h"
#include "tests/support/thrown.h"

using util::AgedFileName;

TEST(AgedFileName, AgeStandsBeforeTheExtension)
{
    EXPECT_EQ("a.2.log", AgedFileName("a.log", ".log", 2));
    EXPECT_EQ("/x/a.10.log.gz", AgedFileName("/x/a.log.gz", ".log.gz", 10));
}

TEST(AgedFileName, ExtensionIsFoundInEitherCaseAndWrittenAsGiven)
{
    EXPECT_EQ("A.1.log.gz", AgedFileName("A.LOG.gz", ".log.gz", 1));
    EXPECT_EQ("a.1.LOG", AgedFileName("a.log", ".LOG", 1));
}

TEST(AgedFileName, AgeZeroIsThePathItself)
{
    for (const char* path : {"a.log", "A.LOG", "a", "a.", "a.txt", ""})
        EXPECT_EQ(path, AgedFileName(path, ".log", 0));
}

TEST(AgedFileName, PathWithoutADotGetsOne) { EXPECT_EQ("a.3", AgedFileName("a", ".log", 3)); }

TEST(AgedFileName, DotAtTheEndServes) { EXPECT_EQ("a.3", AgedFileName("a.", ".log", 3)); }

TEST(AgedFileName, AnotherEndingStays)
{
    EXPECT_EQ("a.txt.3", AgedFileName("a.txt", ".log", 3));
    EXPECT_EQ("a.txt.gz.1", AgedFileName("a.txt.gz", ".log.gz", 1));
    EXPECT_EQ("/d.log/x.3", AgedFileName("/d.log/x", ".log", 3));
}

TEST(AgedFileName, ExtensionWithoutItsDotLeavesTheDotInFront)
{
    EXPECT_EQ("a..2gz", AgedFileName("a.gz", "gz", 2));
}

TEST(AgedFileName, ExtensionMayBeTheWholeNameOrNothing)
{
    EXPECT_EQ(".2.log", AgedFileName(".log", ".log", 2));
    EXPECT_EQ("a.txt.2", AgedFileName("a.txt", "", 2));
    EXPECT_EQ(".2", AgedFileName("", ".log", 2));
}

namespace
{

class AgeFile : public testing::Test
{
protected:
    // A file whose content is its name.
    void Make(const std::string& name) { WriteFile(m_folder / name, name); }

    void Age(int limit, const std::string& name = "a.log") { util::AgeFile(limit, m_folder / name, ".log"); }

    // "name<content" for each file, sorted.
    std::vector<std::string> Files() const
    {
        std::vector<std::string> files;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder.path()))
            files.push_back(entry.path().filename().string() + "<" + ReadFile(entry.path().string()));
        std::sort(files.begin(), files.end());
        return files;
    }

    using files_t = std::vector<std::string>;
    temp_folder_t m_folder;
};

} // namespace

TEST_F(AgeFile, EachCopyMovesUpAndTheOldestGoes)
{
    for (const char* name : {"a.log", "a.1.log", "a.2.log"})
        Make(name);
    Age(2);
    EXPECT_EQ((files_t{"a.1.log<a.log", "a.2.log<a.1.log"}), Files());
}

TEST_F(AgeFile, CopiesBeyondTheLimitStay)
{
    for (const char* name : {"a.log", "a.1.log", "a.2.log"})
        Make(name);
    Age(1);
    EXPECT_EQ((files_t{"a.1.log<a.log", "a.2.log<a.2.log"}), Files());
}

TEST_F(AgeFile, GapsMoveUpToo)
{
    for (const char* name : {"a.log", "a.2.log"})
        Make(name);
    Age(10);
    EXPECT_EQ((files_t{"a.1.log<a.log", "a.3.log<a.2.log"}), Files());
}

TEST_F(AgeFile, LimitZeroRemovesTheFileItself)
{
    for (const char* name : {"a.log", "a.1.log"})
        Make(name);
    Age(0);
    EXPECT_EQ((files_t{"a.1.log<a.1.log"}), Files());
}

TEST_F(AgeFile, NegativeLimitDoesNothing)
{
    Make("a.log");
    Age(-1);
    EXPECT_EQ((files_t{"a.log<a.log"}), Files());
}

TEST_F(AgeFile, NothingToAgeIsNoFailure)
{
    Age(10);
    EXPECT_EQ(files_t{}, Files());
}

TEST_F(AgeFile, NameWithAnotherEndingAgesAtItsEnd)
{
    for (const char* name : {"a.txt", "a.txt.1"})
        Make(name);
    Age(2, "a.txt");
    EXPECT_EQ((files_t{"a.txt.1<a.txt", "a.txt.2<a.txt.1"}), Files());
}

TEST_F(AgeFile, FailureNamesPathExtensionAndLimit)
{
    std::filesystem::create_directories(m_folder / "a.2.log/x");
    EXPECT_EQ("Directory not empty\n"
              "Cannot age file. File path: [" +
                  (m_folder / "a.log") + "]. Extension: [.log]. Ages limit: [2].",
              Thrown<exc::runtime_exc_t>([&] { Age(2); }));
}

TEST_F(AgeFile, FailureInTheMiddleLeavesWhatWasMoved)
{
    Make("a.log");
    Make("a.2.log");
    std::filesystem::create_symlink("a.1.log", m_folder / "a.1.log");
    EXPECT_EQ("Too many levels of symbolic links\n"
              "Cannot age file. File path: [" +
                  (m_folder / "a.log") + "]. Extension: [.log]. Ages limit: [3].",
              Thrown<exc::runtime_exc_t>([&] { Age(3); }));
    std::filesystem::remove(m_folder / "a.1.log");
    EXPECT_EQ((files_t{"a.3.log<a.2.log", "a.log<a.log"}), Files());
}

TEST_F(AgeFile, AnyNameIsANameLikeOthers)
{
    const std::string odd = "%1 %2\n\xff";
    Make(odd);
    Make(odd + ".1");
    Age(2, odd);
    EXPECT_EQ((files_t{odd + ".1<" + odd, odd + ".2<" + odd + ".1"}), Files());
}

TEST_F(AgeFile, NameWithoutRoomForAnAgeStandsInTheFailure)
{
    for (const std::string& name : {std::string(255, 'x'), "%1 %2\n\xff" + std::string(248, 'x')})
    {
        EXPECT_EQ("File name too long\nCannot age file. File path: [" + (m_folder / name) +
                      "]. Extension: [.log]. Ages limit: [1].",
                  Thrown<exc::runtime_exc_t>([&] { Age(1, name); }));
        Make(name);
        Age(0, name);
        EXPECT_EQ(files_t{}, Files());
    }
}

TEST_F(AgeFile, EmptyPathIsNothingToAge) { EXPECT_NO_THROW(util::AgeFile(2, "", ".log")); }
