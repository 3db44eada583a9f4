#include "nelvo/core/util/text.h"

#include <algorithm>
#include <cwchar>

#include <strings.h>

namespace util
{
namespace
{

template <class Char>
using view_tt = std::basic_string_view<Char>;

template <class Char>
view_tt<Char> WithoutTail(view_tt<Char> text, view_tt<Char> set)
{
    return text.substr(0, text.find_last_not_of(set) + 1);
}

template <class Char>
view_tt<Char> WithoutHead(view_tt<Char> text, view_tt<Char> set)
{
    return text.substr(std::min(text.find_first_not_of(set), text.size()));
}

// An empty view may have no address, which the C functions must not be given.
bool SameNoCase(const char* left, const char* right, std::size_t size)
{
    return size == 0 || ::strncasecmp(left, right, size) == 0;
}

bool SameNoCase(const wchar_t* left, const wchar_t* right, std::size_t size)
{
    return size == 0 || ::wcsncasecmp(left, right, size) == 0;
}

template <class Char>
std::ptrdiff_t FindNoCaseIn(view_tt<Char> text, view_tt<Char> sought, std::size_t start)
{
    for (std::size_t at = start; at <= text.size() && text.size() - at >= sought.size(); ++at)
        if (SameNoCase(text.data() + at, sought.data(), sought.size()))
            return static_cast<std::ptrdiff_t>(at);
    return -1;
}

template <class Char>
bool HasHead(view_tt<Char> text, view_tt<Char> head)
{
    return text.size() >= head.size() && SameNoCase(text.data(), head.data(), head.size());
}

template <class Char>
bool HasTail(view_tt<Char> text, view_tt<Char> tail)
{
    return text.size() >= tail.size() && HasHead(text.substr(text.size() - tail.size()), tail);
}

template <class Char>
void SplitInto(view_tt<Char> text, view_tt<Char> separators, std::vector<std::basic_string<Char>>& tokens,
               bool keep_empty)
{
    for (std::size_t begin = 0; begin < text.size();)
    {
        const std::size_t end = std::min(text.find_first_of(separators, begin), text.size());
        if (end != begin || keep_empty)
            tokens.emplace_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
}

template <class Char>
std::basic_string<Char> Listed(const std::vector<std::basic_string<Char>>& items, bool braced)
{
    std::basic_string<Char> list;
    for (const auto& item : items)
    {
        if (&item != &items.front())
            (list += Char(',')) += Char(' ');
        if (braced)
            list += Char('{');
        list += item;
        if (braced)
            list += Char('}');
    }
    return list;
}

} // namespace

std::string TrimRight(std::string_view text, std::string_view set)
{
    return std::string(WithoutTail(text, set));
}

std::wstring TrimRight(std::wstring_view text, std::wstring_view set)
{
    return std::wstring(WithoutTail(text, set));
}

std::string TrimLeft(std::string_view text, std::string_view set)
{
    return std::string(WithoutHead(text, set));
}

std::wstring TrimLeft(std::wstring_view text, std::wstring_view set)
{
    return std::wstring(WithoutHead(text, set));
}

std::string Trim(std::string_view text, std::string_view set)
{
    return std::string(WithoutHead(WithoutTail(text, set), set));
}

std::wstring Trim(std::wstring_view text, std::wstring_view set)
{
    return std::wstring(WithoutHead(WithoutTail(text, set), set));
}

std::ptrdiff_t FindNoCase(std::string_view text, std::string_view sought, std::size_t start)
{
    return FindNoCaseIn(text, sought, start);
}

std::ptrdiff_t FindNoCase(std::wstring_view text, std::wstring_view sought, std::size_t start)
{
    return FindNoCaseIn(text, sought, start);
}

bool StartsWithNoCase(std::string_view text, std::string_view head) { return HasHead(text, head); }
bool StartsWithNoCase(std::wstring_view text, std::wstring_view head) { return HasHead(text, head); }
bool EndsWithNoCase(std::string_view text, std::string_view tail) { return HasTail(text, tail); }
bool EndsWithNoCase(std::wstring_view text, std::wstring_view tail) { return HasTail(text, tail); }

void Split(std::string_view text, std::string_view separators, std::vector<std::string>& tokens,
           bool keep_empty)
{
    SplitInto(text, separators, tokens, keep_empty);
}

void Split(std::wstring_view text, std::wstring_view separators, std::vector<std::wstring>& tokens,
           bool keep_empty)
{
    SplitInto(text, separators, tokens, keep_empty);
}

std::string ListText(const std::vector<std::string>& items, bool braced) { return Listed(items, braced); }
std::wstring ListText(const std::vector<std::wstring>& items, bool braced) { return Listed(items, braced); }

} // namespace util
