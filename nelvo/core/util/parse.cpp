#include "nelvo/core/util/parse.h"

#include <cstdlib>
#include <cwchar>
#include <limits>
#include <sstream>
#include <string>

#include <strings.h>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/wide.h"

// Nearly every number is a plain run of decimal digits that no type here can overflow. It is read on the
// spot; anything else goes to the C function.

namespace util
{
namespace
{

constexpr std::string_view kNotUnsigned =
    "Cannot convert string value to unsigned integer. Given string: [%1].";
constexpr std::string_view kNotSigned = "Cannot convert string value to signed integer. Given string: [%1].";

// Reads the digits that the text begins with. False if there are none or so many that they might overflow.
template <class Number, class Char>
bool ReadPlainNumber(std::basic_string_view<Char> text, Number& number)
{
    constexpr std::size_t kSafeDigits = std::numeric_limits<Number>::digits10;
    number = 0;
    std::size_t count = 0;
    for (const Char c : text)
    {
        if (c < Char('0') || c > Char('9'))
            break;
        if (++count > kSafeDigits)
            return false;
        number = number * 10 + static_cast<Number>(c - Char('0'));
    }
    return count != 0;
}

template <class Char, class Number>
Number ParseNumber(std::basic_string_view<Char> text, int base, Number (*convert)(const Char*, Char**, int),
                   std::string_view failure)
{
    Number number = 0;
    if (base == 10 && ReadPlainNumber(text, number))
        return number;

    std::basic_string<Char> source(text);
    Char* end = source.data(); // a base that is out of range leaves it as it is
    number = convert(source.c_str(), &end, base);
    if (end == source.data())
        throw exc::runtime_exc_t(failure, ToUtf8(text));
    return number;
}

// The state of the stream is not looked at: it has left a 0 or the nearest value. It throws std::bad_alloc,
// which is no text without a number.
template <class Number, class Char>
Number Extract(std::basic_string_view<Char> text)
{
    Number number = 0;
    std::basic_istringstream<Char> stream{std::basic_string<Char>(text)};
    stream.exceptions(std::ios_base::badbit);
    stream >> number;
    return number;
}

bool SameNoCase(const std::string& left, const char* right) { return ::strcasecmp(left.c_str(), right) == 0; }

bool SameNoCase(const std::wstring& left, const wchar_t* right)
{
    return ::wcscasecmp(left.c_str(), right) == 0;
}

} // namespace

unsigned long ParseUnsignedLong(std::string_view text, int base)
{
    return ParseNumber(text, base, std::strtoul, kNotUnsigned);
}

unsigned long ParseUnsignedLong(std::wstring_view text, int base)
{
    return ParseNumber(text, base, std::wcstoul, kNotUnsigned);
}

unsigned long long ParseUnsignedLongLong(std::string_view text, int base)
{
    return ParseNumber(text, base, std::strtoull, kNotUnsigned);
}

unsigned long long ParseUnsignedLongLong(std::wstring_view text, int base)
{
    return ParseNumber(text, base, std::wcstoull, kNotUnsigned);
}

long ParseLong(std::string_view text, int base) { return ParseNumber(text, base, std::strtol, kNotSigned); }
long ParseLong(std::wstring_view text, int base) { return ParseNumber(text, base, std::wcstol, kNotSigned); }

std::int64_t ParseInt64(std::string_view text, int base) { return ParseLong(text, base); }
std::int64_t ParseInt64(std::wstring_view text, int base) { return ParseLong(WideToMultibyte(text), base); }

float ParseFloat(std::string_view text) { return Extract<float>(text); }
float ParseFloat(std::wstring_view text) { return Extract<float>(text); }
double ParseDouble(std::string_view text) { return Extract<double>(text); }
double ParseDouble(std::wstring_view text) { return Extract<double>(text); }

// Only "false" and "0" are false, so a mistyped or empty word reads as true.
// Kept: ParseBool.AnUnknownWordIsTrue
bool ParseBool(std::string_view text)
{
    const std::string word(text);
    return !SameNoCase(word, "false") && !SameNoCase(word, "0");
}

bool ParseBool(std::wstring_view text)
{
    const std::wstring word(text);
    return !SameNoCase(word, L"false") && !SameNoCase(word, L"0");
}

} // namespace util
