#pragma once

// The bytes of the log. A message becomes one line for each of its lines, each with a full head:
//
//   [12.11.2026 23:14:05] <139872223348480> agentid| Looking for existed agentId
//   [12.11.2026 23:14:05] <139872223348480> agentid|   one indent step deeper
//   [12.11.2026 23:14:05] <139872223348480> agentid| WARN|first line of a warning
//   [12.11.2026 23:14:05] <139872223348480> agentid| >>  |its second line
//
// Style 0, the normal one: local time, thread id (at least 6 places), the channel's column, a mark for
// severity 3 ("WARN|") and 4 ("ERR |") that is ">>  |" from the second line on, two blanks per indent
// step, the text, the line end. Any other style, the label style: local time, thread id modulo 100
// (2 places), "Info     " (severities 1 and 2), "Warning  " (3) or "Error    " (4) on every line, then as
// above; it shows no channel.
//
// The clock is read for each line, so the lines of a message may differ. A time that localtime cannot
// break down shows as "TIME ---". localtime is not reentrant: format under the lock of the log.

#include <cstdint>
#include <string>
#include <string_view>

namespace logging::format
{

// Any other number is taken too, and has neither mark nor label.
enum severity_t : std::int32_t
{
    kDetail = 1,
    kInfo = 2,
    kWarning = 3,
    kError = 4
};

// A channel's column: its tag in exactly 7 characters, cut or padded with blanks, and "| ".
class line_format_t
{
public:
    // Of a tag of any length.
    explicit line_format_t(std::string_view tag);

    // Not while another thread logs with this format.
    void set_tag(std::string_view tag);

    // The whole column, 9 characters.
    const std::string& get_prefix() const { return m_prefix; }

private:
    std::string m_prefix;
};

// Turns the text of each line, without head and line end, into other text.
class line_filter_t
{
public:
    virtual ~line_filter_t() = default;
    // The text that is written instead. What it throws passes.
    virtual std::string filter_line(std::string_view text) = 0;
};

// The whole message. The text is cut at its line feeds; one at the very end starts no further line, and an
// empty text is one line. filter may be null; what it throws passes.
std::string format_lines(const line_format_t& format, std::int32_t mode, std::int32_t severity,
                         std::int32_t indent, std::string_view eol, std::string_view text,
                         line_filter_t* filter);

// The same, appended to out. After an exception, lines of the message may stand in out.
void append_lines(std::string& out, const line_format_t& format, std::int32_t mode, std::int32_t severity,
                  std::int32_t indent, std::string_view eol, std::string_view text, line_filter_t* filter);

// The local time, "12.11.2026 23:14:05", or "TIME ---".
std::string GetLocalTimeText();

} // namespace logging::format
