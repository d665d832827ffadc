#include "events/FindPanel.h"

#include <QScreen>

#include <algorithm>

namespace quorbel {

FindPanel::FindPanel(QWidget *parent) : QFrame(parent, Qt::Popup) {
    setProperty("role", QStringLiteral("panel"));
}

void FindPanel::openBelow(QWidget &anchor) {
    adjustSize();
    const QRect screen = anchor.screen()->availableGeometry();
    QPoint place = anchor.mapToGlobal(QPoint(0, anchor.height() + 2));
    place.setX(std::max(screen.left(), std::min(place.x(), screen.right() - width())));
    place.setY(std::max(screen.top(), std::min(place.y(), screen.bottom() - height())));
    move(place);
    show();
}

}  // namespace quorbel
