#pragma once

// Cutting text: trimming and splitting.

#include <string>
#include <string_view>
#include <vector>

namespace util
{

// The text without the characters of the set at its end, at its start, or at both. An empty set returns
// the text as it is.
std::string TrimRight(std::string_view text, std::string_view set);
std::string TrimLeft(std::string_view text, std::string_view set);
std::string Trim(std::string_view text, std::string_view set);

// Appends to tokens what lies between the separators, each character of which separates. An empty text
// gives nothing, and a separator in the last position gives no empty token behind it: "a,,b," is a, an
// empty token and b. Without keep_empty, empty tokens are left out.
void Split(std::string_view text, std::string_view separators, std::vector<std::string>& tokens,
           bool keep_empty = true);

} // namespace util
