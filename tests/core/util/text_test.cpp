#include "nelvo/core/util/text.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

std::vector<std::string> Tokens(const std::string& text, const std::string& separators = ",")
{
    std::vector<std::string> tokens;
    util::Split(text, separators, tokens);
    return tokens;
}

std::vector<std::string> FullTokens(const std::string& text, const std::string& separators = ",")
{
    std::vector<std::string> tokens;
    util::Split(text, separators, tokens, false);
    return tokens;
}

} // namespace

TEST(Trim, TakesTheCharactersOfTheSetFromTheEnds)
{
    EXPECT_EQ(" a b", util::TrimRight(" a b \t", " \t"));
    EXPECT_EQ("a b \t", util::TrimLeft(" a b \t", " \t"));
    EXPECT_EQ("a b", util::Trim(" a b \t", " \t"));
    EXPECT_EQ("xax", util::Trim("yxaxy", "y"));
}

TEST(Trim, AnEmptySetChangesNothing)
{
    EXPECT_EQ(" a ", util::TrimRight(" a ", ""));
    EXPECT_EQ(" a ", util::TrimLeft(" a ", ""));
    EXPECT_EQ(" a ", util::Trim(" a ", ""));
}

TEST(Trim, NothingIsLeftOfATextOfTheSetAlone)
{
    EXPECT_EQ("", util::TrimRight(" \t ", "\t "));
    EXPECT_EQ("", util::TrimLeft(" \t ", "\t "));
    EXPECT_EQ("", util::Trim(" \t ", "\t "));
}

TEST(Trim, AnEmptyTextStaysEmpty)
{
    EXPECT_EQ("", util::TrimRight("", " "));
    EXPECT_EQ("", util::TrimLeft("", " "));
    EXPECT_EQ("", util::Trim("", " "));
    EXPECT_EQ("", util::Trim("", ""));
}

TEST(Trim, AZeroByteIsACharacterLikeOthers)
{
    EXPECT_EQ("\0a\0"s, util::Trim(" \0a\0 "s, " "));
    EXPECT_EQ("a", util::Trim("\0a\0"s, "\0"s));
}

TEST(Trim, TheWideFormsDoTheSame)
{
    EXPECT_EQ(L" a", util::TrimRight(L" a ", L" "));
    EXPECT_EQ(L"a ", util::TrimLeft(L" a ", L" "));
    EXPECT_EQ(L"a", util::Trim(L"\u20ACa\u20AC", L"\u20AC"));
    EXPECT_EQ(L" a ", util::Trim(L" a ", L""));
    EXPECT_EQ(L"", util::TrimRight(L"  ", L" "));
    EXPECT_EQ(L"", util::TrimLeft(L"  ", L" "));
    EXPECT_EQ(L"", util::Trim(L"  ", L" "));
}

TEST(FindNoCase, GivesTheFirstPosition)
{
    EXPECT_EQ(0, util::FindNoCase("abcabc", "ABC"));
    EXPECT_EQ(2, util::FindNoCase("abCDcd", "cd"));
    EXPECT_EQ(2, util::FindNoCase("xxUuId: 1", "uuid"));
}

TEST(FindNoCase, StartsWhereItIsTold)
{
    EXPECT_EQ(3, util::FindNoCase("abcabc", "ABC", 1));
    EXPECT_EQ(3, util::FindNoCase("abcabc", "ABC", 3));
    EXPECT_EQ(-1, util::FindNoCase("abcabc", "ABC", 4));
}

TEST(FindNoCase, GivesMinusOneForWhatIsNotThere)
{
    EXPECT_EQ(-1, util::FindNoCase("abc", "abd"));
    EXPECT_EQ(-1, util::FindNoCase("abc", "abcd"));
    EXPECT_EQ(-1, util::FindNoCase("", "a"));
    EXPECT_EQ(-1, util::FindNoCase("abc", "a", 100));
}

TEST(FindNoCase, AnEmptyTextIsFoundAtTheStart)
{
    EXPECT_EQ(0, util::FindNoCase("", ""));
    EXPECT_EQ(2, util::FindNoCase("abc", "", 2));
    EXPECT_EQ(3, util::FindNoCase("abc", "", 3));
    EXPECT_EQ(-1, util::FindNoCase("abc", "", 4));
}

