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
    m.table->setColumnWidths(m.columnWidths);
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
    m_places.resize(m.working->size());
    for (std::size_t place = 0; place < m_places.size(); ++place) {
        m_places[place] = place;
    }
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
    const int selected = selectedRow();
    if (selected < 0) {
        append(record);
        return;
    }
    const auto row = static_cast<std::size_t>(selected);
    if (m_places.at(row)) {
        m.working->at(*m_places[row]) = record;
    } else {
        insertIntoWorking(row, record);
    }
    m.controller->replace(selected, record);
}

void RecordList::append(const Dictionary &record) {
    m_places.emplace_back(m.working->size());
    m.working->emplace_back(record);
    m.controller->append(record);
    m.table->scrollToBottom();
}

/// Behind the records that are displayed before this one.
void RecordList::insertIntoWorking(std::size_t row, const Dictionary &record) {
    std::size_t place = 0;
    for (std::size_t before = 0; before < row; ++before) {
        place = m_places[before] ? *m_places[before] + 1 : place;
    }
    for (std::size_t after = row + 1; after < m_places.size(); ++after) {
        if (m_places[after]) {
            ++*m_places[after];
        }
    }
    m.working->emplace(m.working->begin() + static_cast<std::ptrdiff_t>(place), record);
    m_places[row] = place;
}

bool RecordList::removeSelected() {
    const int row = selectedRow();
    if (row < 0) {
        return false;
    }
    const Value removed = m.controller->record(row);
    m.controller->remove(row);
    m_places.erase(m_places.begin() + row);
    for (std::size_t place = m.working->size(); place-- > 0;) {
        if (m.areEqual(removed, (*m.working)[place])) {
            removeFromWorking(place);
        }
    }
    deselect();
    // The arrow keys go on from the row that took its place.
    const int next = std::min(row, m.controller->rowCount() - 1);
    m.table->selectionModel()->setCurrentIndex(m.controller->index(next, 0),
                                               QItemSelectionModel::NoUpdate);
    return true;
}

void RecordList::removeFromWorking(std::size_t place) {
    m.working->erase(m.working->begin() + static_cast<std::ptrdiff_t>(place));
    for (auto &other : m_places) {
        if (other == place) {
            other.reset();
        } else if (other > place) {
            --*other;
        }
    }
}

int RecordList::selectedRow() const {
    const QModelIndexList rows = m.table->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

void RecordList::followSelection() {
    enableButtons(selectedRow() >= 0);
}

}  // namespace quorbel
