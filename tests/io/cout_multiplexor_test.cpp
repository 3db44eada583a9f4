#include "nelvo/io/cout_multiplexor.h"

#include <functional>
#include <future>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <utility>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/logging/channels.h"
#include "nelvo/logging/log.h"
#include "nelvo/logging/progress_scope.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/redirected_stream.h"
#include "tests/support/silent_exc.h"
#include "tests/support/stdout_capture.h"
#include "tests/support/vtable_slot.h"

namespace
{

using texts_t = std::vector<std::string>;

// Takes texts until it is told to do something else.
class stub_target_t : public io::cout_target_t
{
public:
    std::uint64_t write(const void*, std::uint64_t) override { return 0; }
    std::uint64_t read(void*, std::uint64_t) override { return 0; }

    void write_text(const std::string& text) override
    {
        if (on_text)
            on_text();
        texts.push_back(text);
    }

    texts_t texts;
    std::function<void()> on_text;
};

// Takes what std::cerr is given for as long as it lives, and counts how often it is flushed, which it is not
// by itself then.
class stderr_capture_t : private std::stringbuf
{
public:
    stderr_capture_t() { std::cerr << std::nounitbuf; }
    ~stderr_capture_t() override { std::cerr << std::unitbuf; }
    stderr_capture_t(const stderr_capture_t&) = delete;
    stderr_capture_t& operator=(const stderr_capture_t&) = delete;

    std::string text() const { return str(); }
    int flushes() const { return m_flushes; }

private:
    int sync() override { return ++m_flushes, 0; }

    redirected_stream_t m_redirected{std::cerr, this};
    int m_flushes = 0;
};

class CoutMultiplexor : public ::testing::Test
{
protected:
    CoutMultiplexor() { logging::GetProcessLog()->set_receiver(m_receiver); }
    ~CoutMultiplexor() override { logging::GetProcessLog()->set_receiver({}); }

    boost::shared_ptr<stub_target_t> Add()
    {
        auto target = boost::make_shared<stub_target_t>();
        m_multiplexor.add_target(target);
        return target;
    }

    // One whose calls fail from the given one on, counted from 0.
    boost::shared_ptr<stub_target_t> AddFailing(std::size_t call = 0)
    {
        const auto target = Add();
        target->on_text = [call, raw = target.get()]
        {
            if (raw->texts.size() >= call)
                throw std::runtime_error("no reader");
        };
        return target;
    }

    static std::string Address(const boost::shared_ptr<stub_target_t>& target)
    {
        std::ostringstream text;
        text << reinterpret_cast<std::uintptr_t>(static_cast<io::cout_target_t*>(target.get()));
        return text.str();
    }

    // The lines since the last call.
    std::string Log()
    {
        std::string lines;
        for (; m_seen != m_receiver->messages().size(); ++m_seen)
            lines += WithoutHeads(m_receiver->messages()[m_seen]);
        return lines;
    }

    boost::shared_ptr<lines_receiver_t> m_receiver = boost::make_shared<lines_receiver_t>();
    std::size_t m_seen = 0;
    io::CCoutMultiplexor m_multiplexor;
};

} // namespace

TEST(CoutTarget, OperationForTextIsTheFifthOfItsTable)
{
    EXPECT_EQ(4U, VtableSlot(&io::cout_target_t::write_text));
}

TEST_F(CoutMultiplexor, AdditionAndRemovalLogTheAddressInDecimal)
{
    const auto target = Add();
    EXPECT_EQ("cli    | Registering stdin/stdout redirector: '" + Address(target) + "'.\n", Log());
    m_multiplexor.remove_target(target.get());
    EXPECT_EQ("cli    | Removing stdin/stdout redirector: '" + Address(target) + "'.\n", Log());
    EXPECT_EQ(1, target.use_count());
}

TEST_F(CoutMultiplexor, ListChangesBehindItsLine)
{
    const auto target = boost::make_shared<stub_target_t>();
    m_receiver->set_hook([this] { m_multiplexor.send_text("a line is written", 0); });
    m_multiplexor.add_target(target);
    EXPECT_EQ(texts_t(), target->texts);
    m_multiplexor.remove_target(target.get());
    EXPECT_EQ(texts_t({"a line is written"}), target->texts);
    m_multiplexor.add_target(target);
    m_multiplexor.clear_targets();
    EXPECT_EQ(texts_t(2, "a line is written"), target->texts);
}

TEST_F(CoutMultiplexor, LinesStandAtTheThreadsIndent)
{
    const progress_scope_t scope(logging::channels::default_log, "Work");
    const auto target = Add();
    EXPECT_EQ("       | Work\n"
              "cli    |   Registering stdin/stdout redirector: '" +
                  Address(target) + "'.\n",
              Log());
}

TEST_F(CoutMultiplexor, RemovalOfAStrangerIsLogged)
{
    const auto target = Add();
    Log();
    m_multiplexor.remove_target(nullptr);
    EXPECT_EQ("cli    | Removing stdin/stdout redirector: '0'.\n", Log());
    m_multiplexor.send_text("a", 0);
    EXPECT_EQ(texts_t({"a"}), target->texts);
}

