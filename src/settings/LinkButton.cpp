#include "settings/LinkButton.h"

#include <QKeyEvent>

namespace quorbel {

LinkButton::LinkButton(QWidget *parent) : QPushButton(parent) {
    setProperty("role", QStringLiteral("link"));
    setCursor(Qt::PointingHandCursor);
}

void LinkButton::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        click();  // as links do; outside of dialogs buttons take the space bar only
        return;
    }
    QPushButton::keyPressEvent(event);
}

}  // namespace quorbel
