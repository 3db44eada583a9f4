#pragma once

// What code logs through: a tag, which fills the channel's column, and a log. One call is one message, of
// one line or of many.
//
//   channel.info("Agent id: %1", id);                     at the thread's indent
//   channel.info(logging::flat, "Agent id: %1", id);      not indented
//   channel.detail(logging::at(2), "two steps deep");     at an indent of its own
//   channel.warning("Failed to parse system UUID");       never indented; "WARN|" in front
//   channel.error_exc(e, "Failed to look uuid in file: %1 ", path);
//
// A call takes a text, or a pattern with as many arguments as its comment says, filled in as util::Format
// does; a text without arguments is taken as it is. Neither may be a null C string. Wide calls take wide
// arguments, and all of it becomes UTF-8 first. No call ever throws a std::exception: a message that cannot
// be formed or written is dropped. Any thread may use a channel at any time.

#include <cstddef>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <string_view>

#include <boost/shared_ptr.hpp>

#include "nelvo/logging/format/line_format.h"
#include "nelvo/logging/message.h"

class progress_scope_t;

namespace logging
{
class log_t;

// Says that a message is not indented.
struct flat_t
{
};
constexpr flat_t flat{}; // info(logging::flat, ...)

// Says at which indent a message stands, in steps; below 0 is none.
struct indent_t
{
    std::int32_t steps;
};
constexpr indent_t at(std::int32_t steps) { return {steps}; } // info(logging::at(2), ...)

class log_channel_t
{
public:
    // On the process log; without a tag, the empty one.
    log_channel_t();
    explicit log_channel_t(std::string_view tag);

    // On a log of its own, not null.
    log_channel_t(std::string_view tag, boost::shared_ptr<log_t> log);

    // Results: 5 arguments, flat 4, at an indent 3.
    template <class... Args>
    void info(std::string_view pattern, const Args&... args) const
    {
        Send<5>(format::kInfo, {}, pattern, args...);
    }
    template <class... Args>
    void info(std::wstring_view pattern, const Args&... args) const
    {
        Send<5>(format::kInfo, {}, pattern, args...);
    }
    template <class... Args>
    void info(flat_t, std::string_view pattern, const Args&... args) const
    {
        Send<4>(format::kInfo, 0, pattern, args...);
    }
    template <class... Args>
    void info(flat_t, std::wstring_view pattern, const Args&... args) const
    {
        Send<4>(format::kInfo, 0, pattern, args...);
    }
    template <class... Args>
    void info(indent_t indent, std::string_view pattern, const Args&... args) const
    {
        Send<3>(format::kInfo, indent.steps, pattern, args...);
    }
    template <class... Args>
    void info(indent_t indent, std::wstring_view pattern, const Args&... args) const
    {
        Send<3>(format::kInfo, indent.steps, pattern, args...);
    }

    // Ordinary lines: 5 arguments, at an indent 3.
    template <class... Args>
    void detail(std::string_view pattern, const Args&... args) const
    {
        Send<5>(format::kDetail, {}, pattern, args...);
    }
    template <class... Args>
    void detail(std::wstring_view pattern, const Args&... args) const
    {
        Send<5>(format::kDetail, {}, pattern, args...);
    }
    template <class... Args>
    void detail(indent_t indent, std::string_view pattern, const Args&... args) const
    {
        Send<3>(format::kDetail, indent.steps, pattern, args...);
    }
    template <class... Args>
    void detail(indent_t indent, std::wstring_view pattern, const Args&... args) const
    {
        Send<3>(format::kDetail, indent.steps, pattern, args...);
    }

    // 4 arguments.
    template <class... Args>
    void warning(std::string_view pattern, const Args&... args) const
    {
        Send<4>(format::kWarning, 0, pattern, args...);
    }
    template <class... Args>
    void warning(std::wstring_view pattern, const Args&... args) const
    {
        Send<4>(format::kWarning, 0, pattern, args...);
    }
    template <class... Args>
    void error(std::string_view pattern, const Args&... args) const
    {
        Send<4>(format::kError, 0, pattern, args...);
    }
    template <class... Args>
    void error(std::wstring_view pattern, const Args&... args) const
    {
        Send<4>(format::kError, 0, pattern, args...);
    }

    // A failure: the message, if there is one (4 arguments), and the exception's what() on the next line.
    // The exception comes first, so that the arguments can stand last. error_exc adds the line "An
    // exception was thrown from thread [<id>].", with "n/a" for an exception that is none of the family.
    void warning_exc(const std::exception& exception) const;
    template <class... Args>
    void warning_exc(const std::exception& exception, std::string_view pattern, const Args&... args) const
    {
        SendFailure(format::kWarning, exception, pattern, args...);
    }
    template <class... Args>
    void warning_exc(const std::exception& exception, std::wstring_view pattern, const Args&... args) const
    {
        SendFailure(format::kWarning, exception, pattern, args...);
    }
    void error_exc(const std::exception& exception) const;
    template <class... Args>
    void error_exc(const std::exception& exception, std::string_view pattern, const Args&... args) const
    {
        SendFailure(format::kError, exception, pattern, args...);
    }
    template <class... Args>
    void error_exc(const std::exception& exception, std::wstring_view pattern, const Args&... args) const
    {
        SendFailure(format::kError, exception, pattern, args...);
    }

    // Forms the text of a pattern with 1 to 5 arguments and writes nothing, at the cost of forming it.
    template <class... Args>
    void debug(std::string_view pattern, const Args&... args) const
    {
        FormAndDrop(pattern, args...);
    }
    template <class... Args>
    void debug(std::wstring_view pattern, const Args&... args) const
    {
        FormAndDrop(pattern, args...);
    }

    // The text, or "****" if the log masks what is sensitive. Secrets are logged through this.
    std::string mask(std::string_view text) const;

    // The calling thread's indent in this channel's log, in steps. Progress scopes raise and lower it.
    std::int32_t get_indent() const;

private:
    friend class ::progress_scope_t;

    // The thread's indent if empty.
    using indent_choice_t = std::optional<std::int32_t>;

    template <std::size_t kMost, class Char, class... Args>
    void Send(format::severity_t severity, indent_choice_t indent, std::basic_string_view<Char> pattern,
              const Args&... args) const
    {
        static_assert(sizeof...(Args) <= kMost, "more arguments than this call takes");
        Write(severity, indent, message_t(pattern, {util::text_arg_tt<Char>(args)...}));
    }

    template <class Char, class... Args>
    void SendFailure(format::severity_t severity, const std::exception& exception,
                     std::basic_string_view<Char> pattern, const Args&... args) const
    {
        static_assert(sizeof...(Args) <= 4, "more arguments than this call takes");
        WriteFailure(severity, exception, message_t(pattern, {util::text_arg_tt<Char>(args)...}));
    }

    template <class Char, class... Args>
    void FormAndDrop(std::basic_string_view<Char> pattern, const Args&... args) const
    {
        static_assert(sizeof...(Args) >= 1 && sizeof...(Args) <= 5, "debug takes 1 to 5 arguments");
        Drop(message_t(pattern, {util::text_arg_tt<Char>(args)...}));
    }

    void Write(format::severity_t severity, indent_choice_t indent, const message_t& message) const;
    void WriteFailure(format::severity_t severity, const std::exception& exception,
                      const message_t& message) const;
    void Drop(const message_t& message) const;
    void raise_indent() const;
    void lower_indent() const;

    boost::shared_ptr<format::line_format_t> m_format;
    boost::shared_ptr<log_t> m_log;
};

} // namespace logging