TEST(FindNoCase, TheWideFormDoesTheSame)
{
    EXPECT_EQ(2, util::FindNoCase(L"abCDcd", L"cd"));
    EXPECT_EQ(4, util::FindNoCase(L"abCDcd", L"CD", 3));
    EXPECT_EQ(-1, util::FindNoCase(L"abc", L"abd"));
    EXPECT_EQ(0, util::FindNoCase(L"", L""));
    EXPECT_EQ(3, util::FindNoCase(L"abc", L"", 3));
    EXPECT_EQ(-1, util::FindNoCase(L"abc", L"", 4));
    EXPECT_EQ(1, util::FindNoCase(L"a\u20AC", L"\u20AC"));
}

TEST(StartsWithNoCase, ComparesTheHead)
{
    EXPECT_TRUE(util::StartsWithNoCase("/VMFS/Volumes/ds1", "/vmfs/volumes/"));
    EXPECT_TRUE(util::StartsWithNoCase("abc", "ABC"));
    EXPECT_TRUE(util::StartsWithNoCase("abc", ""));
    EXPECT_TRUE(util::StartsWithNoCase("", ""));
    EXPECT_FALSE(util::StartsWithNoCase("abc", "bc"));
    EXPECT_FALSE(util::StartsWithNoCase("ab", "abc"));
    EXPECT_FALSE(util::StartsWithNoCase("", "a"));
}

TEST(EndsWithNoCase, ComparesTheTail)
{
    EXPECT_TRUE(util::EndsWithNoCase("a.LOG", ".log"));
    EXPECT_TRUE(util::EndsWithNoCase("abc", "ABC"));
    EXPECT_TRUE(util::EndsWithNoCase("abc", ""));
    EXPECT_TRUE(util::EndsWithNoCase("", ""));
    EXPECT_FALSE(util::EndsWithNoCase("abc", "ab"));
    EXPECT_FALSE(util::EndsWithNoCase("bc", "abc"));
    EXPECT_FALSE(util::EndsWithNoCase("", "a"));
}

TEST(ComparingNoCase, TheWideFormsDoTheSame)
{
    EXPECT_TRUE(util::StartsWithNoCase(L"Abc", L"aB"));
    EXPECT_FALSE(util::StartsWithNoCase(L"Ab", L"abc"));
    EXPECT_FALSE(util::StartsWithNoCase(L"Abc", L"b"));
    EXPECT_TRUE(util::EndsWithNoCase(L"abC", L"Bc"));
    EXPECT_FALSE(util::EndsWithNoCase(L"bc", L"abc"));
    EXPECT_FALSE(util::EndsWithNoCase(L"abc", L"b"));
}

TEST(ComparingNoCase, KnowsTheCaseOfAsciiLettersOnly)
{
    EXPECT_FALSE(util::StartsWithNoCase("\xC3\xA9", "\xC3\x89"));
    EXPECT_TRUE(util::StartsWithNoCase("\xC3\xA9", "\xC3\xA9"));
    EXPECT_FALSE(util::StartsWithNoCase("@[`{", "`{@["));
}

TEST(ComparingNoCase, AZeroCharacterInBothEndsTheComparison)
{
    EXPECT_TRUE(util::StartsWithNoCase("a\0b"s, "A\0c"s));
    EXPECT_TRUE(util::EndsWithNoCase("a\0b"s, "A\0c"s));
    EXPECT_EQ(1, util::FindNoCase("xa\0b"s, "A\0c"s));
    EXPECT_TRUE(util::StartsWithNoCase(L"a\0b"s, L"A\0c"s));
    EXPECT_TRUE(util::EndsWithNoCase(L"a\0b"s, L"A\0c"s));
    EXPECT_EQ(1, util::FindNoCase(L"xa\0b"s, L"A\0c"s));
    EXPECT_FALSE(util::StartsWithNoCase("a\0b"s, "Ab"));
}

TEST(ComparingNoCase, ReadsNothingBehindTheView)
{
    EXPECT_EQ(-1, util::FindNoCase(std::string_view("abc").substr(0, 2), "bc"));
    EXPECT_FALSE(util::StartsWithNoCase(std::string_view("abc").substr(0, 2), "abc"));
}

