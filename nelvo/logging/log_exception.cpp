#include "nelvo/logging/log_exception.h"

#include "nelvo/logging/log_channel.h"

namespace logging
{
namespace
{

void Report(const log_channel_t& channel, const std::exception& exception)
{
    const char* const text = exception.what();
    channel.error(text != nullptr ? text : "");
}

// What cannot be formed is dropped, and the exception is reported all the same.
void Report(const log_channel_t& channel, const message_t& message)
try
{
    channel.error(message.form());
}
catch (std::exception&)
{
}

} // namespace

void log_exception(const std::exception& exception)
try
{
    Report(log_channel_t(), exception);
}
catch (std::exception&)
{
    // No memory for a channel: dropped as promised, here and below.
}

void log_exception(const std::exception& exception, const message_t& message)
try
{
    const log_channel_t channel;
    Report(channel, message);
    Report(channel, exception);
}
catch (std::exception&)
{
}

} // namespace logging
