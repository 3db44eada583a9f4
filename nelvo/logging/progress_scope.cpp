#include "nelvo/logging/progress_scope.h"

#include <utility>

#include "nelvo/monitoring/thread_state.h"

// A closing operation forms its text, then asks Close whether its line is to be written. close_failed leaves
// the forming to the message call, which throws nothing: the destructor calls it.

progress_scope_t::progress_scope_t(bool silent, const logging::log_channel_t& channel,
                                   const logging::message_t& message)
    : m_silent(silent), m_channel(&channel), m_text(message.form())
{
    if (!m_silent)
        m_channel->detail(m_text);
    m_channel->raise_indent();
    try
    {
        monitoring::PushThreadMark(m_text);
    }
    catch (...)
    {
        m_channel->lower_indent();
        throw;
    }
}

progress_scope_t::~progress_scope_t()
{
    monitoring::PopThreadMark();
    if (!m_closed)
        close_failed();
}

void progress_scope_t::close_ok()
{
    const std::string text = util::Format("%1 ok.", m_text);
    if (Close())
        m_channel->detail(text);
}

void progress_scope_t::close_failed()
{
    if (Close())
        m_channel->info("%1 Failed.", m_text);
}

void progress_scope_t::close(bool ok) { ok ? close_ok() : close_failed(); }

void progress_scope_t::close_quietly() { Close(); }

void progress_scope_t::CloseWith(const logging::message_t& message)
{
    std::string storage;
    const std::string_view text = message.form_in(storage);
    if (Close())
        m_channel->detail(text);
}

bool progress_scope_t::Close()
{
    if (m_closed)
        return false;
    m_closed = true;
    m_channel->lower_indent();
    return !m_silent;
}

quiet_progress_scope_t::quiet_progress_scope_t(const logging::log_channel_t& channel,
                                               const logging::message_t& message)
    : m_channel(&channel), m_text(message.form())
{
    monitoring::PushThreadMark(m_text);
}

quiet_progress_scope_t::~quiet_progress_scope_t()
{
    monitoring::PopThreadMark();
    if (!m_closed)
        close_failed();
}

void quiet_progress_scope_t::close_failed()
{
    if (Close())
        m_channel->info("%1 Failed.", m_text);
}

void quiet_progress_scope_t::close_quietly() { Close(); }

void quiet_progress_scope_t::CloseWith(const logging::message_t& message)
{
    std::string storage;
    const std::string_view text = message.form_in(storage);
    if (Close())
        m_channel->detail(text);
}

bool quiet_progress_scope_t::Close() { return !std::exchange(m_closed, true); }