TEST(Split, KeepsEmptyTokens)
{
    EXPECT_THAT(Tokens("a,b"), ElementsAre("a", "b"));
    EXPECT_THAT(Tokens("a,,b"), ElementsAre("a", "", "b"));
    EXPECT_THAT(Tokens(",a"), ElementsAre("", "a"));
    EXPECT_THAT(Tokens(",,a"), ElementsAre("", "", "a"));
}

TEST(Split, LeavesEmptyTokensOutWhenTold)
{
    EXPECT_THAT(FullTokens("a,,b"), ElementsAre("a", "b"));
    EXPECT_THAT(FullTokens(",a"), ElementsAre("a"));
    EXPECT_THAT(FullTokens(",,"), IsEmpty());
    EXPECT_THAT(FullTokens(","), IsEmpty());
    EXPECT_THAT(FullTokens("a,"), ElementsAre("a"));
}

TEST(Split, ASeparatorAtTheEndGivesNoEmptyToken)
{
    EXPECT_THAT(Tokens("a,"), ElementsAre("a"));
    EXPECT_THAT(Tokens("a,,"), ElementsAre("a", ""));
    EXPECT_THAT(Tokens(","), ElementsAre(""));
}

TEST(Split, AnEmptyTextGivesNothing)
{
    EXPECT_THAT(Tokens(""), IsEmpty());
    EXPECT_THAT(FullTokens(""), IsEmpty());
}

TEST(Split, ATextWithoutASeparatorIsOneToken)
{
    EXPECT_THAT(Tokens("abc"), ElementsAre("abc"));
    EXPECT_THAT(Tokens("abc", ""), ElementsAre("abc"));
}

TEST(Split, EachCharacterOfTheSetSeparates)
{
    EXPECT_THAT(Tokens("a,b;c", ";,"), ElementsAre("a", "b", "c"));
    EXPECT_THAT(Tokens("a;,b", ";,"), ElementsAre("a", "", "b"));
}

TEST(Split, AZeroByteIsACharacterLikeOthers)
{
    EXPECT_THAT(Tokens("a\0b,c"s), ElementsAre("a\0b"s, "c"));
    EXPECT_THAT(Tokens("a\0b"s, "\0"s), ElementsAre("a", "b"));
}

TEST(Split, AppendsToWhatIsThere)
{
    std::vector<std::string> tokens = {"first"};
    util::Split("a,b", ",", tokens);
    EXPECT_THAT(tokens, ElementsAre("first", "a", "b"));
}

TEST(Split, TheWideFormDoesTheSame)
{
    std::vector<std::wstring> tokens;
    util::Split(L"a,,b;", L",;", tokens);
    EXPECT_THAT(tokens, ElementsAre(L"a", L"", L"b"));

    tokens.clear();
    util::Split(L"a,,b;", L",;", tokens, false);
    EXPECT_THAT(tokens, ElementsAre(L"a", L"b"));
}

TEST(Split, AMebibyteOfSeparatorsGivesAsManyTokens)
{
    constexpr std::size_t kSize = 1024 * 1024;
    EXPECT_EQ(kSize, Tokens(std::string(kSize, ',')).size());
    EXPECT_THAT(FullTokens(std::string(kSize, ',')), IsEmpty());
}

TEST(ListText, PutsACommaAndABlankBetween)
{
    EXPECT_EQ("a, b, c", util::ListText({"a"s, "b"s, "c"s}));
    EXPECT_EQ("a", util::ListText({"a"s}));
    EXPECT_EQ("", util::ListText(std::vector<std::string>()));
    EXPECT_EQ(", ", util::ListText({""s, ""s}));
}

TEST(ListText, PutsEachItemInBracesWhenTold)
{
    EXPECT_EQ("{a}, {b}, {}", util::ListText({"a"s, "b"s, ""s}, true));
    EXPECT_EQ("", util::ListText(std::vector<std::string>(), true));
}

TEST(ListText, TheWideFormDoesTheSame)
{
    EXPECT_EQ(L"a, b", util::ListText({L"a"s, L"b"s}));
    EXPECT_EQ(L"{a}, {b}", util::ListText({L"a"s, L"b"s}, true));
}