TEST_F(CoutMultiplexor, RemovalTakesTheFirstOfSeveralEntriesAway)
{
    const auto twice = Add();
    const auto other = Add();
    m_multiplexor.add_target(twice);
    std::string order;
    twice->on_text = [&] { order += "t"; };
    other->on_text = [&] { order += "o"; };
    const auto send = [&]
    {
        m_multiplexor.send_text("a", 0);
        return std::exchange(order, "");
    };
    EXPECT_EQ("tot", send());
    m_multiplexor.remove_target(twice.get());
    EXPECT_EQ("ot", send());
    m_multiplexor.remove_target(twice.get());
    EXPECT_EQ("o", send());
}

TEST_F(CoutMultiplexor, ClearingIsLoggedIfThereIsSomethingToClear)
{
    m_multiplexor.clear_targets();
    EXPECT_EQ("", Log());
    const auto target = Add();
    m_multiplexor.add_target(target);
    Log();
    m_multiplexor.clear_targets();
    EXPECT_EQ("cli    | Clearing collection of cout multiplexors.\n", Log());
    EXPECT_EQ(1, target.use_count());
    m_multiplexor.clear_targets();
    EXPECT_EQ("", Log());
}

TEST_F(CoutMultiplexor, ErrorIsThreeWritesToEachTarget)
{
    const auto first = Add();
    const auto second = Add();
    const stderr_capture_t err;
    m_multiplexor.write_error("it failed");
    EXPECT_EQ(texts_t({"--err:\n", "it failed", ":err--\n"}), first->texts);
    EXPECT_EQ(first->texts, second->texts);
    EXPECT_EQ("", err.text());
}

TEST_F(CoutMultiplexor, ErrorIsSentWholeToOneTargetBehindTheOther)
{
    std::string order;
    const auto first = Add();
    const auto second = Add();
    first->on_text = [&] { order += "1"; };
    second->on_text = [&] { order += "2"; };
    m_multiplexor.write_error("it failed");
    EXPECT_EQ("111222", order);
}

TEST_F(CoutMultiplexor, MessageOfAnErrorIsSentAsItIs)
{
    const auto target = Add();
    m_multiplexor.write_error("%1\n");
    m_multiplexor.write_error("");
    EXPECT_EQ(texts_t({"--err:\n", "%1\n", ":err--\n", "--err:\n", "", ":err--\n"}), target->texts);
}

TEST_F(CoutMultiplexor, ErrorWithoutTargetsGoesToStandardErrorWithoutAFrame)
{
    const stdout_capture_t out;
    const stderr_capture_t err;
    m_multiplexor.write_error("it failed");
    EXPECT_EQ("it failed\n", err.text());
    EXPECT_LE(1, err.flushes());
    EXPECT_EQ("", out.text());
    EXPECT_EQ("", Log());
}

TEST_F(CoutMultiplexor, StandardErrorServesAgainWhenTheLastTargetIsGone)
{
    const auto target = Add();
    m_multiplexor.remove_target(target.get());
    const stderr_capture_t err;
    m_multiplexor.write_error("a");
    EXPECT_EQ("a\n", err.text());
    EXPECT_EQ(texts_t(), target->texts);
}

TEST_F(CoutMultiplexor, TargetThatFailsIsAWarningAndTheNextGetsTheWholeError)
{
    AddFailing();
    const auto second = Add();
    Log();
    const stderr_capture_t err;
    m_multiplexor.write_error("it failed");
    EXPECT_EQ("cli    | WARN|Cannot write error message [it failed] over redirector. Error: [no reader]\n",
              Log());
    EXPECT_EQ(texts_t({"--err:\n", "it failed", ":err--\n"}), second->texts);
    EXPECT_EQ("", err.text());
}

TEST_F(CoutMultiplexor, ErrorEndsForATargetWhereItFails)
{
    const auto at_message = AddFailing(1);
    const auto at_end = AddFailing(2);
    Log();
    m_multiplexor.write_error("a");
    EXPECT_EQ(texts_t({"--err:\n"}), at_message->texts);
    EXPECT_EQ(texts_t({"--err:\n", "a"}), at_end->texts);
    const std::string line =
        "cli    | WARN|Cannot write error message [a] over redirector. Error: [no reader]\n";
    EXPECT_EQ(line + line, Log());
}

TEST_F(CoutMultiplexor, TextGoesToEachTargetAsItIs)
{
    const auto first = Add();
    const auto second = Add();
    for (const std::int32_t kind : {0, 1, 3, -2})
        m_multiplexor.send_text("a%1", kind);
    EXPECT_EQ(texts_t({"a%1", "a%1", "a%1", "a%1"}), first->texts);
    EXPECT_EQ(first->texts, second->texts);
}

TEST_F(CoutMultiplexor, NotificationHasItsWordInFront)
{
    const auto target = Add();
    m_multiplexor.send_text("a\n", 2);
    m_multiplexor.send_text("", 2);
    EXPECT_EQ(texts_t({"--asyncNtf:a\n", "--asyncNtf:"}), target->texts);
}

