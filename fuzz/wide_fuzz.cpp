// Narrow text to wide text and back, in UTF-8 and in the encoding of the locale, which is UTF-8 too.

#include "nelvo/core/util/wide.h"

#include <clocale>

#include "fuzz/fuzz_target.h"

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    static const bool has_locale = std::setlocale(LC_ALL, "C.UTF-8") != nullptr;
    fuzz::Require(has_locale);

    const std::string_view text = fuzz::Text(data, size);
    fuzz::Reads([&] { fuzz::Require(util::WideToUtf8(util::Utf8ToWide(text)) == text); });
    fuzz::Reads([&] { util::WideToMultibyte(util::MultibyteToWide(text)); });

    const std::wstring wide = fuzz::WideText(data, size);
    fuzz::Reads([&] { fuzz::Require(util::Utf8ToWide(util::WideToUtf8(wide)) == wide); });
    fuzz::Reads([&] { util::MultibyteToWide(util::WideToMultibyte(wide)); });
}
