#pragma once

// The %1 substitution that builds nearly every message: a reference %1 to %N is replaced by the text of
// that argument, in any order and as often as it is named.
//
//   util::Format("Failed to open file [%1].", path)      "Failed to open file [/etc/x]."
//   util::Format("%2 %1", "a", "b")                      "b a"
//
// The number behind a % is read as strtol reads it with base 10, so leading white space and a sign belong
// to the reference ("% 1" and "%+1" name the first argument). A reference to an argument that was not
// given stays visible with its number in decimal ("%3", "%0"); a % without a number stays as it is. There
// is no escape: "%%1" is a % and the first argument. Text from an argument is not scanned again.
//
// Arguments become text as util::ToText makes it: strings as they are, a null C string as "<null>",
// booleans as "true" and "false", numbers in decimal, a character as itself. They are read where they
// stand, and a result of up to 512 characters is the one allocation. Throws nothing but std::bad_alloc.

#include <array>
#include <charconv>
#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>
#include <type_traits>

namespace util
{

// The text of one argument. Refers to the argument if that is a text, and holds the text of anything else.
template <class Char>
class text_arg_tt
{
public:
    using view_t = std::basic_string_view<Char>;

    // A text, which must outlive the object; a null C string is "<null>".
    explicit text_arg_tt(view_t text) : m_text(text) {}
    explicit text_arg_tt(const Char* text) : m_text(text != nullptr ? view_t(text) : Null()) {}

    // Characters of other kinds and enumerations are refused, lest one silently become a number and the
    // other a character.
    template <class Value, std::enable_if_t<std::is_arithmetic_v<Value>, int> = 0>
    explicit text_arg_tt(Value value)
    {
        if constexpr (std::is_same_v<Value, Char>)
            SetCharacter(value);
        else if constexpr (std::is_same_v<Value, bool>)
            Set(value ? "true" : "false");
        else
            SetNumber(value);
    }

    // The text may stand in the object itself.
    text_arg_tt(const text_arg_tt&) = delete;
    text_arg_tt& operator=(const text_arg_tt&) = delete;

    // Holds as long as the object.
    view_t text() const { return m_text; }

private:
    static view_t Null()
    {
        static constexpr Char kNull[] = {'<', 'n', 'u', 'l', 'l', '>'};
        return view_t(kNull, std::size(kNull));
    }

    void SetCharacter(Char value)
    {
        m_buffer[0] = value;
        m_text = view_t(m_buffer.data(), 1);
    }

    template <class Value>
    void SetNumber(Value value)
    {
        static_assert(!std::is_same_v<Value, char> && !std::is_same_v<Value, wchar_t> &&
                          !std::is_same_v<Value, char16_t> && !std::is_same_v<Value, char32_t>,
                      "a character of another kind than the text's");
        if constexpr (std::is_same_v<Char, char>)
        {
            m_text = Written(value, m_buffer);
        }
        else
        {
            std::array<char, kBufferSize> digits;
            Set(Written(value, digits));
        }
    }

    static constexpr std::size_t kBufferSize = 24;

    template <class Value>
    static std::string_view Written(Value value, std::array<char, kBufferSize>& buffer)
    {
        char* const first = buffer.data();
        char* const last = first + buffer.size();
        std::to_chars_result result{};
        if constexpr (std::is_floating_point_v<Value>)
            result = std::to_chars(first, last, value, std::chars_format::general, 6);
        else
            result = std::to_chars(first, last, value);
        return {first, static_cast<std::size_t>(result.ptr - first)};
    }

    void Set(std::string_view ascii)
    {
        for (std::size_t i = 0; i != ascii.size(); ++i)
            m_buffer[i] = static_cast<Char>(ascii[i]);
        m_text = view_t(m_buffer.data(), ascii.size());
    }

    view_t m_text;
    std::array<Char, kBufferSize> m_buffer;
};

// Of the narrow and of the wide form.
using text_arg_t = text_arg_tt<char>;
using wide_text_arg_t = text_arg_tt<wchar_t>;

// The core of Format: args are the count arguments, the first of them %1.
std::string Substitute(std::string_view format, const text_arg_t* args, std::size_t count);
std::wstring Substitute(std::wstring_view format, const wide_text_arg_t* args, std::size_t count);

// The format with 1 to 6 arguments in their places; the wide form takes 1 to 5.
template <class... Args>
std::string Format(std::string_view format, const Args&... args)
{
    static_assert(sizeof...(Args) >= 1 && sizeof...(Args) <= 6, "Format takes 1 to 6 arguments");
    const text_arg_t texts[] = {text_arg_t(args)...};
    return Substitute(format, texts, sizeof...(Args));
}

template <class... Args>
std::wstring Format(std::wstring_view format, const Args&... args)
{
    static_assert(sizeof...(Args) >= 1 && sizeof...(Args) <= 5, "the wide Format takes 1 to 5 arguments");
    const wide_text_arg_t texts[] = {wide_text_arg_t(args)...};
    return Substitute(format, texts, sizeof...(Args));
}

} // namespace util
