#include "nelvo/logging/log_channel.h"

#include <map>
#include <stdexcept>
#include <string>
#include <thread>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/logging/log.h"
#include "tests/support/failing_memory.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/silent_exc.h"

namespace
{

using logging::at;
using logging::flat;
using logging::log_channel_t;
using logging::log_t;

const wchar_t kBadWide[] = L"\xd800";

class LogChannel : public ::testing::Test
{
protected:
    // At indent 1, so that what is indented, what is flat and what has an indent of its own differ.
    LogChannel()
    {
        m_log->set_receiver(m_receiver);
        m_log->raise_indent();
    }

    // What has been written since the last call, without heads and channel.
    std::string Written()
    {
        std::string text = WithoutHeads(m_receiver->text().substr(m_seen));
        m_seen = m_receiver->text().size();
        std::string result;
        const std::string column = "tag    | ";
        for (std::size_t begin = 0, end = 0; begin != text.size(); begin = end)
        {
            end = text.find('\n', begin) + 1;
            EXPECT_EQ(column, text.substr(begin, column.size()));
            result += text.substr(begin + column.size(), end - begin - column.size());
        }
        return result;
    }

    static std::string ThreadLine(pthread_t thread)
    {
        return ">>  |An exception was thrown from thread [" + std::to_string(thread) + "].\n";
    }

    const std::string m_umlaut = "\xc3\xa4";
    const std::string m_na_line = ">>  |An exception was thrown from thread [n/a].\n";
    const exc::runtime_exc_t m_ours{"It failed"};
    const std::runtime_error m_foreign{"It broke"};
    const silent_exc_t m_silent;

    boost::shared_ptr<lines_receiver_t> m_receiver = boost::make_shared<lines_receiver_t>();
    boost::shared_ptr<log_t> m_log = boost::make_shared<log_t>();
    log_channel_t m_channel{"tag", m_log};

private:
    std::size_t m_seen = 0;
};

} // namespace

TEST_F(LogChannel, InfoStandsAtTheThreadsIndent)
{
    m_channel.info("text");
    EXPECT_EQ("  text\n", Written());
    m_channel.info("%1", "a");
    EXPECT_EQ("  a\n", Written());
    m_channel.info("%1%2%3%4%5", "a", 1, 'c', true, std::string("e"));
    EXPECT_EQ("  a1ctruee\n", Written());
}

TEST_F(LogChannel, FlatInfoIsNotIndented)
{
    m_channel.info(flat, "text");
    EXPECT_EQ("text\n", Written());
    m_channel.info(flat, "%1%2%3%4", "a", 2, 3, 4);
    EXPECT_EQ("a234\n", Written());
}

TEST_F(LogChannel, InfoTakesAnIndentOfItsOwn)
{
    m_channel.info(at(2), "text");
    EXPECT_EQ("    text\n", Written());
    m_channel.info(at(3), "%1%2%3", 1, 2, 3);
    EXPECT_EQ("      123\n", Written());
    m_channel.info(at(0), "%1", 1);
    EXPECT_EQ("1\n", Written());
    m_channel.info(at(-1), "not the thread's");
    EXPECT_EQ("not the thread's\n", Written());
}

TEST_F(LogChannel, DetailStandsAtTheThreadsIndent)
{
    m_channel.detail("text");
    EXPECT_EQ("  text\n", Written());
    m_channel.detail("%1%2%3%4%5", 1, 2, 3, 4, 5);
    EXPECT_EQ("  12345\n", Written());
}

TEST_F(LogChannel, DetailTakesAnIndentOfItsOwn)
{
    m_channel.detail(at(2), "text");
    EXPECT_EQ("    text\n", Written());
    m_channel.detail(at(0), "%1%2%3", 1, 2, 3);
    EXPECT_EQ("123\n", Written());
}

TEST_F(LogChannel, WarningIsNeverIndented)
{
    m_channel.warning("text\nmore");
    EXPECT_EQ("WARN|text\n>>  |more\n", Written());
    m_channel.warning("%1%2%3%4", 1, 2, 3, 4);
    EXPECT_EQ("WARN|1234\n", Written());
}

