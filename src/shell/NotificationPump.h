#pragma once

#include "platform/bus/NotificationObserver.h"
#include "shell/DescriptorNotifiers.h"

#include <QObject>
#include <QTimer>

#include <chrono>

namespace quorbel {

/// Runs a NotificationObserver from Qt's event loop: what has arrived is handled on the main
/// thread, in slices short enough for the window's own events to come in between.
class NotificationPump : public QObject {
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds kSlice{8};

    /// The follower outlives the pump.
    explicit NotificationPump(NotificationFollower &follower, QObject *parent = nullptr);
    ~NotificationPump() override;

    [[nodiscard]] bool isConnected() const { return m_observer.isConnected(); }

private:
    void dispatch();
    void watch(bool moreIsWaiting);

    NotificationObserver m_observer;
    DescriptorNotifiers m_notifiers;
    QTimer m_timer;
};

}  // namespace quorbel
