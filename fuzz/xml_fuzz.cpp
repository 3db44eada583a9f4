// Text in XML, both ways.

#include "nelvo/core/util/xml.h"

#include "fuzz/fuzz_target.h"

namespace
{

// Escaping is done once and for all, and does not change what is meant.
template <class Text>
void TryText(const Text& text)
{
    const auto escaped = util::EscapeXml(text);
    fuzz::Require(util::EscapeXml(escaped) == escaped);
    fuzz::Require(util::UnescapeXml(escaped) == util::UnescapeXml(text));
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text = fuzz::Text(data, size);
    TryText(text);
    TryText(fuzz::WideText(data, size));
    fuzz::Require(fuzz::Widened(util::EscapeXml(text)) == util::EscapeXml(fuzz::Widened(text)));
    fuzz::Require(fuzz::Widened(util::UnescapeXml(text)) == util::UnescapeXml(fuzz::Widened(text)));
}
