#pragma once

// A progress scope frames one piece of work in the log: a line when it begins, deeper indent while it
// lasts, a line on how it went, level with the first. A scope that is left unclosed, by return or by
// exception, says "<text> Failed."
//
//   progress_scope_t scope(channel, "Looking for existed agentId");
//   ...
//   scope.close_with("Existed agentId found by dmidecode");
//
// A quiet scope neither opens with a line nor indents; it writes the closing line alone.
//
// From the end of its construction until its destruction, closed or not, a scope's text marks what its thread
// is doing, if the thread has a state for that (monitoring::CThreadState). A scope that cannot be opened, for
// lack of memory, leaves neither mark nor indent.
//
// The first close wins, later ones write nothing. A scope belongs to the thread that opened it, and its
// channel must outlive it. Texts and patterns are as message.h tells, so not null.

#include <string>
#include <string_view>

#include "nelvo/logging/log_channel.h"

class progress_scope_t
{
public:
    // A text, or a pattern with 1 to 5 arguments. A silent scope indents and writes no line. Throws
    // exc::runtime_exc_t if wide text has no UTF-8 form.
    template <class... Args>
    progress_scope_t(const logging::log_channel_t& channel, std::string_view pattern, const Args&... args)
        : progress_scope_t(false, channel, pattern, args...)
    {
    }
    template <class... Args>
    progress_scope_t(const logging::log_channel_t& channel, std::wstring_view pattern, const Args&... args)
        : progress_scope_t(false, channel, pattern, args...)
    {
    }
    template <class... Args>
    progress_scope_t(bool silent, const logging::log_channel_t& channel, std::string_view pattern,
                     const Args&... args)
        : progress_scope_t(silent, channel, logging::message_t(pattern, {util::text_arg_t(args)...}))
    {
        static_assert(sizeof...(Args) <= 5, "a scope takes up to 5 arguments");
    }
    template <class... Args>
    progress_scope_t(bool silent, const logging::log_channel_t& channel, std::wstring_view pattern,
                     const Args&... args)
        : progress_scope_t(silent, channel, logging::message_t(pattern, {util::wide_text_arg_t(args)...}))
    {
        static_assert(sizeof...(Args) <= 5, "a scope takes up to 5 arguments");
    }
    progress_scope_t(bool silent, const logging::log_channel_t& channel, const logging::message_t& message);

    // No channel that ends before the scope.
    template <class... Args>
    progress_scope_t(const logging::log_channel_t&& channel, const Args&... args) = delete;
    template <class... Args>
    progress_scope_t(bool silent, const logging::log_channel_t&& channel, const Args&... args) = delete;

    // Takes the mark away, which a scope that was closed by hand has had until now, and closes an open scope
    // as close_failed does.
    // Kept: Marks.StayWhenTheScopeIsClosedByHand
    ~progress_scope_t();

    progress_scope_t(const progress_scope_t&) = delete;
    progress_scope_t& operator=(const progress_scope_t&) = delete;

    // A text, or a pattern with 1 to 5 arguments.
    template <class... Args>
    void close_with(std::string_view pattern, const Args&... args)
    {
        static_assert(sizeof...(Args) <= 5, "close_with takes up to 5 arguments");
        CloseWith(logging::message_t(pattern, {util::text_arg_t(args)...}));
    }

    void close_ok();      // "<text> ok."
    void close_failed();  // "<text> Failed."
    void close(bool ok);  // one of the two
    void close_quietly(); // no line

private:
    bool Close();
    void CloseWith(const logging::message_t& message);

    bool m_silent;
    bool m_closed = false;
    const logging::log_channel_t* m_channel;
    std::string m_text;
};

class quiet_progress_scope_t
{
public:
    // A text, or a pattern with 1 to 5 arguments.
    template <class... Args>
    quiet_progress_scope_t(const logging::log_channel_t& channel, std::string_view pattern,
                           const Args&... args)
        : quiet_progress_scope_t(channel, logging::message_t(pattern, {util::text_arg_t(args)...}))
    {
        static_assert(sizeof...(Args) <= 5, "a scope takes up to 5 arguments");
    }
    quiet_progress_scope_t(const logging::log_channel_t& channel, const logging::message_t& message);

    // No channel that ends before the scope.
    template <class... Args>
    quiet_progress_scope_t(const logging::log_channel_t&& channel, const Args&... args) = delete;

    // As that of progress_scope_t.
    ~quiet_progress_scope_t();

    quiet_progress_scope_t(const quiet_progress_scope_t&) = delete;
    quiet_progress_scope_t& operator=(const quiet_progress_scope_t&) = delete;

    // A text, or a pattern with 1 to 3 arguments.
    template <class... Args>
    void close_with(std::string_view pattern, const Args&... args)
    {
        static_assert(sizeof...(Args) <= 3, "close_with of a quiet scope takes up to 3 arguments");
        CloseWith(logging::message_t(pattern, {util::text_arg_t(args)...}));
    }

    void close_failed();  // "<text> Failed."
    void close_quietly(); // no line

private:
    bool Close();
    void CloseWith(const logging::message_t& message);

    bool m_closed = false;
    const logging::log_channel_t* m_channel;
    std::string m_text;
};
