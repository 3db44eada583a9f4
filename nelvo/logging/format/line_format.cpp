#include "nelvo/logging/format/line_format.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>
#include <pthread.h>

// Breaking down the time costs more than the rest of a line: with TZ unset, localtime looks at the zone's
// file each time. Each thread therefore keeps the head of its lines for as long as the second and TZ stay as
// they are.

namespace logging::format
{
namespace
{

constexpr std::size_t kTagSize = 7;
constexpr int kNormalThreadWidth = 6;
constexpr int kLabelThreadWidth = 2;
constexpr pthread_t kLabelThreadModulus = 100;

constexpr char kNoTime[] = "TIME ---";

// What TZ was when a time was broken down. Unset and empty are two different zones.
class zone_t
{
public:
    bool Is(const char* zone) const
    {
        return zone != nullptr ? m_state == state_t::kSet && std::strcmp(m_text.data(), zone) == 0
                               : m_state == state_t::kUnset;
    }

    void Set(const char* zone)
    {
        const std::size_t size = zone != nullptr ? std::strlen(zone) + 1 : 0;
        m_state = zone == nullptr ? state_t::kUnset : state_t::kUnknown;
        if (zone == nullptr || size > m_text.size())
            return;
        std::memcpy(m_text.data(), zone, size);
        m_state = state_t::kSet;
    }

private:
    enum class state_t : std::uint8_t
    {
        kUnknown, // never asked, or too long to be kept
        kUnset,
        kSet
    };

    state_t m_state = state_t::kUnknown;
    std::array<char, 64> m_text{};
};

// Room for years of ten digits and threads of twenty. There is nothing to destroy, so that a text still
// stands when a static object logs at exit.
struct short_text_t
{
    std::array<char, 128> chars{};
    std::size_t size = 0;

    std::string_view view() const { return {chars.data(), size}; }
};

// Time and thread, with which each line of a thread begins.
class line_head_t
{
public:
    // Empty if there is no local time.
    std::string_view Time()
    {
        Refresh();
        return m_time.view();
    }

    // "[<time>] <<thread>> ", with the label style's thread or the normal one's.
    std::string_view Get(bool label)
    {
        Refresh();
        return (label ? m_label_head : m_normal_head).view();
    }

private:
    void Refresh()
    {
        const std::time_t now = std::time(nullptr);
        const pthread_t thread = ::pthread_self();
        const char* const zone = std::getenv("TZ");
        if (now == m_second && thread == m_thread && m_zone.Is(zone))
            return;
        BreakDown(now);
        FormHead(m_normal_head, thread, kNormalThreadWidth);
        FormHead(m_label_head, thread % kLabelThreadModulus, kLabelThreadWidth);
        m_second = now;
        m_thread = thread;
        m_zone.Set(zone);
    }

    // localtime has one result for all threads, and logs do not share a lock.
    void BreakDown(std::time_t now)
    {
        static std::mutex mutex;
        const std::lock_guard<std::mutex> lock(mutex);
        SetTime(std::localtime(&now)); // NOLINT(concurrency-mt-unsafe): the mutex stands above
    }

    void SetTime(const std::tm* time)
    {
        m_time.size = 0;
        if (time == nullptr)
            return;
        const int size = std::snprintf(m_time.chars.data(), m_time.chars.size(),
                                       "%02d.%02d.%04ld %02d:%02d:%02d", time->tm_mday, time->tm_mon + 1,
                                       1900L + time->tm_year, time->tm_hour, time->tm_min, time->tm_sec);
        m_time.size = static_cast<std::size_t>(size);
    }

    // Without a time, brackets and blank are missing, and the thread follows at once.
    // Kept: LineFormat.WithoutLocalTimeTheThreadFollowsAtOnce
    void FormHead(short_text_t& head, pthread_t thread, int width) const
    {
        char* const text = head.chars.data();
        const int size =
            m_time.size == 0
                ? std::snprintf(text, head.chars.size(), "%s<%*lu> ", kNoTime, width, thread)
                : std::snprintf(text, head.chars.size(), "[%s] <%*lu> ", m_time.chars.data(), width, thread);
        head.size = static_cast<std::size_t>(size);
    }

    std::time_t m_second = 0;
    pthread_t m_thread = 0;
    zone_t m_zone;
    short_text_t m_time;
    short_text_t m_normal_head;
    short_text_t m_label_head;
};

line_head_t& LineHead()
{
    static thread_local line_head_t head;
    return head;
}

std::string_view Mark(std::int32_t severity, bool first_line)
{
    if (severity != kWarning && severity != kError)
        return {};
    if (!first_line)
        return ">>  |";
    return severity == kWarning ? "WARN|" : "ERR |";
}

std::string_view Label(std::int32_t severity)
{
    switch (severity)
    {
    case kDetail:
    case kInfo: return "Info     ";
    case kWarning: return "Warning  ";
    case kError: return "Error    ";
    default: return {};
    }
}

// What all lines of a message have in common.
struct style_t
{
    const line_format_t& format;
    std::int32_t mode;
    std::int32_t severity;
    std::int32_t indent;
    std::string_view eol;
    line_filter_t* filter;
};

void format_line(std::string& out, const style_t& style, bool first_line, std::string_view piece)
{
    const bool label = style.mode != 0;
    out += LineHead().Get(label);
    if (label)
        out += Label(style.severity);
    else
        (out += style.format.get_prefix()) += Mark(style.severity, first_line);
    if (style.indent > 0)
        out.append(2 * static_cast<std::size_t>(style.indent), ' ');
    if (style.filter != nullptr)
        out += style.filter->filter_line(piece);
    else
        out += piece;
    out += style.eol;
}

} // namespace

line_format_t::line_format_t(std::string_view tag) { set_tag(tag); }

void line_format_t::set_tag(std::string_view tag)
{
    m_prefix = tag.substr(0, kTagSize);
    m_prefix.resize(kTagSize, ' ');
    m_prefix += "| ";
}

std::string format_lines(const line_format_t& format, std::int32_t mode, std::int32_t severity,
                         std::int32_t indent, std::string_view eol, std::string_view text,
                         line_filter_t* filter)
{
    std::string lines;
    append_lines(lines, format, mode, severity, indent, eol, text, filter);
    return lines;
}

void append_lines(std::string& out, const line_format_t& format, std::int32_t mode, std::int32_t severity,
                  std::int32_t indent, std::string_view eol, std::string_view text, line_filter_t* filter)
{
    const style_t style = {format, mode, severity, indent, eol, filter};
    std::size_t begin = 0;
    do
    {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        format_line(out, style, begin == 0, text.substr(begin, end - begin));
        begin = end + 1;
    } while (begin < text.size());
}

std::string GetLocalTimeText()
{
    const std::string_view time = LineHead().Time();
    return time.empty() ? kNoTime : std::string(time);
}

} // namespace logging::format
