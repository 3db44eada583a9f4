#include "nelvo/core/util/to_text.h"

#include <array>
#include <iomanip>
#include <locale>
#include <sstream>

namespace util
{

std::string HexDigits(std::uint32_t value, std::size_t bytes)
{
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text(bytes * 2, '0');
    for (auto at = text.rbegin(); at != text.rend(); ++at, value >>= 4U)
        *at = kDigits[value & 0xFU];
    return text;
}

std::string GroupDigits(std::string_view number)
{
    const std::size_t sign = number.substr(0, 1) == "-" ? 1 : 0;
    std::string text;
    text.reserve(number.size() + number.size() / 3);
    for (std::size_t i = 0; i != number.size(); ++i)
    {
        if (i > sign && (number.size() - i) % 3 == 0)
            text += ',';
        text += number[i];
    }
    return text;
}

// The unit follows from the count alone, so a count just below a GiB or a TiB rounds up to "1024.000" of the
// unit below and is not carried into the next one.
// Kept: SizeText.RoundingDoesNotCarryIntoTheNextUnit
std::string SizeText(std::uint64_t bytes)
{
    constexpr std::uint64_t kStep = 1024;
    if (bytes < kStep)
        return ToText(bytes);

    constexpr std::array<std::string_view, 4> kUnits = {" KiB", " MiB", " GiB", " TiB"};
    constexpr double kPerStep = 0.0009765625;
    double number = static_cast<double>(bytes) * kPerStep;
    std::size_t unit = 0;
    for (std::uint64_t limit = kStep * kStep; bytes >= limit && unit + 1 != kUnits.size(); limit *= kStep)
    {
        number *= kPerStep;
        ++unit;
    }

    // A stream, since std::to_chars of a floating point number would have each program load libm.
    std::ostringstream text;
    text.exceptions(std::ios_base::badbit); // what runs out of memory must not end as half a text
    text.imbue(std::locale::classic());
    text << std::fixed << std::setprecision(3) << number << kUnits[unit];
    return text.str();
}

std::wstring WideSizeText(std::uint64_t bytes)
{
    const std::string text = SizeText(bytes);
    return {text.begin(), text.end()};
}

} // namespace util
