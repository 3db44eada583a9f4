#pragma once

// Reports of failures to all who listen to the process's output, or else to standard error: each goes through
// the context's multiplexor (CCoutMultiplexor::write_error). The forms that log write to the process log
// first. An exception's text is what(); a what() of null counts as an empty text. All throw what
// GetCommonLibCtx throws.
//
//   io::ReportAndLogError(e, "Cannot open [%1].", path);

#include <exception>
#include <string>
#include <string_view>

#include "nelvo/logging/message.h"

namespace io
{

// The text as it is. Log nothing.
void ReportError(const std::string& message);
void ReportError(const std::exception& exception);

// The message and the exception's text, with nothing between them.
// Kept: ErrorReport.MessageAndExceptionAreNotParted
void ReportError(const std::string& message, const std::exception& exception);

// Logs one error of the empty tag.
void ReportAndLogError(const std::exception& exception);

// The message (a text, or a pattern with 1 to 3 arguments) and the exception's text, with a line feed between
// them. Logs them as two errors (log_exception).
void ReportAndLogError(const std::exception& exception, const logging::message_t& message);

template <class... Args>
void ReportAndLogError(const std::exception& exception, std::string_view pattern, const Args&... args)
{
    static_assert(sizeof...(Args) <= 3, "a report takes up to 3 arguments");
    ReportAndLogError(exception, logging::message_t(pattern, {util::text_arg_t(args)...}));
}

} // namespace io