TEST_F(LogChannel, ErrorIsNeverIndented)
{
    m_channel.error("text\nmore");
    EXPECT_EQ("ERR |text\n>>  |more\n", Written());
    m_channel.error("%1%2%3%4", 1, 2, 3, 4);
    EXPECT_EQ("ERR |1234\n", Written());
}

TEST_F(LogChannel, WideTwinsWriteUtf8)
{
    m_channel.info(L"\xe4 %1%2%3%4%5", L"\xe4", 2, L'3', std::wstring(L"4"), 5);
    EXPECT_EQ("  " + m_umlaut + " " + m_umlaut + "2345\n", Written());
    m_channel.info(flat, L"\xe4%1%2%3%4", 1, 2, 3, 4);
    EXPECT_EQ(m_umlaut + "1234\n", Written());
    m_channel.info(at(2), L"\xe4%1%2%3", 1, 2, 3);
    EXPECT_EQ("    " + m_umlaut + "123\n", Written());
    m_channel.detail(L"\xe4%1%2%3%4%5", 1, 2, 3, 4, 5);
    EXPECT_EQ("  " + m_umlaut + "12345\n", Written());
    m_channel.detail(at(2), L"\xe4%1%2%3", 1, 2, 3);
    EXPECT_EQ("    " + m_umlaut + "123\n", Written());
    m_channel.warning(L"\xe4%1%2%3%4", 1, 2, 3, 4);
    EXPECT_EQ("WARN|" + m_umlaut + "1234\n", Written());
    m_channel.error(L"\xe4%1%2%3%4", 1, 2, 3, 4);
    EXPECT_EQ("ERR |" + m_umlaut + "1234\n", Written());
}

TEST_F(LogChannel, WideTextsAloneWriteUtf8)
{
    m_channel.info(L"\xe4");
    m_channel.info(flat, L"\xe4");
    m_channel.info(at(2), L"\xe4");
    m_channel.detail(L"\xe4");
    m_channel.detail(at(2), L"\xe4");
    m_channel.warning(L"\xe4");
    m_channel.error(L"\xe4");
    EXPECT_EQ("  " + m_umlaut + "\n" + m_umlaut + "\n    " + m_umlaut + "\n  " + m_umlaut + "\n    " +
                  m_umlaut + "\nWARN|" + m_umlaut + "\nERR |" + m_umlaut + "\n",
              Written());
}

TEST_F(LogChannel, TextAloneIsNotAPattern)
{
    m_channel.info("%01 % 7 %%");
    m_channel.detail(at(0), "%01");
    m_channel.warning("%01");
    m_channel.error(L"%01");
    EXPECT_EQ("  %01 % 7 %%\n%01\nWARN|%01\nERR |%01\n", Written());
}

TEST_F(LogChannel, LineFeedsInArgumentsMakeLines)
{
    m_channel.warning("a%1b", "\n");
    EXPECT_EQ("WARN|a\n>>  |b\n", Written());
}

TEST_F(LogChannel, NarrowBytesAreWrittenAsTheyAre)
{
    const std::string bytes("\xff\xc3\0x", 4);
    m_channel.info(flat, bytes);
    EXPECT_EQ(bytes + "\n", Written());
    m_channel.info(flat, "%1", bytes);
    EXPECT_EQ(bytes + "\n", Written());
}

TEST_F(LogChannel, HugeTextIsOneMessage)
{
    const std::string text(10485760, 'x');
    m_channel.info(flat, text);
    EXPECT_EQ(1u, m_receiver->messages().size());
    EXPECT_TRUE(text + "\n" == Written());
}

TEST_F(LogChannel, EmptyTextIsOneLine)
{
    m_channel.info(flat, "");
    EXPECT_EQ("\n", Written());
}

