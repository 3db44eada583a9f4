#pragma once

// Whether work takes time in proportion to its input.
//
//   AddGrowthFigure("records to memory", 10000, [](std::size_t count)
//                   { return [records = Records(count)] { return Write(records); }; });
//   AddTextGrowth("escape marks", "&", [](const std::string& text) { return util::EscapeXml(text); });

#include <cstddef>
#include <malloc.h>
#include <string>

#include "bench/support/figure.h"

// Memory that any work of the program gives back stays with the process for the next one. If the heap gave it
// back to the system now and then, the page faults would depend on which size makes it do so.
inline void KeepFreedMemory()
{
    constexpr int kMost = 1024 * 1024 * 1024;
    constexpr int kMostAllowed = 32 * 1024 * 1024;
    ::mallopt(M_TRIM_THRESHOLD, kMost);
    ::mallopt(M_MMAP_THRESHOLD, kMostAllowed);
}

// Adds a figure: the work on an input of this size against that on half of it. make(size) gives the work on
// an input of a size. The ratio is 2 if the time is linear, and 4 if it is quadratic. The input is so big
// that what a call costs in any case is lost in it, and so small that what it takes stays in the processor's
// second cache: at its border the bigger input pays more for each byte, however the time grows.
template <class Make>
void AddGrowthFigure(const std::string& name, std::size_t size, Make make)
{
    constexpr double kGoal = 2.3;
    KeepFreedMemory();
    figure_t("growth: " + name).Ours(make(size)).Against("half the input", kGoal, make(size / 2));
}

// As much of the piece, over and over, as makes this size.
template <class Char>
std::basic_string<Char> RepeatedText(const std::basic_string<Char>& piece, std::size_t size)
{
    std::basic_string<Char> text;
    while (text.size() < size)
        text += piece;
    text.resize(size);
    return text;
}

// The same for work on a text, narrow or wide, that consists of the piece.
template <class Char, class Work>
void AddTextGrowth(const std::string& name, const std::basic_string<Char>& piece, Work work)
{
    constexpr std::size_t kSize = std::size_t{64} * 1024;
    AddGrowthFigure(name, kSize,
                    [&](std::size_t size)
                    { return [work, text = RepeatedText(piece, size)] { return work(text); }; });
}

template <class Work>
void AddTextGrowth(const std::string& name, const char* piece, Work work)
{
    AddTextGrowth(name, std::string(piece), work);
}
