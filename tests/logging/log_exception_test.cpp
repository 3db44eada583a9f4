#include "nelvo/logging/log_exception.h"

#include <stdexcept>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/logging/log.h"
#include "tests/support/failing_memory.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/silent_exc.h"

namespace
{

class LogException : public ::testing::Test
{
protected:
    void SetUp() override { logging::GetProcessLog()->set_receiver(m_receiver); }
    void TearDown() override { logging::GetProcessLog()->set_receiver({}); }

    std::string Written() const { return WithoutHeads(m_receiver->text()); }

    const exc::runtime_exc_t m_exception{"It failed\nfor %1 reason"};
    boost::shared_ptr<lines_receiver_t> m_receiver = boost::make_shared<lines_receiver_t>();
};

} // namespace

TEST_F(LogException, AloneIsOneErrorOfTheEmptyTag)
{
    logging::log_exception(m_exception);
    EXPECT_EQ("       | ERR |It failed\n       | >>  |for %1 reason\n", Written());
    EXPECT_EQ(1u, m_receiver->messages().size());
}

TEST_F(LogException, MessageAndExceptionAreTwoErrors)
{
    logging::log_exception(m_exception, "%01 went wrong");
    EXPECT_EQ("       | ERR |%01 went wrong\n       | ERR |It failed\n       | >>  |for %1 reason\n",
              Written());
    EXPECT_EQ(2u, m_receiver->messages().size());
}

TEST_F(LogException, MessageMayBeAPattern)
{
    logging::log_exception(std::runtime_error("It broke"), "%1", "a");
    logging::log_exception(std::runtime_error("It broke"), "%1%2%3%4", "a", 2, 3, 4);
    EXPECT_EQ("       | ERR |a\n       | ERR |It broke\n       | ERR |a234\n       | ERR |It broke\n",
              Written());
}

TEST_F(LogException, MessageMayBeWide)
{
    logging::log_exception(std::runtime_error("It broke"), L"\xe4");
    logging::log_exception(std::runtime_error("It broke"), L"\xe4%1%2%3%4", L"a", 2, 3, 4);
    EXPECT_EQ("       | ERR |\xc3\xa4\n       | ERR |It broke\n"
              "       | ERR |\xc3\xa4"
              "a234\n       | ERR |It broke\n",
              Written());
}

TEST_F(LogException, MessageThatCannotBeFormedLeavesTheException)
{
    logging::log_exception(std::runtime_error("It broke"), L"%1", L"\xd800");
    EXPECT_EQ("       | ERR |It broke\n", Written());
}

TEST_F(LogException, ExceptionWithoutTextIsAnEmptyError)
{
    logging::log_exception(silent_exc_t());
    EXPECT_EQ("       | ERR |\n", Written());
}

TEST_F(LogException, OtherExceptionsPass)
{
    m_receiver->set_hook([] { throw 42; });
    EXPECT_THROW(logging::log_exception(m_exception), int);
    EXPECT_THROW(logging::log_exception(m_exception, "text"), int);
    m_receiver->set_hook({});
    EXPECT_EQ("", Written());
}

TEST_F(LogException, IsNotIndented)
{
    logging::GetProcessLog()->raise_indent();
    logging::log_exception(std::runtime_error("It broke"), "text");
    logging::GetProcessLog()->lower_indent();
    EXPECT_EQ("       | ERR |text\n       | ERR |It broke\n", Written());
}

TEST_F(LogException, WithoutMemoryForAChannelItIsDropped)
{
    const std::runtime_error exception("It broke");
    FailNextAllocation();
    logging::log_exception(exception);
    const bool failed_once = HasAllocationFailed();
    EXPECT_EQ("", Written());
    EXPECT_TRUE(failed_once);
}

TEST_F(LogException, WithoutMemoryForAChannelItsMessageIsDroppedToo)
{
    const std::runtime_error exception("It broke");
    FailNextAllocation();
    logging::log_exception(exception, "text");
    const bool failed_once = HasAllocationFailed();
    EXPECT_EQ("", Written());
    EXPECT_TRUE(failed_once);
}
