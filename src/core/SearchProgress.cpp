#include "core/SearchProgress.h"

#include <cstdint>
#include <numeric>

namespace quorbel {

bool SearchProgress::matchRun(const EventReader &reader, EventMatcher &matcher,
                              EventMatcher::Positions &positions,
                              std::vector<EventMatch> &matches) {
    const std::size_t number = reader.chunkFrom(m_next);
    if (number == reader.chunkCount()) {
        return false;
    }
    EventChunk &chunk = reader.chunk(number);
    const std::size_t first = chunk.countBefore(m_next);
    const bool mayBeIn = matcher.mayBeIn(chunk);
    const std::size_t last = mayBeIn ? endOfRun(chunk, first) : chunk.size();
    goTo(chunk, last);
    if (first < last && mayBeIn) {
        positions.resize(last - first);
        std::iota(positions.begin(), positions.end(), static_cast<std::uint32_t>(first));
        matcher.match(chunk, positions, matches);
    }
    return true;
}

}  // namespace quorbel
