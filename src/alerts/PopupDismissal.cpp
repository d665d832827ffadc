#include "alerts/PopupDismissal.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>

namespace quorbel {

namespace {

/// A window that is not modal and no dialog. What a key event comes to it with, nothing in it
/// wanted.
bool isPlainWindow(const QWidget &widget) {
    return widget.isWindow() && widget.windowType() == Qt::Window && !widget.isModal();
}

}  // namespace

PopupDismissal::PopupDismissal(QWidget &view) : QObject(&view), m_view(view) {
    for (QScrollBar *bar : view.findChildren<QScrollBar *>()) {
        leaveTo(*bar);
    }
    QCoreApplication::instance()->installEventFilter(this);
}

void PopupDismissal::leaveTo(QWidget &control) {
    // Further up, it would be a click on what is behind.
    control.setAttribute(Qt::WA_NoMousePropagation);
    m_others.append(&control);
}

bool PopupDismissal::isOn(const QWidget &widget) const {
    return widget.window() == m_view.window() && !m_others.contains(&widget);
}

/// Of all events of the program.
bool PopupDismissal::eventFilter(QObject *object, QEvent *event) {
    auto *widget = qobject_cast<QWidget *>(object);
    if (widget == nullptr) {
        return false;
    }
    switch (event->type()) {
        case QEvent::MouseButtonPress:
            press(*widget, static_cast<const QMouseEvent &>(*event));
            return false;
        case QEvent::MouseButtonRelease:
            release(*widget, static_cast<const QMouseEvent &>(*event));
            return false;
        case QEvent::KeyPress:
            return takeKey(*widget, static_cast<const QKeyEvent &>(*event));
        default:
            return false;
    }
}

/// An event that a control does not want comes again for what is behind it.
void PopupDismissal::press(QWidget &widget, const QMouseEvent &event) {
    m_pressed = event.button() == Qt::LeftButton && isOn(widget) ? &widget : nullptr;
}

void PopupDismissal::release(QWidget &widget, const QMouseEvent &event) {
    if (event.button() == Qt::LeftButton && m_pressed == &widget &&
        widget.rect().contains(event.pos())) {
        m_pressed.clear();
        Q_EMIT dismissed();
    }
}

bool PopupDismissal::takeKey(const QWidget &widget, const QKeyEvent &event) {
    const Qt::KeyboardModifiers others =
        event.modifiers() & ~Qt::KeyboardModifiers(Qt::ShiftModifier);
    if (event.key() != Qt::Key_Escape || others != Qt::NoModifier || event.isAutoRepeat() ||
        (widget.window() != m_view.window() && !isPlainWindow(widget))) {
        return false;
    }
    if (event.modifiers().testFlag(Qt::ShiftModifier)) {
        Q_EMIT allSkipped();
    } else {
        Q_EMIT dismissed();
    }
    return true;
}

}  // namespace quorbel
