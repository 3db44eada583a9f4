// Command strings with quoted parts.

#include "nelvo/core/util/quoted_split.h"

#include "fuzz/fuzz_target.h"

namespace
{

template <class Tokens>
std::size_t TotalSize(const Tokens& tokens)
{
    std::size_t size = 0;
    for (const auto& token : tokens)
    {
        fuzz::Require(!token.empty());
        size += token.size();
    }
    return size;
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text = fuzz::Text(data, size);
    std::size_t found = 0;
    const bool reads = fuzz::Reads([&] { found = TotalSize(util::SplitQuoted(text)); });
    fuzz::Require(found <= size);
    std::size_t found_wide = 0;
    const bool reads_wide =
        fuzz::Reads([&] { found_wide = TotalSize(util::SplitQuoted(fuzz::Widened(text))); });
    fuzz::Require(reads == reads_wide && found == found_wide);
    fuzz::Reads([&] { util::SplitQuoted(fuzz::WideText(data, size)); });
}
