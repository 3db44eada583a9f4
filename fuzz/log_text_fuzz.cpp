// Text on its way through a channel, a log and the line format: each line has a whole head, and without the
// heads the text is as it was.

#include "nelvo/logging/log_channel.h"

#include <boost/make_shared.hpp>

#include "fuzz/fuzz_target.h"
#include "nelvo/core/util/wide.h"
#include "nelvo/logging/log.h"
#include "nelvo/logging/receiver/log_file.h"

namespace format = logging::format;

namespace
{

constexpr std::size_t kSteps = 2;

// The lines of the last message.
class receiver_t : public logging::receiver::log_file_t
{
public:
    void write(const std::string& text) override { m_text = text; }
    std::uint64_t get_size() const override { return 0; }
    void compress_to(util::zip_writer_t&) override {}

    std::string Take() { return std::exchange(m_text, {}); }

private:
    std::string m_text;
};

// What a line is looked at piece by piece.
class line_t
{
public:
    explicit line_t(std::string_view line) : m_rest(line) {}

    // A 0 in the pattern is any digit.
    void Cut(std::string_view pattern)
    {
        fuzz::Require(m_rest.size() >= pattern.size());
        for (std::size_t i = 0; i != pattern.size(); ++i)
            fuzz::Require(pattern[i] == '0' ? IsDigit(m_rest[i]) : m_rest[i] == pattern[i]);
        m_rest.remove_prefix(pattern.size());
    }

    void CutThread(std::size_t least)
    {
        const std::size_t end = m_rest.find('>');
        fuzz::Require(end != std::string_view::npos && end >= least);
        const std::size_t digits = std::min(m_rest.find_first_not_of(' '), end);
        fuzz::Require(digits != end && std::all_of(m_rest.begin() + digits, m_rest.begin() + end, IsDigit));
        m_rest.remove_prefix(end);
    }

    std::string_view GetRest() const { return m_rest; }

private:
    static bool IsDigit(char letter) { return letter >= '0' && letter <= '9'; }

    std::string_view m_rest;
};

struct style_t
{
    bool label;
    std::int32_t severity;
};

const char* Mark(const style_t& style, bool first)
{
    const std::size_t severity = static_cast<std::size_t>(style.severity);
    static const char* const kLabels[] = {"", "Info     ", "Info     ", "Warning  ", "Error    "};
    static const char* const kMarks[] = {"", "", "", "WARN|", "ERR |"};
    if (style.label)
        return kLabels[severity];
    return first || style.severity < format::kWarning ? kMarks[severity] : ">>  |";
}

std::string_view WithoutHead(std::string_view text, const style_t& style, bool first)
{
    line_t line(text);
    line.Cut("[00.00.0000 00:00:00] <");
    line.CutThread(style.label ? 2 : 6);
    line.Cut("> ");
    line.Cut(style.label ? "" : "fuzz   | ");
    line.Cut(Mark(style, first));
    line.Cut(std::string(2 * kSteps, ' '));
    return line.GetRest();
}

// The text whose lines these are, with a line feed at its end.
std::string WithoutHeads(std::string_view lines, const style_t& style)
{
    std::string text;
    for (bool first = true; !lines.empty(); first = false)
    {
        const std::size_t end = lines.find('\n');
        fuzz::Require(end != std::string_view::npos);
        (text += WithoutHead(lines.substr(0, end), style, first)) += '\n';
        lines.remove_prefix(end + 1);
    }
    return text;
}

std::string Whole(std::string_view text)
{
    const bool ends = !text.empty() && text.back() == '\n';
    return std::string(text) + (ends ? "" : "\n");
}

void TryLines(std::string_view text)
{
    static const format::line_format_t line_format("fuzz");
    for (const std::int32_t severity : {format::kDetail, format::kInfo, format::kWarning, format::kError})
    {
        for (const bool label : {false, true})
        {
            const std::string lines =
                format::format_lines(line_format, label ? 1 : 0, severity, kSteps, "\n", text, nullptr);
            fuzz::Require(WithoutHeads(lines, {label, severity}) == Whole(text));
        }
    }
}

// A text with references in it is text, unless there is an argument; so it is as an argument.
void TryChannel(std::string_view text)
{
    static const auto receiver = boost::make_shared<receiver_t>();
    static const logging::log_channel_t channel("fuzz", boost::make_shared<logging::log_t>(receiver));
    const style_t detail{false, format::kDetail};
    channel.detail(logging::at(kSteps), text);
    fuzz::Require(WithoutHeads(receiver->Take(), detail) == Whole(text));
    channel.detail(logging::at(kSteps), "%1", text);
    fuzz::Require(WithoutHeads(receiver->Take(), detail) == Whole(text));

    const std::wstring wide = fuzz::Widened(text);
    channel.detail(logging::at(kSteps), wide);
    fuzz::Require(WithoutHeads(receiver->Take(), detail) == Whole(util::WideToUtf8(wide)));
}

// A text without a UTF-8 form leaves no line.
void TryWide(const std::wstring& text)
{
    static const auto receiver = boost::make_shared<receiver_t>();
    static const logging::log_channel_t channel("fuzz", boost::make_shared<logging::log_t>(receiver));
    channel.detail(logging::at(kSteps), L"%1", text);
    std::string narrow;
    const bool has_narrow = fuzz::Reads([&] { narrow = util::WideToUtf8(text); });
    const std::string lines = receiver->Take();
    fuzz::Require(has_narrow ? WithoutHeads(lines, {false, format::kDetail}) == Whole(narrow)
                             : lines.empty());
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    TryLines(Text(data, size));
    TryChannel(Text(data, size));
    TryWide(WideText(data, size));
}
