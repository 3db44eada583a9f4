#include "nelvo/core/exc/runtime_exc.h"

#include <functional>

#include <gtest/gtest.h>

#include "tests/core/exc/buffers.h"
#include "tests/core/exc/copies.h"
#include "tests/support/golden.h"

using exc::error_code_t;
using exc::runtime_exc_t;

TEST(RuntimeExc, CodeIsZeroUnlessGiven)
{
    EXPECT_EQ(0u, runtime_exc_t().GetErrorCode());
    EXPECT_EQ(0u, runtime_exc_t("A").GetErrorCode());
    EXPECT_EQ(0u, runtime_exc_t("%1", 5).GetErrorCode());
    EXPECT_EQ(0u, runtime_exc_t("%1 %2", 5, 6).GetErrorCode());
    EXPECT_EQ(0u, runtime_exc_t("%1 %2 %3", 5, 6, 7).GetErrorCode());
    EXPECT_EQ(0u, runtime_exc_t("%1 %2 %3 %4", 5, 6, 7, 8).GetErrorCode());
    EXPECT_EQ(0u, runtime_exc_t(L"A").GetErrorCode());
    EXPECT_EQ(0u, runtime_exc_t(L"%1", 5).GetErrorCode());
    EXPECT_EQ(4294967295u, runtime_exc_t("A", error_code_t{4294967295u}).GetErrorCode());
}

TEST(RuntimeExc, DefaultHasNoLine) { EXPECT_STREQ("", runtime_exc_t().what()); }

TEST(RuntimeExc, MessageIsTakenWithoutSubstitution)
{
    EXPECT_STREQ("%01", runtime_exc_t("%01").what());
    EXPECT_STREQ("%01", runtime_exc_t("%01", error_code_t{1}).what());
}

TEST(RuntimeExc, FormatTakesOneToFourArguments)
{
    EXPECT_STREQ("[a]", runtime_exc_t("[%1]", "a").what());
    EXPECT_STREQ("b a", runtime_exc_t("%2 %1", "a", std::string("b")).what());
    EXPECT_STREQ("a2true", runtime_exc_t("%1%2%3", "a", 2u, true).what());
    EXPECT_STREQ("1 2 3 4", runtime_exc_t("%1 %2 %3 %4", 1, 2, 3, 4).what());
}

TEST(RuntimeExc, NumberBehindTheMessageIsAnArgumentAndNotTheCode)
{
    const runtime_exc_t e("size %1", 34u);
    EXPECT_STREQ("size 34", e.what());
    EXPECT_EQ(0u, e.GetErrorCode());
}

TEST(RuntimeExc, CodeCanBeSet)
{
    runtime_exc_t e("A");
    e.SetErrorCode(7);
    EXPECT_EQ(7u, e.GetErrorCode());
}

TEST(RuntimeExc, CloneAndRethrowCarryEverythingAndTheCode)
{
    const auto expect_copy = [](const runtime_exc_t& original, const exc::exc_base_t& copy)
    {
        ExpectCopyOf<runtime_exc_t>(original, copy);
        EXPECT_EQ(7u, dynamic_cast<const runtime_exc_t&>(copy).GetErrorCode());
    };
    const runtime_exc_t e = Detailed([] { return runtime_exc_t("A", error_code_t{7}); });
    expect_copy(e, *e.Clone());
    LookAtRethrown(e, [&](const exc::exc_base_t& thrown) { expect_copy(e, thrown); });
}

TEST(RuntimeExc, WideTextIsFormattedAndThenConverted)
{
    EXPECT_STREQ("%01", runtime_exc_t(L"%01").what());
    EXPECT_STREQ("b 1 <null> true", runtime_exc_t(L"%2 %1 %3 %4", 1, std::wstring(L"b"),
                                                  static_cast<const wchar_t*>(nullptr), true)
                                        .what());
    const runtime_exc_t e(L"A", error_code_t{7});
    EXPECT_STREQ("A", e.what());
    EXPECT_EQ(7u, e.GetErrorCode());
}

TEST(RuntimeExc, WideArgumentThatIsNotNamedIsNotConverted)
{
    EXPECT_STREQ("A", runtime_exc_t(L"A", L"\u00e9").what());
    EXPECT_STREQ("b", runtime_exc_t(L"%2", L"\u00e9", L"b").what());
}

TEST(RuntimeExc, WideTextOutsideTheLocaleThrowsInstead)
{
    const std::string failure =
        "Unicode string cannot be converted to multibyte string. Failed to get buffer size. \n"
        "UNICODE->ANSI failed";
    const std::function<void()> bodies[] = {
        [] { runtime_exc_t e(L"\u00e9"); },
        [] { runtime_exc_t e(L"\u00e9", error_code_t{7}); },
        [] { runtime_exc_t e(L"%1", L"\u00e9"); },
    };
    for (const auto& body : bodies)
    {
        try
        {
            body();
            FAIL() << "nothing was thrown";
        }
        catch (const runtime_exc_t& e)
        {
            EXPECT_EQ(failure, e.what());
        }
    }
}

TEST(RuntimeExcBuffer, IsWrittenAsTheRecordedBytes)
{
    EXPECT_EQ(Hex(Golden("runtime_exc")), Hex(Written(runtime_exc_t("failed", error_code_t{0x01020304}))));
}

TEST(RuntimeExcBuffer, IsReadFromTheRecordedBytes)
{
    runtime_exc_t e("old", error_code_t{7});
    EXPECT_EQ("no failure", ReadFailure(e, Golden("runtime_exc")));
    EXPECT_EQ("failed", e.GetFullText());
    EXPECT_EQ(0x01020304u, e.GetErrorCode());
}

TEST(RuntimeExcBuffer, BaseObjectReadsAllButTheCode)
{
    CBufReader reader(ArrayOf(Golden("runtime_exc")));
    EXPECT_STREQ("failed", exc::exc_base_t(reader).what());
    EXPECT_EQ(23u, reader.GetPosition());
    EXPECT_EQ(0x01020304u, reader.ReadUint32());
}

TEST(RuntimeExcBuffer, KeepsItsThread)
{
    runtime_exc_t e = Detailed([] { return runtime_exc_t("A"); });
    const pthread_t thread = e.GetThreadId();
    EXPECT_EQ("no failure", ReadFailure(e, Golden("runtime_exc")));
    EXPECT_EQ(thread, e.GetThreadId());
}

TEST(RuntimeExcBuffer, EachCutIsToldAndLeavesTheExceptionAsItWas)
{
    ExpectEachCutTold(GoldenFields("runtime_exc"), "isbiii",
                      [](const std::string& bytes, const std::string& failure)
                      {
                          runtime_exc_t e("old", error_code_t{7});
                          e.AddEvent(2, "info");
                          EXPECT_EQ(failure, ReadFailure(e, bytes));
                          EXPECT_EQ("old\n--tr:event:2:info", e.GetFullText());
                          EXPECT_EQ(7u, e.GetErrorCode());
                      });
}

TEST(RuntimeExcBuffer, EachFlippedBitIsReadOrTold)
{
    for (const std::string& bytes : BitFlips(Golden("runtime_exc")))
    {
        runtime_exc_t e("old", error_code_t{7});
        const bool is_read = ReadFailure(e, bytes) == "no failure";
        EXPECT_EQ(is_read, e.GetErrorCode() != 7) << Hex(bytes);
        EXPECT_EQ(is_read, e.GetFullText() != "old") << Hex(bytes);
    }
}
