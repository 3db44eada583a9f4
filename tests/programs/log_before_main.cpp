// Logs on standard output from a static object that is built before all others, the library's own and those
// of standard output among them.

#include "nelvo/logging/log_channel.h"
#include "nelvo/logging/receiver/log_start.h"

namespace
{

struct logs_before_main_t
{
    logs_before_main_t()
    {
        logging::start_log("", false, false, false);
        m_channel.info("before main");
    }
    const logging::log_channel_t m_channel{"early"};
};

[[gnu::init_priority(101)]] const logs_before_main_t g_logs_before_main;

} // namespace

int main() {}
