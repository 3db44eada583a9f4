#include "nelvo/core/util/xml.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/core/util/mutation.h"

using namespace std::string_literals;

namespace
{

std::wstring Widened(const std::string& text) { return {text.begin(), text.end()}; }

bool StartsAnEntity(const std::string& text, std::size_t at)
{
    constexpr const char* kInside = "&;abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    const std::size_t end = text.find(';', at);
    return end != std::string::npos &&
           text.substr(at, end - at + 1).find_first_not_of(kInside) == std::string::npos;
}

// The escape put down as plainly as possible.
std::string PlainEscape(const std::string& text)
{
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at)
    {
        if (text[at] == '&' && StartsAnEntity(text, at))
        {
            const std::size_t end = text.find(';', at);
            result += text.substr(at, end - at + 1);
            at = end;
            continue;
        }
        switch (text[at])
        {
        case '&': result += "&amp;"; break;
        case '<': result += "&lt;"; break;
        case '>': result += "&gt;"; break;
        case '"': result += "&quot;"; break;
        case '\'': result += "&apos;"; break;
        default: result += text[at];
        }
    }
    return result;
}

std::string Repeated(const std::string& text, std::size_t count)
{
    std::string result;
    for (std::size_t i = 0; i != count; ++i)
        result += text;
    return result;
}

constexpr std::size_t kMany = 1024 * 1024;

} // namespace

TEST(EscapeXml, ReplacesTheFiveCharacters)
{
    EXPECT_EQ("&lt;a b=&quot;c&quot; d=&apos;e&apos;&gt;&amp;", util::EscapeXml("<a b=\"c\" d='e'>&"));
}

TEST(EscapeXml, LeavesOtherTextAlone)
{
    EXPECT_EQ("", util::EscapeXml(""));
    EXPECT_EQ("plain text; #1", util::EscapeXml("plain text; #1"));
    EXPECT_EQ("\xC3\xA9\xFF\0x"s, util::EscapeXml("\xC3\xA9\xFF\0x"s));
}

TEST(EscapeXml, LeavesWhatIsEscapedAlone)
{
    EXPECT_EQ("a &amp; b", util::EscapeXml("a &amp; b"));
    EXPECT_EQ("&lt;&gt;&quot;&apos;", util::EscapeXml("&lt;&gt;&quot;&apos;"));
    EXPECT_EQ("&unknown1;", util::EscapeXml("&unknown1;"));
    EXPECT_EQ("&09AZaz;", util::EscapeXml("&09AZaz;"));
    EXPECT_EQ("&lt;&lt;", util::EscapeXml("<&lt;"));
}

TEST(EscapeXml, ReplacesAnAmpersandThatBeginsNoEntity)
{
    EXPECT_EQ("&amp;", util::EscapeXml("&"));
    EXPECT_EQ("a &amp; b", util::EscapeXml("a & b"));
    EXPECT_EQ("&amp;a b;", util::EscapeXml("&a b;"));
    EXPECT_EQ("&amp;amp", util::EscapeXml("&amp"));
    EXPECT_EQ("&amp;#38;", util::EscapeXml("&#38;"));
    EXPECT_EQ("&amp;a_b;", util::EscapeXml("&a_b;"));
    EXPECT_EQ("&amp;a\xC3\xA9;", util::EscapeXml("&a\xC3\xA9;"));
    EXPECT_EQ("&amp;a\0;"s, util::EscapeXml("&a\0;"s));
    EXPECT_EQ("&amp;a&lt;;", util::EscapeXml("&a<;"));
    for (const char neighbour : "/:@[`{"s)
        EXPECT_EQ("&amp;"s + neighbour + ";", util::EscapeXml("&"s + neighbour + ";"));
}

TEST(EscapeXml, AnAmpersandMayStandInsideAnEntity)
{
    EXPECT_EQ("&a&b;", util::EscapeXml("&a&b;"));
    EXPECT_EQ("&;", util::EscapeXml("&;"));
    EXPECT_EQ("&&&;", util::EscapeXml("&&&;"));
    EXPECT_EQ("&amp;a &b;", util::EscapeXml("&a &b;"));
    EXPECT_EQ("&amp;&amp; &;", util::EscapeXml("&& &;"));
}

