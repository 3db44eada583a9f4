#include "nelvo/logging/log.h"

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "tests/support/lines_receiver.h"

namespace
{

using logging::log_t;
using logging::format::line_filter_t;
using logging::format::line_format_t;

class upper_filter_t : public line_filter_t
{
public:
    std::string filter_line(std::string_view text) override { return "filtered " + std::string(text); }
};

class hooked_filter_t : public line_filter_t
{
public:
    explicit hooked_filter_t(std::function<void()> hook) : m_hook(std::move(hook)) {}
    std::string filter_line(std::string_view text) override
    {
        m_hook();
        return std::string(text);
    }

private:
    std::function<void()> m_hook;
};

class throwing_filter_t : public line_filter_t
{
public:
    std::string filter_line(std::string_view text) override
    {
        if (text == "bad")
            throw std::runtime_error("filter");
        return std::string(text);
    }
};

// Each lets go of its only owner while it is called.
class replaced_filter_t : public line_filter_t
{
public:
    explicit replaced_filter_t(log_t& log) : m_log(log) {}
    std::string filter_line(std::string_view text) override
    {
        m_log.set_line_filter({});
        return m_mark + std::string(text);
    }

private:
    log_t& m_log;
    std::string m_mark = "filtered by an object that must still be there ";
};

class replaced_receiver_t : public lines_receiver_t
{
public:
    replaced_receiver_t(log_t& log, log_t::receiver_ptr_t next, std::shared_ptr<std::string> text)
        : m_log(log), m_next(std::move(next)), m_text(std::move(text))
    {
    }
    ~replaced_receiver_t() override { m_text->append(" gone"); }
    void write(const std::string& text) override
    {
        m_log.set_receiver(m_next);
        *m_text += text;
    }

private:
    log_t& m_log;
    log_t::receiver_ptr_t m_next;
    std::shared_ptr<std::string> m_text;
};

// Logs while it is destroyed.
class parting_receiver_t : public lines_receiver_t
{
public:
    explicit parting_receiver_t(std::function<void()> parting) : m_parting(std::move(parting)) {}
    ~parting_receiver_t() override { m_parting(); }

private:
    std::function<void()> m_parting;
};

// A call on a thread of its own.
class other_call_t
{
public:
    explicit other_call_t(std::function<void()> call) : m_call(std::move(call)) {}
    other_call_t(const other_call_t&) = delete;
    other_call_t& operator=(const other_call_t&) = delete;
    ~other_call_t()
    {
        if (m_thread.joinable())
            m_thread.join();
    }

    // Begins it; whether it stands still.
    bool Waits()
    {
        m_thread = std::thread(
            [this]
            {
                m_called = true;
                m_call();
                m_returned = true;
            });
        for (int turns = 0; turns != 1000 && !m_returned; turns += m_called ? 1 : 0)
            std::this_thread::yield();
        return !m_returned;
    }

private:
    std::function<void()> m_call;
    std::atomic<bool> m_called{false};
    std::atomic<bool> m_returned{false};
    std::thread m_thread;
};

class Log : public ::testing::Test
{
protected:
    Log() { m_log.set_receiver(m_receiver); }

    void Write(const std::string& text) { m_log.write(2, 0, m_format, text); }
    std::string Written() const { return WithoutHeads(m_receiver->text()); }

    // Whether another thread's call stands still as long as the receiver writes.
    bool WaitsForTheMessage(const std::function<void()>& call)
    {
        other_call_t other(call);
        bool waits = false;
        m_receiver->set_hook([&] { waits = other.Waits(); });
        Write("a");
        m_receiver->set_hook({});
        return waits;
    }

    boost::shared_ptr<lines_receiver_t> m_receiver = boost::make_shared<lines_receiver_t>("/x/a.log");
    log_t::format_ptr_t m_format = boost::make_shared<line_format_t>("tag");
    log_t m_log;
};

} // namespace

TEST_F(Log, MessageIsOneWriteOfTheReceiver)
{
    Write("a\nb\n\nc");
    EXPECT_EQ(1u, m_receiver->messages().size());
    EXPECT_EQ("tag    | a\ntag    | b\ntag    | \ntag    | c\n", Written());
}

