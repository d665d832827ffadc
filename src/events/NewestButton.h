#pragma once

#include "core/Event.h"

#include <QPushButton>

class QTableView;

namespace quorbel {

class ArrangedEvents;

/// Stands over the header of the event table while that is scrolled down and events have arrived
/// above what was seen of it: says how many and leads to them. Takes neither room nor the keyboard.
class NewestButton : public QPushButton {
    Q_OBJECT

public:
    /// The table shows the events in a model that it has already. Both outlive this, which is the
    /// table's child.
    NewestButton(ArrangedEvents &events, QTableView &table);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void noteArrival();
    void lookLater();
    void look();
    void tell(int count);
    void place();

    ArrangedEvents &m_events;
    QTableView &m_table;
    EventId m_seen = 0;  // the newest event that was in sight
    bool m_lookIsDue = false;
};

}  // namespace quorbel
