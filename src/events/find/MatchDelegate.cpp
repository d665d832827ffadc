#include "events/find/MatchDelegate.h"

#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <utility>

namespace quorbel {

void MatchDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const {
    RowDelegate::paint(painter, option, index);
    if (m_marks.isEmpty()) {
        return;
    }
    QStyleOptionViewItem item = option;
    initStyleOption(&item, index);
    std::vector<TextRange> marks = m_marks.in(item.text);
    // Of a very long text only the beginning is laid out.
    if (marks.empty() && item.text.endsWith(u'…') && m_marks.isAnyIn(index.data().toString())) {
        marks.push_back({item.text.size() - 1, item.text.size()});
    }
    if (!marks.empty()) {
        paintIn(*painter, item, std::move(marks));
    }
}

void MatchDelegate::paintIn(QPainter &painter, const QStyleOptionViewItem &option,
                            std::vector<TextRange> marks) {
    const QStyle &style = *option.widget->style();
    const int margin = style.pixelMetric(QStyle::PM_FocusFrameHMargin, &option, option.widget) + 1;
    const QRect area = style.subElementRect(QStyle::SE_ItemViewItemText, &option, option.widget)
                           .adjusted(margin, 0, -margin, 0);
    const QString shown =
        option.fontMetrics.elidedText(option.text, option.textElideMode, area.width());
    const qsizetype whole = shown == option.text ? shown.size() : shown.size() - 1;
    for (TextRange &mark : marks) {
        const bool isShown = mark.begin < whole;
        mark = {isShown ? mark.begin : whole, isShown ? std::min(mark.end, whole) : shown.size()};
    }
    QTextLayout layout(shown, option.font, painter.device());
    layout.beginLayout();
    const QTextLine line = layout.createLine();
    layout.endLayout();
    painter.setPen(option.palette.color(QPalette::Text));
    const QPointF origin(area.left(), area.top() + (area.height() - line.height()) / 2);
    paintMarks(painter, layout, origin, option.rect, marks);
}

}  // namespace quorbel
