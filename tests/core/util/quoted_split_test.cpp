#include "nelvo/core/util/quoted_split.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/failure_text.h"

using testing::ElementsAre;
using testing::IsEmpty;
using util::SplitQuoted;

namespace
{

std::string SplitFailure(const std::string& text)
{
    return FailureText([&] { SplitQuoted(text); });
}

} // namespace

TEST(QuotedSplit, SplitsAtBlanksAndTabs)
{
    EXPECT_THAT(SplitQuoted("a b\tc"), ElementsAre("a", "b", "c"));
    EXPECT_THAT(SplitQuoted("  a \t b  "), ElementsAre("a", "b"));
    EXPECT_THAT(SplitQuoted("a\nb"), ElementsAre("a\nb"));
}

TEST(QuotedSplit, NothingGivesNothing)
{
    EXPECT_THAT(SplitQuoted(""), IsEmpty());
    EXPECT_THAT(SplitQuoted(" \t "), IsEmpty());
}

TEST(QuotedSplit, KeepsQuotedBlanks)
{
    EXPECT_THAT(SplitQuoted("'a b' c"), ElementsAre("a b", "c"));
    EXPECT_THAT(SplitQuoted("\"a \t b\" c"), ElementsAre("a \t b", "c"));
    EXPECT_THAT(SplitQuoted("' '"), ElementsAre(" "));
}

TEST(QuotedSplit, QuotesDoNotEndAToken)
{
    EXPECT_THAT(SplitQuoted("--name='a b'c d"), ElementsAre("--name=a bc", "d"));
    EXPECT_THAT(SplitQuoted("'a'\"b\""), ElementsAre("ab"));
}

TEST(QuotedSplit, DropsAnEmptyTokenInQuotes)
{
    EXPECT_THAT(SplitQuoted("a '' \"\" b"), ElementsAre("a", "b"));
}

TEST(QuotedSplit, AQuoteInQuotesStaysOnlyBehindSomething)
{
    EXPECT_THAT(SplitQuoted("\"say 'hi' now\""), ElementsAre("say 'hi' now"));
    EXPECT_THAT(SplitQuoted("'say \"hi\" now'"), ElementsAre("say \"hi\" now"));
    EXPECT_THAT(SplitQuoted("\"'a'\""), ElementsAre("a'"));
    EXPECT_THAT(SplitQuoted("'\"a\"'"), ElementsAre("a\""));
}

TEST(QuotedSplit, EachKindOfQuoteIsClosedOnItsOwn)
{
    EXPECT_THAT(SplitQuoted("\"it's\"'"), ElementsAre("it's\""));
    EXPECT_THAT(SplitQuoted("\"a ' b\" c' d"), ElementsAre("a ' b\" c", "d"));
}

TEST(QuotedSplit, RefusesAQuoteThatIsNotClosed)
{
    EXPECT_EQ("Failed to separate string ['a b]. Invalid quote order", SplitFailure("'a b"));
    EXPECT_EQ("Failed to separate string [a \"b]. Invalid quote order", SplitFailure("a \"b"));
    EXPECT_EQ("Failed to separate string [\"it's\"]. Invalid quote order", SplitFailure("\"it's\""));
    EXPECT_EQ("Failed to separate string [']. Invalid quote order", SplitFailure("'"));
}

TEST(QuotedSplit, TheWideFormDoesTheSame)
{
    EXPECT_THAT(SplitQuoted(L"'a b'\tc"), ElementsAre(L"a b", L"c"));
    EXPECT_THAT(SplitQuoted(L"\"'\u20AC'\""), ElementsAre(L"\u20AC'"));
    EXPECT_EQ("Failed to separate string ['\xE2\x82\xAC]. Invalid quote order",
              FailureText([] { SplitQuoted(L"'\u20AC"); }));
}

// U+0120, U+0122 and U+0127 end with the codes of a blank and of the two quotes.
TEST(QuotedSplit, WideCharactersThatEndLikeABlankOrAQuoteAreNone)
{
    EXPECT_THAT(SplitQuoted(L"a\u0120b\u0122c\u0127d"), ElementsAre(L"a\u0120b\u0122c\u0127d"));
}

TEST(QuotedSplit, WideTextThatIsNoUnicodeFailsWithAnotherText)
{
    EXPECT_EQ("Unicode string cannot be converted to multibyte UTF8 string.",
              FailureText([] { SplitQuoted(L"'\xd800"); }));
    EXPECT_THAT(SplitQuoted(L"'\xd800'"), ElementsAre(L"\xd800"));
}
