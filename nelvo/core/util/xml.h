#pragma once

// Text in XML. Both directions take time in proportion to the text, whatever stands in it.
//
//   util::EscapeXml("a < b & c")         "a &lt; b &amp; c"
//   util::EscapeXml("a &lt; b")          "a &lt; b": it is escaped already
//   util::UnescapeXml("&lt;&amp;lt;")    "<&lt;"

#include <string>
#include <string_view>

namespace util
{

// & < > " ' become "&amp;" "&lt;" "&gt;" "&quot;" "&apos;". An & stays as it is, with all up to the next ";",
// if nothing but ASCII letters, digits and & stands between them; so "&#38;" becomes "&amp;#38;".
std::string EscapeXml(std::string_view text);
std::wstring EscapeXml(std::wstring_view text);

// The five entities become their characters; any other stays as it is. The result is not scanned again.
std::string UnescapeXml(std::string_view text);
std::wstring UnescapeXml(std::wstring_view text);

} // namespace util
