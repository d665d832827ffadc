#pragma once

#include "platform/FilePlace.h"
#include "platform/bus/NotificationBatch.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

struct Notification {
    NotificationType type = NotificationType::kSet;
    std::string_view line;  ///< the event as its line in the log files
};

/// The notifications that the bus has not taken yet, oldest first. When there are too many, the
/// oldest are dropped: storing never waits for telling. Loop thread only.
class NotificationQueue {
public:
    static constexpr std::size_t kMostNotifications = 400'000;
    static constexpr std::size_t kMostBytes = std::size_t{32} * 1024 * 1024;
    static constexpr std::size_t kPieceSize = std::size_t{1} << 18U;

    /// `lines` are whole lines of a log file with their line ends, `behind` where the log goes on
    /// behind them; nothing for those that no file holds.
    void push(NotificationType type, std::string_view lines,
              const std::optional<FilePlace> &behind = std::nullopt);

    /// The oldest notification; its view lasts until the queue changes. Precondition: not empty.
    [[nodiscard]] Notification front() const;
    void pop();
    /// The same, for a notification that was not sent.
    void drop();
    void dropAll();
    /// Counts so many that were taken out and did not get anywhere.
    void countDropped(std::uint64_t count) { m_dropped += count; }

    /// The oldest ones, as long as they have no more than so many bytes together; the first piece
    /// of them in any case, of kPieceSize at most. The views last until the queue changes.
    [[nodiscard]] std::vector<NotificationRun> frontRuns(std::size_t mostBytes) const;
    /// Takes out what frontRuns() has given.
    void popRuns(const std::vector<NotificationRun> &runs);
    /// The same, for notifications that were not sent.
    void dropRuns(const std::vector<NotificationRun> &runs);

    [[nodiscard]] bool empty() const { return m_count == 0; }
    [[nodiscard]] std::size_t size() const { return m_count; }
    /// Whether what comes may cost others their place soon.
    [[nodiscard]] bool isHalfFull() const {
        return m_count > kMostNotifications / 2 || m_byteCount > kMostBytes / 2;
    }
    /// How many of a type were taken out so far, dropped ones among them.
    [[nodiscard]] std::uint64_t told(NotificationType type) const {
        return m_pushed[indexOf(type)] - m_waiting[indexOf(type)];
    }
    /// How many of a type wait.
    [[nodiscard]] std::uint64_t waiting(NotificationType type) const {
        return m_waiting[indexOf(type)];
    }
    /// Where the log goes on behind the last stored event of those told; nothing when none waits
    /// that would say.
    [[nodiscard]] std::optional<FilePlace> toldPlace() const;
    /// How many were dropped so far.
    [[nodiscard]] std::uint64_t dropped() const { return m_dropped; }

private:
    /// Some of one type that follow one another, in the log, too.
    struct Piece {
        NotificationType type;
        std::string bytes;
        std::size_t begin = 0;  ///< what is before it was taken out
        std::size_t count = 0;
        std::optional<FilePlace> behind;

        [[nodiscard]] std::string_view lines() const {
            return std::string_view(bytes).substr(begin);
        }
        [[nodiscard]] bool isFollowedBy(NotificationType other, std::size_t size,
                                        const std::optional<FilePlace> &otherBehind) const;
    };

    static std::size_t indexOf(NotificationType type) {
        return type == NotificationType::kSet ? 0 : 1;
    }
    void pushPiece(NotificationType type, std::string_view lines,
                   const std::optional<FilePlace> &behind);
    void takeOut(std::size_t bytes, std::size_t count);

    std::deque<Piece> m_pieces;  // none of them empty
    std::size_t m_count = 0;
    std::size_t m_byteCount = 0;
    std::array<std::uint64_t, 2> m_pushed{};   // by type
    std::array<std::uint64_t, 2> m_waiting{};  // by type
    std::uint64_t m_dropped = 0;
};

}  // namespace quorbel
