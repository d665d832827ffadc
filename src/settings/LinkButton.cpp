#include "settings/LinkButton.h"

#include <QKeyEvent>

namespace quorbel {

LinkButton::LinkButton(QWidget *parent) : QPushButton(parent) {
    setProperty("role", QStringLiteral("link"));
    setCursor(Qt::PointingHandCursor);
}

void LinkButton::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        // As links do; outside of dialogs buttons take the space bar only. A key held down would
        // open and close what it opens over and over.
        if (!event->isAutoRepeat()) {
            click();
        }
        return;
    }
    QPushButton::keyPressEvent(event);
}

}  // namespace quorbel
