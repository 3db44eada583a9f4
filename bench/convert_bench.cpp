// What do numbers and hexadecimal cost on their way to text and back, next to others?

#include "nelvo/core/util/hex.h"
#include "nelvo/core/util/parse.h"
#include "nelvo/core/util/to_text.h"

#include <cstdint>
#include <cstdlib>
#include <iomanip>
#include <sstream>

#include <boost/format.hpp>
#include <fmt/format.h>

#include "bench/support/figure.h"

namespace
{

// Not constant, so that no conversion is done ahead.
volatile int number = 1048576;
volatile std::uint32_t bits = 0x00c0ffee;

void AddToText()
{
    figure_t("integer to text")
        .Ours([] { return util::ToText(int{number}); })
        .Against("fmt", [] { return fmt::format(fmt::runtime("{}"), int{number}); })
        .Against("boost::format", [] { return (boost::format("%1%") % int{number}).str(); })
        .Against("std::ostringstream",
                 []
                 {
                     std::ostringstream stream;
                     stream << number;
                     return stream.str();
                 })
        .Against("std::to_string", [] { return std::to_string(number); });
}

void AddHexText()
{
    figure_t("32 bits to hexadecimal")
        .Ours([] { return util::HexText(std::uint32_t{bits}); })
        .Against("fmt", [] { return fmt::format(fmt::runtime("{:08x}"), std::uint32_t{bits}); })
        .Against("boost::format", [] { return (boost::format("%08x") % std::uint32_t{bits}).str(); })
        .Against("std::ostringstream",
                 []
                 {
                     std::ostringstream stream;
                     stream << std::hex << std::setfill('0') << std::setw(8) << bits;
                     return stream.str();
                 });
}

void AddParse()
{
    static const std::string text = "1048576";
    figure_t("text to integer")
        .Ours([] { return util::ParseLong(text); })
        .Against("strtol", [] { return std::strtol(text.c_str(), nullptr, 10); })
        .Against("std::istringstream",
                 []
                 {
                     long value = 0;
                     std::istringstream(text) >> value;
                     return value;
                 });
}

void AddParseHex()
{
    static const std::string text = "00c0ffee";
    figure_t("hexadecimal to 32 bits")
        .Ours([] { return util::ParseHex<std::uint32_t>(text); })
        .Against("strtoul", [] { return std::strtoul(text.c_str(), nullptr, 16); })
        .Against("std::istringstream",
                 []
                 {
                     std::uint32_t value = 0;
                     std::istringstream(text) >> std::hex >> value;
                     return value;
                 });
}

} // namespace

void AddFigures()
{
    AddToText();
    AddHexText();
    AddParse();
    AddParseHex();
}
