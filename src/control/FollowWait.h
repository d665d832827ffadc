#pragma once

#include "platform/UniqueFd.h"

namespace quorbel {

/// Waits for something to read, for as long as somebody wants it: until SIGINT, SIGTERM or SIGHUP,
/// or until nobody reads the standard output any more. One at a time; while it lives, these signals
/// do nothing else but to end a write(2) that waits.
class FollowWait {
public:
    FollowWait();
    ~FollowWait();
    FollowWait(const FollowWait &) = delete;
    FollowWait &operator=(const FollowWait &) = delete;

    /// Whether a signal has come.
    [[nodiscard]] bool isOver() const;
    /// False when it is time to end.
    bool untilReadable(int fd);

private:
    UniqueFd m_signals;
};

}  // namespace quorbel
