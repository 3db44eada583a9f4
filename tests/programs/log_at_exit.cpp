// Logs on standard output from main and, at exit, from a static object that was built before the channels
// or after them.

#include "nelvo/logging/channels.h"
#include "nelvo/logging/receiver/log_start.h"

namespace
{

struct logs_at_exit_t
{
    ~logs_at_exit_t() { m_channel.info("from a static object"); }
    const logging::log_channel_t m_channel;
};

const logs_at_exit_t g_logs_at_exit; // NOLINT(cert-err58-cpp)

} // namespace

int main()
{
    logging::start_log("", false, false, false);
    logging::channels::vhd.info("in main");
}
