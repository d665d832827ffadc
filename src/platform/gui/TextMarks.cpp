#include "platform/gui/TextMarks.h"

#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace quorbel {

QRegion markedPlaces(const QTextLayout &layout, QPoint origin,
                     const std::vector<TextRange> &ranges) {
    const QTextLine line = layout.lineAt(0);
    QRegion places;
    for (const TextRange &range : ranges) {
        const qreal from = line.cursorToX(static_cast<int>(range.begin));
        const qreal to = line.cursorToX(static_cast<int>(range.end));
        places +=
            QRectF(origin.x() + std::min(from, to), origin.y(), std::abs(to - from), line.height())
                .toRect();
    }
    return places;
}

void paintMarks(QPainter &painter, const QRegion &places) {
    const QColor mark = QColor::fromRgb(kMarkColour);
    const QColor underline = QColor::fromRgb(kMarkLineColour);
    for (const QRect &place : places) {
        painter.fillRect(place, mark);
        painter.fillRect(place.left(), place.bottom(), place.width(), 1, underline);
    }
}

void paintMarks(QPainter &painter, const QRegion &places, const QTextLayout &layout,
                QPoint origin) {
    painter.save();
    painter.setClipRegion(places, Qt::IntersectClip);
    paintMarks(painter, places);
    layout.draw(&painter, origin);
    painter.restore();
}

}  // namespace quorbel
