// Removing the list's rows, and what stays of an event that left it.

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
    for (const EventChunk::Positions &range : ranges) {
        for (std::size_t position = range.first; position < range.last; ++position) {
            keepForHandles({&chunk, position});
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

void EventList::keepForHandles(const Place &place) {
    if (m_held.empty()) {
        return;
    }
    if (const auto held = m_held.find(place.id());
        held != m_held.end() && !held->second.successor) {
        held->second.fieldsAtLeaving = std::make_unique<Fields>(fieldsOf(place));
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

EventList::Fields EventList::fieldsOf(const Place &place) {
    Fields fields;
    const auto date = dateText(place);
    const EventRecord &record = place.record();
    if (record.hasExtras != 0) {
        const auto &others = m_extras[place.id()].others;
        fields.insert(others.begin(), others.end());
    }
    if (date) {
        fields["Date"] = *date;
    }
    if (record.priority != StringTable::kAbsent) {
        fields["Priority"] = m_priorities.text(record.priority);
    }
    if (record.host != StringTable::kAbsent) {
        fields["Host"] = m_hosts.text(record.host);
    }
    if (const auto message = place.chunk->message(record)) {
        fields["Message"] = *message;
    }
    if (record.image > 0) {
        fields["Image"] = severityLevelName(std::int64_t{record.image} - 1);
    }
    return fields;
}

void EventList::beginBulkInsert() {
    m_inBulk = true;
    tell(&EventListObserver::listWillChangeAtLarge);
}

void EventList::endBulkInsert() {
    m_inBulk = false;
    tell(&EventListObserver::listChangedAtLarge);
}

void EventList::hold(EventId id) {
    ++m_held[id].handles;
}

void EventList::release(EventId id) {
    const auto held = m_held.find(id);
    if (--held->second.handles == 0) {
        m_held.erase(held);
    }
}

void EventList::leadOn(EventId id, EventList &other, EventId newId) {
    if (m_held.empty()) {
        return;
    }
    if (const auto held = m_held.find(id); held != m_held.end()) {
        held->second.successor = std::make_unique<Event>(other, newId);
    }
}

std::optional<std::string> EventList::value(EventId id, std::string_view key) {
    Fields inList;
    const Fields *fields = nullptr;
    const auto held = m_held.find(id);
    if (held != m_held.end() && held->second.successor) {
        return held->second.successor->value(key);
    }
    if (const auto place = placeOf(id)) {
        inList = fieldsOf(*place);
        fields = &inList;
    } else if (held != m_held.end() && held->second.fieldsAtLeaving) {
        fields = held->second.fieldsAtLeaving.get();
    }
    if (fields == nullptr) {
        return std::nullopt;
    }
    const auto found = fields->find(key);
    return found == fields->end() ? std::nullopt : std::optional(found->second);
}

}  // namespace quorbel
