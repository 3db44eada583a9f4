#include "nelvo/core/util/wide.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "nelvo/core/exc/rethrow.h"
#include "nelvo/core/exc/runtime_exc.h"

// Most texts are ASCII throughout. Both UTF-8 conversions take the ASCII head in one go, several characters
// a step, and walk code point by code point from the first other character on.

namespace util
{
namespace
{

constexpr auto kFailed = static_cast<std::size_t>(-1);

std::size_t AsciiHead(std::string_view text)
{
    constexpr std::size_t kStep = sizeof(std::uint64_t);
    std::size_t head = 0;
    for (; text.size() - head >= kStep; head += kStep)
    {
        std::uint64_t block = 0;
        std::memcpy(&block, text.data() + head, kStep);
        if ((block & 0x8080808080808080U) != 0)
            break;
    }
    while (head != text.size() && static_cast<unsigned char>(text[head]) < 0x80U)
        ++head;
    return head;
}

std::size_t AsciiHead(std::wstring_view text)
{
    constexpr std::size_t kStep = 8;
    std::size_t head = 0;
    for (; text.size() - head >= kStep; head += kStep)
    {
        std::uint32_t bits = 0;
        for (const wchar_t c : text.substr(head, kStep))
            bits |= static_cast<std::uint32_t>(c);
        if (bits >= 0x80U)
            break;
    }
    while (head != text.size() && static_cast<std::uint32_t>(text[head]) < 0x80U)
        ++head;
    return head;
}

bool IsCodePoint(char32_t code) { return code <= 0x10FFFFU && (code < 0xD800U || code > 0xDFFFU); }

struct lead_byte_t
{
    std::size_t tail; // bytes that follow
    char32_t bits;    // of the value, that stand in the lead byte itself
    char32_t least;
};

bool ReadLeadByte(unsigned char byte, lead_byte_t& lead)
{
    if (byte < 0x80U)
        lead = {0, byte, 0};
    else if (byte >= 0xC0U && byte < 0xE0U)
        lead = {1, byte & 0x1FU, 0x80U};
    else if (byte >= 0xE0U && byte < 0xF0U)
        lead = {2, byte & 0x0FU, 0x800U};
    else if (byte >= 0xF0U && byte < 0xF8U)
        lead = {3, byte & 0x07U, 0x10000U};
    else
        return false;
    return true;
}

// Moves at behind the code point that stands there; false if there is none.
bool ReadCodePoint(const char*& at, const char* end, char32_t& code)
{
    lead_byte_t lead{};
    if (!ReadLeadByte(static_cast<unsigned char>(*at++), lead) ||
        static_cast<std::size_t>(end - at) < lead.tail)
        return false;
    code = lead.bits;
    for (const char* const next = at + lead.tail; at != next; ++at)
    {
        const auto byte = static_cast<unsigned char>(*at);
        if ((byte & 0xC0U) != 0x80U)
            return false;
        code = code << 6U | (byte & 0x3FU);
    }
    return code >= lead.least && IsCodePoint(code);
}

char* WriteCodePoint(char* at, char32_t code)
{
    const auto tail = [code](unsigned shift) { return static_cast<char>(0x80U | (code >> shift & 0x3FU)); };
    if (code < 0x80U)
    {
        *at++ = static_cast<char>(code);
    }
    else if (code < 0x800U)
    {
        *at++ = static_cast<char>(0xC0U | code >> 6U);
        *at++ = tail(0);
    }
    else if (code < 0x10000U)
    {
        *at++ = static_cast<char>(0xE0U | code >> 12U);
        *at++ = tail(6);
        *at++ = tail(0);
    }
    else
    {
        *at++ = static_cast<char>(0xF0U | code >> 18U);
        *at++ = tail(12);
        *at++ = tail(6);
        *at++ = tail(0);
    }
    return at;
}

} // namespace

// The C functions end at a zero character, so what follows one is lost without a failure, both ways.
// Kept: WideToMultibyte.StopsAtAZeroCharacter
std::string WideToMultibyte(std::wstring_view text)
{
    const std::wstring source(text);
    const std::size_t size = std::wcstombs(nullptr, source.c_str(), 0);
    if (size == kFailed)
        throw exc::runtime_exc_t(
            "Unicode string cannot be converted to multibyte string. Failed to get buffer size. ");

    std::string result(size + 1, '\0');
    if (std::wcstombs(result.data(), source.c_str(), result.size()) == kFailed)
        throw exc::runtime_exc_t("Unicode string cannot be converted to multibyte string.");
    result.resize(size);
    return result;
}

std::wstring MultibyteToWide(std::string_view text)
{
    if (text.empty())
        return {};

    const std::string source(text);
    const std::size_t size = std::mbstowcs(nullptr, source.c_str(), 0);
    if (size == kFailed)
        throw exc::runtime_exc_t(
            "Multibyte string cannot be converted to unicode string. Failed to get buffer size. Source string: [%1].",
            source);

    std::wstring result(size + 1, L'\0');
    if (std::mbstowcs(result.data(), source.c_str(), result.size()) == kFailed)
        throw exc::runtime_exc_t(
            "Multibyte string cannot be converted to unicode string. Source string: [%1].", source);
    result.resize(size);
    return result;
}

std::wstring Utf8ToWide(std::string_view text)
{
    const std::size_t head = AsciiHead(text);
    if (head == text.size())
        return {text.begin(), text.end()};

    std::wstring result(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(head));
    result.reserve(text.size());
    const char* const end = text.data() + text.size();
    for (const char* at = text.data() + head; at != end;)
    {
        char32_t code = 0;
        if (!ReadCodePoint(at, end, code))
            throw exc::runtime_exc_t(
                "Multibyte UTF8 string cannot be converted to unicode string. Source string: [%1].", text);
        result += static_cast<wchar_t>(code);
    }
    return result;
}

std::string WideToUtf8(std::wstring_view text)
{
    const std::size_t head = AsciiHead(text);
    std::string result(head, '\0');
    std::transform(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(head), result.begin(),
                   [](wchar_t c) { return static_cast<char>(c); });

    for (const wchar_t c : text.substr(head))
    {
        const auto code = static_cast<char32_t>(c);
        if (!IsCodePoint(code))
            throw exc::runtime_exc_t("Unicode string cannot be converted to multibyte UTF8 string.");
        char bytes[4];
        result.append(bytes, WriteCodePoint(bytes, code));
    }
    return result;
}

std::string WideToMultibyteForExc(std::wstring_view text)
try
{
    return WideToMultibyte(text);
}
catch (std::exception& e)
{
    exc::RethrowWithContext(false, "UNICODE->ANSI failed", e);
}

} // namespace util