TEST_F(LogChannel, FamiliesShowTheirLabels)
{
    m_log->set_mode(1);
    m_channel.detail("a");
    m_channel.detail(at(0), "a");
    m_channel.info("a");
    m_channel.info(flat, "a");
    m_channel.info(at(0), "a");
    m_channel.warning("a");
    m_channel.error("a");
    EXPECT_EQ("Info       a\nInfo     a\nInfo       a\nInfo     a\nInfo     a\nWarning  a\nError    a\n",
              WithoutHeads(m_receiver->text()));
}

TEST_F(LogChannel, WideTextThatIsNoUnicodeDropsThisMessageOnly)
{
    m_channel.info(kBadWide);
    m_channel.info(L"%1", kBadWide);
    m_channel.info(flat, kBadWide);
    m_channel.info(at(2), kBadWide);
    m_channel.detail(kBadWide);
    m_channel.detail(at(2), kBadWide);
    m_channel.warning(kBadWide);
    m_channel.error(kBadWide);
    m_channel.warning_exc(m_ours, kBadWide);
    m_channel.error_exc(m_ours, L"%1", kBadWide);
    m_channel.debug(L"%1", kBadWide);
    EXPECT_EQ("", Written());
    m_channel.info(L"next");
    EXPECT_EQ("  next\n", Written());
}

TEST_F(LogChannel, FailureOfTheReceiverIsNotTheCallersConcern)
{
    m_receiver->set_hook([] { throw exc::runtime_exc_t("disk full"); });
    m_channel.info("a");
    m_channel.error_exc(m_ours, "a");
    m_receiver->set_hook({});
    EXPECT_EQ("", Written());
}

TEST_F(LogChannel, OtherExceptionsPass)
{
    m_receiver->set_hook([] { throw 42; });
    EXPECT_THROW(m_channel.info("a"), int);
    EXPECT_THROW(m_channel.warning_exc(m_ours, "a"), int);
    EXPECT_THROW(m_channel.error_exc(m_ours), int);
    m_receiver->set_hook({});
    EXPECT_EQ("", Written());
}

TEST_F(LogChannel, WarningExcGivesMessageAndCause)
{
    m_channel.warning_exc(m_ours, "text");
    EXPECT_EQ("WARN|text\n>>  |It failed\n", Written());
    m_channel.warning_exc(m_foreign, "%1%2%3%4", 1, 2, 3, 4);
    EXPECT_EQ("WARN|1234\n>>  |It broke\n", Written());
    m_channel.warning_exc(m_ours, L"\xe4");
    EXPECT_EQ("WARN|" + m_umlaut + "\n>>  |It failed\n", Written());
    m_channel.warning_exc(m_ours, L"\xe4%1%2%3%4", 1, 2, 3, 4);
    EXPECT_EQ("WARN|" + m_umlaut + "1234\n>>  |It failed\n", Written());
}

TEST_F(LogChannel, WarningExcAloneGivesTheCause)
{
    m_channel.warning_exc(m_ours);
    EXPECT_EQ("WARN|It failed\n", Written());
}

TEST_F(LogChannel, WarningExcWithoutTextIsAnError)
{
    m_channel.warning_exc(m_silent);
    EXPECT_EQ("ERR |Exception message is not available.\n", Written());
}

TEST_F(LogChannel, WarningExcWithMessageNeedsNoTextOfTheException)
{
    m_channel.warning_exc(m_silent, "text");
    EXPECT_EQ("WARN|text\n", Written());
}

TEST_F(LogChannel, ErrorExcGivesMessageCauseAndThread)
{
    const std::string thread_line = ThreadLine(::pthread_self());
    m_channel.error_exc(m_ours, "text");
    EXPECT_EQ("ERR |text\n>>  |It failed\n" + thread_line, Written());
    m_channel.error_exc(m_ours, "%1%2%3%4", 1, 2, 3, 4);
    EXPECT_EQ("ERR |1234\n>>  |It failed\n" + thread_line, Written());
    m_channel.error_exc(m_ours, L"\xe4");
    EXPECT_EQ("ERR |" + m_umlaut + "\n>>  |It failed\n" + thread_line, Written());
    m_channel.error_exc(m_ours, L"\xe4%1%2%3%4", 1, 2, 3, 4);
    EXPECT_EQ("ERR |" + m_umlaut + "1234\n>>  |It failed\n" + thread_line, Written());
}

