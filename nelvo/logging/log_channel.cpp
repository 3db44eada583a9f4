#include "nelvo/logging/log_channel.h"

#include <pthread.h>
#include <utility>

#include <boost/make_shared.hpp>

#include "nelvo/core/exc/exc_base.h"
#include "nelvo/logging/log.h"

namespace logging
{
namespace
{

const char kNoText[] = "Exception message is not available.";
const char kMask[] = "****";

std::string ThreadLine(const std::exception& exception)
{
    const std::string_view pattern = "\nAn exception was thrown from thread [%1].";
    const pthread_t thread = exc::exc_base_t::GetThreadId(exception);
    return thread != 0 ? util::Format(pattern, thread) : util::Format(pattern, "n/a");
}

} // namespace

log_channel_t::log_channel_t() : log_channel_t(std::string_view()) {}

log_channel_t::log_channel_t(std::string_view tag) : log_channel_t(tag, GetProcessLog()) {}

log_channel_t::log_channel_t(std::string_view tag, boost::shared_ptr<log_t> log)
    : m_format(boost::make_shared<format::line_format_t>(tag)), m_log(std::move(log))
{
}

// An exception without a text turns the warning into an error.
// Kept: LogChannel.WarningExcWithoutTextIsAnError
void log_channel_t::warning_exc(const std::exception& exception) const
{
    if (exception.what() != nullptr)
        warning(exception.what());
    else
        error(kNoText);
}

void log_channel_t::error_exc(const std::exception& exception) const
try
{
    const std::string text = exception.what() != nullptr ? exception.what() : kNoText;
    error(text + ThreadLine(exception));
}
catch (std::exception&)
{
    // Dropped as promised, here and below.
}

std::string log_channel_t::mask(std::string_view text) const
{
    return std::string(m_log->is_mask_sensitive() ? kMask : text);
}

std::int32_t log_channel_t::get_indent() const { return m_log->get_indent(); }

void log_channel_t::raise_indent() const { m_log->raise_indent(); }

void log_channel_t::lower_indent() const { m_log->lower_indent(); }

void log_channel_t::Write(format::severity_t severity, indent_choice_t indent, const message_t& message) const
try
{
    std::string storage;
    const std::string_view text = message.form_in(storage);
    const std::int32_t steps = indent ? *indent : get_indent();
    const log_t::format_ptr_t format = m_format;
    m_log->write(severity, steps, format, text);
}
catch (std::exception&)
{
}

void log_channel_t::WriteFailure(format::severity_t severity, const std::exception& exception,
                                 const message_t& message) const
try
{
    std::string text = message.form();
    if (exception.what() != nullptr)
        (text += '\n') += exception.what();
    if (severity == format::kError)
        text += ThreadLine(exception);
    Write(severity, 0, message_t(text, {}));
}
catch (std::exception&)
{
}

// The text is formed, and with it everything that forming does, and goes nowhere.
// Kept: LogChannel.DebugFormsItsTextAndWritesNothing
void log_channel_t::Drop(const message_t& message) const
try
{
    message.form();
    get_indent();
}
catch (std::exception&)
{
}

} // namespace logging
