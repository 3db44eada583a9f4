#include "nelvo/core/util/quoted_split.h"

#include <utility>

#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/wide.h"

namespace util
{
namespace
{

template <class Char>
class splitter_tt
{
public:
    using text_t = std::basic_string<Char>;

    void Take(Char c)
    {
        if (c == Char('\''))
            TakeQuote(c, m_single, m_double);
        else if (c == Char('"'))
            TakeQuote(c, m_double, m_single);
        else if (!IsOpen() && (c == Char(' ') || c == Char('\t')))
            EndToken();
        else
            m_token += c;
    }

    bool IsOpen() const { return m_single || m_double; }

    std::vector<text_t> Finish()
    {
        EndToken();
        return std::move(m_tokens);
    }

private:
    // A quote at the start of a token is dropped even inside the other kind, and only the later one of a pair
    // shows: "'a'" in double quotes is a'.
    // Kept: QuotedSplit.AQuoteInQuotesStaysOnlyBehindSomething
    void TakeQuote(Char c, bool& flag, bool other)
    {
        flag = !flag;
        if (other && !m_token.empty())
            m_token += c;
    }

    void EndToken()
    {
        if (!m_token.empty())
            m_tokens.push_back(std::move(m_token));
        m_token.clear();
    }

    bool m_single = false;
    bool m_double = false;
    text_t m_token;
    std::vector<text_t> m_tokens;
};

template <class Char>
std::vector<std::basic_string<Char>> SplitWhole(std::basic_string_view<Char> text)
{
    splitter_tt<Char> splitter;
    for (const Char c : text)
        splitter.Take(c);
    if (splitter.IsOpen())
        throw exc::runtime_exc_t("Failed to separate string [%1]. Invalid quote order", ToUtf8(text));
    return splitter.Finish();
}

} // namespace

std::vector<std::string> SplitQuoted(std::string_view text) { return SplitWhole(text); }
std::vector<std::wstring> SplitQuoted(std::wstring_view text) { return SplitWhole(text); }

} // namespace util
