#include "nelvo/logging/message.h"

#include <array>

#include "nelvo/core/util/wide.h"

namespace logging
{
namespace
{

std::string FormWide(std::wstring_view pattern, message_t::wide_args_t args)
{
    std::string utf8_pattern = util::WideToUtf8(pattern);
    if (args.size() == 0)
        return utf8_pattern;

    std::array<std::string, message_t::kMostArgs> texts;
    std::size_t count = 0;
    for (const util::wide_text_arg_t& arg : args)
        texts.at(count++) = util::WideToUtf8(arg.text());
    const util::text_arg_t utf8_args[] = {util::text_arg_t(texts[0]), util::text_arg_t(texts[1]),
                                          util::text_arg_t(texts[2]), util::text_arg_t(texts[3]),
                                          util::text_arg_t(texts[4])};
    return util::Substitute(utf8_pattern, utf8_args, count);
}

} // namespace

message_t::message_t(std::string_view pattern, args_t args) : m_wide(false), m_pattern(pattern), m_args(args)
{
}

message_t::message_t(std::wstring_view pattern, wide_args_t args)
    : m_wide(true), m_wide_pattern(pattern), m_wide_args(args)
{
}

std::string message_t::form() const
{
    if (m_wide)
        return FormWide(m_wide_pattern, m_wide_args);
    if (m_args.size() == 0)
        return std::string(m_pattern);
    return util::Substitute(m_pattern, m_args.begin(), m_args.size());
}

std::string_view message_t::form_in(std::string& storage) const
{
    if (!m_wide && m_args.size() == 0)
        return m_pattern;
    return storage = form();
}

} // namespace logging
