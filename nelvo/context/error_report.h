#pragma once

// Reports of failures to all who listen to the process's output, or else to standard error: each goes through
// the context's multiplexor (CCoutMultiplexor::write_error). The forms that log write to the process log
// first. They throw what GetCommonLibCtx throws.

#include <exception>
#include <string>
#include <string_view>

#include "nelvo/logging/message.h"

namespace io
{

void ReportError(const std::string& message);
void ReportError(const std::exception& exception);

// The message and what(), with nothing between them.
// Kept: ErrorReport.MessageAndExceptionAreNotParted
void ReportError(const std::string& message, const std::exception& exception);

void ReportAndLogError(const std::exception& exception);

// The message and what() with a line feed between them. The message may be a pattern with 1 to 3 arguments.
void ReportAndLogMessage(const logging::message_t& message, const std::exception& exception);

template <class... Args>
void ReportAndLogError(const std::exception& exception, std::string_view pattern, const Args&... args)
{
    static_assert(sizeof...(Args) <= 3, "a report takes up to 3 arguments");
    ReportAndLogMessage(logging::message_t(pattern, {util::text_arg_t(args)...}), exception);
}

} // namespace io
