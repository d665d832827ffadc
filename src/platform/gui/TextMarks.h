#pragma once

#include <QPoint>
#include <QRegion>
#include <QString>

#include <functional>
#include <vector>

class QPainter;
class QTextLayout;

namespace quorbel {

/// A part of a text: from `begin` up to `end`.
struct TextRange {
    qsizetype begin;
    qsizetype end;
};

/// Tells which parts of a text are to be marked, in any order.
using TextMarker = std::function<std::vector<TextRange>(const QString &)>;

inline constexpr unsigned kMarkColour = 0xffffe9a8;
inline constexpr unsigned kMarkLineColour = 0xff8a5a00;

/// The places of parts of a text of one line whose layout begins at `origin`.
QRegion markedPlaces(const QTextLayout &layout, QPoint origin,
                     const std::vector<TextRange> &ranges);
/// Paints what marks such places, under a text that is painted next.
void paintMarks(QPainter &painter, const QRegion &places);
/// The same where the text stands painted already: it is painted once more.
void paintMarks(QPainter &painter, const QRegion &places, const QTextLayout &layout, QPoint origin);

}  // namespace quorbel
