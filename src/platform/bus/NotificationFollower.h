#pragma once

#include "platform/bus/Checkpoint.h"
#include "platform/bus/NotificationBatch.h"
#include "platform/bus/NotificationInfo.h"
#include "platform/bus/SdBus.h"

#include <cstdint>
#include <optional>

namespace quorbel {

/// Follows all that the service tells, by way of a NotificationObserver, which calls it in the
/// order in which the bus brings it.
class NotificationFollower {
public:
    virtual ~NotificationFollower() = default;

    /// The service was asked to be told in batches; what it tells before its answer counts for
    /// whoever is not told so.
    virtual void askedToListen() = 0;
    /// It does: it has told `now`, but for `waiting` of its new events, which are still to come.
    virtual void listens(const Checkpoint &now, std::uint64_t waiting) = 0;
    /// It does not know how: all comes as single notifications.
    virtual void hearsSinglesOnly() = 0;
    /// There is no service, or no bus.
    virtual void serviceWent() = 0;

    virtual void notified(const NotificationInfo &info) = 0;
    /// A batch between what was told before and behind it; nothing in place of one that could not
    /// be read.
    virtual void batchCame(std::uint64_t number, std::optional<NotificationBatch> batch,
                           const Checkpoint &before, const Checkpoint &behind) = 0;
    virtual void checkpointCame(std::uint64_t number, const Checkpoint &checkpoint) = 0;

    /// Whether there is something to do before anything else may come.
    [[nodiscard]] virtual bool isBusy() const = 0;
    /// Whether that is just to wait for threads of its own: then work() is called again a
    /// millisecond later.
    [[nodiscard]] virtual bool isWaiting() const { return false; }
    /// Does it, until that time at most.
    virtual void work(bus::Clock::time_point until) = 0;

    /// What the service is to hear from the follower; it is asked for it after each call.
    struct Requests {
        bool listen = false;                 ///< that it listens
        std::optional<std::uint64_t> taken;  ///< that it has taken everything up to that number
    };
    virtual Requests takeRequests() = 0;

protected:
    NotificationFollower() = default;
    NotificationFollower(const NotificationFollower &) = default;
    NotificationFollower &operator=(const NotificationFollower &) = default;
};

}  // namespace quorbel
