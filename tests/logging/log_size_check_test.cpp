#include <functional>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/logging/channels.h"
#include "nelvo/logging/log.h"
#include "nelvo/logging/receiver/log_start.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/stdout_capture.h"

namespace
{

std::function<void()> g_check;

} // namespace

// Stands in for the library's, which is not linked in then.
void logging::log_t::ValidateSize(receiver::log_file_t&) { g_check(); }

namespace
{

using logging::log_t;

class SizeCheck : public ::testing::Test
{
protected:
    SizeCheck()
    {
        g_check = [this] { ++m_checks; };
        m_log.set_receiver(m_receiver);
        m_log.set_size_check(true);
    }

    void Write(int count)
    {
        for (int i = 0; i != count; ++i)
            m_log.write(2, 0, m_format, "a\nb\nc");
    }

    int m_checks = 0;
    boost::shared_ptr<lines_receiver_t> m_receiver = boost::make_shared<lines_receiver_t>();
    log_t::format_ptr_t m_format = boost::make_shared<logging::format::line_format_t>("tag");
    log_t m_log;
};

} // namespace

TEST_F(SizeCheck, ComesAfterEveryThousandthMessage)
{
    Write(999);
    EXPECT_EQ(0, m_checks);
    Write(1);
    EXPECT_EQ(1, m_checks);
    Write(999);
    EXPECT_EQ(1, m_checks);
    Write(1);
    EXPECT_EQ(2, m_checks);
}

TEST_F(SizeCheck, ComesAfterTheThousandthMessageIsWritten)
{
    std::size_t written = 0;
    g_check = [&] { written = m_receiver->messages().size(); };
    Write(1000);
    EXPECT_EQ(1000u, written);
}

TEST_F(SizeCheck, IsOffUnlessAskedFor)
{
    log_t log(m_receiver);
    for (int i = 0; i != 2000; ++i)
        log.write(2, 0, m_format, "a");
    EXPECT_EQ(0, m_checks);
}

TEST_F(SizeCheck, IsOffInTheProcessLogToo)
{
    logging::GetProcessLog()->set_receiver(m_receiver);
    for (int i = 0; i != 2000; ++i)
        logging::channels::default_log.info("a");
    EXPECT_EQ(0, m_checks);
    logging::GetProcessLog()->set_receiver({});
}

TEST_F(SizeCheck, DoesNotCountWhileOff)
{
    Write(999);
    m_log.set_size_check(false);
    Write(1000);
    EXPECT_EQ(0, m_checks);
    m_log.set_size_check(true);
    Write(1);
    EXPECT_EQ(1, m_checks);
}

TEST_F(SizeCheck, DroppedMessagesDoNotCount)
{
    Write(999);
    m_log.set_receiver({});
    Write(1);
    m_log.set_receiver(m_receiver);
    m_log.write(2, 0, {}, "a");
    m_receiver->set_hook([] { throw exc::runtime_exc_t("disk full"); });
    Write(1);
    m_receiver->set_hook({});
    EXPECT_EQ(0, m_checks);
    Write(1);
    EXPECT_EQ(1, m_checks);
}

TEST_F(SizeCheck, FailedCheckIsRepeatedAfterTheNextMessage)
{
    g_check = [this]
    {
        if (++m_checks < 3)
            throw exc::runtime_exc_t("cannot rotate");
    };
    Write(1000);
    EXPECT_EQ(1, m_checks);
    Write(1);
    EXPECT_EQ(2, m_checks);
    Write(1);
    EXPECT_EQ(3, m_checks);
    Write(999);
    EXPECT_EQ(3, m_checks);
    Write(1);
    EXPECT_EQ(4, m_checks);
    EXPECT_EQ(2002u, m_receiver->messages().size());
}

TEST_F(SizeCheck, MessageFromInsideIsWrittenAndStartsNoOther)
{
    g_check = [this]
    {
        ++m_checks;
        Write(5);
    };
    Write(1000);
    EXPECT_EQ(1, m_checks);
    EXPECT_EQ(1005u, m_receiver->messages().size());
    Write(999);
    EXPECT_EQ(1, m_checks);
    Write(1);
    EXPECT_EQ(2, m_checks);
}

TEST_F(SizeCheck, MessageFromInsideAFailingOneStartsNoOther)
{
    g_check = [this]
    {
        ++m_checks;
        Write(1);
        throw exc::runtime_exc_t("cannot rotate");
    };
    Write(1000);
    EXPECT_EQ(1, m_checks);
    Write(1);
    EXPECT_EQ(2, m_checks);
    EXPECT_EQ(1003u, m_receiver->messages().size());
}

TEST_F(SizeCheck, MessagesOnDbgDoNotCountInTheProcessLog)
{
    const auto log = logging::GetProcessLog();
    log->set_receiver(m_receiver);
    log->set_size_check(true);
    for (int i = 0; i != 999; ++i)
        logging::channels::default_log.info("a");
    logging::channels::dbg.info("a");
    EXPECT_EQ(0, m_checks);
    logging::channels::cli.info("a");
    EXPECT_EQ(1, m_checks);
    log->set_receiver({});
    log->set_size_check(false);
}

TEST_F(SizeCheck, StartOfTheLogTurnsItOnOrOff)
{
    const stdout_capture_t captured;
    const auto log_many = []
    {
        for (int i = 0; i != 1000; ++i)
            logging::channels::default_log.info("a");
    };
    logging::start_log("", false, false, true);
    log_many();
    EXPECT_EQ(1, m_checks);
    logging::start_log("", false, false, false);
    log_many();
    EXPECT_EQ(1, m_checks);
    logging::GetProcessLog()->set_receiver({});
}
