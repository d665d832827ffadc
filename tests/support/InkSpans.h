#pragma once

#include <QImage>
#include <QList>
#include <QPair>
#include <QWidget>

#include <algorithm>
#include <cstdlib>

namespace quorbel::testing {

using Spans = QList<QPair<int, int>>;  ///< first and last columns of pixels

/// Where something is painted in a part of a widget, from left to right. What is closer together
/// than words are is one span.
inline Spans inkSpans(QWidget &widget, const QRect &part) {
    constexpr int kInk = 40;  // of lightness
    constexpr int kBetweenWords = 12;
    const QImage picture = widget.grab(part).toImage();
    const int ground = picture.pixelColor(0, 0).lightness();
    Spans spans;
    for (int x = 0; x < picture.width(); ++x) {
        bool isInked = false;
        for (int y = 0; y < picture.height(); ++y) {
            isInked = isInked || std::abs(picture.pixelColor(x, y).lightness() - ground) > kInk;
        }
        if (isInked && !spans.isEmpty() && x - spans.last().second < kBetweenWords) {
            spans.last().second = x;
        } else if (isInked) {
            spans.append({x, x});
        }
    }
    return spans;
}

/// Whether they are where a mirror of that width shows the others, but for how letters end.
inline bool areMirrored(const Spans &some, Spans others, int width) {
    constexpr int kLetters = 4;
    std::ranges::reverse(others);
    return !some.isEmpty() && std::ranges::equal(some, others, [&](const auto &a, const auto &b) {
        return std::abs(a.first - (width - 1 - b.second)) <= kLetters &&
               std::abs(a.second - (width - 1 - b.first)) <= kLetters;
    });
}

}  // namespace quorbel::testing
