#include <stdexcept>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/logging/log.h"
#include "nelvo/logging/log_channel.h"
#include "nelvo/logging/progress_scope.h"
#include "tests/support/lines_receiver.h"

namespace
{

using logging::at;
using logging::flat;

class LogChannelSeverity : public ::testing::Test
{
protected:
    LogChannelSeverity()
    {
        m_log->set_receiver(m_receiver);
        m_log->raise_indent();
    }

    std::string Written() const { return m_receiver->text(); }

    const std::runtime_error m_exception{"b"};
    boost::shared_ptr<lines_receiver_t> m_receiver = boost::make_shared<lines_receiver_t>();
    boost::shared_ptr<logging::log_t> m_log = boost::make_shared<logging::log_t>();
    logging::log_channel_t m_channel{"tag", m_log};
};

} // namespace

TEST_F(LogChannelSeverity, OfDetailIsOne)
{
    m_channel.detail("a");
    m_channel.detail(L"a");
    m_channel.detail(at(2), "a");
    m_channel.detail(at(2), L"a");
    EXPECT_EQ("tag severity 1 indent 1: a\n"
              "tag severity 1 indent 1: a\n"
              "tag severity 1 indent 2: a\n"
              "tag severity 1 indent 2: a\n",
              Written());
}

TEST_F(LogChannelSeverity, OfInfoIsTwo)
{
    m_channel.info("a");
    m_channel.info(L"a");
    m_channel.info(flat, "a");
    m_channel.info(flat, L"a");
    m_channel.info(at(2), "a");
    m_channel.info(at(2), L"a");
    EXPECT_EQ("tag severity 2 indent 1: a\n"
              "tag severity 2 indent 1: a\n"
              "tag severity 2 indent 0: a\n"
              "tag severity 2 indent 0: a\n"
              "tag severity 2 indent 2: a\n"
              "tag severity 2 indent 2: a\n",
              Written());
}

TEST_F(LogChannelSeverity, OfWarningIsThree)
{
    m_channel.warning("a");
    m_channel.warning(L"a");
    m_channel.warning_exc(m_exception);
    EXPECT_EQ("tag severity 3 indent 0: a\n"
              "tag severity 3 indent 0: a\n"
              "tag severity 3 indent 0: b\n",
              Written());
}

TEST_F(LogChannelSeverity, OfErrorIsFour)
{
    m_channel.error("a");
    m_channel.error(L"a");
    EXPECT_EQ("tag severity 4 indent 0: a\n"
              "tag severity 4 indent 0: a\n",
              Written());
}

TEST_F(LogChannelSeverity, OfAScopesLinesIsThatOfDetailAndInfo)
{
    {
        progress_scope_t scope(m_channel, "a");
        scope.close_ok();
    }
    {
        progress_scope_t scope(m_channel, "a");
        scope.close_with("b");
    }
    {
        const progress_scope_t scope(m_channel, "a");
    }
    {
        quiet_progress_scope_t scope(m_channel, "a");
        scope.close_with("b");
    }
    {
        const quiet_progress_scope_t scope(m_channel, "a");
    }
    EXPECT_EQ("tag severity 1 indent 1: a\n"
              "tag severity 1 indent 1: a ok.\n"
              "tag severity 1 indent 1: a\n"
              "tag severity 1 indent 1: b\n"
              "tag severity 1 indent 1: a\n"
              "tag severity 2 indent 1: a Failed.\n"
              "tag severity 1 indent 1: b\n"
              "tag severity 2 indent 1: a Failed.\n",
              Written());
}
