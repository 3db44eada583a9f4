#include <ios>
#include <memory>

#include <log4cplus/fileappender.h>
#include <log4cplus/initializer.h>
#include <log4cplus/layout.h>
#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

#include "bench/support/log_peers.h"

peer_t Log4cplusTo(const std::string& path)
{
    static const log4cplus::Initializer library;
    constexpr bool kFlushEach = true;
    const log4cplus::SharedAppenderPtr file(
        new log4cplus::FileAppender(path, std::ios_base::app, kFlushEach));
    file->setLayout(std::make_unique<log4cplus::PatternLayout>("[%D{%d.%m.%Y %H:%M:%S}] <%t> %-7c| %m%n"));
    log4cplus::Logger logger = log4cplus::Logger::getInstance("bench");
    logger.setAdditivity(false);
    logger.setLogLevel(log4cplus::ALL_LOG_LEVEL);
    logger.addAppender(file);
    return [logger](const std::string& text) { LOG4CPLUS_INFO_STR(logger, text); };
}
