// What does Format cost, next to other ways to put the same text together?

#include "nelvo/core/util/format.h"

#include <sstream>

#include <boost/format.hpp>
#include <fmt/format.h>

#include "bench/support/figure.h"
#include "bench/support/growth_figure.h"

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
    figure_t("Format, three strings")
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
    figure_t("Format, two integers")
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

void AddLongTemplate(const std::string& name, const std::string& piece)
{
    AddTextGrowth(name, piece, [](const std::string& text) { return util::Format(text, "argument"); });
}

} // namespace

void AddFigures()
{
    AddThreeStrings();
    AddTwoIntegers();
    AddLongTemplate("template", "Some text before the value [%1] and some behind it.\n");
    AddLongTemplate("template of references", "%1");
    AddLongTemplate("template of percents", "%");
    AddLongTemplate("template of percents and blanks", "%           ");
    AddLongTemplate("template of digits behind a percent", "%" + std::string(4096, '1'));
}