TEST_F(CoutMultiplexor, TextWithoutTargetsGoesNowhere)
{
    const stdout_capture_t out;
    const stderr_capture_t err;
    m_multiplexor.send_text("a", 0);
    m_multiplexor.send_text("a", 2);
    m_multiplexor.send_named_value("a", "b");
    EXPECT_EQ("", out.text() + err.text() + Log());
}

TEST_F(CoutMultiplexor, FailedTextIsReportedWithADoubledWord)
{
    AddFailing();
    const auto second = Add();
    Log();
    m_multiplexor.send_text("a", 0);
    EXPECT_EQ("cli    | WARN|Cannot write message message [a] over redirector. Error: [no reader]\n", Log());
    EXPECT_EQ(texts_t({"a"}), second->texts);
}

TEST_F(CoutMultiplexor, FailedNotificationIsReportedWithoutItsWord)
{
    AddFailing();
    Log();
    m_multiplexor.send_text("a", 2);
    EXPECT_EQ("cli    | WARN|Cannot write message message [a] over redirector. Error: [no reader]\n", Log());
    m_multiplexor.send_named_value("n", "v");
    EXPECT_EQ("cli    | WARN|Cannot write message message [--named_wn:n:v] over redirector. "
              "Error: [no reader]\n",
              Log());
}

TEST_F(CoutMultiplexor, FailureWithoutATextIsReportedToo)
{
    Add()->on_text = [] { throw silent_exc_t(); };
    Log();
    m_multiplexor.write_error("a");
    m_multiplexor.send_text("b", 0);
    EXPECT_EQ("cli    | WARN|Cannot write error message [a] over redirector. Error: [<null>]\n"
              "cli    | WARN|Cannot write message message [b] over redirector. Error: [<null>]\n",
              Log());
}

TEST_F(CoutMultiplexor, WhatIsNoExceptionOfTheStandardLeavesTheSendAndTheMutex)
{
    Add()->on_text = [] { throw 1; };
    EXPECT_THROW(m_multiplexor.send_text("a", 0), int);
    EXPECT_THROW(m_multiplexor.write_error("a"), int);
    std::async(std::launch::async, [this] { m_multiplexor.clear_targets(); }).get();
}

TEST_F(CoutMultiplexor, NamedValueIsANotification)
{
    const auto first = Add();
    const auto second = Add();
    m_multiplexor.send_named_value("name", "value");
    m_multiplexor.send_named_value("", ":");
    EXPECT_EQ(texts_t({"--asyncNtf:--named_wn:name:value", "--asyncNtf:--named_wn:::"}), first->texts);
    EXPECT_EQ(first->texts, second->texts);
}

TEST_F(CoutMultiplexor, WrapsNotificationsAlone)
{
    EXPECT_EQ("--asyncNtf:a", io::CCoutMultiplexor::wrap_notification("a", 2));
    for (const std::int32_t kind : {0, 1, 3, -2})
        EXPECT_EQ("a", io::CCoutMultiplexor::wrap_notification("a", kind));
}

TEST_F(CoutMultiplexor, TargetMayRemoveItselfAndAddOthersMeanwhile)
{
    const auto first = Add();
    const auto second = Add();
    const auto late = boost::make_shared<stub_target_t>();
    first->on_text = [&]
    {
        m_multiplexor.remove_target(first.get());
        for (int i = 0; i != 10; ++i)
            m_multiplexor.add_target(late);
    };
    m_multiplexor.send_text("a", 0);
    EXPECT_EQ(texts_t({"a"}), first->texts);
    EXPECT_EQ(texts_t({"a"}), second->texts);
    EXPECT_EQ(texts_t(), late->texts);
    first->on_text = {};
    m_multiplexor.send_text("b", 0);
    EXPECT_EQ(texts_t({"a"}), first->texts);
    EXPECT_EQ(texts_t(10, "b"), late->texts);
}

TEST_F(CoutMultiplexor, ErrorsOfSeveralThreadsAreNotMixed)
{
    const auto target = Add();
    const auto send = [this](const std::string& message)
    {
        for (int i = 0; i != 200; ++i)
        {
            m_multiplexor.write_error(message);
            m_multiplexor.send_text("text", 0);
        }
    };
    auto other = std::async(std::launch::async, send, "other");
    send("this");
    other.get();
    ASSERT_EQ(1600U, target->texts.size());
    for (std::size_t i = 0; i < target->texts.size(); ++i)
    {
        if (target->texts[i] != "--err:\n")
            EXPECT_EQ("text", target->texts[i]);
        else
        {
            EXPECT_NE("text", target->texts[i + 1]);
            EXPECT_EQ(":err--\n", target->texts[i += 2]);
        }
    }
}

// The mutex is taken before the log's, never the other way round.
TEST_F(CoutMultiplexor, OneThreadLogsWhileTheOtherSends)
{
    AddFailing();
    auto other = std::async(std::launch::async,
                            []
                            {
                                for (int i = 0; i != 500; ++i)
                                    logging::channels::default_log.info("a line");
                            });
    for (int i = 0; i != 500; ++i)
        m_multiplexor.send_text("a", 0);
    other.get();
    EXPECT_EQ(1001U, m_receiver->messages().size());
}
