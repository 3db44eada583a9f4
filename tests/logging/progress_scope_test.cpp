#include "nelvo/logging/progress_scope.h"

#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/logging/log.h"
#include "nelvo/monitoring/thread_state.h"
#include "tests/support/failing_memory.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/placed_thread.h"

namespace
{

using logging::log_channel_t;
using logging::log_t;

class Scopes : public ::testing::Test
{
protected:
    Scopes() { m_log->set_receiver(m_receiver); }

    std::string Written() const { return WithoutHeads(m_receiver->text()); }

    boost::shared_ptr<lines_receiver_t> m_receiver = boost::make_shared<lines_receiver_t>();
    boost::shared_ptr<log_t> m_log = boost::make_shared<log_t>();
    const log_channel_t m_channel{"agentid", m_log};
};

class ProgressScope : public Scopes
{
};

class QuietProgressScope : public Scopes
{
};

// What scopes leave in the state of their thread.
class Marks : public Scopes
{
protected:
    ~Marks() override { logging::GetProcessLog()->set_receiver({}); }

    template <class Body>
    void OnTracedThread(Body body)
    {
        RunOnThreadAt(kBelow2To31,
                      [&]
                      {
                          const auto table = monitoring::CThreadStatesCollection::GetInstance();
                          const auto state = boost::make_shared<monitoring::CThreadState>("test");
                          table->Add(state);
                          body();
                          table->Remove(state);
                      });
    }

    // The calling thread's, each in brackets, oldest first.
    static std::string Now()
    {
        const auto dump = boost::make_shared<lines_receiver_t>();
        logging::GetProcessLog()->set_receiver(dump);
        monitoring::CThreadStatesCollection::GetInstance()->GetCurrentState()->DumpToLog();
        std::string marks;
        for (std::size_t i = 1; i != dump->messages().size(); ++i)
        {
            const std::string& line = dump->messages()[i];
            const std::size_t begin = line.find("Function: ") + 10;
            marks += '[' + line.substr(begin, line.rfind(". Time: ") - begin) + ']';
        }
        return marks;
    }
};

} // namespace

TEST_F(ProgressScope, FramesTheLinesInside)
{
    progress_scope_t scope(m_channel, "Looking for existed agentId");
    m_channel.info("Existed agentId was not found in agent file");
    m_channel.warning("first line");
    scope.close_with("Existed agentId found by dmidecode");
    m_channel.info("after");
    EXPECT_EQ("agentid| Looking for existed agentId\n"
              "agentid|   Existed agentId was not found in agent file\n"
              "agentid| WARN|first line\n"
              "agentid| Existed agentId found by dmidecode\n"
              "agentid| after\n",
              Written());
}

TEST_F(ProgressScope, ScopesNest)
{
    {
        progress_scope_t outer(m_channel, "outer");
        progress_scope_t inner(m_channel, "inner");
        m_channel.detail("line");
        inner.close_ok();
        outer.close_ok();
    }
    EXPECT_EQ("agentid| outer\nagentid|   inner\nagentid|     line\nagentid|   inner ok.\n"
              "agentid| outer ok.\n",
              Written());
}

TEST_F(ProgressScope, TakesAPattern)
{
    progress_scope_t one(m_channel, "%1", "a");
    progress_scope_t five(m_channel, "%1%2%3%4%5", "a", 2, 3, 4, 5);
    five.close_quietly();
    one.close_ok();
    EXPECT_EQ("agentid| a\nagentid|   a2345\nagentid| a ok.\n", Written());
}

TEST_F(ProgressScope, TextAloneIsNotAPattern)
{
    progress_scope_t scope(m_channel, "%01");
    scope.close_failed();
    scope.close_with("not written");
    progress_scope_t other(m_channel, "%1", "%02");
    other.close_with("%03");
    EXPECT_EQ("agentid| %01\nagentid| %01 Failed.\nagentid| %02\nagentid| %03\n", Written());
}

