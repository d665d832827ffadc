#pragma once

#include "platform/Mutex.h"
#include "platform/UniqueFd.h"

#include <atomic>
#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace quorbel {

/// Whether the bus takes a line; it would close the connection over one that it does not take. Ours
/// all are fine; one of somebody else's need not be.
bool canBeTold(std::string_view line);

/// Hands removed events over from the thread that removed them to the loop, which tells the
/// front-end: one bounded piece at a time, so that the one waits for the other and neither holds
/// many.
class RemovalFeed {
public:
    /// How long to wait for a loop that takes nothing, because the bus takes nothing.
    explicit RemovalFeed(std::chrono::milliseconds patience = std::chrono::minutes(1));
    RemovalFeed(const RemovalFeed &) = delete;
    RemovalFeed &operator=(const RemovalFeed &) = delete;

    // For the thread that removes.

    /// Waits until the loop has taken `lines`. False when it did not within the patience, or the
    /// feed was closed.
    bool offer(std::string lines);

    // For the loop.

    /// An eventfd that becomes readable each time something is offered.
    [[nodiscard]] int fd() const { return m_signal.get(); }
    [[nodiscard]] bool isOffered() const { return m_offered; }
    std::optional<std::string> take();

    /// From now on nothing is taken any more.
    void close();

private:
    const std::chrono::milliseconds m_patience;
    const UniqueFd m_signal;
    std::atomic<bool> m_offered = false;

    // m_offered changes under m_mutex, too.
    Mutex m_mutex;
    Condition m_taken;
    std::string m_lines GUARDED_BY(m_mutex);
    bool m_closed GUARDED_BY(m_mutex) = false;
};

}  // namespace quorbel
