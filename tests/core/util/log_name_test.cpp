#include "nelvo/core/util/log_name.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/core/util/mutation.h"
#include "tests/support/failure_text.h"

using namespace std::string_literals;

namespace
{

std::string UnpackFailure(const std::string& packed)
{
    return FailureText([&] { util::UnpackLogName(packed); });
}

} // namespace

TEST(PackLogName, ReplacesTheUnwantedCharacters)
{
    EXPECT_EQ("_A_B_C_D_E_F_G_H_I__", util::PackLogName(",-+@&{}'\"_"));
    EXPECT_EQ("my_Blog_A__1.log", util::PackLogName("my-log,_1.log"));
}

TEST(PackLogName, LeavesAllOtherCharacters)
{
    EXPECT_EQ("", util::PackLogName(""));
    EXPECT_EQ("/var/log/A b.log;[1]", util::PackLogName("/var/log/A b.log;[1]"));
    EXPECT_EQ("\xC3\xA9\xFF\0x"s, util::PackLogName("\xC3\xA9\xFF\0x"s));
}

TEST(UnpackLogName, ReadsTheTableBackwards)
{
    EXPECT_EQ(",-+@&{}'\"_", util::UnpackLogName("_A_B_C_D_E_F_G_H_I__"));
    EXPECT_EQ("", util::UnpackLogName(""));
    EXPECT_EQ("plain-name", util::UnpackLogName("plain-name"));
    EXPECT_EQ("_A", util::UnpackLogName("__A"));
}

TEST(UnpackLogName, RefusesALoneEscapeAtTheEnd)
{
    EXPECT_EQ("Failed to unpack log name string: Unexpected end of sequence", UnpackFailure("_"));
    EXPECT_EQ("Failed to unpack log name string: Unexpected end of sequence", UnpackFailure("a___"));
}

TEST(UnpackLogName, RefusesAnUnknownPair)
{
    EXPECT_EQ("Failed to unpack log name string: Incorrect sequence: [l].", UnpackFailure("my_log.log"));
    EXPECT_EQ("Failed to unpack log name string: Incorrect sequence: [a].", UnpackFailure("_a"));
    EXPECT_EQ("Failed to unpack log name string: Incorrect sequence: [J].", UnpackFailure("_J"));
    EXPECT_EQ("Failed to unpack log name string: Incorrect sequence: [,].", UnpackFailure("_,"));
}

TEST(UnpackLogName, GivesBackWhatWasPacked)
{
    mutation_t names(",-+@&{}'\"_AIab\xC3\0"s, 16);
    for (int i = 0; i != 100000; ++i)
    {
        const std::string& name = names.Next();
        ASSERT_EQ(name, util::UnpackLogName(util::PackLogName(name)));
    }
}

TEST(LogName, TheWideFormsDoTheSame)
{
    EXPECT_EQ(L"my_Blog", util::PackLogName(L"my-log"));
    EXPECT_EQ(L"my-log", util::UnpackLogName(L"my_Blog"));
    EXPECT_EQ(L"", util::PackLogName(L""));
    EXPECT_EQ(L"", util::UnpackLogName(L""));
    EXPECT_EQ("Failed to unpack log name string: Incorrect sequence: [x].",
              FailureText([] { util::UnpackLogName(L"_x"); }));
}

TEST(LogName, TheWideFormsEndAtAZeroCharacter)
{
    EXPECT_EQ(L"a_Bb", util::PackLogName(L"a-b\0-c"s));
    EXPECT_EQ(L"a-b", util::UnpackLogName(L"a_Bb\0_x"s));
}

TEST(LogName, TheWideFormsRefuseWhatTheLocaleHasNot)
{
    const std::string failure =
        "Unicode string cannot be converted to multibyte string. Failed to get buffer size. ";
    EXPECT_EQ(failure, FailureText([] { util::PackLogName(L"\u00E9"); }));
    EXPECT_EQ(failure, FailureText([] { util::UnpackLogName(L"\u00E9"); }));
}
