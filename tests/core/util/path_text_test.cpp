#include "nelvo/core/util/path_text.h"

#include <string>

#include <gtest/gtest.h>

TEST(PathText, TheLastSeparatorIsOfEitherKind)
{
    EXPECT_EQ(2u, util::FindLastSeparator("/a/b"));
    EXPECT_EQ(2u, util::FindLastSeparator("/a\\b"));
    EXPECT_EQ(2u, util::FindLastSeparator("\\a/b"));
    EXPECT_EQ(0u, util::FindLastSeparator("/"));
    EXPECT_EQ(std::string::npos, util::FindLastSeparator("a"));
    EXPECT_EQ(std::string::npos, util::FindLastSeparator(""));
    EXPECT_EQ(2u, util::FindLastSeparator(L"/a\\b"));
    EXPECT_EQ(std::wstring::npos, util::FindLastSeparator(L"a"));
}

TEST(PathText, APathIsSplitAtTheLastSlash)
{
    EXPECT_EQ("/a", util::SplitPath("/a/b").folder);
    EXPECT_EQ("b", util::SplitPath("/a/b").name);
    EXPECT_EQ("", util::SplitPath("/b").folder);
    EXPECT_EQ("b", util::SplitPath("/b").name);
    EXPECT_EQ("a", util::SplitPath("a/").folder);
    EXPECT_EQ("", util::SplitPath("a/").name);
    EXPECT_EQ("/a", util::SplitPath("/a/b\\c").folder);
    EXPECT_EQ("b\\c", util::SplitPath("/a/b\\c").name);
}

TEST(PathText, APathWithoutASlashIsAllName)
{
    EXPECT_EQ("", util::SplitPath("a\\b").folder);
    EXPECT_EQ("a\\b", util::SplitPath("a\\b").name);
    EXPECT_EQ("", util::SplitPath("").folder);
    EXPECT_EQ("", util::SplitPath("").name);
}

TEST(PathText, TheWideSplitDoesTheSame)
{
    EXPECT_EQ(L"/a", util::SplitPath(L"/a/b").folder);
    EXPECT_EQ(L"b", util::SplitPath(L"/a/b").name);
    EXPECT_EQ(L"", util::SplitPath(L"a\\b").folder);
    EXPECT_EQ(L"a\\b", util::SplitPath(L"a\\b").name);
}

TEST(PathText, AFileNameStandsBehindTheLastSeparatorOfEitherKind)
{
    EXPECT_EQ("b", util::FileName("/a/b"));
    EXPECT_EQ("c", util::FileName("/a/b\\c"));
    EXPECT_EQ("c", util::FileName("a\\b/c"));
    EXPECT_EQ("", util::FileName("/a/"));
    EXPECT_EQ("a", util::FileName("a"));
    EXPECT_EQ("", util::FileName(""));
    EXPECT_EQ(L"c", util::FileName(L"/a/b\\c"));
    EXPECT_EQ(L"a", util::FileName(L"a"));
}

TEST(PathText, ANameWithADotInFrontOrASeparatorIsNotRelative)
{
    EXPECT_TRUE(util::IsRelativeName("a"));
    EXPECT_TRUE(util::IsRelativeName("a.b"));
    EXPECT_TRUE(util::IsRelativeName(""));
    EXPECT_FALSE(util::IsRelativeName("."));
    EXPECT_FALSE(util::IsRelativeName("./a"));
    EXPECT_FALSE(util::IsRelativeName(".a"));
    EXPECT_FALSE(util::IsRelativeName("a/b"));
    EXPECT_FALSE(util::IsRelativeName("a\\b"));
    EXPECT_FALSE(util::IsRelativeName("/a"));
    EXPECT_TRUE(util::IsRelativeName(L"a"));
    EXPECT_TRUE(util::IsRelativeName(L""));
    EXPECT_FALSE(util::IsRelativeName(L".a"));
    EXPECT_FALSE(util::IsRelativeName(L"a\\b"));
}

TEST(PathText, TheSeparatorIsABackslashIfThePathHoldsOne)
{
    EXPECT_EQ('/', util::PathSeparator("/a/b"));
    EXPECT_EQ('/', util::PathSeparator(""));
    EXPECT_EQ('\\', util::PathSeparator("a\\b"));
    EXPECT_EQ('\\', util::PathSeparator("/a/b\\c/d"));
    EXPECT_EQ(L'/', util::PathSeparator(L"a"));
    EXPECT_EQ(L'\\', util::PathSeparator(L"a\\b"));
}

TEST(PathText, JoiningPutsNoSeparatorBetween)
{
    EXPECT_EQ("/root/tmp/", util::JoinPath("/root", "/tmp/"));
    EXPECT_EQ("/root//tmp/", util::JoinPath("/root/", "/tmp/"));
    EXPECT_EQ("ab", util::JoinPath("a", "b"));
    EXPECT_EQ("b", util::JoinPath("", "b"));
    EXPECT_EQ(L"/root/tmp/", util::JoinPath(L"/root", L"/tmp/"));
}
