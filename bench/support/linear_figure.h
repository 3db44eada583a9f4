#pragma once

// Whether work on a text takes time in proportion to the text.
//
//   AddLinearFigure("XML of marks", "&", [](const std::string& text) { return util::EscapeXml(text); });

#include <cstddef>
#include <string>

#include "bench/support/figure.h"

// As much of the piece, over and over, as makes this size.
inline std::string RepeatedText(const std::string& piece, std::size_t size)
{
    std::string text;
    while (text.size() < size)
        text += piece;
    text.resize(size);
    return text;
}

// Adds a figure: the work on one text of 1 MiB, against the same on 16 texts of 64 KiB. The same number of
// bytes, so that the ratio is about 1 if the time is linear, and 16 if it is quadratic. The goal leaves room
// for what the caches have to do with it.
template <class Work>
void AddLinearFigure(const std::string& name, const std::string& piece, Work work)
{
    constexpr std::size_t kSize = std::size_t{1024} * 1024;
    constexpr int kParts = 16;
    constexpr double kGoal = 4;
    figure_t("1 MiB, " + name)
        .Ours([work, whole = RepeatedText(piece, kSize)] { return work(whole); })
        .Against("16 of 64 KiB", kGoal,
                 [work, part = RepeatedText(piece, kSize / kParts)]
                 {
                     for (int i = 1; i != kParts; ++i)
                         benchmark::DoNotOptimize(work(part));
                     return work(part);
                 });
}
