// Is the time of cutting, searching, escaping and listing text linear, whatever stands in it?

#include "nelvo/core/util/hex.h"
#include "nelvo/core/util/log_name.h"
#include "nelvo/core/util/quoted_split.h"
#include "nelvo/core/util/text.h"
#include "nelvo/core/util/xml.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "bench/support/growth_figure.h"

namespace
{

// The vector keeps its memory: what is asked is the time of the split, not of the growth.
std::size_t SplitCount(const std::string& text)
{
    static std::vector<std::string> tokens;
    tokens.clear();
    util::Split(text, ",;", tokens);
    return tokens.size();
}

void AddSplit(const std::string& name, const char* piece)
{
    AddTextGrowth("split " + name, piece, SplitCount);
}

void AddTrim(const std::string& name, const char* piece)
{
    AddTextGrowth("trim " + name, piece, [](const std::string& text) { return util::Trim(text, " \t\r\n"); });
}

void AddEscape(const std::string& name, const std::string& piece)
{
    AddTextGrowth("escape " + name, piece, [](const std::string& text) { return util::EscapeXml(text); });
}

void AddUnescape(const std::string& name, const char* piece)
{
    AddTextGrowth("unescape " + name, piece, [](const std::string& text) { return util::UnescapeXml(text); });
}

void AddCuts()
{
    AddSplit("words", "some,words;");
    AddSplit("separators", ",");
    AddSplit("nothing", "word");
    AddTextGrowth("split quoted words", "'two words' one ",
                  [](const std::string& text) { return util::SplitQuoted(text).size(); });

    AddTrim("blanks", " ");
    AddTrim("nothing", "word");
    AddTrim("blanks between words", "word        ");
}

void AddXml()
{
    AddEscape("text", "if (a < b && c == \"d\") ");
    AddEscape("marks", "&");
    AddEscape("open entities", "&amp ");
    AddEscape("entities", "&amp;");
    AddEscape("marks, then one semicolon", std::string(4095, '&') + ";");
    AddEscape("words and marks", "&a&b c");

    AddUnescape("entities", "&lt;");
    AddUnescape("marks", "&");
    AddUnescape("open entities", "&amp ");
}

void AddHex()
{
    AddTextGrowth("hexadecimal to bytes", "00c0ffee",
                  [](const std::string& text) { return util::BytesFromHex(text).size(); });
    AddTextGrowth("hexadecimal zeros to a number", "0",
                  [](const std::string& text) { return util::ParseHex<std::uint32_t>(text); });
}

void AddLogNames()
{
    AddTextGrowth("pack a log name", "my-log_{1}",
                  [](const std::string& text) { return util::PackLogName(text); });
    AddTextGrowth("unpack a log name", "a_Bb____",
                  [](const std::string& text) { return util::UnpackLogName(text); });
}

void AddListAndSearch()
{
    constexpr std::size_t kItems = 10000;
    AddGrowthFigure("list of items", kItems,
                    [](std::size_t count) {
                        return [items = std::vector<std::string>(count, "item")]
                        { return util::ListText(items, true); };
                    });
    AddTextGrowth("find a word that is not there", "a wood ",
                  [](const std::string& text) { return util::FindNoCase(text, "word"); });
}

} // namespace

void AddFigures()
{
    AddCuts();
    AddXml();
    AddHex();
    AddLogNames();
    AddListAndSearch();
}
