#include "platform/gui/RowTableView.h"

#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QToolTip>

namespace quorbel {

namespace {

/// A longer text is cut in its tool tip; the details and an export show all of it.
constexpr qsizetype kLongestToolTip = 2000;

constexpr int kNarrowestColumn = 60;

}  // namespace

bool RowDelegate::helpEvent(QHelpEvent *event, QAbstractItemView *view,
                            const QStyleOptionViewItem &option, const QModelIndex &index) {
    const QString text = index.data().toString();
    if (event->type() != QEvent::ToolTip ||
        sizeHint(option, index).width() <= option.rect.width()) {
        QToolTip::hideText();
        return false;
    }
    // As plain text: a message may look like markup.
    QToolTip::showText(event->globalPos(),
                       QStringLiteral("<p style='white-space:pre-wrap'>%1</p>")
                           .arg(text.left(kLongestToolTip).toHtmlEscaped()),
                       view);
    return true;
}

void RowDelegate::initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    option->state.setFlag(QStyle::State_HasFocus, false);
}

RowTableView::RowTableView(QWidget *parent) : QTableView(parent) {
    setItemDelegate(new RowDelegate(this));
    setSelectionBehavior(SelectRows);
    setEditTriggers(NoEditTriggers);
    setTabKeyNavigation(false);
    setHorizontalScrollMode(ScrollPerPixel);
    setWordWrap(false);
    if (!option->icon.isNull()) {
        option->icon = drawn(*option);
    }
}

/// The icon as a picture that is drawn once; a style would tint it in selected rows.
QIcon RowDelegate::drawn(const QStyleOptionViewItem &option) const {
    const qreal ratio = option.widget == nullptr ? 1 : option.widget->devicePixelRatioF();
    const int size = option.decorationSize.height();
    QIcon &result = m_drawn[{option.icon.cacheKey(), size, ratio}];
    if (result.isNull()) {
        const QPixmap picture = option.icon.pixmap(option.decorationSize, ratio);
        result.addPixmap(picture, QIcon::Normal);
        result.addPixmap(picture, QIcon::Selected);
    }
    return result;
    setShowGrid(false);
    setCornerButtonEnabled(false);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setMinimumSectionSize(kNarrowestColumn);
    verticalHeader()->hide();
    // One height for all, so that no row of a million has to be measured.
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(kRowHeight);
}

void RowTableView::setHint(const QString &hint) {
    m_hint = hint;
    viewport()->update();
}

void RowTableView::keyPressEvent(QKeyEvent *event) {
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    // A key held down would open and close what it opens over and over.
    if (enter && !event->isAutoRepeat()) {
        event->ignore();  // in a sheet, it also presses the default button
        Q_EMIT enterPressed();
    } else {
        QTableView::keyPressEvent(event);
    }
}

void RowTableView::paintEvent(QPaintEvent *event) {
    QTableView::paintEvent(event);
    if (m_hint.isEmpty() || model() == nullptr || model()->rowCount() > 0) {
        return;
    }
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
    painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap, m_hint);
}

}  // namespace quorbel
