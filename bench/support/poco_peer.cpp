#include <Poco/AutoPtr.h>
#include <Poco/FormattingChannel.h>
#include <Poco/Logger.h>
#include <Poco/PatternFormatter.h>
#include <Poco/SimpleFileChannel.h>

#include "bench/support/log_peers.h"

// The plainer of its two file channels: the other one does the same and can do more.
peer_t PocoTo(const std::string& path)
{
    Poco::AutoPtr<Poco::SimpleFileChannel> file(new Poco::SimpleFileChannel(path));
    file->setProperty("flush", "true");
    const Poco::AutoPtr<Poco::PatternFormatter> format(
        new Poco::PatternFormatter("[%L%d.%m.%Y %H:%M:%S] <%I> %v[7]| %t"));
    const Poco::AutoPtr<Poco::FormattingChannel> channel(new Poco::FormattingChannel(format, file));
    Poco::Logger& logger = Poco::Logger::create("bench", channel, Poco::Message::PRIO_INFORMATION);
    return [&logger](const std::string& text) { logger.information(text); };
}
