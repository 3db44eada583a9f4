#include "nelvo/core/time_span.h"

#include "nelvo/core/exc/runtime_exc.h"

namespace datetime
{
namespace
{

std::string TwoDigits(std::uint16_t number)
{
    return {static_cast<char>('0' + number / 10), static_cast<char>('0' + number % 10)};
}

bool AppendField(std::string& text, const time_span_fields_t& fields, char conversion)
{
    switch (conversion)
    {
    case 'd': text += std::to_string(fields.days); return true;
    case 'H': text += TwoDigits(fields.hours); return true;
    case 'M': text += TwoDigits(fields.minutes); return true;
    case 'S': text += TwoDigits(fields.seconds); return true;
    case '%': text += '%'; return true;
    default: return false;
    }
}

bool Append(std::string& text, const time_span_fields_t& fields, const std::string& format)
{
    for (std::size_t i = 0; i != format.size(); ++i)
    {
        if (format[i] != '%')
            text += format[i];
        else if (++i == format.size() || !AppendField(text, fields, format[i]))
            return false;
    }
    return !format.empty();
}

} // namespace

time_span_fields_t CTimeSpan::GetFields() const
{
    const bool is_negative = m_seconds < 0;
    const auto bits = static_cast<std::uint64_t>(m_seconds);
    const std::uint64_t size = is_negative ? 0 - bits : bits; // the smallest number has no opposite
    return {is_negative, size / 86400, static_cast<std::uint16_t>(size / 3600 % 24),
            static_cast<std::uint16_t>(size / 60 % 60), static_cast<std::uint16_t>(size % 60)};
}

std::string CTimeSpan::ToString(const std::string& format) const
{
    const time_span_fields_t fields = GetFields();
    std::string text(fields.is_negative ? "-" : "");
    if (!Append(text, fields, format))
        throw exc::runtime_exc_t("Failed convert TimeSpan to string using format [%1].", format);
    return text;
}

} // namespace datetime
