#include "nelvo/core/util/wide.h"

#include <clocale>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/failure_text.h"

using namespace std::string_literals;

namespace
{

struct sample_t
{
    std::string utf8;
    std::wstring wide;
};

// The first and the last of each length, and some between.
const sample_t kSamples[] = {
    {"", L""},
    {"\x01", L"\x01"},
    {"\x7F", L"\x7F"},
    {"\xC2\x80", L"\x80"},
    {"\xC3\xA9", L"\xE9"},
    {"\xDF\xBF", L"\x7FF"},
    {"\xE0\xA0\x80", L"\x800"},
    {"\xE2\x82\xAC", L"\x20AC"},
    {"\xED\x9F\xBF", L"\xD7FF"},
    {"\xEE\x80\x80", L"\xE000"},
    {"\xEF\xBB\xBF", L"\xFEFF"},
    {"\xEF\xBF\xBF", L"\xFFFF"},
    {"\xF0\x90\x80\x80", L"\x10000"},
    {"\xF0\x9F\x98\x80", L"\x1F600"},
    {"\xF4\x8F\xBF\xBF", L"\x10FFFF"},
};

const std::string kBadUtf8[] = {
    "\x80",             // a tail byte alone
    "\xBF",             //
    "\x80\x90\x80\x80", // a tail byte that leads others
    "\xBF\x90\x80\x80", //
    "\xC3",             // truncated tails
    "\xE2\x82",         //
    "\xF0\x9F\x98",     //
    "\xC3(",            // another byte in the tail
    "\xE2(\xAC",        //
    "\xE2\x82(",        //
    "\xF0\x9F\x98(",    //
    "\xC3\xC3\xA9",     //
    "\xC0\x80",         // over-long
    "\xC1\xBF",         //
    "\xE0\x80\x80",     //
    "\xE0\x9F\xBF",     //
    "\xF0\x80\x80\x80", //
    "\xF0\x8F\xBF\xBF", //
    "\xED\xA0\x80",     // surrogates
    "\xED\xBF\xBF",     //
    "\xED\xA0\xBD\xED\xB8\x80",
    "\xF4\x90\x80\x80", // above U+10FFFF
    "\xF7\xBF\xBF\xBF", //
    "\xF8\x90\x80\x80", // a lead byte of longer sequences
    "\xF8\x88\x80\x80\x80",
    "\xFC\x84\x80\x80\x80\x80",
    "\xFE", // in no sequence
    "\xFF",
};

const wchar_t kBadWide[] = {wchar_t(0xD800),   wchar_t(0xDBFF),     wchar_t(0xDC00), wchar_t(0xDFFF),
                            wchar_t(0x110000), wchar_t(0x7FFFFFFF), wchar_t(-1)};

std::string Utf8Failure(const std::string& text)
{
    return FailureText([&] { util::Utf8ToWide(text); });
}

std::string WideFailure(const std::wstring& text)
{
    return FailureText([&] { util::WideToUtf8(text); });
}

class utf8_locale_t
{
public:
    utf8_locale_t() : m_name(std::setlocale(LC_CTYPE, "C.UTF-8")) {}
    ~utf8_locale_t() { std::setlocale(LC_CTYPE, "C"); }
    bool IsSet() const { return m_name != nullptr; }

private:
    const char* m_name;
};

} // namespace

TEST(Utf8ToWide, DecodesEachLength)
{
    for (const sample_t& sample : kSamples)
        EXPECT_EQ(sample.wide, util::Utf8ToWide(sample.utf8));
}

TEST(Utf8ToWide, DecodesWhatStandsBehindAsciiOfAnyLength)
{
    for (std::size_t length = 0; length != 20; ++length)
        for (const sample_t& sample : kSamples)
            EXPECT_EQ(std::wstring(length, L'a') + sample.wide + L"b" + sample.wide,
                      util::Utf8ToWide(std::string(length, 'a') + sample.utf8 + "b" + sample.utf8));
}

TEST(Utf8ToWide, RefusesBadText)
{
    for (const std::string& bad : kBadUtf8)
        EXPECT_EQ("Multibyte UTF8 string cannot be converted to unicode string. Source string: [" + bad +
                      "].",
                  Utf8Failure(bad));
}

TEST(Utf8ToWide, RefusesBadTextWhereverItStands)
{
    for (std::size_t length = 0; length != 20; ++length)
        for (const std::string& bad : kBadUtf8)
        {
            const std::string text = std::string(length, 'a') + bad + "b";
            EXPECT_EQ("Multibyte UTF8 string cannot be converted to unicode string. Source string: [" + text +
                          "].",
                      Utf8Failure(text));
        }
}

TEST(Utf8ToWide, KeepsZeroBytes)
{
    EXPECT_EQ(L"a\0b\0"s, util::Utf8ToWide("a\0b\0"s));
    EXPECT_EQ(L"\u00E9\0x"s, util::Utf8ToWide("\xC3\xA9\0x"s));
}

TEST(WideToUtf8, EncodesEachLength)
{
    for (const sample_t& sample : kSamples)
        EXPECT_EQ(sample.utf8, util::WideToUtf8(sample.wide));
}

