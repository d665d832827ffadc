#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorbel {

/// What a notification says of an event.
enum class NotificationType : char { kSet = 'S', kRemove = 'R' };

struct Notification {
    NotificationType type = NotificationType::kSet;
    std::string_view line;  ///< the event as its line in the log files
};

/// The notifications that the bus has not taken yet, oldest first. When there are too many, the
/// oldest are dropped: storing never waits for telling. Loop thread only.
class NotificationQueue {
public:
    static constexpr std::size_t kMostNotifications = 100'000;
    static constexpr std::size_t kMostBytes = std::size_t{32} * 1024 * 1024;

    /// `line` is one line of a log file with its line end.
    void push(NotificationType type, std::string_view line);

    /// The oldest notification; its view lasts until the queue changes. Precondition: not empty.
    [[nodiscard]] Notification front() const;
    void pop();
    /// The same, for a notification that was not sent.
    void drop();
    void dropAll();
    /// Counts so many that were taken out and did not get anywhere.
    void countDropped(std::uint64_t count) { m_dropped += count; }

    [[nodiscard]] bool empty() const { return m_count == 0; }
    [[nodiscard]] std::size_t size() const { return m_count; }
    /// How many were dropped so far.
    [[nodiscard]] std::uint64_t dropped() const { return m_dropped; }

private:
    [[nodiscard]] std::size_t frontEnd() const;

    // The type's character and the line of each, one behind the other from m_begin on.
    std::string m_bytes;
    std::size_t m_begin = 0;
    std::size_t m_count = 0;
    std::uint64_t m_dropped = 0;
};

}  // namespace quorbel
