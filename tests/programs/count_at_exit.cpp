// Logs to the file given as argument, from main and from a static object that ends after all others, and
// reads the file there, for the first time. Status 1 if one of these calls is not counted.

#include <string>

#include <boost/make_shared.hpp>
#include <unistd.h>

#include "nelvo/logging/log.h"
#include "nelvo/logging/log_channel.h"
#include "nelvo/logging/receiver/posix_log_file.h"
#include "nelvo/monitoring/thread_counters.h"
#include "nelvo/posix/posix_file.h"

namespace
{

std::uint64_t CountedBytes(workload::CThreadCounters& counters)
{
    std::uint64_t busy = 0;
    std::uint64_t bytes = 0;
    counters.Start();
    counters.Collect(busy, bytes);
    return bytes;
}

struct last_t
{
    ~last_t()
    {
        channel->info("from the last static object");
        std::string text;
        posix::posix_file_t::OpenRead(path)->ReadAllText(text);
        const bool counted = CountedBytes(workload::WriteCounters()) == text.size() &&
                             CountedBytes(workload::ReadCounters()) == text.size();
        channel.reset();
        if (!counted)
            ::_exit(1);
    }

    std::string path;
    boost::shared_ptr<logging::log_channel_t> channel;
};

[[gnu::init_priority(101)]] last_t g_last;

} // namespace

int main(int, char** arguments)
{
    g_last.path = arguments[1];
    const auto log =
        boost::make_shared<logging::log_t>(boost::make_shared<posix::posix_log_file_t>(g_last.path));
    g_last.channel = boost::make_shared<logging::log_channel_t>("tag", log);
    g_last.channel->info("in main");
}
