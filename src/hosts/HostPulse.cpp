#include "hosts/HostPulse.h"

#include "core/HostWatch.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QEvent>
#include <QWidget>

namespace quorbel {

HostPulse::HostPulse(HostWatch &hosts, QWidget &view)
    : QObject(&view), m_hosts(hosts), m_clock(&QDateTime::currentSecsSinceEpoch) {
    m_second.setInterval(1000);
    m_slice.setSingleShot(true);
    connect(&m_second, &QTimer::timeout, this, &HostPulse::goOn);
    connect(&m_slice, &QTimer::timeout, this, &HostPulse::goOn);
    view.installEventFilter(this);
}

bool HostPulse::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::Show) {
        m_second.start();
        goOn();
    } else if (event->type() == QEvent::Hide) {
        m_second.stop();
        m_slice.stop();
    }
    return QObject::eventFilter(watched, event);
}

void HostPulse::goOn() {
    QElapsedTimer elapsed;
    elapsed.start();
    if (m_hosts.run(now(), [&elapsed] { return elapsed.elapsed() >= kSliceMs; })) {
        Q_EMIT beat();
    } else {
        m_slice.start(0);
    }
}

}  // namespace quorbel