TEST_F(ProgressScope, WideTwinsWriteUtf8)
{
    {
        progress_scope_t text(m_channel, L"\xe4");
        progress_scope_t pattern(m_channel, L"\xe4%1%2%3%4%5", L"\xe4", 2, 3, 4, 5);
        progress_scope_t silent(true, m_channel, L"\xe4");
        progress_scope_t silent_pattern(true, m_channel, L"\xe4%1%2%3%4%5", 1, 2, 3, 4, 5);
        progress_scope_t loud(false, m_channel, L"\xe4%1", 1);
    }
    EXPECT_EQ("agentid| \xc3\xa4\n"
              "agentid|   \xc3\xa4\xc3\xa4"
              "2345\n"
              "agentid|         \xc3\xa4"
              "1\n"
              "agentid|         \xc3\xa4"
              "1 Failed.\n"
              "agentid|   \xc3\xa4\xc3\xa4"
              "2345 Failed.\n"
              "agentid| \xc3\xa4 Failed.\n",
              Written());
}

TEST_F(ProgressScope, WideTextThatIsNoUnicodeIsAFailure)
{
    EXPECT_THROW(progress_scope_t(m_channel, L"\xd800"), exc::runtime_exc_t);
    EXPECT_THROW(progress_scope_t(true, m_channel, L"%1", L"\xd800"), exc::runtime_exc_t);
    m_channel.info("next");
    EXPECT_EQ("agentid| next\n", Written());
}

TEST_F(ProgressScope, CloseWithTakesAPattern)
{
    progress_scope_t(m_channel, "a").close_with("%1", 1);
    progress_scope_t(m_channel, "b").close_with("%1%2%3%4%5", 1, 2, 3, 4, 5);
    EXPECT_EQ("agentid| a\nagentid| 1\nagentid| b\nagentid| 12345\n", Written());
}

TEST_F(ProgressScope, CloseSaysOkOrFailed)
{
    progress_scope_t(m_channel, "a").close_ok();
    progress_scope_t(m_channel, "b").close_failed();
    progress_scope_t(m_channel, "c").close(true);
    progress_scope_t(m_channel, "d").close(false);
    EXPECT_EQ("agentid| a\nagentid| a ok.\n"
              "agentid| b\nagentid| b Failed.\n"
              "agentid| c\nagentid| c ok.\n"
              "agentid| d\nagentid| d Failed.\n",
              Written());
}

TEST_F(ProgressScope, CloseQuietlyWritesNothingAndEndsTheIndent)
{
    {
        progress_scope_t scope(m_channel, "a");
        scope.close_quietly();
        m_channel.info("level");
    }
    m_channel.info("level");
    EXPECT_EQ("agentid| a\nagentid| level\nagentid| level\n", Written());
}

TEST_F(ProgressScope, FirstCloseWins)
{
    progress_scope_t scope(m_channel, "a");
    progress_scope_t other(m_channel, "b");
    other.close_with("first");
    other.close_with("%1", "second");
    other.close_ok();
    other.close_failed();
    other.close(true);
    other.close_quietly();
    m_channel.info("still inside a");
    scope.close_quietly();
    scope.close_with("too late");
    EXPECT_EQ("agentid| a\nagentid|   b\nagentid|   first\nagentid|   still inside a\n", Written());
}

// Of what is formed and not written only the lack of memory tells.
TEST_F(Scopes, CloseWithFormsItsTextWhenItIsTooLateToo)
{
    const auto close_late = [](auto& scope)
    {
        scope.close_quietly();
        FailNextAllocation();
        EXPECT_THROW(scope.close_with("%1, longer than what a string holds without memory", 1),
                     std::bad_alloc);
    };
    progress_scope_t scope(true, m_channel, "a");
    close_late(scope);
    quiet_progress_scope_t quiet(m_channel, "a");
    close_late(quiet);
    EXPECT_EQ("", Written());
}

