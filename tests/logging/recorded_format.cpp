#include "tests/logging/recorded_format.h"

#include "nelvo/logging/format/line_format.h"

namespace
{

std::vector<std::string>& Tags()
{
    static std::vector<std::string> tags;
    return tags;
}

} // namespace

const std::vector<std::string>& BuiltTags() { return Tags(); }

namespace logging::format
{

line_format_t::line_format_t(std::string_view tag) : m_prefix(tag) { Tags().emplace_back(tag); }

void append_lines(std::string& out, const line_format_t& format, std::int32_t, std::int32_t severity,
                  std::int32_t indent, std::string_view eol, std::string_view text, line_filter_t*)
{
    out += format.get_prefix() + " severity " + std::to_string(severity) + " indent " +
           std::to_string(indent) + ": ";
    (out += text) += eol;
}

} // namespace logging::format
