#include "events/find/MatchDelegate.h"

#include "platform/gui/KnownText.h"

#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <utility>

namespace quorbel {

namespace {

/// Where the style paints an item's text.
QRect textArea(const QStyleOptionViewItem &item) {
    const QStyle &style = *item.widget->style();
    const int margin = style.pixelMetric(QStyle::PM_FocusFrameHMargin, &item, item.widget) + 1;
    return style.subElementRect(QStyle::SE_ItemViewItemText, &item, item.widget)
        .adjusted(margin, 0, -margin, 0);
}

QPalette::ColorGroup colours(QStyle::State state) {
    if ((state & QStyle::State_Enabled) == 0) {
        return QPalette::Disabled;
    }
    return (state & QStyle::State_Active) != 0 ? QPalette::Active : QPalette::Inactive;
}

/// Marked text is black on yellow in selected rows, too.
QList<QTextLayout::FormatRange> formatsOf(const std::vector<TextRange> &marks,
                                          const QColor &colour) {
    QTextCharFormat format;
    format.setForeground(colour);
    QList<QTextLayout::FormatRange> formats;
    for (const TextRange &mark : marks) {
        formats.push_back(
            {static_cast<int>(mark.begin), static_cast<int>(mark.end - mark.begin), format});
    }
    return formats;
}

void paintText(QPainter &painter, const QStyleOptionViewItem &item, const QString &text,
               const QRect &area, const std::vector<TextRange> &marks) {
    QTextLayout layout(text, item.font, painter.device());
    const bool isSelected = (item.state & QStyle::State_Selected) != 0;
    if (isSelected) {
        layout.setFormats(formatsOf(marks, item.palette.color(QPalette::Active, QPalette::Text)));
    }
    layout.beginLayout();
    const QTextLine line = layout.createLine();
    layout.endLayout();
    const QSize size(qRound(line.naturalTextWidth()), qRound(line.height()));
    const QPoint origin =
        QStyle::alignedRect(item.direction,
                            QStyle::visualAlignment(item.direction, item.displayAlignment), size,
                            area)
            .topLeft();
    painter.setPen(item.palette.color(colours(item.state),
                                      isSelected ? QPalette::HighlightedText : QPalette::Text));
    paintMarks(painter, markedPlaces(layout, origin, marks).intersected(item.rect));
    layout.draw(&painter, origin);
}

}  // namespace

void MatchDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const {
    if (m_marks.isEmpty()) {
        RowDelegate::paint(painter, option, index);
        return;
    }
    QStyleOptionViewItem item = option;
    initStyleOption(&item, index);
    const QRect area = textArea(item);
    const QString shown = item.fontMetrics.elidedText(item.text, item.textElideMode, area.width());
    const std::vector<TextRange> marks = ranges(shown, item, index);
    if (!marks.empty()) {
        item.text.clear();
    }
    item.widget->style()->drawControl(QStyle::CE_ItemViewItem, &item, painter, item.widget);
    if (!marks.empty()) {
        // In place of the style, so that a text is laid out but once.
        painter->save();
        paintText(*painter, item, shown, area, marks);
        painter->restore();
    }
}

void MatchDelegate::initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const {
    RowDelegate::initStyleOption(option, index);
    if (!option->icon.isNull()) {
        option->text = knownName(option->text);
    }
}

std::vector<TextRange> MatchDelegate::ranges(const QString &shown, const QStyleOptionViewItem &item,
                                             const QModelIndex &index) const {
    std::vector<TextRange> marks = m_marks.in(item.text);
    // Of a very long text only the beginning is laid out.
    if (marks.empty() && item.text.endsWith(u'…') && m_marks.isAnyIn(index.data().toString())) {
        marks.push_back({item.text.size() - 1, item.text.size()});
    }
    const qsizetype whole = shown == item.text ? shown.size() : shown.size() - 1;
    for (TextRange &mark : marks) {
        const bool isShown = mark.begin < whole;
        mark = {isShown ? mark.begin : whole, isShown ? std::min(mark.end, whole) : shown.size()};
    }
    return marks;
}

}  // namespace quorbel
