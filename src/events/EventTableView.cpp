#include "events/EventTableView.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyledItemDelegate>

namespace quorbel {

namespace {

/// Rows are selected as a whole, so no single cell is framed.
class RowDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override {
        QStyleOptionViewItem unframed = option;
        unframed.state.setFlag(QStyle::State_HasFocus, false);
        QStyledItemDelegate::paint(painter, unframed, index);
    }
};

}  // namespace

EventTableView::EventTableView(QWidget *parent) : QTableView(parent) {
    setItemDelegate(new RowDelegate(this));
}

void EventTableView::keyPressEvent(QKeyEvent *event) {
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    // A key held down would open and close the details over and over.
    if (enter && !event->isAutoRepeat()) {
        Q_EMIT enterPressed();
    } else {
        QTableView::keyPressEvent(event);
    }
}

void EventTableView::paintEvent(QPaintEvent *event) {
    QTableView::paintEvent(event);
    if (model() == nullptr || model()->rowCount() > 0) {
        return;
    }
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
    painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap,
                     tr("No events yet.\nPoint the syslog output of your devices at this machine, "
                        "and they appear here within a second."));
}

}  // namespace quorbel
