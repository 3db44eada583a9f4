#include "nelvo/logging/format/line_format.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>
#include <pthread.h>

// Breaking down the time costs more than the rest of a line: with TZ unset, localtime looks at the zone's
// file each time. Its text is therefore kept for as long as the second and TZ stay as they are.

namespace logging::format
{
namespace
{

constexpr std::size_t kTagSize = 7;
constexpr std::size_t kNormalThreadWidth = 6;
constexpr std::size_t kLabelThreadWidth = 2;
constexpr pthread_t kLabelThreadModulus = 100;

constexpr std::string_view kNoTime = "TIME ---";

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

class time_text_t
{
public:
    // Empty if there is no local time.
    std::string_view Now()
    {
        const std::time_t now = std::time(nullptr);
        const char* const zone = std::getenv("TZ");
        if (now != m_second || !m_zone.Is(zone))
        {
            BreakDown(now);
            m_second = now;
            m_zone.Set(zone);
        }
        return std::string_view(m_text.data(), m_size);
    }

private:
    // localtime has one result for all threads, and logs do not share a lock.
    void BreakDown(std::time_t now)
    {
        static std::mutex mutex;
        const std::lock_guard<std::mutex> lock(mutex);
        Set(std::localtime(&now));
    }

    void Set(const std::tm* time)
    {
        m_size = 0;
        if (time == nullptr)
            return;
        const int size =
            std::snprintf(m_text.data(), m_text.size(), "%02d.%02d.%04ld %02d:%02d:%02d", time->tm_mday,
                          time->tm_mon + 1, 1900L + time->tm_year, time->tm_hour, time->tm_min, time->tm_sec);
        m_size = static_cast<std::size_t>(size);
    }

    std::time_t m_second = 0;
    zone_t m_zone;
    std::array<char, 96> m_text{};
    std::size_t m_size = 0;
};

// Nothing to destroy, so the text still stands when a static object logs at exit.
std::string_view LocalTime()
{
    static thread_local time_text_t text;
    return text.Now();
}

// The head lacks brackets and blank then, and the thread follows at once.
// Kept: LineFormat.WithoutLocalTimeTheThreadFollowsAtOnce
void AppendTime(std::string& out)
{
    const std::string_view time = LocalTime();
    if (time.empty())
        out += kNoTime;
    else
        ((out += '[') += time) += "] ";
}

void AppendThread(std::string& out, pthread_t thread, std::size_t width)
{
    std::array<char, 24> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), thread).ptr;
    const auto size = static_cast<std::size_t>(end - digits.data());
    out += '<';
    out.append(width - std::min(width, size), ' ');
    out.append(digits.data(), size);
    out += "> ";
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
    AppendTime(out);
    if (style.mode == 0)
    {
        AppendThread(out, ::pthread_self(), kNormalThreadWidth);
        out += style.format.get_prefix();
        out += Mark(style.severity, first_line);
    }
    else
    {
        AppendThread(out, ::pthread_self() % kLabelThreadModulus, kLabelThreadWidth);
        out += Label(style.severity);
    }
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
    const std::string_view time = LocalTime();
    return std::string(time.empty() ? kNoTime : time);
}

} // namespace logging::format
