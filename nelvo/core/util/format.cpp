#include "nelvo/core/util/format.h"

#include <cstdlib>
#include <cwchar>
#include <cwctype>

// One walk from % to %. Nearly every reference is a short run of digits right behind its %, and is read on
// the spot; what else strtol takes (white space, a sign, a number beyond its range) is copied out to the
// end of its digits and given to strtol itself, so the walk stays linear in the format's length.

namespace util
{
namespace
{

bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool IsSpace(wchar_t c) { return std::iswspace(static_cast<wint_t>(c)) != 0; }

long ToLong(const std::string& text) { return std::strtol(text.c_str(), nullptr, 10); }
long ToLong(const std::wstring& text) { return std::wcstol(text.c_str(), nullptr, 10); }

template <class Char>
struct reference_tt
{
    long number;
    const Char* end; // null if no number was read
};

template <class Char>
reference_tt<Char> ReadByStrtol(const Char* begin, const Char* end)
{
    const Char* at = begin;
    while (at != end && IsSpace(*at))
        ++at;
    if (at != end && (*at == '+' || *at == '-'))
        ++at;
    const Char* const digits = at;
    while (at != end && IsDigit(*at))
        ++at;
    if (at == digits)
        return {0, nullptr};
    return {ToLong(std::basic_string<Char>(begin, at)), at};
}

template <class Char>
reference_tt<Char> ReadReference(const Char* begin, const Char* end)
{
    constexpr std::ptrdiff_t kSafeDigits = 9;
    long number = 0;
    const Char* at = begin;
    for (; at != end && IsDigit(*at); ++at)
    {
        if (at - begin == kSafeDigits)
            return ReadByStrtol(begin, end);
        number = number * 10 + (*at - '0');
    }
    if (at != begin)
        return {number, at};
    return ReadByStrtol(begin, end);
}

// Text that grows at its end. Made as large as it will nearly always become, so that appending is a copy.
template <class Char>
class output_tt
{
public:
    explicit output_tt(std::size_t size) : m_text(size, Char()), m_at(m_text.data()) {}

    void Append(const Char* text, std::size_t size)
    {
        if (Room() < size)
            Grow(size);
        std::char_traits<Char>::copy(m_at, text, size);
        m_at += size;
    }

    void Append(std::basic_string_view<Char> text) { Append(text.data(), text.size()); }

    std::basic_string<Char> Finish()
    {
        m_text.resize(Size());
        return std::move(m_text);
    }

private:
    std::size_t Size() const { return static_cast<std::size_t>(m_at - m_text.data()); }
    std::size_t Room() const { return m_text.size() - Size(); }

    void Grow(std::size_t size)
    {
        const std::size_t written = Size();
        m_text.resize(written + size + m_text.size());
        m_at = m_text.data() + written;
    }

    std::basic_string<Char> m_text;
    Char* m_at;
};

template <class Char>
std::size_t LengthOf(std::basic_string_view<Char> format, const text_arg_tt<Char>* args, std::size_t count)
{
    std::size_t length = format.size();
    for (std::size_t i = 0; i != count; ++i)
        length += args[i].text().size();
    return length;
}

template <class Char>
std::basic_string<Char> SubstituteIn(std::basic_string_view<Char> format, const text_arg_tt<Char>* args,
                                     std::size_t count)
{
    constexpr Char kPercent[] = {Char('%')};
    output_tt<Char> output(LengthOf(format, args, count));
    const Char* at = format.data();
    const Char* const end = at + format.size();
    for (;;)
    {
        const auto rest = static_cast<std::size_t>(end - at);
        const Char* const percent = rest != 0 ? std::char_traits<Char>::find(at, rest, Char('%')) : nullptr;
        if (percent == nullptr)
        {
            output.Append(at, rest);
            return output.Finish();
        }
        output.Append(at, static_cast<std::size_t>(percent - at));
        at = percent + 1;

        const auto reference = ReadReference(at, end);
        if (reference.end == nullptr)
        {
            output.Append(kPercent, 1);
            continue;
        }
        at = reference.end;
        if (reference.number >= 1 && static_cast<std::size_t>(reference.number) <= count)
        {
            output.Append(args[reference.number - 1].text());
        }
        else
        {
            output.Append(kPercent, 1);
            output.Append(text_arg_tt<Char>(reference.number).text());
        }
    }
}

} // namespace

std::string Substitute(std::string_view format, const text_arg_t* args, std::size_t count)
{
    return SubstituteIn(format, args, count);
}

std::wstring Substitute(std::wstring_view format, const wide_text_arg_t* args, std::size_t count)
{
    return SubstituteIn(format, args, count);
}

} // namespace util
