#include <cstdlib>

#include <gtest/gtest.h>

#include "nelvo/core/util/wide.h"
#include "tests/support/failure_text.h"

// In the place of the C library's: they tell the size, and then fail to convert.
extern "C" std::size_t wcstombs(char* target, const wchar_t* /*source*/, std::size_t /*size*/) noexcept
{
    return target == nullptr ? 3 : static_cast<std::size_t>(-1);
}

extern "C" std::size_t mbstowcs(wchar_t* target, const char* /*source*/, std::size_t /*size*/) noexcept
{
    return target == nullptr ? 3 : static_cast<std::size_t>(-1);
}

TEST(WideToMultibyteThatFailsLate, HasATextOfItsOwn)
{
    EXPECT_EQ("Unicode string cannot be converted to multibyte string.",
              FailureText([] { util::WideToMultibyte(L"abc"); }));
}

TEST(WideToMultibyteThatFailsLate, GetsTheContextOfAnExceptionToo)
{
    EXPECT_EQ("Unicode string cannot be converted to multibyte string.\nUNICODE->ANSI failed",
              FailureText([] { util::WideToMultibyteForExc(L"abc"); }));
}

TEST(MultibyteToWideThatFailsLate, HasATextOfItsOwn)
{
    EXPECT_EQ("Multibyte string cannot be converted to unicode string. Source string: [abc].",
              FailureText([] { util::MultibyteToWide("abc"); }));
}

TEST(MultibyteToWideThatFailsLate, DoesNotCallForAnEmptyText) { EXPECT_EQ(L"", util::MultibyteToWide("")); }
