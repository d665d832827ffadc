// Rows that are taken out of the list and can be put back.

#include "core/EventList.h"

#include <utility>

namespace quorbel {

void EventList::setAside(const std::vector<RowRange> &ranges) {
    dropAside();
    const std::size_t before = m_size;
    removeRows(ranges, Leaving::kAside);
    m_asideCount = before - m_size;
}

void EventList::dropAside() {
    for (EventChunk &chunk : m_aside) {
        for (std::size_t position = 0; position < chunk.size(); ++position) {
            letGo({&chunk, position});
        }
    }
    m_aside.clear();
    m_asideCount = 0;
}

void EventList::moveAside(EventChunk &chunk, const std::vector<EventChunk::Positions> &ranges) {
    for (const EventChunk::Positions &range : ranges) {
        for (std::size_t position = range.first; position < range.last; ++position) {
            chunk.record(position).isLeaving = 0;
        }
    }
    if (ranges.front().last - ranges.front().first == chunk.size()) {
        m_aside.push_back(std::move(chunk));
        return;
    }
    m_aside.push_back(chunk.emptyCopy());
    chunk.remove(ranges, &m_aside.back());
    m_aside.back().close();
}

std::vector<EventId> EventList::putBack() {
    std::vector<EventId> ids;
    if (m_asideCount == 0) {
        return ids;
    }
    ids.reserve(m_asideCount);
    for (const EventChunk &chunk : m_aside) {
        chunk.listIds(ids);
    }
    tell(&EventListObserver::listWillChangeAtLarge);
    m_departed.letGo(ids);
    mergeAside();
    m_size += std::exchange(m_asideCount, 0);
    m_countsCurrent = false;
    tell(&EventListObserver::listChangedAtLarge);
    return ids;
}

/// Both are in the order of their ids, and no two of either share one.
void EventList::mergeAside() {
    std::deque<EventChunk> merged;
    const auto takeUpTo = [&](EventId end) {
        while (!m_aside.empty() && m_aside.front().first() < end) {
            merged.push_back(std::move(m_aside.front()));
            m_aside.pop_front();
        }
    };
    for (EventChunk &chunk : m_chunks) {
        takeUpTo(chunk.first());
        if (!m_aside.empty() && m_aside.front().first() == chunk.first()) {
            chunk.putBack(m_aside.front());
            m_aside.pop_front();
        }
        merged.push_back(std::move(chunk));
    }
    takeUpTo(m_nextId);
    m_chunks = std::move(merged);
}

}  // namespace quorbel
