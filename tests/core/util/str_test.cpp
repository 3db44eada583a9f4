#include "nelvo/core/util/str.h"

#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "tests/support/failure_text.h"

using namespace std::string_literals;

namespace
{

std::string NarrowOf(const util::str_t& text) { return text.narrow(); }
std::wstring WideOf(const util::str_t& text) { return text.wide(); }

} // namespace

TEST(Str, IsEmptyAtFirst)
{
    const util::str_t text;
    EXPECT_TRUE(text.empty());
    EXPECT_EQ("", text.narrow());
    EXPECT_EQ(L"", text.wide());
}

TEST(Str, IsMadeFromTextOfEveryKind)
{
    EXPECT_EQ("/a", NarrowOf("/a"));
    EXPECT_EQ("/a", NarrowOf("/a"s));
    EXPECT_EQ("/a", NarrowOf(std::string_view("/ab").substr(0, 2)));
    EXPECT_EQ("/a", NarrowOf(L"/a"));
    EXPECT_EQ("/a", NarrowOf(L"/a"s));
    EXPECT_EQ("/a", NarrowOf(std::wstring_view(L"/ab").substr(0, 2)));
}

TEST(Str, WideTextIsKeptAsUtf8)
{
    EXPECT_EQ("/\xC3\xA9\xE2\x82\xAC", NarrowOf(L"/\u00E9\u20AC"));
    EXPECT_EQ("/\xC3\xA9", NarrowOf(L"/\u00E9"s));
}

TEST(Str, ReadsWide)
{
    EXPECT_EQ(L"/\u00E9\u20AC", WideOf("/\xC3\xA9\xE2\x82\xAC"));
    EXPECT_EQ(L"/\u00E9\u20AC", WideOf(L"/\u00E9\u20AC"));
}

TEST(Str, BytesThatAreNoUtf8AreKeptAndFailOnlyAsWideText)
{
    const util::str_t text = "/tmp/\xFF\xFE";
    EXPECT_EQ("/tmp/\xFF\xFE", text.narrow());
    EXPECT_EQ("Multibyte UTF8 string cannot be converted to unicode string. Source string: [/tmp/\xFF\xFE].",
              FailureText([&] { text.wide(); }));
}

TEST(Str, WideTextThatIsNoTextCannotBeKept)
{
    EXPECT_EQ("Unicode string cannot be converted to multibyte UTF8 string.",
              FailureText([] { NarrowOf(std::wstring(1, wchar_t(0xD800))); }));
}

TEST(Str, KeepsZeroCharacters)
{
    EXPECT_EQ("a\0b"s, NarrowOf("a\0b"s));
    EXPECT_EQ("a\0b"s, NarrowOf(L"a\0b"s));
    EXPECT_EQ(L"a\0b"s, WideOf("a\0b"s));
}

TEST(Str, ComparesByteByByte)
{
    EXPECT_TRUE(util::str_t("a") == util::str_t(L"a"));
    EXPECT_FALSE(util::str_t("a") == util::str_t("A"));
    EXPECT_TRUE(util::str_t("a") != util::str_t("A"));
    EXPECT_FALSE(util::str_t("a") != util::str_t("a"));
    EXPECT_TRUE(util::str_t("a") < util::str_t("\xC3\xA9"));
    EXPECT_FALSE(util::str_t("b") < util::str_t("a"));
}

TEST(Str, IsAValue)
{
    util::str_t text("one");
    const util::str_t copy = text;
    text = "two";
    EXPECT_EQ("one", copy.narrow());
    EXPECT_EQ("two", text.narrow());
    EXPECT_TRUE(std::is_nothrow_move_constructible_v<util::str_t>);
}
