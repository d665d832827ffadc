#include "events/MatchDelegate.h"

#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <string>

namespace quorbel {

namespace {

constexpr QColor kMarkColour(0xff, 0xe9, 0xa8);
constexpr QColor kLineColour(0x8a, 0x5a, 0x00);

qsizetype charactersIn(std::string_view bytes) {
    return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size())).size();
}

}  // namespace

void MatchDelegate::mark(const EventQuery &filter) {
    m_patterns.clear();
    for (const TextCondition &text : filter.texts) {
        if (!text.isNegated) {
            m_patterns.emplace_back(text.pattern);
        }
    }
}

void MatchDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const {
    RowDelegate::paint(painter, option, index);
    if (m_patterns.empty()) {
        return;
    }
    QStyleOptionViewItem item = option;
    initStyleOption(&item, index);
    if (const std::vector<Range> marks = marksIn(item.text); !marks.empty()) {
        paintMarks(*painter, item, marks);
    }
}

std::vector<MatchDelegate::Range> MatchDelegate::marksIn(const QString &text) const {
    std::vector<Range> marks;
    const std::string bytes = text.toStdString();
    const std::string_view view(bytes);
    for (const TextPattern &pattern : m_patterns) {
        for (auto found = pattern.find(view); found;
             found = found->end < view.size()
                         ? pattern.find(view, std::max(found->end, found->begin + 1))
                         : std::nullopt) {
            if (found->end > found->begin) {
                const qsizetype begin = charactersIn(view.substr(0, found->begin));
                marks.push_back({begin, begin + charactersIn(view.substr(
                                                    found->begin, found->end - found->begin))});
            }
        }
    }
    return marks;
}

void MatchDelegate::paintMarks(QPainter &painter, const QStyleOptionViewItem &option,
                               const std::vector<Range> &marks) {
    const QStyle &style = *option.widget->style();
    const int margin = style.pixelMetric(QStyle::PM_FocusFrameHMargin, &option, option.widget) + 1;
    const QRect area = style.subElementRect(QStyle::SE_ItemViewItemText, &option, option.widget)
                           .adjusted(margin, 0, -margin, 0);
    const QString shown =
        option.fontMetrics.elidedText(option.text, option.textElideMode, area.width());
    const qsizetype whole = shown == option.text ? shown.size() : shown.size() - 1;
    QTextLayout layout(shown, option.font, painter.device());
    layout.beginLayout();
    const QTextLine line = layout.createLine();
    layout.endLayout();
    const QPointF origin(area.left(), area.top() + (area.height() - line.height()) / 2);
    painter.save();
    painter.setPen(option.palette.color(QPalette::Text));
    for (const Range &mark : marks) {
        const bool isShown = mark.begin < whole;
        const auto begin = static_cast<int>(isShown ? mark.begin : whole);
        const auto end = static_cast<int>(isShown ? std::min(mark.end, whole) : shown.size());
        const qreal from = line.cursorToX(begin);
        const qreal to = line.cursorToX(end);
        const QRectF box(origin.x() + std::min(from, to), origin.y(), std::abs(to - from),
                         line.height());
        painter.setClipRect(box.intersected(QRectF(option.rect)));
        painter.fillRect(box, kMarkColour);
        layout.draw(&painter, origin);
        painter.fillRect(QRectF(box.left(), box.bottom() - 1, box.width(), 1), kLineColour);
    }
    painter.restore();
}

}  // namespace quorbel