TEST_F(Log, EmptyTextIsOneLine)
{
    Write("");
    EXPECT_EQ("tag    | \n", Written());
}

TEST_F(Log, SeverityAndIndentReachTheLine)
{
    m_log.write(4, 2, m_format, "a");
    EXPECT_EQ("tag    | ERR |    a\n", Written());
}

TEST_F(Log, LineEndIsTheReceivers)
{
    m_receiver->set_eol("|\n");
    Write("a\nb");
    EXPECT_EQ("tag    | a|\ntag    | b|\n", Written());
}

TEST_F(Log, WithoutReceiverNothingIsWritten)
{
    m_log.set_receiver({});
    Write("a");
    m_log.set_receiver(m_receiver);
    EXPECT_EQ("", m_receiver->text());
}

TEST_F(Log, WithoutFormatNothingIsWritten)
{
    m_log.write(2, 0, {}, "a");
    EXPECT_EQ("", m_receiver->text());
}

TEST_F(Log, ClosedLogStaysSilentAndKeepsItsReceiver)
{
    m_log.close();
    Write("a");
    const auto other = boost::make_shared<lines_receiver_t>();
    EXPECT_EQ(m_receiver, m_log.get_receiver());
    m_log.set_receiver(other);
    Write("b");
    EXPECT_EQ("", m_receiver->text() + other->text());
}

TEST_F(Log, NewReceiverReplacesTheOldOne)
{
    Write("a");
    const auto other = boost::make_shared<lines_receiver_t>();
    m_log.set_receiver(other);
    Write("b");
    EXPECT_EQ("tag    | a\n", Written());
    EXPECT_EQ("tag    | b\n", WithoutHeads(other->text()));
    EXPECT_EQ(1, m_receiver.use_count());
    EXPECT_EQ(other, m_log.get_receiver());
}

TEST_F(Log, BuiltAroundAReceiverItHasThatOne)
{
    EXPECT_EQ(m_receiver, log_t(m_receiver).get_receiver());
    EXPECT_EQ(nullptr, log_t().get_receiver());
}

TEST_F(Log, PathIsTheReceivers) { EXPECT_EQ("/x/a.log", m_log.get_log_path()); }

TEST_F(Log, PathWithoutReceiverIsAFailure)
{
    m_log.set_receiver({});
    try
    {
        m_log.get_log_path();
        FAIL();
    }
    catch (const exc::runtime_exc_t& e)
    {
        EXPECT_STREQ("Value of the log path is unavailable: log is not initialized yet.", e.what());
    }
}

TEST_F(Log, StartsWithAllFlagsOff)
{
    EXPECT_EQ(0, m_log.get_mode());
    EXPECT_FALSE(m_log.is_mask_sensitive());
    EXPECT_EQ(nullptr, m_log.get_line_filter());
    EXPECT_EQ(0, m_log.get_indent());
}

TEST_F(Log, ModeOtherThanZeroIsTheLabelStyle)
{
    m_log.set_mode(7);
    EXPECT_EQ(7, m_log.get_mode());
    m_log.write(3, 1, m_format, "a\nb");
    EXPECT_EQ("Warning    a\nWarning    b\n", Written());
}

TEST_F(Log, MaskFlagCanBeSetAndCleared)
{
    m_log.set_mask_sensitive(true);
    EXPECT_TRUE(m_log.is_mask_sensitive());
    m_log.set_mask_sensitive(false);
    EXPECT_FALSE(m_log.is_mask_sensitive());
}

TEST_F(Log, FilterTurnsEachLine)
{
    const auto filter = boost::make_shared<upper_filter_t>();
    m_log.set_line_filter(filter);
    EXPECT_EQ(filter, m_log.get_line_filter());
    Write("a\nb");
    m_log.set_line_filter({});
    Write("c");
    EXPECT_EQ("tag    | filtered a\ntag    | filtered b\ntag    | c\n", Written());
}

