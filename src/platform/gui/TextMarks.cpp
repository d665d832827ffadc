#include "platform/gui/TextMarks.h"

#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace quorbel {

void paintMarks(QPainter &painter, const QTextLayout &layout, QPointF origin, const QRectF &area,
                const std::vector<TextRange> &ranges) {
    const QTextLine line = layout.lineAt(0);
    painter.save();
    for (const TextRange &range : ranges) {
        const qreal from = line.cursorToX(static_cast<int>(range.begin));
        const qreal to = line.cursorToX(static_cast<int>(range.end));
        const QRectF box(origin.x() + std::min(from, to), origin.y(), std::abs(to - from),
                         line.height());
        painter.setClipRect(box.intersected(area));
        painter.fillRect(box, QColor::fromRgb(kMarkColour));
        layout.draw(&painter, origin);
        painter.fillRect(QRectF(box.left(), box.bottom() - 1, box.width(), 1),
                         QColor::fromRgb(kMarkLineColour));
    }
    painter.restore();
}

}  // namespace quorbel
