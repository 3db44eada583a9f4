#pragma once

// A reversible escape of the characters that are unwanted in the name of a log file.
//
//   util::PackLogName("my-log_{1}")        "my_Blog___F1_G"
//   util::UnpackLogName("my_Blog___F1_G")  "my-log_{1}"

#include <string>
#include <string_view>

namespace util
{

// , - + @ & { } ' " become _A _B _C _D _E _F _G _H _I, and _ becomes __. All other characters stay.
std::string PackLogName(std::string_view name);

// The way back. A _ at the end, or one with a character that does not belong to it, throws
// exc::runtime_exc_t; so a name that was never packed need not unpack.
std::string UnpackLogName(std::string_view packed);

// Go by way of the multibyte form, so the name ends at a zero character. Throw what WideToMultibyte throws.
std::wstring PackLogName(std::wstring_view name);
std::wstring UnpackLogName(std::wstring_view packed);

} // namespace util
