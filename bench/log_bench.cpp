// What does a message cost, up to a receiver that swallows it, and when nobody receives it?

#include "nelvo/logging/log.h"
#include "nelvo/logging/log_channel.h"
#include "nelvo/logging/receiver/debug_log.h"

#include <cstddef>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <iomanip>
#include <iterator>
#include <pthread.h>
#include <sstream>
#include <string>
#include <unistd.h>

#include <boost/format.hpp>
#include <boost/make_shared.hpp>
#include <fmt/format.h>

#include "bench/support/figure.h"
#include "bench/support/growth_figure.h"

namespace
{

const char kText[] = "Agent id: {9fd5a6c4-2c1e-4f3a-8a70-9f0d3b6a5e21}";
const char kId[] = "{9fd5a6c4-2c1e-4f3a-8a70-9f0d3b6a5e21}";

std::tm LocalTime()
{
    const std::time_t now = std::time(nullptr);
    std::tm time = {};
    ::localtime_r(&now, &time);
    return time;
}

std::string LineByFmt()
{
    const std::tm time = LocalTime();
    return fmt::format(fmt::runtime("[{:02}.{:02}.{:04} {:02}:{:02}:{:02}] <{:>6}> {:<7}| {}\n"),
                       time.tm_mday, time.tm_mon + 1, time.tm_year + 1900, time.tm_hour, time.tm_min,
                       time.tm_sec, ::pthread_self(), "bench", kText);
}

std::string LineByBoost()
{
    const std::tm time = LocalTime();
    boost::format line("[%02d.%02d.%04d %02d:%02d:%02d] <%6d> %-7s| %s\n");
    line % time.tm_mday % (time.tm_mon + 1) % (time.tm_year + 1900) % time.tm_hour % time.tm_min %
        time.tm_sec;
    return (line % ::pthread_self() % "bench" % kText).str();
}

std::string LineByStream()
{
    const std::tm time = LocalTime();
    std::ostringstream line;
    line << std::put_time(&time, "[%d.%m.%Y %H:%M:%S] <") << std::setw(6) << ::pthread_self() << "> "
         << std::left << std::setw(7) << "bench"
         << "| " << kText << '\n';
    return line.str();
}

// Writes 90 bytes to a file on tmpfs, which begins anew before it gets big.
ssize_t WriteNinetyBytes()
{
    constexpr off_t kMostSize = off_t{1024} * 1024;
    static const int file = ::open("/dev/shm", O_TMPFILE | O_WRONLY, 0600);
    static const std::string bytes(90, 'x');
    static off_t size = 0;
    if (size >= kMostSize)
        size = ::lseek(file, 0, SEEK_SET);
    const ssize_t written = ::write(file, bytes.data(), bytes.size());
    if (written != static_cast<ssize_t>(bytes.size()))
        std::abort();
    size += written;
    return written;
}

boost::shared_ptr<logging::log_t> SwallowingLog()
{
    return boost::make_shared<logging::log_t>(boost::make_shared<logging::receiver::COutputDebugStringLog>());
}

void AddSwallowed()
{
    const auto log = SwallowingLog();
    const auto format = boost::make_shared<logging::format::line_format_t>("bench");
    figure_t("log line to a receiver that swallows it")
        .Ours(
            [log, format]
            {
                log->write(2, 0, format, kText);
                return log.get();
            })
        .Against("fmt", LineByFmt)
        .Against("boost::format", LineByBoost)
        .Against("std::ostringstream", LineByStream);
}

void AddUnreceived()
{
    constexpr double kGoal = 0.2;
    const auto channel =
        boost::make_shared<logging::log_channel_t>("bench", boost::make_shared<logging::log_t>());
    figure_t("log message without a receiver")
        .Ours(
            [channel]
            {
                channel->info("Agent id: %1", kId);
                return channel.get();
            })
        .Against("write of 90 bytes", kGoal, WriteNinetyBytes);
}

void AddGrowth()
{
    constexpr std::size_t kLines = 1000;
    const auto channel = boost::make_shared<logging::log_channel_t>("bench", SwallowingLog());
    AddGrowthFigure("lines of a log message", kLines,
                    [channel](std::size_t count)
                    {
                        return [channel,
                                text = RepeatedText(std::string(kText) + '\n', count * std::size(kText))]
                        {
                            channel->info(text);
                            return channel.get();
                        };
                    });
    AddGrowthFigure("log messages", kLines,
                    [channel](std::size_t count)
                    {
                        return [channel, count]
                        {
                            for (std::size_t i = 0; i != count; ++i)
                                channel->info("Agent id: %1", kId);
                            return channel.get();
                        };
                    });
}

} // namespace

void AddFigures()
{
    AddSwallowed();
    AddUnreceived();
    AddGrowth();
}
