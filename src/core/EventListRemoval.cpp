// Finding and removing the list's rows, and what stays of an event that left it.

#include "core/EventList.h"
#include "platform/Text.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quorbel {

namespace {

std::size_t mix(std::size_t hash, std::size_t value) {
    hash = (hash ^ value) * 0x9E3779B97F4A7C15U;
    return hash ^ (hash >> 32U);
}

/// The look-up key of an event's fields. Two events that read alike have the same one.
std::size_t fieldsKey(StringTable::Id priority, StringTable::Id host, std::string_view message) {
    return mix(mix(hashBytes(message), priority), host);
}

/// The key of an event whose date is rendered in the format of the look-up table, by the moment
/// that the date reads as.
std::size_t keyByMoment(std::size_t fields, std::optional<std::int64_t> moment) {
    return mix(mix(fields, 1), static_cast<std::size_t>(moment.value_or(-1)));
}

}  // namespace

std::size_t EventList::indexKey(const Place &place, EventDates::FormatId format) const {
    const EventRecord &record = place.record();
    const std::size_t fields = fieldsKey(record.priority, record.host,
                                         place.chunk->message(record).value_or(std::string_view()));
    return record.format == format
               ? keyByMoment(fields, m_dates.format(format).roundTrip(record.seconds))
               : fields;
}

void EventList::buildIndex(EventChunk &chunk, EventDates::FormatId format) {
    chunk.startIndex();
    for (std::size_t position = 0; position < chunk.size(); ++position) {
        const Place place{&chunk, position};
        settle(place);
        // A raw date never equals a rendered one.
        if (place.record().format != EventRecord::kRawDate) {
            chunk.addToIndex(indexKey(place, format), position);
        }
    }
}

std::optional<std::size_t> EventList::find(const EventFields &announced,
                                           std::string_view dateFormat) {
    const EventDates::FormatId format = formatId(dateFormat);
    if (std::exchange(m_indexFormat, format) != format) {
        std::ranges::for_each(m_chunks, &EventChunk::dropIndex);
    }
    const auto priority =
        announced.priority ? m_priorities.find(*announced.priority) : std::nullopt;
    const auto host = announced.host ? m_hosts.find(*announced.host) : std::nullopt;
    if (!priority || !host || !announced.message) {
        return std::nullopt;
    }
    const std::string dateShown =
        m_dates.format(format).render(floatingPointValue(announced.date.value_or("")));
    auto moment = m_dates.format(format).parse(dateShown);
    const std::size_t fields = fieldsKey(*priority, *host, *announced.message);
    const std::size_t byMoment =
        keyByMoment(fields, moment ? std::optional(static_cast<std::int64_t>(std::floor(*moment)))
                                   : std::nullopt);

    for (auto each = m_chunks.rbegin(); each != m_chunks.rend(); ++each) {
        EventChunk &chunk = *each;
        if (!chunk.hasIndex()) {
            buildIndex(chunk, format);
        }
        std::optional<std::size_t> newest;
        const auto visit = [&](std::size_t position) {
            const Place place{&chunk, position};
            const EventRecord &record = place.record();
            if ((!newest || position > *newest) && record.isLeaving == 0 &&
                record.priority == *priority && record.host == *host &&
                chunk.message(record) == announced.message && dateText(place) == dateShown) {
                newest = position;
            }
        };
        chunk.lookUp(byMoment, visit);
        chunk.lookUp(fields, visit);
        if (newest) {
            return rowOf(chunk.idAt(*newest));
        }
    }
    return std::nullopt;
}

void EventList::removeRows(const std::vector<RowRange> &ranges) {
    if (ranges.empty()) {
        return;
    }
    if (m_observer == nullptr) {
        removeTogether(ranges);
    } else if (ranges.size() == 1) {
        m_observer->rowsWillBeRemoved(ranges.front().first, ranges.front().count);
        removeTogether(ranges);
        m_observer->rowsWereRemoved();
    } else {
        m_observer->listWillChangeAtLarge();
        removeTogether(ranges);
        m_observer->listChangedAtLarge();
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

void EventList::removeTogether(const std::vector<RowRange> &ranges) {
    if (!m_countsCurrent) {
        countUp();
    }
    std::vector<EventChunk::Positions> positions;
    std::size_t index = 0;
    const auto flush = [&] {
        if (!positions.empty()) {
            removeFrom(m_chunks[index], positions);
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

void EventList::removeFrom(EventChunk &chunk, const std::vector<EventChunk::Positions> &ranges) {
    for (const EventChunk::Positions &range : ranges) {
        for (std::size_t position = range.first; position < range.last; ++position) {
            letGo({&chunk, position});
        }
        m_size -= range.last - range.first;
    }
    chunk.remove(ranges);
}

void EventList::letGo(const Place &place) {
    const EventRecord &record = place.record();
    if (!m_held.empty()) {
        if (const auto held = m_held.find(place.id()); held != m_held.end()) {
            held->second.left = std::make_unique<Fields>(fieldsOf(place));
        }
    }
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
    if (m_observer != nullptr) {
        m_observer->listWillChangeAtLarge();
    }
}

void EventList::endBulkInsert() {
    m_inBulk = false;
    if (m_observer != nullptr) {
        m_observer->listChangedAtLarge();
    }
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

std::optional<std::string> EventList::value(EventId id, std::string_view key) {
    Fields inList;
    const Fields *fields = nullptr;
    if (const auto place = placeOf(id)) {
        inList = fieldsOf(*place);
        fields = &inList;
    } else if (const auto held = m_held.find(id); held != m_held.end() && held->second.left) {
        fields = held->second.left.get();
    }
    if (fields == nullptr) {
        return std::nullopt;
    }
    const auto found = fields->find(key);
    return found == fields->end() ? std::nullopt : std::optional(found->second);
}

}  // namespace quorbel
