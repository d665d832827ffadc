#include "platform/gui/Page.h"

#include <QMetaObject>

namespace quorbel {

void PageLifeCycle::handleShow(QWidget *view, const QShowEvent &event) {
    if (event.spontaneous()) {
        return;
    }
    ++m_appearances;
    viewWillAppear();
    const auto tellIfStillShown = [this, view, appearance = m_appearances] {
        if (view->isVisible() && appearance == m_appearances) {
            viewDidAppear();
        }
    };
    QMetaObject::invokeMethod(view, tellIfStillShown, Qt::QueuedConnection);
}

void PageLifeCycle::handleHide(const QHideEvent &event) {
    if (!event.spontaneous()) {
        viewWillDisappear();
    }
}

Page::Page(QWidget *parent) : QWidget(parent) {}

void Page::setWhiteBackground() {
    QPalette white = palette();
    white.setColor(QPalette::Window, Qt::white);
    setPalette(white);
    setAutoFillBackground(true);
}

void Page::showEvent(QShowEvent *event) {
    QWidget::showEvent(event);
    handleShow(this, *event);
}

void Page::hideEvent(QHideEvent *event) {
    handleHide(*event);
    QWidget::hideEvent(event);
}

}  // namespace quorbel
