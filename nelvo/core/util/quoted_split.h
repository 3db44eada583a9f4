#pragma once

// Splitting a command string at blanks and tabs, with parts in single or double quotes kept together.
//
//   util::SplitQuoted("run 'a b' c")            run, a b, c
//   util::SplitQuoted("\"say 'hi' now\"")       say 'hi' now
//   util::SplitQuoted("\"'a'\"")                a'

#include <string>
#include <string_view>
#include <vector>

namespace util
{

// Outside all quotes a blank or tab ends a token, and an empty token is dropped, '' and "" included. Quotes
// are left out of the token, but for one kind: a quote that is met inside quotes while the other kind is
// open, with something before it in the token. Each kind is opened and closed on its own, so "it's" leaves
// the single one open. Throws exc::runtime_exc_t, which names the text, if one is open at the end; then a
// wide text that has no UTF-8 form throws what WideToUtf8 throws.
std::vector<std::string> SplitQuoted(std::string_view text);
std::vector<std::wstring> SplitQuoted(std::wstring_view text);

} // namespace util
