#include "nelvo/core/util/path_text.h"

namespace util
{
namespace
{

template <class Char>
constexpr Char kSeparators[] = {Char('/'), Char('\\'), Char()};

template <class Char>
std::size_t LastSeparator(std::basic_string_view<Char> path)
{
    return path.find_last_of(kSeparators<Char>);
}

template <class Parts, class Char>
Parts PartsOf(std::basic_string_view<Char> path)
{
    using text_t = std::basic_string<Char>;
    const std::size_t slash = path.rfind(Char('/'));
    if (slash == path.npos)
        return {text_t(), text_t(path)};
    return {text_t(path.substr(0, slash)), text_t(path.substr(slash + 1))};
}

// Also right without a separator, since npos + 1 is 0.
template <class Char>
std::basic_string<Char> NameOf(std::basic_string_view<Char> path)
{
    return std::basic_string<Char>(path.substr(LastSeparator(path) + 1));
}

// A path like "a/b" or "./a" is not relative by this test, though the system takes it for one.
// Kept: PathText.ANameWithADotInFrontOrASeparatorIsNotRelative
template <class Char>
bool IsRelative(std::basic_string_view<Char> name)
{
    return LastSeparator(name) == name.npos && (name.empty() || name.front() != Char('.'));
}

template <class Char>
Char SeparatorOf(std::basic_string_view<Char> path)
{
    return path.find(Char('\\')) != path.npos ? Char('\\') : Char('/');
}

// No separator is added and none is taken out, so "/root/" and "/tmp/" give "/root//tmp/".
// Kept: PathText.JoiningPutsNoSeparatorBetween
template <class Char>
std::basic_string<Char> Joined(std::basic_string_view<Char> folder, std::basic_string_view<Char> name)
{
    return std::basic_string<Char>(folder).append(name);
}

} // namespace

std::size_t FindLastSeparator(std::string_view path) { return LastSeparator(path); }
std::size_t FindLastSeparator(std::wstring_view path) { return LastSeparator(path); }

path_parts_t SplitPath(std::string_view path) { return PartsOf<path_parts_t>(path); }
wide_path_parts_t SplitPath(std::wstring_view path) { return PartsOf<wide_path_parts_t>(path); }

std::string FileName(std::string_view path) { return NameOf(path); }
std::wstring FileName(std::wstring_view path) { return NameOf(path); }

bool IsRelativeName(std::string_view name) { return IsRelative(name); }
bool IsRelativeName(std::wstring_view name) { return IsRelative(name); }

char PathSeparator(std::string_view path) { return SeparatorOf(path); }
wchar_t PathSeparator(std::wstring_view path) { return SeparatorOf(path); }

std::string JoinPath(std::string_view folder, std::string_view name) { return Joined(folder, name); }
std::wstring JoinPath(std::wstring_view folder, std::wstring_view name) { return Joined(folder, name); }

} // namespace util
