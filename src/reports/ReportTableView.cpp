#include "reports/ReportTableView.h"

#include "reports/ReportTableModel.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>

#include <algorithm>

namespace quorbel {

namespace {

using Marker = ReportTableModel::Marker;

constexpr int kRevealedRows = 5;

constexpr QColor kExpandedGroup(0xf1, 0xf5, 0xfa);

Marker markerOf(const QModelIndex &index) {
    return index.data(ReportTableModel::kMarkerRole).value<Marker>();
}

/// A group's value runs on over the empty cells behind it, however narrow its own column is.
class ReportDelegate : public RowDelegate {
public:
    using RowDelegate::RowDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override {
        if (markerOf(index) == Marker::kNone) {
            RowDelegate::paint(painter, option, index);
            return;
        }
        painter->save();
        painter->setClipRect(option.rect, Qt::IntersectClip);
        RowDelegate::paint(painter, overAllColumns(option), index.siblingAtColumn(0));
        painter->restore();
    }

    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override {
        if (markerOf(index) == Marker::kNone) {
            return RowDelegate::helpEvent(event, view, option, index);
        }
        return RowDelegate::helpEvent(event, view, overAllColumns(option),
                                      index.siblingAtColumn(0));
    }

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override {
        RowDelegate::initStyleOption(option, index);
        if (markerOf(index) == Marker::kExpanded) {
            option->backgroundBrush = kExpandedGroup;
        }
    }

private:
    static QStyleOptionViewItem overAllColumns(const QStyleOptionViewItem &option) {
        QStyleOptionViewItem all = option;
        if (const auto *table = qobject_cast<const QTableView *>(option.widget)) {
            all.rect.setLeft(table->columnViewportPosition(0));
            all.rect.setWidth(table->horizontalHeader()->length());
        }
        return all;
    }
};

}  // namespace

ReportTableView::ReportTableView(QWidget *parent) : RowTableView(parent) {
    setItemDelegate(new ReportDelegate(this));
}

int ReportTableView::widthForColumns() const {
    return contentsRect().width() - verticalScrollBar()->sizeHint().width();
}

void ReportTableView::revealBelow(int row, int count) {
    executeDelayedItemsLayout();  // the scroll bar knows only then of new rows
    const int inSight = std::max(1, viewport()->height() / verticalHeader()->defaultSectionSize());
    const int last = row + std::min({count, kRevealedRows, inSight - 1});
    QScrollBar *bar = verticalScrollBar();  // it counts rows
    bar->setValue(std::max(bar->value(), last + 1 - inSight));
}

void ReportTableView::mouseDoubleClickEvent(QMouseEvent *event) {
    mousePressEvent(event);  // of two quick clicks, each is one
}

void ReportTableView::keyPressEvent(QKeyEvent *event) {
    // A key held down would expand and collapse a group over and over.
    const bool isRepeated = event->isAutoRepeat();
    switch (event->key()) {
        case Qt::Key_Space:
        case Qt::Key_Return:
        case Qt::Key_Enter:
            if (!isRepeated) {
                Q_EMIT togglePressed();
            }
            break;
        case Qt::Key_Right:
            Q_EMIT expandPressed();
            break;
        case Qt::Key_Left:
            Q_EMIT collapsePressed();
            break;
        default:
            RowTableView::keyPressEvent(event);
    }
}

}  // namespace quorbel
