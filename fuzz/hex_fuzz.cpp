// Hexadecimal text to numbers of all widths, and to bytes.

#include "nelvo/core/util/hex.h"

#include "fuzz/fuzz_target.h"

namespace
{

// Narrow and wide text give the same, and a text that a narrow type can hold, a wide one can.
template <class Value>
bool IsRead(std::string_view text)
{
    Value value = 0;
    const bool reads = fuzz::Reads([&] { value = util::ParseHex<Value>(text); });
    Value wide_value = 0;
    const bool reads_wide = fuzz::Reads([&] { wide_value = util::ParseHex<Value>(fuzz::Widened(text)); });
    fuzz::Require(reads == reads_wide && value == wide_value);
    return reads;
}

// Each byte is what its two digits are alone.
void TryBytes(std::string_view text)
{
    cnt::plain_array_t bytes;
    if (!fuzz::Reads([&] { bytes = util::BytesFromHex(text); }))
        return;
    fuzz::Require(bytes.size() * 2 == text.size());
    for (std::size_t i = 0; i != bytes.size(); ++i)
        fuzz::Require(util::ParseHex<std::uint8_t>(text.substr(2 * i, 2)) ==
                      static_cast<std::uint8_t>(bytes[i]));
}

} // namespace

void fuzz::Try(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text = fuzz::Text(data, size);
    const bool in_8 = IsRead<std::uint8_t>(text);
    const bool in_16 = IsRead<std::int16_t>(text);
    const bool in_32 = IsRead<std::uint32_t>(text);
    const bool in_64 = IsRead<std::int64_t>(text);
    fuzz::Require(in_8 <= in_16 && in_16 <= in_32 && in_32 <= in_64);
    fuzz::Reads([&] { util::ParseHex<std::uint64_t>(fuzz::WideText(data, size)); });
    TryBytes(text);
    if (size != 0)
        fuzz::Reads([&] { fuzz::Require(util::DigitFromLetter(text[0]) < 16); });
}
