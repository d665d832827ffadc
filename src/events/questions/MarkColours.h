#pragma once

#include "core/SavedFilter.h"

#include <QColor>
#include <QCoreApplication>
#include <QString>

#include <array>

namespace quorbel {

/// How a colour marks a row. Texts in it reach 4.8:1 on the tint and on white.
struct MarkLook {
    const char *label;
    unsigned line;  ///< of the bar, and of the pill and its text
    unsigned tint;  ///< behind the row
};

/// By MarkColour.
inline constexpr std::array<MarkLook, kMarkColourNames.size()> kMarkLooks{{
    {QT_TRANSLATE_NOOP("MarkColours", "Violet"), 0xff5b2d90, 0xfff1ecfa},
    {QT_TRANSLATE_NOOP("MarkColours", "Teal"), 0xff00625f, 0xffe0f3f2},
    {QT_TRANSLATE_NOOP("MarkColours", "Pink"), 0xff9c1c62, 0xfffbe8f3},
    {QT_TRANSLATE_NOOP("MarkColours", "Brown"), 0xff74451a, 0xfff6ede4},
    {QT_TRANSLATE_NOOP("MarkColours", "Olive"), 0xff535c00, 0xfff1f3dc},
    {QT_TRANSLATE_NOOP("MarkColours", "Grey"), 0xff4a5461, 0xffe9ecf0},
}};

inline const MarkLook &lookOf(MarkColour colour) {
    return kMarkLooks.at(static_cast<std::size_t>(colour));
}

}  // namespace quorbel
