#pragma once

#include <QPointF>
#include <QString>

#include <functional>
#include <vector>

class QPainter;
class QRectF;
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

/// Marks parts of a text of one line that stands painted at `origin` already, but not beyond
/// `area`.
void paintMarks(QPainter &painter, const QTextLayout &layout, QPointF origin, const QRectF &area,
                const std::vector<TextRange> &ranges);

}  // namespace quorbel
