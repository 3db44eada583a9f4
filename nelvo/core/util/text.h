#pragma once

// Cutting, searching and listing text. Everything that compares without regard to case does so by
// strncasecmp(3) or wcsncasecmp(3): in the process locale, and two texts that match up to a zero character
// at the same place in both are equal.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace util
{

// The text without the characters of the set at its end, at its start, or at both. An empty set returns
// the text as it is.
std::string TrimRight(std::string_view text, std::string_view set);
std::wstring TrimRight(std::wstring_view text, std::wstring_view set);
std::string TrimLeft(std::string_view text, std::string_view set);
std::wstring TrimLeft(std::wstring_view text, std::wstring_view set);
std::string Trim(std::string_view text, std::string_view set);
std::wstring Trim(std::wstring_view text, std::wstring_view set);

// The first position from start on at which sought stands in the text, in either case, or -1. An empty text
// is found at start, unless that is beyond the end.
std::ptrdiff_t FindNoCase(std::string_view text, std::string_view sought, std::size_t start = 0);
std::ptrdiff_t FindNoCase(std::wstring_view text, std::wstring_view sought, std::size_t start = 0);

// Whether the text begins or ends with the other, in either case.
bool StartsWithNoCase(std::string_view text, std::string_view head);
bool StartsWithNoCase(std::wstring_view text, std::wstring_view head);
bool EndsWithNoCase(std::string_view text, std::string_view tail);
bool EndsWithNoCase(std::wstring_view text, std::wstring_view tail);

// Appends to tokens what lies between the separators, each character of which separates. An empty text
// gives nothing, and a separator in the last position gives no empty token behind it: "a,,b," is a, an
// empty token and b. Without keep_empty, empty tokens are left out.
void Split(std::string_view text, std::string_view separators, std::vector<std::string>& tokens,
           bool keep_empty = true);
void Split(std::wstring_view text, std::wstring_view separators, std::vector<std::wstring>& tokens,
           bool keep_empty = true);

// The items with ", " between them, each in { and } if braced.
std::string ListText(const std::vector<std::string>& items, bool braced = false);
std::wstring ListText(const std::vector<std::wstring>& items, bool braced = false);

} // namespace util
