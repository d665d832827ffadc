#pragma once

#include "platform/UniqueFd.h"
#include "service/base/SdEvent.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>

namespace quorbel {

/// Watches a descriptor for a reader that is cheaper the more it finds.
///
/// What comes after a pause is read at once. When one comes close behind the other, the descriptor
/// rests: it is read at intervals, until one of these brought nothing, or so much that the reader
/// has enough to do without waiting. Loop thread only.
class PacedSource {
public:
    /// Reads what is there and returns how much that was.
    using Read = std::function<std::size_t()>;

    static constexpr std::chrono::microseconds kRest{300};
    /// So many readings in a row, none longer than a rest behind the one before, and there is rest.
    static constexpr unsigned kQuickReadings = 8;
    /// What brings so much is enough.
    static constexpr std::size_t kEnough = 256;

    /// Throws when the loop has no room. `fd` must outlive the object; `rest` is below a second.
    PacedSource(sd_event *loop, int fd, Read read, std::chrono::microseconds rest = kRest);
    PacedSource(const PacedSource &) = delete;
    PacedSource &operator=(const PacedSource &) = delete;

    [[nodiscard]] bool isResting() const { return m_isResting; }

private:
    void readAtOnce();
    void readAfterRest();
    void beginRest();
    void endRest();
    bool setTimer(std::chrono::nanoseconds interval);
    static int onReadable(sd_event_source *source, int fd, std::uint32_t events, void *self);
    static int onTime(sd_event_source *source, int fd, std::uint32_t events, void *self);

    const Read m_read;
    const std::chrono::microseconds m_rest;
    bool m_isResting = false;
    unsigned m_quickReadings = 0;
    std::uint64_t m_lastReading = 0;  ///< by the loop's clock, in microseconds
    UniqueFd m_timer;                 ///< where there is none, there is no rest
    EventSourcePointer m_source;
    EventSourcePointer m_timerSource;
};

}  // namespace quorbel