TEST_F(LogChannel, ErrorExcAloneGivesCauseAndThread)
{
    m_channel.error_exc(m_ours);
    EXPECT_EQ("ERR |It failed\n" + ThreadLine(::pthread_self()), Written());
}

TEST_F(LogChannel, ErrorExcKnowsNoThreadOfAForeignException)
{
    m_channel.error_exc(m_foreign);
    EXPECT_EQ("ERR |It broke\n" + m_na_line, Written());
    m_channel.error_exc(m_foreign, "text");
    EXPECT_EQ("ERR |text\n>>  |It broke\n" + m_na_line, Written());
}

TEST_F(LogChannel, ErrorExcTellsTheThreadOfOrigin)
{
    boost::shared_ptr<exc::exc_base_t> exception;
    pthread_t origin = 0;
    std::thread(
        [&]
        {
            origin = ::pthread_self();
            exception = exc::runtime_exc_t("It failed").Clone();
        })
        .join();
    m_channel.error_exc(*exception);
    EXPECT_EQ("ERR |It failed\n" + ThreadLine(origin), Written());
    EXPECT_NE(::pthread_self(), origin);
}

TEST_F(LogChannel, ErrorExcWithoutTextOfTheException)
{
    m_channel.error_exc(m_silent);
    EXPECT_EQ("ERR |Exception message is not available.\n" + m_na_line, Written());
    m_channel.error_exc(m_silent, "text");
    EXPECT_EQ("ERR |text\n" + m_na_line, Written());
}

TEST_F(LogChannel, EmptyTextOfAnExceptionIsATextLikeOthers)
{
    const std::string thread_line = ThreadLine(::pthread_self());
    m_channel.warning_exc(exc::runtime_exc_t());
    EXPECT_EQ("WARN|\n", Written());
    m_channel.warning_exc(exc::runtime_exc_t(), "text");
    EXPECT_EQ("WARN|text\n", Written());
    m_channel.error_exc(exc::runtime_exc_t());
    EXPECT_EQ("ERR |\n" + thread_line, Written());
    m_channel.error_exc(exc::runtime_exc_t(), "text");
    EXPECT_EQ("ERR |text\n>>  |\n" + thread_line, Written());
}

TEST_F(LogChannel, FailureOfManyLinesIsOneMessage)
{
    exc::runtime_exc_t exception("first");
    exception.AddMarkedMessage("second");
    m_channel.error_exc(exception, "%1", "%2");
    EXPECT_EQ("ERR |%2\n>>  |first\n>>  |--tr:second\n" + ThreadLine(::pthread_self()), Written());
    EXPECT_EQ(1u, m_receiver->messages().size());
}

TEST_F(LogChannel, TextOfAnExceptionIsNotAPattern)
{
    m_channel.warning_exc(exc::runtime_exc_t("%01"));
    m_channel.warning_exc(exc::runtime_exc_t("%1"), "%1", "a");
    EXPECT_EQ("WARN|%01\nWARN|a\n>>  |%1\n", Written());
}

TEST_F(LogChannel, EmptyMessageOfAFailureIsALine)
{
    m_channel.warning_exc(m_ours, "");
    EXPECT_EQ("WARN|\n>>  |It failed\n", Written());
}

TEST_F(LogChannel, DebugFormsItsTextAndWritesNothing)
{
    m_channel.debug("%1", 1);
    m_channel.debug("%1%2%3%4%5", 1, 2, 3, 4, 5);
    m_channel.debug(L"%1%2%3%4%5", 1, 2, 3, 4, 5);
    FailNextAllocation();
    m_channel.debug("%1", "longer than what a string holds without memory");
    EXPECT_TRUE(HasAllocationFailed());
    EXPECT_EQ("", Written());
}

