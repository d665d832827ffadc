#pragma once

#include "platform/gui/RowTableView.h"

namespace quorbel {

/// The table of events. Says in the middle what to expect while there are none.
class EventTableView : public RowTableView {
    Q_OBJECT

public:
    explicit EventTableView(QWidget *parent = nullptr);
};

}  // namespace quorbel
