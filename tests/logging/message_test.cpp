#include "nelvo/logging/message.h"

#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"

namespace
{

using logging::message_t;

template <class... Args>
std::string Form(std::string_view pattern, const Args&... args)
{
    return message_t(pattern, {util::text_arg_t(args)...}).form();
}

template <class... Args>
std::string FormWide(std::wstring_view pattern, const Args&... args)
{
    return message_t(pattern, {util::wide_text_arg_t(args)...}).form();
}

} // namespace

TEST(Message, TextWithoutArgumentsIsTakenAsItIs)
{
    EXPECT_EQ("%01 % 7 %%", Form("%01 % 7 %%"));
    EXPECT_EQ("%01 % 7 %%", FormWide(L"%01 % 7 %%"));
    EXPECT_EQ("", Form(""));
    EXPECT_EQ("", FormWide(L""));
}

TEST(Message, TextWithoutArgumentsIsNotCopied)
{
    const std::string text = "a text";
    std::string storage;
    EXPECT_EQ(text.data(), message_t(text, {}).form_in(storage).data());
    EXPECT_EQ("", storage);
}

TEST(Message, PatternIsFilledIn)
{
    EXPECT_EQ("b a %3", Form("%2 %1 %3", "a", "b"));
    EXPECT_EQ("1 x true <null> 5",
              Form("%1 %2 %3 %4 %5", 1, 'x', true, static_cast<const char*>(nullptr), 5));
}

TEST(Message, WidePatternAndArgumentsBecomeUtf8)
{
    EXPECT_EQ("\xd0\x96: \xc3\xa4 1 x true \xf0\x9f\x98\x80",
              FormWide(L"\x416: %1 %2 %3 %4 %5", L"\xe4", 1, L'x', true, std::wstring(1, L'\x1f600')));
    EXPECT_EQ("%1", FormWide(L"%1", L"%1"));
    EXPECT_EQ("%2", FormWide(L"%2", L"a"));
}

TEST(Message, ZeroBytesAreTextLikeOthers)
{
    EXPECT_EQ(std::string("a\0b", 3), Form(std::string_view("a\0b", 3)));
    EXPECT_EQ(std::string("<a\0b>", 5), Form("<%1>", std::string("a\0b", 3)));
    EXPECT_EQ(std::string("a\0b", 3), FormWide(std::wstring_view(L"a\0b", 3)));
}

TEST(Message, WideTextThatIsNoUnicodeIsAFailure)
{
    EXPECT_THROW(FormWide(L"\xd800"), exc::runtime_exc_t);
    EXPECT_THROW(FormWide(L"%1", L"\x110000"), exc::runtime_exc_t);
    EXPECT_THROW(FormWide(L"no reference to it", L"\xd800"), exc::runtime_exc_t);
}
