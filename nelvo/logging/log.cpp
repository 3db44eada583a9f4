#include "nelvo/logging/log.h"

#include <exception>
#include <ios>
#include <memory>
#include <mutex>
#include <utility>

#include <boost/make_shared.hpp>

#include "nelvo/core/exc/runtime_exc.h"

namespace logging
{
namespace
{

using lock_t = std::lock_guard<boost::recursive_mutex>;

constexpr std::int32_t kMessagesBetweenChecks = 999;
constexpr std::size_t kMostKeptMemory = 65536;

// Tells messages from inside a check, also from one that was asked for, to start no other.
class check_guard_t
{
public:
    explicit check_guard_t(bool& checking) : m_checking(checking), m_before(std::exchange(checking, true)) {}
    ~check_guard_t() { m_checking = m_before; }
    check_guard_t(const check_guard_t&) = delete;
    check_guard_t& operator=(const check_guard_t&) = delete;

private:
    bool& m_checking;
    const bool m_before;
};

// Lets the receiver go at exit while the log is still whole, so that what the receiver says while it closes
// is dropped like any message without one.
class receiver_release_t
{
public:
    explicit receiver_release_t(log_t& log) : m_log(log) {}
    ~receiver_release_t() { m_log.set_receiver({}); }
    receiver_release_t(const receiver_release_t&) = delete;
    receiver_release_t& operator=(const receiver_release_t&) = delete;

private:
    log_t& m_log;
};

} // namespace

log_t::log_t(receiver_ptr_t receiver) : m_receiver(std::move(receiver)) {}

void log_t::write(std::int32_t severity, std::int32_t indent, const format_ptr_t& format,
                  std::string_view text)
try
{
    const lock_t lock(m_mutex);
    if (m_closed.load(std::memory_order_relaxed) || !m_receiver || !format)
        return;
    WriteLines(severity, indent, *format, text);
    CountMessage();
}
catch (std::exception&)
{
    // Dropped as promised; there is nowhere to report it.
}

void log_t::set_receiver(const receiver_ptr_t& receiver)
{
    const lock_t lock(m_mutex);
    m_receiver = receiver;
}

log_t::receiver_ptr_t log_t::get_receiver() const
{
    const lock_t lock(m_mutex);
    return m_receiver;
}

void log_t::set_line_filter(const filter_ptr_t& filter)
{
    const lock_t lock(m_mutex);
    m_line_filter = filter;
}

log_t::filter_ptr_t log_t::get_line_filter() const
{
    const lock_t lock(m_mutex);
    return m_line_filter;
}

void log_t::set_size_check(bool on)
{
    const lock_t lock(m_mutex);
    m_size_check = on;
}

// The receiver is held for the call, as it may be replaced from inside it.
void log_t::check_size()
{
    const lock_t lock(m_mutex);
    const check_guard_t guard(m_checking_size);
    const receiver_ptr_t receiver = m_receiver;
    if (receiver)
        ValidateSize(*receiver);
}

void log_t::set_mask_sensitive(bool on)
{
    const lock_t lock(m_mutex);
    m_mask_sensitive.store(on, std::memory_order_relaxed);
}

std::string log_t::get_log_path() const
{
    const lock_t lock(m_mutex);
    if (!m_receiver)
        throw exc::runtime_exc_t("Value of the log path is unavailable: log is not initialized yet.");
    return m_receiver->get_path();
}

std::int32_t log_t::get_indent() const
{
    const std::int32_t* const indent = m_indent.get();
    return indent != nullptr ? *indent : 0;
}

void log_t::raise_indent()
{
    if (m_indent.get() == nullptr)
    {
        // The slot takes it over only when it has memory to keep it.
        auto made = std::make_unique<std::int32_t>(0);
        m_indent.reset(made.get());
        static_cast<void>(made.release());
    }
    ++*m_indent;
}

void log_t::lower_indent()
{
    std::int32_t* const indent = m_indent.get();
    if (indent != nullptr && *indent > 0)
        --*indent;
}

// Receiver and filter are held for the call, as either may log, and replace itself, from inside it. Such a
// message finds m_spare empty and takes memory of its own.
void log_t::WriteLines(std::int32_t severity, std::int32_t indent, const format::line_format_t& format,
                       std::string_view text)
{
    const receiver_ptr_t receiver = m_receiver;
    const filter_ptr_t filter = m_line_filter;
    const std::string eol = receiver->get_eol();

    std::string lines;
    lines.swap(m_spare);
    lines.clear();
    format::append_lines(lines, format, get_mode(), severity, indent, eol, text, filter.get());
    receiver->write(lines);
    if (lines.capacity() <= kMostKeptMemory)
        lines.swap(m_spare);
}

void log_t::CountMessage()
{
    if (!m_size_check)
        return;
    if (m_lines_since_check < kMessagesBetweenChecks)
    {
        ++m_lines_since_check;
        return;
    }
    if (m_checking_size)
        return;
    check_size();
    m_lines_since_check = 0;
}

boost::shared_ptr<log_t> GetProcessLog()
{
    // Standard output must outlive the receiver, which may print at exit. The log is never destroyed: what
    // ends later may still log.
    static const std::ios_base::Init streams;
    static const auto& log = *new boost::shared_ptr<log_t>(boost::make_shared<log_t>());
    static const receiver_release_t release(*log);
    return log;
}

} // namespace logging
