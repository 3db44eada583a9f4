// What does an identifier cost on its way from text and back, next to libuuid, which it rests on, and to
// Boost.Uuid?

#include "nelvo/core/guid.h"

#include <cstring>
#include <string>

#include <boost/uuid/uuid.hpp>
#include <boost/uuid/uuid_io.hpp>
#include <uuid/uuid.h>

#include "bench/support/figure.h"

namespace
{

const char kText[] = "9fd5a6c4-2c1e-4f3a-8a70-9f0d3b6a5e21";

void AddParse()
{
    constexpr double kGoal = 1.1;
    figure_t("Guid from text")
        .Ours([text = std::string(kText)] { return Guid::Parse(text); })
        .Against("uuid_parse", kGoal,
                 [text = std::string(kText)]
                 {
                     Guid value;
                     uuid_t bytes;
                     ::uuid_parse(text.c_str(), bytes);
                     std::memcpy(&value, bytes, sizeof(bytes));
                     return value;
                 });
}

void AddText()
{
    constexpr double kUuidGoal = 2.5;
    constexpr double kBoostGoal = 0.75;
    const Guid value = Guid::Parse(kText);
    boost::uuids::uuid boost_value = {};
    std::memcpy(&boost_value, value.Data(), Guid::kSize);
    figure_t("Guid to text")
        .Ours([value] { return value.ToString(); })
        .Against("uuid_unparse_lower", kUuidGoal,
                 [value]
                 {
                     std::array<char, sizeof(kText)> text;
                     ::uuid_unparse_lower(value.Data(), text.data());
                     return text;
                 })
        .Against("Boost.Uuid", kBoostGoal, [boost_value] { return to_string(boost_value); });
}

} // namespace

void AddFigures()
{
    AddParse();
    AddText();
}
