#include "nelvo/core/util/text.h"

namespace util
{
namespace
{

std::string_view WithoutTail(std::string_view text, std::string_view set)
{
    return text.substr(0, text.find_last_not_of(set) + 1);
}

std::string_view WithoutHead(std::string_view text, std::string_view set)
{
    const std::size_t first = text.find_first_not_of(set);
    return first != std::string_view::npos ? text.substr(first) : std::string_view();
}

} // namespace

std::string TrimRight(std::string_view text, std::string_view set)
{
    return std::string(WithoutTail(text, set));
}

std::string TrimLeft(std::string_view text, std::string_view set)
{
    return std::string(WithoutHead(text, set));
}

std::string Trim(std::string_view text, std::string_view set)
{
    return std::string(WithoutHead(WithoutTail(text, set), set));
}

void Split(std::string_view text, std::string_view separators, std::vector<std::string>& tokens,
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

} // namespace util