TEST_F(ProgressScope, CloseOkFormsItsTextWhenItIsTooLateToo)
{
    progress_scope_t scope(true, m_channel, "longer than what a string holds without memory");
    scope.close_quietly();
    FailNextAllocation();
    EXPECT_THROW(scope.close_ok(), std::bad_alloc);
    EXPECT_EQ("", Written());
}

TEST_F(Scopes, StayOpenIfTheirLastTextCannotBeFormed)
{
    const std::string text = "longer than what a string holds without memory";
    progress_scope_t scope(m_channel, text);
    quiet_progress_scope_t quiet(m_channel, "b");
    FailNextAllocation();
    EXPECT_THROW(quiet.close_with("%1", text), std::bad_alloc);
    FailNextAllocation();
    EXPECT_THROW(scope.close_with("%1", text), std::bad_alloc);
    FailNextAllocation();
    EXPECT_THROW(scope.close_ok(), std::bad_alloc);
    EXPECT_EQ(1, m_channel.get_indent());
    quiet.close_with("c");
    scope.close_with("d");
    EXPECT_EQ("agentid| " + text + "\nagentid|   c\nagentid| d\n", Written());
}

TEST_F(ProgressScope, ClosedScopeEndsWithoutALine)
{
    {
        progress_scope_t scope(m_channel, "a");
        scope.close_ok();
    }
    EXPECT_EQ("agentid| a\nagentid| a ok.\n", Written());
}

TEST_F(ProgressScope, LeftByReturnItFailed)
{
    [this] { progress_scope_t scope(m_channel, "a"); }();
    m_channel.info("after");
    EXPECT_EQ("agentid| a\nagentid| a Failed.\nagentid| after\n", Written());
}

TEST_F(ProgressScope, LeftByExceptionItFailed)
{
    try
    {
        progress_scope_t outer(m_channel, "outer");
        progress_scope_t inner(m_channel, "inner");
        throw std::runtime_error("x");
    }
    catch (std::exception& e)
    {
        m_channel.warning_exc(e);
    }
    m_channel.info("after");
    EXPECT_EQ("agentid| outer\nagentid|   inner\nagentid|   inner Failed.\nagentid| outer Failed.\n"
              "agentid| WARN|x\nagentid| after\n",
              Written());
}

TEST_F(ProgressScope, SilentScopeIndentsAndWritesNoLine)
{
    {
        progress_scope_t scope(true, m_channel, "a");
        m_channel.info("inside");
        scope.close_with("not written");
        m_channel.info("outside");
        progress_scope_t left(true, m_channel, "%1%2%3%4%5", 1, 2, 3, 4, 5);
        m_channel.info("inside");
    }
    m_channel.info("outside");
    EXPECT_EQ("agentid|   inside\nagentid| outside\nagentid|   inside\nagentid| outside\n", Written());
}

TEST_F(ProgressScope, NotSilentIsTheOrdinaryOne)
{
    progress_scope_t(false, m_channel, "a").close_ok();
    progress_scope_t(false, m_channel, "%1", "b").close_ok();
    EXPECT_EQ("agentid| a\nagentid| a ok.\nagentid| b\nagentid| b ok.\n", Written());
}

TEST_F(ProgressScope, IndentsItsOwnThreadAndLogOnly)
{
    const auto receiver = boost::make_shared<lines_receiver_t>();
    const log_channel_t other("other", boost::make_shared<log_t>(receiver));
    progress_scope_t scope(m_channel, "a");
    other.info("b");
    std::thread(
        [this]
        {
            m_channel.info("c");
            progress_scope_t(m_channel, "d").close_ok();
        })
        .join();
    scope.close_ok();
    EXPECT_EQ("other  | b\n", WithoutHeads(receiver->text()));
    EXPECT_EQ("agentid| a\nagentid| c\nagentid| d\nagentid| d ok.\nagentid| a ok.\n", Written());
}

