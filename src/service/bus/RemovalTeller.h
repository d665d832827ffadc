#pragma once

#include "service/bus/NotificationQueue.h"
#include "service/store/RemovalFeed.h"

#include <cstdint>

namespace quorbel {

/// Moves removed events from their feed to the notifications, when nothing newer is left to tell:
/// removals, which may be a million at once, neither fill the queue nor delay what arrives. Loop
/// thread only.
class RemovalTeller {
public:
    /// Whether there is a bus on which to tell.
    enum class Bus { kUnknown, kThere, kMissing };

    /// Both must outlive the object.
    RemovalTeller(RemovalFeed &feed, NotificationQueue &notifications)
        : m_feed(feed), m_notifications(notifications) {}

    /// Whether tell() would take something.
    [[nodiscard]] bool canTell(Bus bus) const;
    /// Takes one piece of the feed if canTell(). Without a bus nobody is to be told, and the events
    /// are only counted: whoever comes later reads the files.
    void tell(Bus bus);
    [[nodiscard]] std::uint64_t untold() const { return m_untold; }

private:
    RemovalFeed &m_feed;
    NotificationQueue &m_notifications;
    std::uint64_t m_untold = 0;
};

}  // namespace quorbel
