#include "events/ReadingPlace.h"

#include <QScrollBar>
#include <QTableView>

#include <utility>

namespace quorbel {

void ReadingPlace::noteArrivals(int count) {
    if (m_arrived == 0 && m_table.verticalScrollBar()->value() == 0) {
        return;
    }
    if (std::exchange(m_arrived, m_arrived + count) == 0) {
        QMetaObject::invokeMethod(this, &ReadingPlace::keep, Qt::QueuedConnection);
    }
}

void ReadingPlace::keep() {
    const int arrived = std::exchange(m_arrived, 0);
    QScrollBar *bar = m_table.verticalScrollBar();
    // Not when somebody has gone to the top meanwhile.
    if (arrived > 0 && bar->value() > 0) {
        bar->setMaximum(bar->maximum() + arrived);
        bar->setValue(bar->value() + arrived);
    }
}

}  // namespace quorbel
