#include "settings/RecordList.h"

#include "platform/gui/RowTableView.h"
#include "settings/RecordTableModel.h"

#include <QAbstractButton>
#include <QEvent>
#include <QItemSelectionModel>

#include <algorithm>

namespace quorbel {

RecordList::RecordList(const Setup &setup, QObject *parent) : QObject(parent), m(setup) {
    m.table->setModel(m.controller);
    for (std::size_t column = 0; column < m.columnWidths.size(); ++column) {
        m.table->setColumnWidth(static_cast<int>(column), m.columnWidths[column]);
    }
    m.table->viewport()->installEventFilter(this);
    connect(m.table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &RecordList::clicked);
    const auto requestEdit = [this] {
        if (selectedRow() >= 0) {
            Q_EMIT editRequested();
        }
    };
    connect(m.table, &QAbstractItemView::doubleClicked, this, requestEdit);
    connect(m.table, &RowTableView::enterPressed, this, requestEdit);
}

bool RecordList::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::MouseButtonRelease) {
        Q_EMIT clicked();  // a click counts even when it changes no selection
    }
    return QObject::eventFilter(watched, event);
}

void RecordList::load() {
    m.controller->setRecords(*m.working);
    deselect();
}

void RecordList::deselect() {
    m.table->selectionModel()->clear();
    enableButtons(false);
}

void RecordList::enableButtons(bool enabled) {
    for (QAbstractButton *button : {m.edit, m.remove}) {
        // A disabled button's focus would go to whatever comes next, and the page would scroll
        // there.
        if (!enabled && button->window()->focusWidget() == button) {
            m.table->setFocus();
        }
        button->setEnabled(enabled);
    }
}

std::optional<Dictionary> RecordList::selectedRecord() const {
    const int row = selectedRow();
    if (row < 0) {
        return std::nullopt;
    }
    const Dictionary *fields = m.controller->record(row).dictionary();
    return fields != nullptr ? *fields : Dictionary();
}

void RecordList::store(const Dictionary &record) {
    const int row = selectedRow();
    const auto place = static_cast<std::size_t>(row);
    if (row >= 0 && place < m.working->size()) {
        (*m.working)[place] = record;
    } else {
        m.working->emplace_back(record);
    }
    if (row >= 0) {
        m.controller->replace(row, record);
    } else {
        m.controller->append(record);
        m.table->scrollToBottom();
    }
}

bool RecordList::removeSelected() {
    const int row = selectedRow();
    if (row < 0) {
        return false;
    }
    const Value removed = m.controller->record(row);
    m.controller->remove(row);
    std::erase_if(*m.working, [&](const Value &other) { return m.areEqual(removed, other); });
    deselect();
    // The arrow keys go on from the row that took its place.
    const int next = std::min(row, m.controller->rowCount() - 1);
    m.table->selectionModel()->setCurrentIndex(m.controller->index(next, 0),
                                               QItemSelectionModel::NoUpdate);
    return true;
}

int RecordList::selectedRow() const {
    const QModelIndexList rows = m.table->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

void RecordList::followSelection() {
    enableButtons(selectedRow() >= 0);
}

}  // namespace quorbel