TEST(EscapeXml, DoesWhatLookingAheadFromEachAmpersandDoes)
{
    mutation_t texts("&&&&;;aZ09<>\"'# \xC3", 24);
    std::size_t mismatches = 0;
    for (int i = 0; i != 1000000; ++i)
    {
        const std::string& text = texts.Next();
        mismatches += util::EscapeXml(text) == PlainEscape(text) ? 0U : 1U;
    }
    EXPECT_EQ(0u, mismatches);
}

TEST(EscapeXml, AMebibyteOfAmpersandsIsLookedThroughOnce)
{
    const std::string run(kMany, '&');
    EXPECT_TRUE(Repeated("&amp;", kMany) == util::EscapeXml(run));
    EXPECT_TRUE(Repeated("&amp;", kMany) + " ;" == util::EscapeXml(run + " ;"));
    EXPECT_TRUE(run + ";" == util::EscapeXml(run + ";"));
    EXPECT_TRUE(Widened(Repeated("&amp;", kMany)) == util::EscapeXml(Widened(run)));
}

TEST(EscapeXml, TheWideFormDoesTheSame)
{
    EXPECT_EQ(L"&lt;&gt;&quot;&apos;&amp;", util::EscapeXml(L"<>\"'&"));
    EXPECT_EQ(L"&lt; &amp;a b; &;", util::EscapeXml(L"&lt; &a b; &;"));
    EXPECT_EQ(L"&amp;\u0126;\u20AC", util::EscapeXml(L"&\u0126;\u20AC"));
}

TEST(UnescapeXml, ReplacesTheFiveEntities)
{
    EXPECT_EQ("<a b=\"c\" d='e'>&", util::UnescapeXml("&lt;a b=&quot;c&quot; d=&apos;e&apos;&gt;&amp;"));
}

TEST(UnescapeXml, LeavesOtherTextAlone)
{
    EXPECT_EQ("", util::UnescapeXml(""));
    EXPECT_EQ("plain; text\0x"s, util::UnescapeXml("plain; text\0x"s));
    EXPECT_EQ("&", util::UnescapeXml("&"));
    EXPECT_EQ("&am", util::UnescapeXml("&am"));
    EXPECT_EQ("&amp", util::UnescapeXml("&amp"));
    EXPECT_EQ("&#38;&nbsp;&AMP;&Lt;", util::UnescapeXml("&#38;&nbsp;&AMP;&Lt;"));
}

TEST(UnescapeXml, DoesNotScanTheResultAgain)
{
    EXPECT_EQ("&lt;", util::UnescapeXml("&amp;lt;"));
    EXPECT_EQ("&amp;", util::UnescapeXml("&amp;amp;"));
    EXPECT_EQ("&&lt;", util::UnescapeXml("&&amp;lt;"));
}

TEST(UnescapeXml, GoesOnBehindAnUnknownAmpersand)
{
    EXPECT_EQ("&<", util::UnescapeXml("&&lt;"));
    EXPECT_EQ("&a<", util::UnescapeXml("&a&lt;"));
}

TEST(UnescapeXml, GivesBackWhatWasEscaped)
{
    const std::string text = "<a href=\"x?b=1&c=2\">'q' & more</a>";
    EXPECT_EQ(text, util::UnescapeXml(util::EscapeXml(text)));
}

TEST(UnescapeXml, AMebibyteOfAmpersandsStays)
{
    const std::string run(kMany, '&');
    EXPECT_TRUE(run == util::UnescapeXml(run));
    EXPECT_TRUE(run == util::UnescapeXml(Repeated("&amp;", kMany)));
}

TEST(UnescapeXml, TheWideFormDoesTheSame)
{
    EXPECT_EQ(L"<>\"'&\u20AC&x;", util::UnescapeXml(L"&lt;&gt;&quot;&apos;&amp;\u20AC&x;"));
}
