// Removing the list's rows.

#include "core/EventList.h"

#include <algorithm>
#include <utility>

namespace quorbel {

void EventList::removeRows(const std::vector<RowRange> &ranges) {
    removeRows(ranges, Leaving::kGone);
}

void EventList::removeRows(const std::vector<RowRange> &ranges, Leaving leaving) {
    if (ranges.empty()) {
        return;
    }
    if (ranges.size() == 1) {
        tell(&EventListObserver::rowsWillBeRemoved, ranges.front().first, ranges.front().count);
        removeTogether(ranges, leaving);
        tell(&EventListObserver::rowsWereRemoved);
    } else {
        tell(&EventListObserver::listWillChangeAtLarge);
        removeTogether(ranges, leaving);
        tell(&EventListObserver::listChangedAtLarge);
    }
}

void EventList::markForRemoval(std::size_t row) {
    const Place place = placeOfRow(row);
    place.record().isLeaving = 1;
    m_leaving.push_back(place.id());
}

void EventList::removeMarked() {
    std::vector<std::size_t> rows;
    for (const EventId id : std::exchange(m_leaving, {})) {
        if (const auto row = rowOf(id)) {
            rows.push_back(*row);
        }
    }
    removeRows(joinRows(std::move(rows)));
}

std::vector<RowRange> joinRows(std::vector<std::size_t> rows) {
    std::ranges::sort(rows);
    std::vector<RowRange> ranges;
    for (const std::size_t row : rows) {
        if (!ranges.empty() && ranges.back().first + ranges.back().count == row) {
            ++ranges.back().count;
        } else {
            ranges.push_back({row, 1});
        }
    }
    return ranges;
}

void EventList::removeTogether(const std::vector<RowRange> &ranges, Leaving leaving) {
    if (!m_countsCurrent) {
        countUp();
    }
    std::vector<EventChunk::Positions> positions;
    std::size_t index = 0;
    const auto flush = [&] {
        if (!positions.empty()) {
            removeFrom(m_chunks[index], positions, leaving);
            positions.clear();
        }
    };
    const std::size_t sizeBefore = m_size;
    for (auto rows = ranges.rbegin(); rows != ranges.rend(); ++rows) {
        std::size_t age = sizeBefore - rows->first - rows->count;
        const std::size_t end = sizeBefore - rows->first;
        while (age < end) {
            while (m_countUpTo[index] <= age) {
                flush();
                ++index;
            }
            const std::size_t chunkStart = index == 0 ? 0 : m_countUpTo[index - 1];
            const std::size_t last = std::min(end, m_countUpTo[index]);
            positions.push_back({age - chunkStart, last - chunkStart});
            age = last;
        }
    }
    flush();
    std::erase_if(m_chunks, [](const EventChunk &chunk) { return chunk.size() == 0; });
    m_countsCurrent = false;
}

void EventList::removeFrom(EventChunk &chunk, const std::vector<EventChunk::Positions> &ranges,
                           Leaving leaving) {
    keepForHandles(chunk, ranges);
    for (const EventChunk::Positions &range : ranges) {
        for (std::size_t position = range.first; position < range.last; ++position) {
            if (leaving == Leaving::kGone) {
                letGo({&chunk, position});
            }
        }
        m_size -= range.last - range.first;
    }
    if (leaving == Leaving::kAside) {
        moveAside(chunk, ranges);
    } else {
        chunk.remove(ranges);
    }
}

void EventList::letGo(const Place &place) {
    const EventRecord &record = place.record();
    m_priorities.release(record.priority);
    m_hosts.release(record.host);
    if (record.hasExtras != 0) {
        m_extras.erase(place.id());
    }
}

void EventList::beginBulkInsert() {
    m_inBulk = true;
    tell(&EventListObserver::listWillChangeAtLarge);
}

void EventList::endBulkInsert() {
    m_inBulk = false;
    tell(&EventListObserver::listChangedAtLarge);
}

}  // namespace quorbel
