// What does a path cost on its way between UTF-8 and wide text, next to iconv with a descriptor kept open?

#include "nelvo/core/util/wide.h"

#include <iconv.h>

#include "bench/support/figure.h"
#include "bench/support/growth_figure.h"

namespace
{

const char kAscii[] = "/var/lib/nelvo/records/2026-11-21/an.ordinary.file.name.log.gz";
const char kMixed[] =
    "/home/j\xc3\xbcrgen/\xd0\xb4\xd0\xbe\xd0\xba\xd1\x83\xd0\xbc\xd0\xb5\xd0\xbd\xd1\x82.txt";

template <class To, class From>
std::basic_string<To> ByIconv(iconv_t descriptor, const std::basic_string<From>& text)
{
    To result[512];
    char* in = reinterpret_cast<char*>(const_cast<From*>(text.data()));
    char* out = reinterpret_cast<char*>(result);
    std::size_t in_left = text.size() * sizeof(From);
    std::size_t out_left = sizeof(result);
    ::iconv(descriptor, &in, &in_left, &out, &out_left);
    return {result, (sizeof(result) - out_left) / sizeof(To)};
}

std::wstring ToWideByIconv(const std::string& text)
{
    static const iconv_t descriptor = ::iconv_open("WCHAR_T", "UTF-8");
    return ByIconv<wchar_t>(descriptor, text);
}

std::string ToUtf8ByIconv(const std::wstring& text)
{
    static const iconv_t descriptor = ::iconv_open("UTF-8", "WCHAR_T");
    return ByIconv<char>(descriptor, text);
}

void AddAscii()
{
    constexpr double kGoal = 0.7;
    figure_t("ASCII path to wide")
        .Ours([text = std::string(kAscii)] { return util::Utf8ToWide(text); })
        .Against("iconv", kGoal, [text = std::string(kAscii)] { return ToWideByIconv(text); });
    figure_t("ASCII path to UTF-8")
        .Ours([text = util::Utf8ToWide(kAscii)] { return util::WideToUtf8(text); })
        .Against("iconv", kGoal, [text = util::Utf8ToWide(kAscii)] { return ToUtf8ByIconv(text); });
}

void AddMixed()
{
    figure_t("mixed path to wide")
        .Ours([text = std::string(kMixed)] { return util::Utf8ToWide(text); })
        .Against("iconv", [text = std::string(kMixed)] { return ToWideByIconv(text); });
    figure_t("mixed path to UTF-8")
        .Ours([text = util::Utf8ToWide(kMixed)] { return util::WideToUtf8(text); })
        .Against("iconv", [text = util::Utf8ToWide(kMixed)] { return ToUtf8ByIconv(text); });
}

// The multibyte pair takes ASCII alone in the locale of this program.
void AddGrowth()
{
    AddTextGrowth("UTF-8 to wide", "\xc3\xbc",
                  [](const std::string& text) { return util::Utf8ToWide(text); });
    AddTextGrowth("wide to UTF-8", std::wstring(L"\u00fc"),
                  [](const std::wstring& text) { return util::WideToUtf8(text); });
    AddTextGrowth("multibyte to wide", "word",
                  [](const std::string& text) { return util::MultibyteToWide(text); });
    AddTextGrowth("wide to multibyte", std::wstring(L"word"),
                  [](const std::wstring& text) { return util::WideToMultibyte(text); });
}

} // namespace

void AddFigures()
{
    AddAscii();
    AddMixed();
    AddGrowth();
}
