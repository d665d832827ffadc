#include "platform/gui/ScrolledControls.h"

#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QFocusEvent>
#include <QScrollBar>

namespace quorbel {

namespace {

bool isChangedByWheel(const QObject &control) {
    return qobject_cast<const QComboBox *>(&control) != nullptr ||
           qobject_cast<const QAbstractSpinBox *>(&control) != nullptr ||
           (qobject_cast<const QAbstractSlider *>(&control) != nullptr &&
            qobject_cast<const QScrollBar *>(&control) == nullptr);
}

}  // namespace

ScrolledControls::ScrolledControls(QScrollArea &area) : QObject(&area), m_area(area) {
    for (QWidget *control : area.widget()->findChildren<QWidget *>()) {
        if (control->focusPolicy() != Qt::NoFocus) {
            control->installEventFilter(this);
        }
    }
}

bool ScrolledControls::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::Wheel && isChangedByWheel(*watched)) {
        // Who scrolls must not change what happens to pass under the pointer.
        event->ignore();
        return true;
    }
    if (event->type() == QEvent::FocusIn) {
        // The scroll area does so itself only for a step from one of its controls to another. Not
        // for the mouse, under which nothing may move.
        const Qt::FocusReason reason = static_cast<QFocusEvent *>(event)->reason();
        if (reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason) {
            m_area.ensureWidgetVisible(static_cast<QWidget *>(watched));
        }
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace quorbel
