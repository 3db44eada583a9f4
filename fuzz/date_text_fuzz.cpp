// Text to a date.

#include "nelvo/core/date_time.h"

#include "fuzz/fuzz_target.h"

using datetime::CDateTime;

namespace
{

// What was read reads the same again as it is printed.
void TryFormat(const std::string& text, const char* format)
{
    CDateTime date;
    if (fuzz::Reads([&] { date = CDateTime::FromString(text, format); }))
        fuzz::Require(CDateTime::FromString(date.ToString(format), format).GetSeconds() == date.GetSeconds());
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    const std::string text(Text(data, size));
    TryFormat(text, CDateTime::kIsoFormat);
    TryFormat(text, CDateTime::kUsFormat);
    Reads([&] { CDateTime::FromString(WideText(data, size), L"%Y-%m-%d %H:%M:%S"); });
}
