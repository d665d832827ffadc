#include "events/find/FindPanel.h"

#include <QAbstractButton>
#include <QKeyEvent>
#include <QScreen>
#include <QStyle>

#include <algorithm>

namespace quorbel {

FindPanel::FindPanel(QWidget *parent) : QFrame(parent, Qt::Popup) {
    setProperty("role", QStringLiteral("panel"));
}

void FindPanel::openBelow(QWidget &anchor, Qt::AlignmentFlag edge) {
    adjustSize();
    // Within the window where it has the room, in any case on the screen.
    const QRect screen = anchor.screen()->availableGeometry();
    const QRect window = anchor.window()->geometry();
    const bool isRight = QStyle::visualAlignment(layoutDirection(), edge).testFlag(Qt::AlignRight);
    const int left = isRight ? anchor.width() - width() : 0;
    QPoint place = anchor.mapToGlobal(QPoint(left, anchor.height() + 2));
    place.setX(std::max(window.left(), std::min(place.x(), window.right() - width())));
    place.setX(std::max(screen.left(), std::min(place.x(), screen.right() - width())));
    place.setY(std::max(screen.top(), std::min(place.y(), screen.bottom() - height())));
    move(place);
    // Not the other control itself, which comes and goes with the room there is.
    m_surroundings = anchor.parentWidget();
    m_surroundings->installEventFilter(this);
    show();
}

void FindPanel::hideEvent(QHideEvent *event) {
    QFrame::hideEvent(event);
    if (m_surroundings != nullptr) {
        m_surroundings->removeEventFilter(this);
    }
}

bool FindPanel::eventFilter(QObject *watched, QEvent *event) {
    if (watched == m_surroundings && event->type() == QEvent::Hide) {
        hide();
    }
    return QFrame::eventFilter(watched, event);
}

void FindPanel::keyPressEvent(QKeyEvent *event) {
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter) {
        QFrame::keyPressEvent(event);
    } else if (auto *button = qobject_cast<QAbstractButton *>(focusWidget())) {
        button->click();
    } else {
        Q_EMIT accepted();
    }
}

}  // namespace quorbel