TEST(WideToUtf8, EncodesWhatStandsBehindAsciiOfAnyLength)
{
    for (std::size_t length = 0; length != 20; ++length)
        for (const sample_t& sample : kSamples)
            EXPECT_EQ(std::string(length, 'a') + sample.utf8 + "b" + sample.utf8,
                      util::WideToUtf8(std::wstring(length, L'a') + sample.wide + L"b" + sample.wide));
}

TEST(WideToUtf8, RefusesWhatIsNoCharacter)
{
    for (const wchar_t bad : kBadWide)
        for (std::size_t length = 0; length != 20; ++length)
            EXPECT_EQ("Unicode string cannot be converted to multibyte UTF8 string.",
                      WideFailure(std::wstring(length, L'a') + bad + L"b"));
}

TEST(WideToUtf8, KeepsZeroCharacters) { EXPECT_EQ("a\0b\0"s, util::WideToUtf8(L"a\0b\0"s)); }

TEST(WideToUtf8, GoesThereAndBackForEachCharacter)
{
    for (char32_t code = 0; code <= 0x10FFFF; ++code)
    {
        if (code == 0xD800)
            code = 0xE000;
        const std::wstring text(1, static_cast<wchar_t>(code));
        ASSERT_EQ(text, util::Utf8ToWide(util::WideToUtf8(text)));
    }
}

TEST(WideToMultibyte, TakesAscii)
{
    EXPECT_EQ("", util::WideToMultibyte(L""));
    EXPECT_EQ("abc \x7F", util::WideToMultibyte(L"abc \x7F"));
    EXPECT_EQ(std::string(100000, 'x'), util::WideToMultibyte(std::wstring(100000, L'x')));
}

TEST(WideToMultibyte, RefusesTheRestInTheCLocale)
{
    EXPECT_EQ("Unicode string cannot be converted to multibyte string. Failed to get buffer size. ",
              FailureText([] { util::WideToMultibyte(L"a\u00E9"); }));
}

TEST(WideToMultibyte, StopsAtAZeroCharacter)
{
    EXPECT_EQ("ab", util::WideToMultibyte(L"ab\0cd"s));
    EXPECT_EQ("", util::WideToMultibyte(L"\0cd"s));
    EXPECT_EQ("ab", util::WideToMultibyte(L"ab\0\u00E9"s));
}

TEST(WideToMultibyte, ConvertsIntoTheProcessLocale)
{
    const utf8_locale_t locale;
    ASSERT_TRUE(locale.IsSet());
    EXPECT_EQ("a\xC3\xA9\xE2\x82\xAC", util::WideToMultibyte(L"a\u00E9\u20AC"));
}

TEST(WideToMultibyte, ReadsNothingBehindTheView)
{
    EXPECT_EQ("ab", util::WideToMultibyte(std::wstring_view(L"abc").substr(0, 2)));
    EXPECT_EQ(L"ab", util::MultibyteToWide(std::string_view("abc").substr(0, 2)));
}

TEST(MultibyteToWide, TakesAscii)
{
    EXPECT_EQ(L"", util::MultibyteToWide(""));
    EXPECT_EQ(L"abc \x7F", util::MultibyteToWide("abc \x7F"));
    EXPECT_EQ(std::wstring(100000, L'x'), util::MultibyteToWide(std::string(100000, 'x')));
}

TEST(MultibyteToWide, RefusesTheRestInTheCLocale)
{
    EXPECT_EQ("Multibyte string cannot be converted to unicode string. Failed to get buffer size. "
              "Source string: [a\xC3\xA9].",
              FailureText([] { util::MultibyteToWide("a\xC3\xA9"); }));
}

TEST(MultibyteToWide, StopsAtAZeroByte)
{
    EXPECT_EQ(L"ab", util::MultibyteToWide("ab\0cd"s));
    EXPECT_EQ(L"ab", util::MultibyteToWide("ab\0\xFF"s));
}

TEST(MultibyteToWide, ConvertsFromTheProcessLocale)
{
    const utf8_locale_t locale;
    ASSERT_TRUE(locale.IsSet());
    EXPECT_EQ(L"a\u00E9\u20AC", util::MultibyteToWide("a\xC3\xA9\xE2\x82\xAC"));
}

TEST(WideToMultibyteForExc, AddsContextToAFailure)
{
    EXPECT_EQ("abc", util::WideToMultibyteForExc(L"abc"));
    EXPECT_EQ("Unicode string cannot be converted to multibyte string. Failed to get buffer size. \n"
              "UNICODE->ANSI failed",
              FailureText([] { util::WideToMultibyteForExc(L"\u00E9"); }));
}

TEST(ToUtf8, TakesBothForms)
{
    EXPECT_EQ("\xFF\0x"s, util::ToUtf8("\xFF\0x"s));
    EXPECT_EQ("\xE2\x82\xAC", util::ToUtf8(L"\u20AC"));
    EXPECT_EQ("Unicode string cannot be converted to multibyte UTF8 string.",
              FailureText([] { util::ToUtf8(L"\xd800"); }));
}
