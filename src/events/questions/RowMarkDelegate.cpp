#include "events/questions/RowMarkDelegate.h"

#include "events/questions/MarkColours.h"
#include "platform/gui/PaintedText.h"

#include <QHeaderView>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>

namespace quorbel {

namespace {

constexpr int kBar = 3;
constexpr int kWidestName = 28;  // average characters, the pill's ends among them
constexpr int kGap = 6;

const QHeaderView &headerOf(const QStyleOptionViewItem &option) {
    return *static_cast<const QTableView *>(option.widget)->horizontalHeader();
}

bool isFirst(const QStyleOptionViewItem &option, const QModelIndex &index) {
    return headerOf(option).visualIndex(index.column()) == 0;
}

bool isLast(const QStyleOptionViewItem &option, const QModelIndex &index) {
    const QHeaderView &header = headerOf(option);
    return header.visualIndex(index.column()) == header.count() - 1;
}

QFont pillFont(const QStyleOptionViewItem &option) {
    QFont font = option.font;
    font.setPointSizeF(font.pointSizeF() * 0.85);
    return font;
}

}  // namespace

RowMarkDelegate::Pill RowMarkDelegate::pillFor(const RowMarks::Mark &mark,
                                               const QStyleOptionViewItem &option) {
    const QFontMetrics metrics(pillFont(option));
    const int height = std::min(metrics.height() + 4, option.rect.height() - 4);
    const int widest = std::min(kWidestName * metrics.averageCharWidth(), option.rect.width() / 2);
    const QString text = metrics.elidedText(paintedRow(mark.name), Qt::ElideRight, widest - height);
    const int width = metrics.horizontalAdvance(text) + height;
    const QRect area(option.rect.right() - width - kGap, option.rect.center().y() - height / 2 + 1,
                     width, height);
    return {text, QStyle::visualRect(option.direction, option.rect, area)};
}

QRect RowMarkDelegate::besidePill(const Pill &pill, const QStyleOptionViewItem &option) {
    QRect rest = option.rect;
    rest.setRight(QStyle::visualRect(option.direction, option.rect, pill.area).left() - kGap);
    return QStyle::visualRect(option.direction, option.rect, rest);
}

void RowMarkDelegate::paintPill(QPainter &painter, const QStyleOptionViewItem &option,
                                const Pill &pill, const QColor &line) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(pillFont(option));
    painter.setPen(line);
    painter.setBrush(Qt::white);
    const qreal radius = pill.area.height() / 2.0;
    painter.drawRoundedRect(QRectF(pill.area).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    painter.drawText(pill.area, Qt::AlignCenter, pill.text);
    painter.restore();
}

void RowMarkDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                            const QModelIndex &index) const {
    const RowMarks::Mark *mark = m_marks.markOf(index.row());
    if (mark == nullptr) {
        MatchDelegate::paint(painter, option, index);
        return;
    }
    const MarkLook &look = lookOf(mark->colour);
    QStyleOptionViewItem item = option;
    if ((option.state & QStyle::State_Selected) == 0) {
        painter->fillRect(option.rect, QColor::fromRgb(look.tint));
    }
    if (isLast(option, index)) {
        const Pill pill = pillFor(*mark, option);
        // The cell's background, which ends before the pill otherwise.
        option.widget->style()->drawPrimitive(QStyle::PE_PanelItemViewItem, &option, painter,
                                              option.widget);
        paintPill(*painter, option, pill, QColor::fromRgb(look.line));
        item.rect = besidePill(pill, option);
    }
    MatchDelegate::paint(painter, item, index);
    if (isFirst(option, index)) {
        const QRect bar(option.rect.topLeft(), QSize(kBar, option.rect.height()));
        painter->fillRect(QStyle::visualRect(option.direction, option.rect, bar),
                          QColor::fromRgb(look.line));
    }
}

bool RowMarkDelegate::helpEvent(QHelpEvent *event, QAbstractItemView *view,
                                const QStyleOptionViewItem &option, const QModelIndex &index) {
    const RowMarks::Mark *mark = m_marks.markOf(index.row());
    if (mark == nullptr || event->type() != QEvent::ToolTip || !isLast(option, index)) {
        return MatchDelegate::helpEvent(event, view, option, index);
    }
    const Pill pill = pillFor(*mark, option);
    if (pill.area.contains(event->pos())) {
        QToolTip::showText(event->globalPos(),
                           QStringLiteral("<p>%1</p>").arg(paintedRow(mark->name).toHtmlEscaped()),
                           view);
        return true;
    }
    QStyleOptionViewItem item = option;
    item.rect = besidePill(pill, option);
    return MatchDelegate::helpEvent(event, view, item, index);
}

}  // namespace quorbel
