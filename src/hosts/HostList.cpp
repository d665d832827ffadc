#include "hosts/HostList.h"

#include <QFocusEvent>
#include <QHeaderView>

#include <algorithm>

namespace quorbel {

HostList::HostList(QWidget *parent) : RowTableView(parent) {
    setSelectionMode(SingleSelection);
    setProperty("role", QStringLiteral("bare"));
    setTextElideMode(Qt::ElideMiddle);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    horizontalHeader()->hide();
    verticalHeader()->setMinimumSectionSize(1);
    connect(this, &QAbstractItemView::doubleClicked, this, &HostList::choose);
    connect(this, &RowTableView::enterPressed, this, &HostList::choose);
}

void HostList::choose() {
    if (selectionModel()->hasSelection()) {
        const int row = selectionModel()->selection().first().top();
        Q_EMIT chosen(model()->index(row, 0).data(Qt::EditRole).toString());
    }
}

void HostList::focusInEvent(QFocusEvent *event) {
    RowTableView::focusInEvent(event);
    const bool byKey =
        event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    if (byKey && model()->rowCount() > 0) {
        selectRow(0);  // or nobody would see where the keyboard is
    }
}

void HostList::focusOutEvent(QFocusEvent *event) {
    RowTableView::focusOutEvent(event);
    if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason) {
        clearSelection();
        setCurrentIndex({});
    }
}

int HostListModel::rowCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

void HostListModel::setRows(std::vector<HostRow> rows) {
    const auto count = static_cast<int>(rows.size());
    const int before = rowCount();
    if (count < before) {
        beginRemoveRows({}, count, before - 1);
        m_rows.resize(rows.size());
        endRemoveRows();
    } else if (count > before) {
        beginInsertRows({}, before, count - 1);
        m_rows.resize(rows.size());
        endInsertRows();
    }
    for (int row = 0; row < count; ++row) {
        const auto place = static_cast<std::size_t>(row);
        if (m_rows[place] != rows[place]) {
            m_rows[place] = std::move(rows[place]);
            Q_EMIT dataChanged(index(row, 0), index(row, columnCount() - 1));
        }
    }
}

}  // namespace quorbel
