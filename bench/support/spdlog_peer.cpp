#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include "bench/support/log_peers.h"

peer_t SpdlogTo(const std::string& path)
{
    const auto logger = spdlog::basic_logger_mt("bench", path);
    logger->set_pattern("[%d.%m.%Y %H:%M:%S] <%t> %-7n| %v");
    logger->flush_on(spdlog::level::trace);
    return [logger](const std::string& text) { logger->info(text); };
}