TEST_F(ProgressScope, WorksOnALogThatFails)
{
    m_receiver->set_hook([] { throw exc::runtime_exc_t("disk full"); });
    {
        progress_scope_t scope(m_channel, "a");
        EXPECT_EQ(1, m_channel.get_indent());
    }
    EXPECT_EQ(0, m_channel.get_indent());
}

TEST_F(QuietProgressScope, WorksOnALogThatFails)
{
    m_receiver->set_hook([] { throw exc::runtime_exc_t("disk full"); });
    {
        const quiet_progress_scope_t scope(m_channel, "a");
    }
    m_receiver->set_hook({});
    EXPECT_EQ("", Written());
}

TEST_F(ProgressScope, WithoutMemoryForItTheClosingLineIsDropped)
{
    {
        const progress_scope_t scope(m_channel, "longer than what a string holds without memory");
        FailNextAllocation();
    }
    EXPECT_TRUE(HasAllocationFailed());
    EXPECT_EQ(0, m_channel.get_indent());
    EXPECT_EQ("agentid| longer than what a string holds without memory\n", Written());
}

TEST_F(QuietProgressScope, WithoutMemoryForItTheClosingLineIsDropped)
{
    {
        const quiet_progress_scope_t scope(m_channel, "longer than what a string holds without memory");
        FailNextAllocation();
    }
    EXPECT_TRUE(HasAllocationFailed());
    EXPECT_EQ("", Written());
}

TEST_F(QuietProgressScope, WritesTheClosingLineAloneAndDoesNotIndent)
{
    {
        quiet_progress_scope_t scope(m_channel, "a");
        m_channel.info("inside");
        scope.close_with("done");
    }
    EXPECT_EQ("agentid| inside\nagentid| done\n", Written());
}

TEST_F(QuietProgressScope, ClosesAtTheThreadsIndent)
{
    progress_scope_t outer(m_channel, "outer");
    quiet_progress_scope_t(m_channel, "a").close_with("%1%2%3", 1, 2, 3);
    outer.close_quietly();
    EXPECT_EQ("agentid| outer\nagentid|   123\n", Written());
}

TEST_F(QuietProgressScope, LeftOpenItFailed)
{
    try
    {
        quiet_progress_scope_t scope(m_channel, "%1%2%3%4%5", "a", 2, 3, 4, 5);
        throw std::runtime_error("x");
    }
    catch (std::exception&)
    {
        m_channel.info("handled");
    }
    EXPECT_EQ("agentid| a2345 Failed.\nagentid| handled\n", Written());
}

TEST_F(QuietProgressScope, FirstCloseWins)
{
    {
        quiet_progress_scope_t scope(m_channel, "%01");
        scope.close_failed();
        scope.close_with("second");
        scope.close_with("%1", "third");
    }
    quiet_progress_scope_t quietly(m_channel, "a");
    quietly.close_quietly();
    quietly.close_failed();
    EXPECT_EQ("agentid| %01 Failed.\n", Written());
}

TEST_F(Marks, StandWhileTheirScopesDo)
{
    OnTracedThread(
        [this]
        {
            const progress_scope_t outer(m_channel, "outer");
            {
                const quiet_progress_scope_t quiet(m_channel, "quiet");
                const progress_scope_t silent(true, m_channel, "silent");
                EXPECT_EQ("[outer][quiet][silent]", Now());
            }
            EXPECT_EQ("[outer]", Now());
        });
}

TEST_F(Marks, CarryTheFormedText)
{
    OnTracedThread(
        [this]
        {
            const progress_scope_t scope(m_channel, "%1 of %2", 1, 3);
            const progress_scope_t wide(m_channel, L"\xe4%1", L"%2");
            const quiet_progress_scope_t quiet(m_channel, "%1%2", "%2", "a");
            const quiet_progress_scope_t text(m_channel, "%1");
            EXPECT_EQ("[1 of 3][\xc3\xa4%2][%2a][%1]", Now());
        });
}

