// Is the time of cutting and escaping text linear, whatever stands in it?

#include "nelvo/core/util/quoted_split.h"
#include "nelvo/core/util/text.h"
#include "nelvo/core/util/xml.h"

#include "bench/support/linear_figure.h"

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

void AddSplit(const std::string& name, const std::string& piece)
{
    AddLinearFigure("split " + name, piece, SplitCount);
}

void AddTrim(const std::string& name, const std::string& piece)
{
    AddLinearFigure("trim " + name, piece,
                    [](const std::string& text) { return util::Trim(text, " \t\r\n"); });
}

void AddEscape(const std::string& name, const std::string& piece)
{
    AddLinearFigure("escape " + name, piece, [](const std::string& text) { return util::EscapeXml(text); });
}

void AddUnescape(const std::string& name, const std::string& piece)
{
    AddLinearFigure("unescape " + name, piece,
                    [](const std::string& text) { return util::UnescapeXml(text); });
}

} // namespace

void AddFigures()
{
    AddSplit("words", "some,words;");
    AddSplit("separators", ",");
    AddSplit("nothing", "word");
    AddLinearFigure("split quoted", "'two words' one ",
                    [](const std::string& text) { return util::SplitQuoted(text).size(); });

    AddTrim("blanks", " ");
    AddTrim("nothing", "word");
    AddTrim("blanks between words", "word        ");

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
