#include "nelvo/core/util/hex.h"

#include <array>

#include "nelvo/core/exc/rethrow.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/util/format.h"
#include "nelvo/core/util/to_text.h"
#include "nelvo/core/util/wide.h"

namespace util
{
namespace
{

constexpr std::uint8_t kNoDigit = 0xFF;

constexpr std::array<std::uint8_t, 256> MakeDigitTable()
{
    std::array<std::uint8_t, 256> table{};
    for (auto& digit : table)
        digit = kNoDigit;
    for (std::uint8_t i = 0; i != 10; ++i)
        table[std::size_t{'0'} + i] = i;
    for (std::uint8_t i = 0; i != 6; ++i)
        table[std::size_t{'a'} + i] = table[std::size_t{'A'} + i] = static_cast<std::uint8_t>(10 + i);
    return table;
}

constexpr std::array<std::uint8_t, 256> kDigits = MakeDigitTable();

std::uint32_t CodeOf(char c) { return static_cast<unsigned char>(c); }
std::uint32_t CodeOf(wchar_t c) { return static_cast<char32_t>(c); }

template <class Char>
std::uint8_t DigitOf(Char c)
{
    const std::uint32_t code = CodeOf(c);
    return code < kDigits.size() ? kDigits[code] : kNoDigit;
}

template <class Char>
std::string CharacterText(Char c)
{
    return std::string(ToUtf8(std::basic_string_view<Char>(&c, 1)));
}

template <class Char>
[[noreturn]] void ThrowBadCharacter(Char c)
{
    throw exc::runtime_exc_t("Failed to convert hex-char '" + CharacterText(c) + "' ('" + ToText(CodeOf(c)) +
                             "') to number");
}

template <class Char>
unsigned DigitFrom(Char letter)
{
    const std::uint8_t digit = DigitOf(letter);
    if (digit == kNoDigit)
        throw exc::runtime_exc_t("Cannot convert letter '%1' to digit.", CharacterText(letter));
    return digit;
}

// A prefix alone is none: "0x" fails at its x.
// Kept: ParseHex.APrefixNeedsADigitBehindIt
//
// The overflow test comes before each shift: "0ff" has a place too many for 8 bits, but loses none.
template <class Char>
std::uint64_t ParseBits(std::basic_string_view<Char> text, unsigned bits)
{
    if (text.empty())
        throw exc::runtime_exc_t(
            std::string("Failed to convert {string} to numeric type: Incorrect parameter <value: {empty}>"));
    if (text.size() >= 3 && text[0] == Char('0') && (text[1] == Char('x') || text[1] == Char('X')))
        text.remove_prefix(2);

    const unsigned top = bits - 4;
    std::uint64_t value = 0;
    for (const Char c : text)
    {
        const std::uint8_t digit = DigitOf(c);
        if (digit == kNoDigit)
            ThrowBadCharacter(c);
        if (value >> top != 0)
            throw exc::runtime_exc_t("Failed to convert {string} to numeric type: Too huge value");
        value = value << 4U | digit;
    }
    return value;
}

void ConvertDigits(std::string_view text, cnt::plain_array_t& bytes)
try
{
    for (std::size_t i = 0; i != bytes.size(); ++i)
        bytes[i] = static_cast<char>(DigitFrom(text[2 * i]) << 4U | DigitFrom(text[2 * i + 1]));
}
catch (std::exception& e)
{
    exc::RethrowWithContext(
        false, Format("Failed to convert string to binary array, specified string: '%1'.", text), e);
}

} // namespace

std::string HexDigit(long long number)
{
    constexpr std::string_view kLetters = "0123456789abcdef";
    if (number < 0 || number > 15)
        throw exc::runtime_exc_t("Unable to convert numeric to hex digit: [%1].", number);
    return std::string(1, kLetters[static_cast<std::size_t>(number)]);
}

std::wstring WideHexDigit(long long number)
{
    const std::string digit = HexDigit(number);
    return {digit.begin(), digit.end()};
}

unsigned DigitFromLetter(char letter) { return DigitFrom(letter); }
unsigned DigitFromLetter(wchar_t letter) { return DigitFrom(letter); }

std::uint64_t ParseHexBits(std::string_view text, unsigned bits) { return ParseBits(text, bits); }
std::uint64_t ParseHexBits(std::wstring_view text, unsigned bits) { return ParseBits(text, bits); }

cnt::plain_array_t BytesFromHex(std::string_view text)
{
    if (text.size() % 2 != 0)
        throw exc::runtime_exc_t("Invalid length of the data.");
    cnt::plain_array_t bytes(text.size() / 2);
    ConvertDigits(text, bytes);
    return bytes;
}

} // namespace util
