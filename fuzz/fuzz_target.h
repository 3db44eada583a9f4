#pragma once

// What the fuzz targets share. A target is one source NAME_fuzz.cpp, which hands the bytes that it is given
// to each reader of a group of readers of untrusted bytes. A reader may read them, throw an exception of the
// family or run out of memory; anything else ends the program, and is a finding.
//
// With a fuzzing engine, clang's, a target is a program that looks for findings at length (script/fuzz). With
// replay_main.cpp it is one that tries its seeds and their near relations, as a test does (replay_main.cpp).

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "nelvo/core/exc/exc_base.h"

// What the engine calls. Returns 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz
{

// Defined by each target: tries one input.
void Try(const std::uint8_t* data, std::size_t size);

// While it stands, no piece of memory is larger than a mebibyte. The engine and what holds a result against
// another have no limit: what was read fits there once more.
class limit_t
{
public:
    limit_t();
    limit_t(const limit_t&) = delete;
    limit_t& operator=(const limit_t&) = delete;
    ~limit_t();

private:
    bool m_outer;
};

// Calls a reader, under the limit. False if it throws what it may throw.
template <class Read>
bool Reads(Read read)
{
    const limit_t limit;
    try
    {
        read();
        return true;
    }
    catch (const exc::exc_base_t&)
    {
        return false;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

// Ends the program unless what must hold does.
inline void Require(bool holds)
{
    if (!holds)
        std::abort();
}

// Calls a reader of a text in its narrow and in its wide form. True if both read it; they must agree on that
// and on what they give.
template <class Narrow, class Wide>
bool Agree(Narrow narrow, Wide wide)
{
    decltype(narrow()) value{};
    decltype(wide()) wide_value{};
    const bool reads = Reads([&] { value = narrow(); });
    const bool reads_wide = Reads([&] { wide_value = wide(); });
    Require(reads == reads_wide && value == wide_value);
    return reads;
}

inline std::string_view Text(const std::uint8_t* data, std::size_t size)
{
    return {reinterpret_cast<const char*>(data), size};
}

// A wide text of the bytes, four to a character; what is left at the end is dropped.
inline std::wstring WideText(const std::uint8_t* data, std::size_t size)
{
    std::wstring text(size / sizeof(wchar_t), L'\0');
    if (!text.empty())
        std::memcpy(text.data(), data, text.size() * sizeof(wchar_t));
    return text;
}

// A wide text of as many characters, each with the value of its byte.
inline std::wstring Widened(std::string_view text)
{
    std::wstring wide;
    for (const char letter : text)
        wide += static_cast<wchar_t>(static_cast<unsigned char>(letter));
    return wide;
}

// Whether each byte is the same character in whatever encoding.
inline bool IsAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(),
                       [](char letter) { return static_cast<unsigned char>(letter) < 0x80; });
}

// What lies between the separators, the empty pieces too; one more than there are separators.
inline std::vector<std::string> Pieces(std::string_view text, char separator)
{
    std::vector<std::string> pieces(1);
    for (const char letter : text)
    {
        if (letter == separator)
            pieces.emplace_back();
        else
            pieces.back() += letter;
    }
    return pieces;
}

} // namespace fuzz
