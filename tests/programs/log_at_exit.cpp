// Logs on standard output from main and, at exit, from static objects that were built before the process log
// and after it, and from its receiver.

#include <stdexcept>
#include <utility>

#include <boost/make_shared.hpp>

#include "nelvo/logging/channels.h"
#include "nelvo/logging/log.h"
#include "nelvo/logging/log_exception.h"
#include "nelvo/logging/receiver/log_start.h"

namespace
{

struct reports_at_exit_t
{
    ~reports_at_exit_t() { logging::log_exception(std::runtime_error(m_text)); }
    const char* const m_text;
};

struct logs_at_exit_t
{
    ~logs_at_exit_t() { m_channel.info("from a static object"); }
    const logging::log_channel_t m_channel;
};

// Another receiver with a last word.
class logs_when_it_ends_t : public logging::receiver::log_file_t
{
public:
    explicit logs_when_it_ends_t(logging::log_t::receiver_ptr_t target) : m_target(std::move(target)) {}
    ~logs_when_it_ends_t() override { logging::log_exception(std::runtime_error("from the receiver: lost")); }

    void write(const std::string& text) override { m_target->write(text); }
    std::uint64_t get_size() const override { return 0; }
    void compress_to(util::zip_writer_t&) override {}

private:
    logging::log_t::receiver_ptr_t m_target;
};

// Built before the process log and ended after it has let its receiver go.
[[gnu::init_priority(101)]] const reports_at_exit_t g_reports_last{"from the last one: lost"};

const logs_at_exit_t g_logs_at_exit;
const reports_at_exit_t g_reports_first{"from a later one"};

} // namespace

int main()
{
    logging::start_log("", false, false, false);
    const auto log = logging::GetProcessLog();
    log->set_receiver(boost::make_shared<logs_when_it_ends_t>(log->get_receiver()));
    logging::channels::vhd.info("in main");
}
