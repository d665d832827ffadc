#include "alerts/PopupHold.h"

#include <QCursor>
#include <QEvent>
#include <QWidget>

#include <utility>

namespace quorbel {

PopupHold::PopupHold(QWidget &view) : QObject(&view) {
    view.setAttribute(Qt::WA_Hover);  // tells of the pointer over what is in it, too
    view.installEventFilter(this);
    m_rest.setSingleShot(true);
    m_rest.setInterval(kLongestRestMs);
    connect(&m_rest, &QTimer::timeout, this, [this] { setHeld(false); });
}

bool PopupHold::eventFilter(QObject *object, QEvent *event) {
    switch (event->type()) {
        case QEvent::HoverEnter:
            enter();
            break;
        case QEvent::HoverMove:
            move();
            break;
        case QEvent::HoverLeave:
            leave();
            break;
        default:
            break;
    }
    return QObject::eventFilter(object, event);
}

/// The window may have come to the pointer.
void PopupHold::enter() {
    m_canHold = true;
    m_last = QCursor::pos();
}

void PopupHold::leave() {
    m_canHold = false;
    setHeld(false);
}

void PopupHold::move() {
    // The popup grows and shrinks below a pointer that stands still.
    if (m_canHold && std::exchange(m_last, QCursor::pos()) != QCursor::pos()) {
        m_rest.start();
        setHeld(true);
    }
}

void PopupHold::setHeld(bool isHeld) {
    if (!isHeld) {
        m_rest.stop();
    }
    if (std::exchange(m_isHeld, isHeld) != isHeld) {
        Q_EMIT changed(isHeld);
    }
}

}  // namespace quorbel
