#include "nelvo/context/error_report.h"

#include <stdexcept>
#include <vector>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "nelvo/context/common_lib_ctx.h"
#include "nelvo/logging/log.h"
#include "tests/support/lines_receiver.h"
#include "tests/support/silent_exc.h"

namespace
{

using texts_t = std::vector<std::string>;

// Takes text to a list.
class listing_target_t : public io::cout_target_t
{
public:
    explicit listing_target_t(texts_t& list) : m_list(list) {}
    std::uint64_t write(const void*, std::uint64_t) override { return 0; }
    std::uint64_t read(void*, std::uint64_t) override { return 0; }
    void write_text(const std::string& text) override { m_list.push_back(text); }

private:
    texts_t& m_list;
};

class ErrorReport : public ::testing::Test
{
protected:
    ErrorReport()
    {
        logging::GetProcessLog()->set_receiver(m_receiver);
        m_receiver->set_hook([this] { m_steps.push_back("a line is logged"); });
        Multiplexor().add_target(m_target);
        m_seen = m_receiver->messages().size();
        m_steps.clear();
    }
    ~ErrorReport() override
    {
        Multiplexor().remove_target(m_target.get());
        logging::GetProcessLog()->set_receiver({});
    }

    static io::CCoutMultiplexor& Multiplexor() { return GetCommonLibCtx()->GetCoutMultiplexor(); }

    std::string Log() const
    {
        std::string lines;
        for (std::size_t i = m_seen; i != m_receiver->messages().size(); ++i)
            lines += WithoutHeads(m_receiver->messages()[i]);
        return lines;
    }

    // What is written behind so many lines in the log.
    static texts_t Sent(const std::string& text, std::size_t lines = 0)
    {
        texts_t steps(lines, "a line is logged");
        steps.insert(steps.end(), {"--err:\n", text, ":err--\n"});
        return steps;
    }

    texts_t m_steps;
    boost::shared_ptr<lines_receiver_t> m_receiver = boost::make_shared<lines_receiver_t>();
    boost::shared_ptr<listing_target_t> m_target = boost::make_shared<listing_target_t>(m_steps);
    std::size_t m_seen = 0;
    const std::runtime_error m_failure{"no %1"};
};

} // namespace

TEST_F(ErrorReport, MessageIsSentAsItIs)
{
    io::ReportError("it failed %1");
    EXPECT_EQ(Sent("it failed %1"), m_steps);
}

TEST_F(ErrorReport, ExceptionIsSentAsItsText)
{
    io::ReportError(m_failure);
    EXPECT_EQ(Sent("no %1"), m_steps);
}

TEST_F(ErrorReport, MessageAndExceptionAreNotParted)
{
    io::ReportError("it failed", m_failure);
    EXPECT_EQ(Sent("it failedno %1"), m_steps);
}

TEST_F(ErrorReport, ExceptionIsLoggedFirst)
{
    io::ReportAndLogError(m_failure);
    EXPECT_EQ(Sent("no %1", 1), m_steps);
    EXPECT_EQ("       | ERR |no %1\n", Log());
}

TEST_F(ErrorReport, MessageAndExceptionAreLoggedFirstAsTwoErrors)
{
    io::ReportAndLogError(m_failure, "it failed %1");
    EXPECT_EQ(Sent("it failed %1\nno %1", 2), m_steps);
    EXPECT_EQ("       | ERR |it failed %1\n"
              "       | ERR |no %1\n",
              Log());
}

TEST_F(ErrorReport, MessageMayBeAPatternWithUpToThreeArguments)
{
    io::ReportAndLogError(m_failure, "[%1]", 1);
    io::ReportAndLogError(m_failure, "[%1] [%2]", 1, "b");
    io::ReportAndLogError(m_failure, "[%1] [%2] [%3]", 1, "%1", std::string("c"));
    EXPECT_EQ("       | ERR |[1]\n"
              "       | ERR |no %1\n"
              "       | ERR |[1] [b]\n"
              "       | ERR |no %1\n"
              "       | ERR |[1] [%1] [c]\n"
              "       | ERR |no %1\n",
              Log());
    EXPECT_EQ("[1]\nno %1", m_steps[3]);
    EXPECT_EQ("[1] [b]\nno %1", m_steps[8]);
    EXPECT_EQ("[1] [%1] [c]\nno %1", m_steps[13]);
}

TEST_F(ErrorReport, ExceptionWithoutATextCountsAsAnEmptyOne)
{
    io::ReportError(silent_exc_t());
    io::ReportError("a", silent_exc_t());
    EXPECT_EQ(texts_t({"--err:\n", "", ":err--\n", "--err:\n", "a", ":err--\n"}), m_steps);
    m_steps.clear();
    io::ReportAndLogError(silent_exc_t());
    EXPECT_EQ(Sent("", 1), m_steps);
    m_steps.clear();
    io::ReportAndLogError(silent_exc_t(), "a");
    EXPECT_EQ(Sent("a\n", 2), m_steps);
    EXPECT_EQ("       | ERR |\n"
              "       | ERR |a\n"
              "       | ERR |\n",
              Log());
}

TEST_F(ErrorReport, WithoutListenersItGoesToStandardError)
{
    Multiplexor().remove_target(m_target.get());
    m_steps.clear();
    testing::internal::CaptureStderr();
    io::ReportError("a");
    io::ReportAndLogError(m_failure, "b");
    EXPECT_EQ("a\nb\nno %1\n", testing::internal::GetCapturedStderr());
}
