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
        reader.foresee(number + 1, [&matcher](const EventChunk &next) {
            return next.isPacked() && matcher.readsMessages(next);
        });
        matcher.matchAll(chunk, first, last, positions, matches);
    }
    return true;
}

}  // namespace quorbel
