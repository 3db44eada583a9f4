#pragma once

// What the fuzz targets share. A target is one source NAME_fuzz.cpp, which hands the bytes that it is given
// to a reader of untrusted bytes. The reader may read them, throw an exception of the family or run out of
// memory; anything else ends the program, and is a finding.
//
// With a fuzzing engine, clang's, a target is a program that looks for findings at length (script/fuzz). With
// replay_main.cpp it is one that tries its seeds and their near relations, as a test does (replay_main.cpp).

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include "nelvo/core/exc/exc_base.h"

// What the engine calls. Returns 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz
{

// Defined by each target: tries one input.
void Try(const std::uint8_t* data, std::size_t size);

// Calls a reader. False if it throws what it may throw.
template <class Read>
bool Reads(Read read)
{
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

} // namespace fuzz
