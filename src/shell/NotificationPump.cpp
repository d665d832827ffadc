#include "shell/NotificationPump.h"

namespace quorbel {

namespace {

/// The bus answers within a few milliseconds, unless it hangs.
constexpr std::chrono::milliseconds kSubscriptionLimit{250};

}  // namespace

NotificationPump::NotificationPump(NotificationFollower &follower, QObject *parent)
    : QObject(parent), m_observer(follower), m_notifiers([this] { dispatch(); }) {
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
    m_notifiers.watch(m_observer.fd(), m_observer.events());
    if (moreIsWaiting) {
        m_timer.start(std::chrono::milliseconds::zero());
    } else if (const auto timeout = m_observer.timeout()) {
        m_timer.start(*timeout);
    } else {
        m_timer.stop();
    }
}

}  // namespace quorbel
