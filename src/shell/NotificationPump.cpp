#include "shell/NotificationPump.h"

#include <poll.h>

#include <utility>

namespace quorbel {

namespace {

/// The bus answers within a few milliseconds, unless it hangs.
constexpr std::chrono::milliseconds kSubscriptionLimit{250};

}  // namespace

NotificationPump::NotificationPump(NotificationObserver::Handler handler, QObject *parent)
    : QObject(parent), m_observer(std::move(handler)) {
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &NotificationPump::dispatch);
    // Events that arrive as soon as the window is there are not missed.
    m_observer.waitUntilConnected(kSubscriptionLimit);
    watch(false);
}

NotificationPump::~NotificationPump() = default;

void NotificationPump::dispatch() {
    watch(m_observer.dispatch(kSlice));
}

void NotificationPump::watch(bool moreIsWaiting) {
    if (m_observer.fd() != m_fd) {
        m_fd = m_observer.fd();
        replace(m_input, QSocketNotifier::Read);
        replace(m_output, QSocketNotifier::Write);
    }
    if (m_fd >= 0) {
        m_input->setEnabled((m_observer.events() & POLLIN) != 0);
        m_output->setEnabled((m_observer.events() & POLLOUT) != 0);
    }
    if (moreIsWaiting) {
        m_timer.start(std::chrono::milliseconds::zero());
    } else if (const auto timeout = m_observer.timeout()) {
        m_timer.start(*timeout);
    } else {
        m_timer.stop();
    }
}

void NotificationPump::replace(std::unique_ptr<QSocketNotifier> &notifier,
                               QSocketNotifier::Type type) {
    if (notifier) {
        // It may be the one whose signal is being handled.
        notifier->setEnabled(false);
        notifier.release()->deleteLater();
    }
    if (m_fd >= 0) {
        notifier = std::make_unique<QSocketNotifier>(m_fd, type);
        connect(notifier.get(), &QSocketNotifier::activated, this, &NotificationPump::dispatch);
    }
}

}  // namespace quorbel
