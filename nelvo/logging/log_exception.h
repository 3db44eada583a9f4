#pragma once

// Reports an exception in the process log, for destructors and other places that hold no channel. Throws
// no std::exception.
//
//   logging::log_exception(e, "Cannot close GZ archive [%1].", name);
//
// The message, if there is one (a text, or a pattern with 1 to 4 arguments), and the exception's what()
// are two errors of the empty tag, not two lines of one. A what() of null gives an empty text.

#include <exception>
#include <string_view>

#include "nelvo/logging/message.h"

namespace logging
{

// The exception alone, or behind a message.
void log_exception(const std::exception& exception);
void log_exception(const std::exception& exception, const message_t& message);

template <class... Args>
void log_exception(const std::exception& exception, std::string_view pattern, const Args&... args)
{
    static_assert(sizeof...(Args) <= 4, "log_exception takes up to 4 arguments");
    log_exception(exception, message_t(pattern, {util::text_arg_t(args)...}));
}

template <class... Args>
void log_exception(const std::exception& exception, std::wstring_view pattern, const Args&... args)
{
    static_assert(sizeof...(Args) <= 4, "log_exception takes up to 4 arguments");
    log_exception(exception, message_t(pattern, {util::wide_text_arg_t(args)...}));
}

} // namespace logging
