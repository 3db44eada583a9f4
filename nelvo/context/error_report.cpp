#include "nelvo/context/error_report.h"

#include "nelvo/context/common_lib_ctx.h"
#include "nelvo/logging/log_channel.h"
#include "nelvo/logging/log_exception.h"

namespace io
{

void ReportError(const std::string& message) { GetCommonLibCtx()->GetCoutMultiplexor().write_error(message); }

void ReportError(const std::exception& exception) { ReportError(std::string(exception.what())); }

void ReportError(const std::string& message, const std::exception& exception)
{
    ReportError(message + exception.what());
}

void ReportAndLogError(const std::exception& exception)
{
    logging::log_channel_t().error(exception.what());
    ReportError(exception);
}

void ReportAndLogMessage(const logging::message_t& message, const std::exception& exception)
{
    logging::log_exception(exception, message);
    ReportError(message.form() + "\n" + exception.what());
}

} // namespace io
