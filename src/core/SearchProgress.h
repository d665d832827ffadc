#pragma once

#include "core/EventMatcher.h"
#include "core/EventReader.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <vector>

namespace quorbel {

/// How far a search through a list has come, and how many records it looks at before it asks for
/// the time again: so many that this takes about a millisecond. An expression can need ten thousand
/// times as long for a byte as a plain text does.
class SearchProgress {
public:
    /// All events before it are judged.
    [[nodiscard]] EventId next() const { return m_next; }
    /// Begins at the oldest event again, with what was learned of the time.
    void restart() { m_next = m_foreseen = 0; }
    /// Goes on to a position of a chunk, or behind all of it.
    void goTo(const EventChunk &chunk, std::size_t position) { m_next = chunk.idFrom(position); }

    /// Where to end a run that begins at a position of a chunk; it has one record at least.
    [[nodiscard]] std::size_t endOfRun(const EventChunk &chunk, std::size_t first) const {
        std::size_t last = chunk.size();
        while (last > first + 1 &&
               (last - first) * kRecordCost + chunk.bytesBetween(first, last - 1) > m_runCost) {
            last = first + (last - first) / 2;
        }
        return last;
    }
    /// Appends what matches of the next run of events. False when there are no more. `positions`
    /// are kept between runs for their memory alone.
    bool matchRun(const EventReader &reader, EventMatcher &matcher,
                  EventMatcher::Positions &positions, std::vector<EventMatch> &matches);
    /// Learns from how long the last run took.
    void adjust(std::chrono::steady_clock::duration taken) {
        if (taken < std::chrono::microseconds(500)) {
            m_runCost = std::min(2 * m_runCost, kMostRunCost);
        } else if (taken > std::chrono::milliseconds(2)) {
            m_runCost = std::max<std::size_t>(m_runCost / 4, 1);
        }
    }

private:
    /// What a record costs, in bytes of its message.
    static constexpr std::size_t kRecordCost = 32;
    static constexpr std::size_t kMostRunCost = std::size_t{1} << 19U;

    void foresee(const EventReader &reader, EventMatcher &matcher, std::size_t number);

    EventId m_next = 0;
    EventId m_foreseen = 0;  // other processors have been told of all chunks before it
    std::size_t m_runCost = std::size_t{1} << 14U;
};

}  // namespace quorbel
