#include "core/HandleCounts.h"

namespace quorbel {

void HandleCounts::add(EventId id) {
    Block &block = m_blocks.try_emplace(m_blocks.end(), id / kEvents)->second;
    if (block.handles[id % kEvents]++ == 0) {
        ++block.held;
    }
}

bool HandleCounts::remove(EventId id) {
    const auto block = m_blocks.find(id / kEvents);
    if (--block->second.handles[id % kEvents] > 0) {
        return false;
    }
    if (--block->second.held == 0) {
        m_blocks.erase(block);
    }
    return true;
}

bool HandleCounts::has(EventId id) const {
    const auto block = m_blocks.find(id / kEvents);
    return block != m_blocks.end() && block->second.handles[id % kEvents] > 0;
}

bool HandleCounts::mayHaveAny(EventId first, EventId end) const {
    const auto block = m_blocks.lower_bound(first / kEvents);
    return block != m_blocks.end() && block->first * kEvents < end;
}

}  // namespace quorbel