TEST_F(Marks, StayWhenTheScopeIsClosedByHand)
{
    OnTracedThread(
        [this]
        {
            {
                progress_scope_t first(m_channel, "first");
                quiet_progress_scope_t second(m_channel, "second");
                first.close_ok();
                second.close_quietly();
                EXPECT_EQ("[first][second]", Now());
            }
            EXPECT_EQ("", Now());
        });
}

TEST_F(Marks, ComeAfterTheOpeningLineAndGoBeforeThatOfTheDestructor)
{
    std::vector<std::string> marks;
    m_receiver->set_hook([&] { marks.push_back(Now()); });
    OnTracedThread(
        [this]
        {
            const progress_scope_t scope(m_channel, "a");
            const quiet_progress_scope_t quiet(m_channel, "b");
            m_channel.info("line");
        });
    EXPECT_EQ((std::vector<std::string>{"", "[a][b]", "[a]", ""}), marks);
    EXPECT_EQ("agentid| a\nagentid|   line\nagentid|   b Failed.\nagentid| a Failed.\n", Written());
}

TEST_F(Marks, StandWhenAClosingOperationWritesItsLine)
{
    std::vector<std::string> marks;
    OnTracedThread(
        [&]
        {
            progress_scope_t scope(m_channel, "a");
            quiet_progress_scope_t quiet(m_channel, "b");
            m_receiver->set_hook([&] { marks.push_back(Now()); });
            quiet.close_failed();
            scope.close_with("done");
        });
    EXPECT_EQ((std::vector<std::string>{"[a][b]", "[a][b]"}), marks);
}

TEST_F(Marks, GoWhenAnExceptionPassesTheirScopes)
{
    OnTracedThread(
        [this]
        {
            try
            {
                const progress_scope_t scope(m_channel, "a");
                const quiet_progress_scope_t quiet(m_channel, "b");
                throw std::runtime_error("x");
            }
            catch (std::exception&)
            {
                EXPECT_EQ("", Now());
            }
        });
}

TEST_F(Marks, BelongToTheScopesThread)
{
    OnTracedThread(
        [this]
        {
            const progress_scope_t scope(m_channel, "a");
            std::thread([this] { const progress_scope_t other(m_channel, "b"); }).join();
            EXPECT_EQ("[a]", Now());
        });
}

TEST_F(Marks, WithoutMemoryForOneNoScopeIsOpened)
{
    OnTracedThread(
        [this]
        {
            const progress_scope_t outer(true, m_channel, "outer");
            FailNextAllocation();
            EXPECT_THROW(progress_scope_t(true, m_channel, "a"), std::bad_alloc);
            EXPECT_TRUE(HasAllocationFailed());
            FailNextAllocation();
            EXPECT_THROW(quiet_progress_scope_t(m_channel, "b"), std::bad_alloc);
            EXPECT_TRUE(HasAllocationFailed());
            EXPECT_EQ(1, m_channel.get_indent());
            EXPECT_EQ("[outer]", Now());
        });
    EXPECT_EQ("", Written());
}

TEST_F(Scopes, RefuseAChannelThatEndsBeforeThem)
{
    EXPECT_TRUE((std::is_constructible_v<progress_scope_t, const log_channel_t&, const char*, int>));
    EXPECT_TRUE((std::is_constructible_v<progress_scope_t, bool, log_channel_t&, const wchar_t*>));
    EXPECT_TRUE((std::is_constructible_v<quiet_progress_scope_t, const log_channel_t&, const char*, int>));

    EXPECT_FALSE((std::is_constructible_v<progress_scope_t, log_channel_t, const char*>));
    EXPECT_FALSE((std::is_constructible_v<progress_scope_t, const log_channel_t, const wchar_t*, int>));
    EXPECT_FALSE((std::is_constructible_v<progress_scope_t, bool, log_channel_t, const char*>));
    EXPECT_FALSE((std::is_constructible_v<quiet_progress_scope_t, log_channel_t, const char*>));
}