TEST_F(Log, FailureOfTheFilterDropsTheWholeMessageOnly)
{
    m_log.set_line_filter(boost::make_shared<throwing_filter_t>());
    Write("a");
    Write("b\nbad\nc");
    Write("d");
    EXPECT_EQ("tag    | a\ntag    | d\n", Written());
}

TEST_F(Log, FailureOfTheReceiverDropsTheMessageOnly)
{
    m_receiver->set_hook([] { throw exc::runtime_exc_t("disk full"); });
    Write("a");
    m_receiver->set_hook({});
    Write("b");
    EXPECT_EQ("tag    | b\n", Written());
}

TEST_F(Log, OtherExceptionsPassAndLeaveTheLogUnlocked)
{
    m_receiver->set_hook([] { throw 42; });
    EXPECT_THROW(Write("a"), int);
    m_receiver->set_hook({});
    std::thread([this] { Write("b"); }).join();
    EXPECT_EQ("tag    | b\n", Written());
}

TEST_F(Log, ReceiverMayLogToItsOwnLog)
{
    bool nested = false;
    m_receiver->set_hook(
        [&]
        {
            if (!std::exchange(nested, true))
                Write("from the receiver, longer than what it was called for");
        });
    Write("outer");
    Write("next");
    EXPECT_EQ("tag    | from the receiver, longer than what it was called for\ntag    | outer\n"
              "tag    | next\n",
              Written());
}

TEST_F(Log, ReceiverMayReplaceItself)
{
    const auto other = boost::make_shared<lines_receiver_t>();
    const auto first = std::make_shared<std::string>();
    m_log.set_receiver(boost::make_shared<replaced_receiver_t>(m_log, other, first));
    Write("a");
    Write("b");
    EXPECT_EQ("tag    | a\n gone", first->substr(first->find("> ") + 2));
    EXPECT_EQ("tag    | b\n", WithoutHeads(other->text()));
}

TEST_F(Log, ReceiverThatIsReplacedMayLogToTheNext)
{
    m_log.set_receiver(boost::make_shared<parting_receiver_t>([this] { Write("gone"); }));
    m_log.set_receiver(m_receiver);
    EXPECT_EQ("tag    | gone\n", Written());
    m_log.set_receiver(boost::make_shared<parting_receiver_t>([this] { Write("lost"); }));
    m_log.set_receiver({});
    EXPECT_EQ("tag    | gone\n", Written());
}

TEST_F(Log, HugeMessageDoesNotChangeTheNext)
{
    const std::string huge(10485760, 'x');
    Write(huge);
    Write("a");
    EXPECT_TRUE("tag    | " + huge + "\ntag    | a\n" == Written());
}

TEST_F(Log, IndentIsCountedInStepsAndNeverFallsBelowZero)
{
    m_log.lower_indent();
    EXPECT_EQ(0, m_log.get_indent());
    m_log.raise_indent();
    m_log.raise_indent();
    EXPECT_EQ(2, m_log.get_indent());
    m_log.lower_indent();
    m_log.lower_indent();
    m_log.lower_indent();
    EXPECT_EQ(0, m_log.get_indent());
    m_log.raise_indent();
    EXPECT_EQ(1, m_log.get_indent());
}

TEST_F(Log, IndentBelongsToThreadAndLog)
{
    log_t other;
    m_log.raise_indent();
    EXPECT_EQ(0, other.get_indent());
    std::int32_t in_thread = -1;
    std::thread(
        [&]
        {
            in_thread = m_log.get_indent();
            m_log.raise_indent();
            m_log.raise_indent();
        })
        .join();
    EXPECT_EQ(0, in_thread);
    EXPECT_EQ(1, m_log.get_indent());
}

