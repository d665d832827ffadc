#include "events/EventTableView.h"

namespace quorbel {

EventTableView::EventTableView(QWidget *parent) : RowTableView(parent) {
    setHint(
        tr("No events yet.\nPoint the syslog output of your devices at this machine, and they "
           "appear here within a second."));
}

}  // namespace quorbel
