#pragma once

#include "core/ArrangedEvents.h"

#include <QTimer>
#include <QWidget>

#include <memory>
#include <optional>
#include <vector>

class QPushButton;
class QTableView;

namespace quorbel {

class FindBar;

/// Stands in the empty table when no event matches: leads back to all events, and names the
/// condition without which most would match.
class NothingFound : public QWidget {
    Q_OBJECT

public:
    /// Becomes a child of the table. All outlive this.
    NothingFound(EventList &list, FindBar &bar, QTableView &table);
    ~NothingFound() override;

    /// Shows itself, and looks for the condition between the window's own events.
    void appear();
    void disappear();

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct Costliest {
        std::size_t condition;
        std::size_t matches;
    };

    void tryNext();
    void search();
    void showCostliest();
    void removeCostliest();
    void place();

    EventList &m_list;
    FindBar &m_bar;
    QTableView &m_table;
    QPushButton *m_without;
    QTimer m_slices;
    std::vector<EventQuery> m_others;         // the query without each condition
    std::size_t m_next = 0;                   // of these
    std::unique_ptr<ArrangedEvents> m_trial;  // of the one before
    std::optional<Costliest> m_costliest;
};

}  // namespace quorbel
