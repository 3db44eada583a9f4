#pragma once

// Paths as text: nothing here looks at the file system. A separator is "/" or "\", but a path is split
// into folder and name at a "/" alone.

#include <cstddef>
#include <string>
#include <string_view>

namespace util
{

// The position of the last separator of either kind, or npos.
std::size_t FindLastSeparator(std::string_view path);
std::size_t FindLastSeparator(std::wstring_view path);

// What stands before and behind the last "/": "/a/b" is "/a" and "b", "/b" is "" and "b". Without a "/" the
// folder is empty and the name is the whole path.
struct path_parts_t
{
    std::string folder;
    std::string name;
};
struct wide_path_parts_t
{
    std::wstring folder;
    std::wstring name;
};

// Into these parts.
path_parts_t SplitPath(std::string_view path);
wide_path_parts_t SplitPath(std::wstring_view path);

// What stands behind the last separator of either kind; the whole path if there is none.
std::string FileName(std::string_view path);
std::wstring FileName(std::wstring_view path);

// True for a name that neither begins with "." nor holds a separator of either kind; so "./a" and "a/b" are
// not relative in this sense, and the empty name is.
bool IsRelativeName(std::string_view name);
bool IsRelativeName(std::wstring_view name);

// "\" if the path holds one, otherwise "/".
char PathSeparator(std::string_view path);
wchar_t PathSeparator(std::wstring_view path);

// One behind the other, without a separator between them: "/root" and "/tmp/" are "/root/tmp/".
std::string JoinPath(std::string_view folder, std::string_view name);
std::wstring JoinPath(std::wstring_view folder, std::wstring_view name);

} // namespace util