TEST_F(Log, MessagesOfThreadsNeverInterleave)
{
    constexpr int kThreads = 4;
    constexpr int kMessages = 250;
    const auto text = [](int thread)
    {
        const std::string mark(1, static_cast<char>('a' + thread));
        return mark + "1\n" + mark + "2\n" + mark + "3";
    };
    std::vector<std::thread> threads;
    for (int thread = 0; thread != kThreads; ++thread)
        threads.emplace_back(
            [&, thread]
            {
                for (int i = 0; i != kMessages; ++i)
                    Write(text(thread));
            });
    for (std::thread& thread : threads)
        thread.join();

    std::map<std::string, int> counts;
    for (const std::string& message : m_receiver->messages())
        ++counts[WithoutHeads(message)];
    EXPECT_EQ((std::map<std::string, int>{{"tag    | a1\ntag    | a2\ntag    | a3\n", kMessages},
                                          {"tag    | b1\ntag    | b2\ntag    | b3\n", kMessages},
                                          {"tag    | c1\ntag    | c2\ntag    | c3\n", kMessages},
                                          {"tag    | d1\ntag    | d2\ntag    | d3\n", kMessages}}),
              counts);
}

TEST_F(Log, FlagsMayChangeWhileOthersLog)
{
    std::thread logger(
        [this]
        {
            for (int i = 0; i != 200; ++i)
                Write("a");
        });
    for (int i = 0; i != 200; ++i)
    {
        m_log.set_mode(i % 2);
        m_log.set_mask_sensitive(m_log.is_mask_sensitive());
        m_log.set_line_filter({});
        m_log.set_size_check(false);
        m_log.set_receiver(m_receiver);
    }
    m_log.close();
    logger.join();
    for (const std::string& message : m_receiver->messages())
        EXPECT_THAT(WithoutHeads(message), testing::AnyOf("tag    | a\n", "Info     a\n"));
}

TEST_F(Log, WhatIsSharedWaitsForTheMessage)
{
    EXPECT_TRUE(WaitsForTheMessage([this] { m_log.set_receiver(m_receiver); }));
    EXPECT_TRUE(WaitsForTheMessage([this] { m_log.get_receiver(); }));
    EXPECT_TRUE(WaitsForTheMessage([this] { m_log.set_line_filter({}); }));
    EXPECT_TRUE(WaitsForTheMessage([this] { m_log.get_line_filter(); }));
    EXPECT_TRUE(WaitsForTheMessage([this] { m_log.set_size_check(false); }));
    EXPECT_TRUE(WaitsForTheMessage([this] { m_log.set_mask_sensitive(false); }));
    EXPECT_TRUE(WaitsForTheMessage([this] { m_log.get_log_path(); }));
}

TEST_F(Log, WhatIsSharedWaitsForTheFormattingToo)
{
    other_call_t other([this] { m_log.get_receiver(); });
    bool waits = false;
    m_log.set_line_filter(boost::make_shared<hooked_filter_t>([&] { waits = other.Waits(); }));
    Write("a");
    EXPECT_TRUE(waits);
    EXPECT_EQ("tag    | a\n", Written());
}

TEST(ProcessLog, IsOneObjectWithoutReceiver)
{
    EXPECT_EQ(logging::GetProcessLog(), logging::GetProcessLog());
    EXPECT_EQ(nullptr, logging::GetProcessLog()->get_receiver());
    EXPECT_EQ(0, logging::GetProcessLog()->get_mode());
    EXPECT_FALSE(logging::GetProcessLog()->is_mask_sensitive());
    EXPECT_EQ(nullptr, logging::GetProcessLog()->get_line_filter());
}

TEST_F(Log, FilterMayReplaceItself)
{
    m_log.set_line_filter(boost::make_shared<replaced_filter_t>(m_log));
    Write("a\nb");
    EXPECT_EQ("tag    | filtered by an object that must still be there a\n"
              "tag    | filtered by an object that must still be there b\n",
              Written());
}

TEST_F(Log, FlagsAndIndentNeedNoLock)
{
    m_receiver->set_hook(
        [this]
        {
            std::thread(
                [this]
                {
                    m_log.set_mode(m_log.get_mode());
                    m_log.is_mask_sensitive();
                    m_log.raise_indent();
                    m_log.lower_indent();
                    m_log.close();
                })
                .join();
        });
    Write("a");
    EXPECT_EQ("tag    | a\n", Written());
}
