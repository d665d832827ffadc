#include "events/EventTableView.h"

#include <QPainter>

namespace quorbel {

void EventTableView::paintEvent(QPaintEvent *event) {
    QTableView::paintEvent(event);
    if (model() == nullptr || model()->rowCount() > 0) {
        return;
    }
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
    painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap,
                     tr("No events yet.\nPoint the syslog output of your devices at this machine, "
                        "and they appear here within a second."));
}

}  // namespace quorbel
