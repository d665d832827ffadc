#pragma once

#include "platform/bus/NotificationFollower.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace quorbel {

/// Receives the service's notification "Quorbel" from the system bus.
///
/// It has no thread and no event loop of its own: the owner's loop watches fd() for events() and
/// calls dispatch(), also when timeout() has passed. The connection is opened at construction and
/// opened again by itself, after the bus or the service went away, for as long as the object lives.
/// fd() changes when that happens.
class NotificationObserver {
public:
    using UserInfo = NotificationInfo;
    using Handler = std::function<void(const UserInfo &userInfo)>;

    /// Hears single notifications only.
    explicit NotificationObserver(Handler handler);
    /// Listens to all that the service tells. The follower outlives the observer.
    explicit NotificationObserver(NotificationFollower &follower);
    ~NotificationObserver();
    NotificationObserver(const NotificationObserver &) = delete;
    NotificationObserver &operator=(const NotificationObserver &) = delete;

    /// Whether the bus has confirmed the subscription, so that nothing sent from now on is missed.
    [[nodiscard]] bool isConnected() const;
    /// Dispatches until isConnected(), for at most `limit`; gives up at once without a connection.
    void waitUntilConnected(std::chrono::milliseconds limit);
    /// -1 while there is no connection.
    [[nodiscard]] int fd() const;
    /// What to poll fd() for (POLLIN and, while output is pending, POLLOUT).
    [[nodiscard]] short events() const;
    /// When to call dispatch() even if fd() is quiet; nothing when only fd() matters.
    [[nodiscard]] std::optional<std::chrono::milliseconds> timeout() const;

    /// Handles what has arrived, for at most about `slice`, and connects again when it is time to.
    /// Returns whether more is waiting already, or the follower is busy. Does nothing when called
    /// from within the handler.
    bool dispatch(std::chrono::milliseconds slice);

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace quorbel
