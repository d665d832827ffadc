#include "events/EventSelection.h"

#include "events/EventTableView.h"

#include <QItemSelectionModel>

#include <algorithm>
#include <utility>

namespace quorbel {

namespace {

RowRange rangeOf(const QItemSelectionRange &range) {
    return {static_cast<std::size_t>(range.top()), static_cast<std::size_t>(range.height())};
}

}  // namespace

EventSelection::EventSelection(ArrangedEvents &events, EventTableView &table)
    : m_events(events), m_table(table) {
    const QAbstractItemModel *model = table.model();
    connect(model, &QAbstractItemModel::modelAboutToBeReset, this, &EventSelection::rememberView);
    connect(model, &QAbstractItemModel::modelReset, this, &EventSelection::restoreView);
    const QItemSelectionModel *selection = table.selectionModel();
    connect(selection, &QItemSelectionModel::selectionChanged, this, &EventSelection::noteChoice);
    connect(selection, &QItemSelectionModel::currentChanged, this, [this](const QModelIndex &now) {
        if (m_table.selectionModel()->isSelected(now)) {
            noteChoice();
        }
    });
    connect(&table, &EventTableView::firstPress, this, &EventSelection::noteChoice);
    connect(&table, &EventTableView::secondPress, this, &EventSelection::openChoice);
    connect(&table, &EventTableView::enterPressed, this, &EventSelection::openChoice);
}

EventSelection::Rows EventSelection::rows() const {
    Rows rows;
    for (const QItemSelectionRange &range : m_table.selectionModel()->selection()) {
        rows.push_back(rangeOf(range));
    }
    std::ranges::sort(rows, {}, &RowRange::first);
    return rows;
}

int EventSelection::row() const {
    const QItemSelectionModel *selection = m_table.selectionModel();
    const QModelIndex current = selection->currentIndex();
    if (selection->isSelected(current)) {
        return current.row();
    }
    return selection->hasSelection() ? static_cast<int>(rows().front().first) : -1;
}

void EventSelection::select(int row) {
    const QModelIndex index = m_table.model()->index(row, 0);
    m_table.selectionModel()->setCurrentIndex(
        index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    m_table.scrollTo(index);
}

void EventSelection::clearForArrival() {
    const auto choice = m_choice;
    m_table.clearSelection();
    m_choice = choice;
}

void EventSelection::clear() {
    m_table.clearSelection();
    m_choice.reset();
}

void EventSelection::noteChoice() {
    const int chosen = row();
    m_choice =
        chosen < 0 ? std::nullopt : std::optional(m_events.idAt(static_cast<std::size_t>(chosen)));
}

void EventSelection::openChoice() {
    const auto row = m_choice ? m_events.rowOf(*m_choice) : std::nullopt;
    if (!row) {
        return;
    }
    const auto chosen = static_cast<int>(*row);
    if (!m_table.selectionModel()->isRowSelected(chosen)) {
        select(chosen);
    }
    Q_EMIT openRequested();
}

void EventSelection::rememberView() {
    m_rememberedSelection = idsOf(rows());
    const int top = m_table.rowAt(0);
    m_rememberedTop = top > 0 ? m_events.idAt(static_cast<std::size_t>(top)) : 0;
}

void EventSelection::restoreView() {
    const QAbstractItemModel &model = *m_table.model();
    QItemSelection selection;
    for (const RowRange &range : joinRows(rowsOf(std::exchange(m_rememberedSelection, {})))) {
        const auto first = static_cast<int>(range.first);
        const auto last = static_cast<int>(range.first + range.count - 1);
        selection.select(model.index(first, 0), model.index(last, model.columnCount() - 1));
    }
    const auto choice = m_choice;
    m_table.selectionModel()->select(selection, QItemSelectionModel::Select);
    m_choice = choice;
    if (const auto top = m_events.rowOf(m_rememberedTop)) {
        m_table.scrollTo(model.index(static_cast<int>(*top), 0), QAbstractItemView::PositionAtTop);
    }
}

std::vector<EventId> EventSelection::idsOf(const Rows &rows) const {
    std::vector<EventId> ids;
    for (const RowRange &range : rows) {
        for (std::size_t row = range.first; row < range.first + range.count; ++row) {
            ids.push_back(m_events.idAt(row));
        }
    }
    return ids;
}

std::vector<std::size_t> EventSelection::rowsOf(const std::vector<EventId> &ids) const {
    std::vector<std::size_t> rows;
    for (const EventId id : ids) {
        if (const auto row = m_events.rowOf(id)) {
            rows.push_back(*row);
        }
    }
    return rows;
}

}  // namespace quorbel