TEST_F(LogChannel, WithoutMemoryForItTheMessageIsDropped)
{
    const char text[] = "longer than what a string holds without memory";
    FailNextAllocation();
    m_channel.info("%1", text);
    EXPECT_TRUE(HasAllocationFailed());
    FailNextAllocation();
    m_channel.info(text);
    EXPECT_TRUE(HasAllocationFailed());
    FailNextAllocation();
    m_channel.error_exc(m_ours, text);
    EXPECT_TRUE(HasAllocationFailed());
    FailNextAllocation();
    m_channel.error_exc(m_ours);
    EXPECT_TRUE(HasAllocationFailed());
    EXPECT_EQ("", Written());
}

TEST_F(LogChannel, MaskHidesWhatIsSensitive)
{
    EXPECT_EQ("secret", m_channel.mask("secret"));
    m_log->set_mask_sensitive(true);
    EXPECT_EQ("****", m_channel.mask("secret"));
    EXPECT_EQ("****", m_channel.mask(""));
}

TEST_F(LogChannel, IndentIsThatOfItsLog)
{
    EXPECT_EQ(1, m_channel.get_indent());
    m_log->raise_indent();
    EXPECT_EQ(2, m_channel.get_indent());
    EXPECT_EQ(0, log_channel_t("tag").get_indent());
}

TEST_F(LogChannel, DebugIndentAndMaskNeedNoLock)
{
    m_receiver->set_hook(
        [this]
        {
            std::thread(
                [this]
                {
                    m_channel.debug("%1", 1);
                    m_channel.get_indent();
                    m_channel.mask("secret");
                })
                .join();
        });
    m_channel.info(flat, "a");
    EXPECT_EQ("a\n", Written());
}

// A text that cannot be formed does not come to the lock.
TEST_F(LogChannel, FormingNeedsNoLock)
{
    m_receiver->set_hook(
        [this]
        {
            std::thread(
                [this]
                {
                    m_channel.info(kBadWide);
                    m_channel.warning(L"%1", kBadWide);
                    m_channel.error_exc(m_ours, kBadWide);
                })
                .join();
        });
    m_channel.info(flat, "a");
    EXPECT_EQ("a\n", Written());
}

TEST_F(LogChannel, LogsToTheProcessLogUnlessToldOtherwise)
{
    const auto receiver = boost::make_shared<lines_receiver_t>();
    logging::GetProcessLog()->set_receiver(receiver);
    log_channel_t("own").info("a");
    log_channel_t().info("b");
    m_channel.info("elsewhere");
    logging::GetProcessLog()->set_receiver({});
    EXPECT_EQ("own    | a\n       | b\n", WithoutHeads(receiver->text()));
}

TEST_F(LogChannel, WithoutReceiverMessagesVanish)
{
    m_log->set_receiver({});
    m_channel.info("a");
    m_log->set_receiver(m_receiver);
    EXPECT_EQ("", Written());
}

TEST_F(LogChannel, MessagesOfThreadsNeverInterleave)
{
    const auto log_many = [this](const char* first, const char* second)
    {
        for (int i = 0; i != 250; ++i)
            m_channel.warning("%1\n%2", first, second);
    };
    std::thread threads[] = {std::thread(log_many, "a", "b"), std::thread(log_many, "c", "d"),
                             std::thread(log_many, "e", "f"), std::thread(log_many, "g", "h")};
    for (std::thread& thread : threads)
        thread.join();

    std::map<std::string, int> counts;
    for (const std::string& message : m_receiver->messages())
        ++counts[WithoutHeads(message)];
    EXPECT_EQ((std::map<std::string, int>{{"tag    | WARN|a\ntag    | >>  |b\n", 250},
                                          {"tag    | WARN|c\ntag    | >>  |d\n", 250},
                                          {"tag    | WARN|e\ntag    | >>  |f\n", 250},
                                          {"tag    | WARN|g\ntag    | >>  |h\n", 250}}),
              counts);
}
