#pragma once

#include <QTableView>

namespace quorbel {

/// The table of events. Says in the middle what to expect while there are none.
class EventTableView : public QTableView {
    Q_OBJECT

public:
    using QTableView::QTableView;

protected:
    void paintEvent(QPaintEvent *event) override;
};

}  // namespace quorbel
