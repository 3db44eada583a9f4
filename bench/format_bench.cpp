// What does Format cost, next to other ways to put the same text together?

#include "nelvo/core/util/format.h"

#include <sstream>

#include <boost/format.hpp>
#include <fmt/format.h>

#include "bench/support/figure.h"

namespace
{

const char kOurs[] = "Failed to rename file [%1] to [%2]: %3.";
const char kFmt[] = "Failed to rename file [{}] to [{}]: {}.";
const char kBoost[] = "Failed to rename file [%1%] to [%2%]: %3%.";

const char kOursTwo[] = "Read %1 bytes of %2.";
const char kFmtTwo[] = "Read {} bytes of {}.";
const char kBoostTwo[] = "Read %1% bytes of %2%.";

struct texts_t
{
    std::string from = "/var/log/nelvoagentid.log";
    std::string to = "/var/log/nelvoagentid.1.log";
    std::string why = "No space left on device";
};

std::string Concatenate(const texts_t& texts)
{
    const std::string_view pieces[] = {"Failed to rename file [", "] to [", "]: ", "."};
    std::string result;
    result.reserve(pieces[0].size() + texts.from.size() + pieces[1].size() + texts.to.size() +
                   pieces[2].size() + texts.why.size() + pieces[3].size());
    result += pieces[0];
    result += texts.from;
    result += pieces[1];
    result += texts.to;
    result += pieces[2];
    result += texts.why;
    result += pieces[3];
    return result;
}

std::string Stream(const texts_t& texts)
{
    std::ostringstream stream;
    stream << "Failed to rename file [" << texts.from << "] to [" << texts.to << "]: " << texts.why << '.';
    return stream.str();
}

void AddThreeStrings()
{
    const texts_t texts;
    figure_t("three strings")
        .Ours([texts] { return util::Format(kOurs, texts.from, texts.to, texts.why); })
        .Against("fmt", 0.7,
                 [texts] { return fmt::format(fmt::runtime(kFmt), texts.from, texts.to, texts.why); })
        .Against("boost::format", 0.1,
                 [texts] { return (boost::format(kBoost) % texts.from % texts.to % texts.why).str(); })
        .Against("concatenation", 1.6, [texts] { return Concatenate(texts); })
        .Against("std::ostringstream", [texts] { return Stream(texts); });
}

void AddTwoIntegers()
{
    // Not constant, so that no conversion is done ahead.
    static volatile int first = 4096;
    static volatile int second = 1048576;
    figure_t("two integers")
        .Ours([] { return util::Format(kOursTwo, int{first}, int{second}); })
        .Against("fmt", 1.0, [] { return fmt::format(fmt::runtime(kFmtTwo), int{first}, int{second}); })
        .Against("boost::format", [] { return (boost::format(kBoostTwo) % int{first} % int{second}).str(); })
        .Against("std::ostringstream",
                 []
                 {
                     std::ostringstream stream;
                     stream << "Read " << first << " bytes of " << second << '.';
                     return stream.str();
                 });
}

std::string Template(std::size_t size, const std::string& piece)
{
    std::string text;
    while (text.size() < size)
        text += piece;
    text.resize(size, '.');
    return text;
}

std::size_t FormatTimes(int times, const std::string& format, const std::string& argument)
{
    std::size_t length = 0;
    for (int i = 0; i != times; ++i)
        length += util::Format(format, argument).size();
    return length;
}

// The same number of bytes in one template and in sixteen: quadratic time would show as a ratio of 16.
void AddLongTemplate(const std::string& name, const std::string& piece)
{
    constexpr std::size_t kMiB = std::size_t{1024} * 1024;
    const std::string argument = "argument";
    const std::string whole = Template(kMiB, piece);
    const std::string part = Template(kMiB / 16, piece);
    figure_t(name)
        .Ours([whole, argument] { return FormatTimes(1, whole, argument); })
        .Against("16 of 64 KiB", 3, [part, argument] { return FormatTimes(16, part, argument); });
}

} // namespace

void AddFigures()
{
    AddThreeStrings();
    AddTwoIntegers();
    AddLongTemplate("1 MiB template", "Some text before the value [%1] and some behind it.\n");
    AddLongTemplate("1 MiB of references", "%1");
    AddLongTemplate("1 MiB of percents", "%");
    AddLongTemplate("1 MiB of blanks behind percents", "%           ");
    AddLongTemplate("1 MiB of digits", "1");
}
