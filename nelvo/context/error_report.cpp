#include "nelvo/context/error_report.h"

#include "nelvo/context/common_lib_ctx.h"
#include "nelvo/logging/log_channel.h"
#include "nelvo/logging/log_exception.h"

namespace io
{
namespace
{

const char* TextOf(const std::exception& exception)
{
    const char* const text = exception.what();
    return text != nullptr ? text : "";
}

} // namespace

void ReportError(const std::string& message) { GetCommonLibCtx()->GetCoutMultiplexor().write_error(message); }

void ReportError(const std::exception& exception) { ReportError(std::string(TextOf(exception))); }

void ReportError(const std::string& message, const std::exception& exception)
{
    ReportError(message + TextOf(exception));
}

void ReportAndLogError(const std::exception& exception)
{
    logging::log_channel_t().error(TextOf(exception));
    ReportError(exception);
}

void ReportAndLogError(const std::exception& exception, const logging::message_t& message)
{
    const std::string text = message.form();
    logging::log_exception(exception, text);
    ReportError(text + "\n", exception);
}

} // namespace io
