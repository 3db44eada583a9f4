// Patterns with %1 to %5. What a byte FF ends is the pattern; the arguments follow, up to five, each up to
// the next FF.

#include "nelvo/core/util/format.h"

#include <cwchar>

#include "fuzz/fuzz_target.h"

namespace
{

constexpr std::size_t kMostArgs = 5;

long ToLong(const char* text, char** end) { return std::strtol(text, end, 10); }
long ToLong(const wchar_t* text, wchar_t** end) { return std::wcstol(text, end, 10); }

// As the promise is told: each % is looked at by strtol.
template <class Char>
std::basic_string<Char> Expected(const std::basic_string<Char>& pattern,
                                 const std::vector<std::basic_string<Char>>& args)
{
    std::basic_string<Char> text;
    const Char* const end = pattern.c_str() + pattern.size();
    for (const Char* at = pattern.c_str(); at != end;)
    {
        text += *at;
        if (*at++ != Char('%'))
            continue;
        Char* behind = nullptr;
        const long number = ToLong(at, &behind);
        if (behind == at)
            continue;
        at = behind;
        if (number >= 1 && static_cast<std::size_t>(number) <= args.size())
            (text.pop_back(), text += args[static_cast<std::size_t>(number) - 1]);
        else
            for (const char digit : std::to_string(number))
                text += static_cast<Char>(digit);
    }
    return text;
}

template <class Char>
std::basic_string<Char> Formatted(const std::basic_string<Char>& pattern,
                                  const std::vector<std::basic_string<Char>>& args)
{
    using arg_t = util::text_arg_tt<Char>;
    const auto arg = [&args](std::size_t index) {
        return index < args.size() ? std::basic_string_view<Char>(args[index])
                                   : std::basic_string_view<Char>();
    };
    const arg_t texts[kMostArgs] = {arg_t(arg(0)), arg_t(arg(1)), arg_t(arg(2)), arg_t(arg(3)),
                                    arg_t(arg(4))};
    return util::Substitute(std::basic_string_view<Char>(pattern), texts, args.size());
}

template <class Char>
void TryPattern(const std::basic_string<Char>& pattern, const std::vector<std::basic_string<Char>>& args)
{
    fuzz::Require(Formatted(pattern, args) == Expected(pattern, args));
}

std::vector<std::wstring> AllWidened(const std::vector<std::string>& texts)
{
    std::vector<std::wstring> wide;
    std::transform(texts.begin(), texts.end(), std::back_inserter(wide), fuzz::Widened);
    return wide;
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    std::vector<std::string> args = Pieces(Text(data, size), '\xff');
    const std::string pattern = args.front();
    args.erase(args.begin());
    args.resize(std::min(args.size(), kMostArgs));

    TryPattern(pattern, args);
    TryPattern(Widened(pattern), AllWidened(args));
    Require(Formatted(Widened(pattern), AllWidened(args)) == Widened(Formatted(pattern, args)));
    TryPattern(WideText(data, size), AllWidened(args));
}
