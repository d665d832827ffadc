#include "reports/ReportTableView.h"

#include "reports/ReportDelegate.h"
#include "reports/ReportTableModel.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>

#include <algorithm>

namespace quorbel {

namespace {

using Marker = ReportTableModel::Marker;

constexpr int kRevealedRows = 5;

bool isDetail(const QModelIndex &index) {
    return index.isValid() &&
           index.data(ReportTableModel::kMarkerRole).value<Marker>() == Marker::kNone;
}

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
    const int last = row + std::max(std::min({count, kRevealedRows, inSight - 1}), 0);
    QScrollBar *bar = verticalScrollBar();  // it counts rows
    bar->setValue(std::min(std::max(bar->value(), last + 1 - inSight), row));
}

int ReportTableView::selectedRow() const {
    const QModelIndexList selected = selectionModel()->selectedRows();
    return selected.isEmpty() ? -1 : selected.first().row();
}

void ReportTableView::goTo(int row) {
    selectRow(row);
    revealBelow(row, 0);
}

int ReportTableView::topRow() const {
    return verticalScrollBar()->value();
}

void ReportTableView::setTopRow(int row) {
    executeDelayedItemsLayout();
    verticalScrollBar()->setValue(row);
}

void ReportTableView::mouseDoubleClickEvent(QMouseEvent *event) {
    if (event->button() == Qt::LeftButton && isDetail(indexAt(event->pos()))) {
        RowTableView::mouseDoubleClickEvent(event);
    } else {
        mousePressEvent(event);  // of two quick clicks, each is one
    }
}

void ReportTableView::keyPressEvent(QKeyEvent *event) {
    if (event->modifiers().testFlag(Qt::ControlModifier) && goBySize(event->key())) {
        return;
    }
    switch (event->key()) {
        case Qt::Key_Space:
            tellOnce(*event, &ReportTableView::togglePressed);
            break;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            tellOnce(*event, &ReportTableView::openPressed);
            break;
        case Qt::Key_Right:
            Q_EMIT expandPressed();
            break;
        case Qt::Key_Left:
            Q_EMIT collapsePressed();
            break;
        case Qt::Key_Asterisk:
            tellOnce(*event, &ReportTableView::expandAllPressed);
            break;
        case Qt::Key_Slash:
            tellOnce(*event, &ReportTableView::collapseAllPressed);
            break;
        default:
            RowTableView::keyPressEvent(event);
    }
}

/// A key held down would expand and collapse a group over and over.
void ReportTableView::tellOnce(const QKeyEvent &event, void (ReportTableView::*what)()) {
    if (!event.isAutoRepeat()) {
        Q_EMIT(this->*what)();
    }
}

bool ReportTableView::goBySize(int key) {
    if (key == Qt::Key_Down) {
        Q_EMIT nextSmallerPressed();
    } else if (key == Qt::Key_Up) {
        Q_EMIT nextLargerPressed();
    }
    return key == Qt::Key_Down || key == Qt::Key_Up;
}

}  // namespace quorbel
