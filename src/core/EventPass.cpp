#include "core/EventPass.h"

#include <algorithm>

namespace quorbel {

namespace {

// About a tenth of a millisecond when each message is folded and compared.
constexpr std::size_t kRun = 256;

}  // namespace

EventPass::EventPass(EventList &list) : m_list(list), m_reader(list) {
    m_list.addObserver(*this);
}

EventPass::~EventPass() {
    m_list.removeObserver(*this);
}

void EventPass::restart() {
    m_next = 0;
    m_isStale = false;
    clear();
}

void EventPass::run(const std::function<bool()> &isTimeUp) {
    while (isRunning()) {
        EventChunk &chunk = m_reader.chunk(m_reader.chunkFrom(m_next));
        const std::size_t first = chunk.countBefore(m_next);
        const std::size_t last = std::min(first + kRun, chunk.size());
        if (first < last) {
            look(chunk, first, last);
        }
        m_next = chunk.idFrom(last);
        if (isTimeUp()) {
            return;
        }
    }
}

}  // namespace quorbel
