#pragma once

#include "core/ArrangedEvents.h"

#include <QObject>

#include <optional>
#include <vector>

namespace quorbel {

class EventTableView;

/// Which events are selected in the table, and which of them the user chose last. Events are known
/// by their ids here: new ones move the rows and clear the selection, also between the two clicks
/// of a double click.
class EventSelection : public QObject {
    Q_OBJECT

public:
    using Rows = std::vector<RowRange>;

    /// The table shows the events in a model that it has already. Both outlive this.
    EventSelection(ArrangedEvents &events, EventTableView &table);

    /// The selected rows, ascending.
    [[nodiscard]] Rows rows() const;
    /// Of several selected rows the one that was selected last; -1 when there is none.
    [[nodiscard]] int row() const;
    /// Selects a row alone and scrolls to it.
    void select(int row);
    /// Clears the selection because new events have arrived: what the user chose can still be
    /// opened.
    void clearForArrival();
    /// Clears the selection and forgets what the user chose.
    void clear();

    [[nodiscard]] std::vector<EventId> idsOf(const Rows &rows) const;
    /// Those of the events that are arranged still.
    [[nodiscard]] std::vector<std::size_t> rowsOf(const std::vector<EventId> &ids) const;

Q_SIGNALS:
    /// The selected row is to be opened: by a double click, which means the event under its first
    /// press wherever that stands now, or by a key, which means the event chosen last. Not sent
    /// when that event has left the list.
    void openRequested();

private:
    void noteChoice();
    void openChoice();
    // A large change of the list keeps the selection and the place where one reads.
    void rememberView();
    void restoreView();

    ArrangedEvents &m_events;
    EventTableView &m_table;
    std::optional<EventId> m_choice;
    std::vector<EventId> m_rememberedSelection;
    EventId m_rememberedTop = 0;
};

}  // namespace quorbel
