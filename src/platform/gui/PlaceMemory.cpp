#include "platform/gui/PlaceMemory.h"

#include "platform/gui/WindowMemory.h"

#include <QEvent>
#include <QWidget>

namespace quorbel {

PlaceMemory::PlaceMemory(QWidget &window, const QString &name)
    : QObject(&window), m_window(window), m_key(QStringLiteral("places/") + name) {
    const QByteArray place = remembered(m_key).toByteArray();
    // Qt takes a cut one for a place without a size.
    if (place.size() == m_window.saveGeometry().size()) {
        m_window.restoreGeometry(place);
    }
    m_window.installEventFilter(this);
}

bool PlaceMemory::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::Hide && !event->spontaneous()) {
        remember(m_key, m_window.saveGeometry());
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace quorbel
