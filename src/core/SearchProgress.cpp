#include "core/SearchProgress.h"

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
        foresee(reader, matcher, number + 1);
        matcher.matchAll(chunk, first, last, positions, matches);
    }
    return true;
}

void SearchProgress::foresee(const EventReader &reader, EventMatcher &matcher, std::size_t number) {
    const std::size_t end = std::min(reader.chunkCount(), number + SearchAhead::kMost - 1);
    for (number = std::max(number, reader.chunkFrom(m_foreseen)); number < end; ++number) {
        EventChunk &chunk = reader.chunk(number);
        if (matcher.mayBeIn(chunk)) {
            matcher.foresee(chunk);
        }
        m_foreseen = chunk.endOfIds();
    }
}

}  // namespace quorbel
