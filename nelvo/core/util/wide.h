#pragma once

// Between wide text and narrow text, the latter either in the multibyte encoding of the process locale or
// in UTF-8. A text that the other form cannot hold is a failure as a whole: nothing is replaced or left
// out. All failures are exc::runtime_exc_t.
//
// No locale is ever set here. A program that sets none runs in the "C" locale, and there the multibyte
// pair takes ASCII alone. Paths and log texts go through the UTF-8 pair.

#include <string>
#include <string_view>

namespace util
{

// By wcstombs(3) and mbstowcs(3), so what follows a zero character is not converted.
std::string WideToMultibyte(std::wstring_view text);
std::wstring MultibyteToWide(std::string_view text);

// Strict: a truncated or over-long sequence, a surrogate and a value above U+10FFFF are failures, in both
// directions. Zero characters are characters like others.
std::wstring Utf8ToWide(std::string_view text);
std::string WideToUtf8(std::wstring_view text);

// For code that serves both forms: narrow text as it is, wide text by WideToUtf8.
inline std::string_view ToUtf8(std::string_view text) { return text; }
inline std::string ToUtf8(std::wstring_view text) { return WideToUtf8(text); }

// WideToMultibyte for the constructors of exceptions: a failure leaves with the context line
// "UNICODE->ANSI failed".
std::string WideToMultibyteForExc(std::wstring_view text);

} // namespace util
