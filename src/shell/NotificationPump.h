#pragma once

#include "platform/bus/NotificationObserver.h"

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <chrono>
#include <memory>

namespace quorbel {

/// Runs a NotificationObserver from Qt's event loop: what has arrived is handled on the main
/// thread, in slices short enough for the window's own events to come in between.
class NotificationPump : public QObject {
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds kSlice{8};

    explicit NotificationPump(NotificationObserver::Handler handler, QObject *parent = nullptr);
    ~NotificationPump() override;

    [[nodiscard]] bool isConnected() const { return m_observer.isConnected(); }

private:
    void dispatch();
    void watch(bool moreIsWaiting);
    void replace(std::unique_ptr<QSocketNotifier> &notifier, QSocketNotifier::Type type);

    NotificationObserver m_observer;
    int m_fd = -1;  ///< what the notifiers watch
    std::unique_ptr<QSocketNotifier> m_input;
    std::unique_ptr<QSocketNotifier> m_output;
    QTimer m_timer;
};

}  // namespace quorbel
