#pragma once

#include "core/ArrangedEvents.h"

#include <QTimer>
#include <QWidget>

#include <vector>

class QScrollBar;
class QTableView;

namespace quorbel {

/// Marks on the event table's scroll bar where the severe events stand, while a filter is in use.
/// The mouse works the scroll bar through it, whose handle stays in sight.
class ScrollMarks : public QWidget {
    Q_OBJECT

public:
    /// Becomes a child of the table's scroll bar. The table shows the events in a model that it has
    /// already; both outlive this.
    ScrollMarks(ArrangedEvents &events, QTableView &table);

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void lookLater();
    void look();

    ArrangedEvents &m_events;
    QScrollBar &m_bar;
    QTimer m_timer;
    std::vector<bool> m_isMarked;  // by pixel
};

}  // namespace quorbel
