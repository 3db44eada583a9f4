#include "nelvo/core/util/format.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <utility>

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

// The text while it grows: on the stack as long as it is short, so that nearly every result is one allocation
// of its own size.
template <class Char>
class result_tt
{
public:
    result_tt() = default;
    result_tt(const result_tt&) = delete;
    result_tt& operator=(const result_tt&) = delete;

    void Append(std::basic_string_view<Char> text)
    {
        MakeRoom(text.size());
        std::char_traits<Char>::copy(m_end, text.data(), text.size());
        m_end += text.size();
    }

    // Appends what stands before the next % and returns where that is, or the end. The pieces between
    // references are too short for a search and a copy to pay.
    const Char* AppendToPercent(const Char* at, const Char* end)
    {
        MakeRoom(static_cast<std::size_t>(end - at));
        Char* out = m_end;
        if constexpr (sizeof(Char) == 1)
            CopyBlocks(at, end, out);
        while (at != end && *at != Char('%'))
            *out++ = *at++;
        m_end = out;
        return at;
    }

    std::basic_string<Char> Take()
    {
        if (m_begin == m_short)
            return {m_begin, m_end};
        m_long.resize(static_cast<std::size_t>(m_end - m_begin));
        return std::move(m_long);
    }

private:
    // Eight bytes a step, as long as none of them is a %.
    static void CopyBlocks(const char*& at, const char* end, char*& out)
    {
        for (std::uint64_t block = 0; end - at >= 8; at += 8, out += 8)
        {
            std::memcpy(&block, at, 8);
            if (HasPercent(block))
                break;
            std::memcpy(out, &block, 8);
        }
    }

    static bool HasPercent(std::uint64_t block)
    {
        constexpr std::uint64_t kOnes = 0x0101010101010101;
        const std::uint64_t zero_for_percent = block ^ (kOnes * '%');
        return ((zero_for_percent - kOnes) & ~zero_for_percent & (kOnes * 0x80)) != 0;
    }

    void MakeRoom(std::size_t size)
    {
        if (size > static_cast<std::size_t>(m_limit - m_end))
            Grow(size);
    }

    void Grow(std::size_t size)
    {
        const auto used = static_cast<std::size_t>(m_end - m_begin);
        if (m_begin == m_short)
            m_long.assign(m_begin, m_end);
        m_long.resize(2 * used + size);
        m_begin = m_long.data();
        m_end = m_begin + used;
        m_limit = m_begin + m_long.size();
    }

    static constexpr std::size_t kShortSize = 512;

    Char m_short[kShortSize]; // only what was appended is ever read
    std::basic_string<Char> m_long;
    Char* m_begin = m_short;
    Char* m_end = m_short;
    Char* m_limit = m_short + kShortSize;
};

template <class Char>
std::basic_string<Char> SubstituteIn(std::basic_string_view<Char> format, const text_arg_tt<Char>* args,
                                     std::size_t count)
{
    constexpr Char kPercent[] = {'%'};
    result_tt<Char> result;
    const Char* at = format.data();
    const Char* const end = at + format.size();
    for (;;)
    {
        at = result.AppendToPercent(at, end);
        if (at == end)
            return result.Take();
        const auto reference = ReadReference(++at, end);
        if (reference.end == nullptr)
        {
            result.Append({kPercent, 1});
            continue;
        }
        at = reference.end;
        if (reference.number >= 1 && static_cast<std::size_t>(reference.number) <= count)
        {
            result.Append(args[reference.number - 1].text());
            continue;
        }
        result.Append({kPercent, 1});
        result.Append(text_arg_tt<Char>(reference.number).text());
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
