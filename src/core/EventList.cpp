#include "core/EventList.h"

#include "core/LoadedEvents.h"
#include "platform/Text.h"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace quorbel {

EventList::~EventList() {
    assert(m_handles.isEmpty());
}

std::uint8_t EventList::shownClass(const EventRecord &record) const {
    return (record.priority == StringTable::kAbsent ? m_absentClasses : m_classes[record.priority])
        .shown;
}

StringTable::Id EventList::acquirePriority(const std::optional<std::string_view> &text) {
    if (!text) {
        return StringTable::kAbsent;
    }
    const StringTable::Id id = m_priorities.acquire(*text);
    if (m_classes.size() <= id) {
        m_classes.resize(m_priorities.idLimit());
    }
    if (m_priorities.uses(id) == 1) {
        m_classes[id] = classifyPriority(*text);
    }
    return id;
}

EventList::Place EventList::add(const EventFields &fields) {
    if (m_chunks.empty()) {
        startChunk(EventChunk(m_nextId, 0));
    } else if (m_chunks.back().isFull() || m_chunks.back().endOfIds() != m_nextId) {
        startChunk(m_chunks.back().closeAndFollow(m_nextId));
    }
    EventChunk &chunk = m_chunks.back();
    EventRecord &record = chunk.append(fields.message);
    record.priority = acquirePriority(fields.priority);
    record.host = fields.host ? m_hosts.acquire(*fields.host) : StringTable::kAbsent;
    record.showings = static_cast<std::uint16_t>(m_dates.showings());
    const Place place{&chunk, chunk.size() - 1};
    if (EventDates::setAsItCame(chunk, record, fields.date)) {
        m_extras[m_nextId].date = *fields.date;
    }
    if (!fields.others.empty()) {
        record.hasExtras = 1;
        auto &others = m_extras[m_nextId].others;
        for (const auto &[key, value] : fields.others) {
            others.emplace_back(key, value);
        }
    }
    if (chunk.hasIndex()) {
        chunk.addToIndex(indexKey(place), place.position);
    }
    ++m_nextId;
    ++m_size;
    if (m_countsCurrent) {
        m_countUpTo.back() = m_size;
    }
    return place;
}

void EventList::startChunk(EventChunk chunk) {
    m_chunks.push_back(std::move(chunk));
    m_chunks.back().noteShowings(static_cast<std::uint16_t>(m_dates.showings()));
    m_countUpTo.push_back(m_size);
}

void EventList::insertAllRaw(LoadedEvents events) {
    insertAll(std::move(events), nullptr);
}

void EventList::insertAllShown(LoadedEvents events, const AppState &state) {
    makeRoomForShowing();
    insertAll(std::move(events), &state);
}

/// Shows them at once where it is said with which settings.
void EventList::insertAll(LoadedEvents events, const AppState *shownWith) {
    const std::size_t count = events.size();
    if (count == 0) {
        return;
    }
    std::optional<EventDates::Showing> showing;
    if (shownWith != nullptr) {
        showing = m_dates.showingFor(*shownWith);
    }
    if (!m_inBulk) {
        tell(&EventListObserver::rowsWillBeInsertedAtTop, count);
    }
    takeOver(std::move(events), showing ? &*showing : nullptr);
    if (!m_inBulk) {
        tell(&EventListObserver::rowsWereInserted, count);
    }
}

void EventList::takeOver(LoadedEvents events, const EventDates::Showing *showing) {
    const std::vector<StringTable::Id> priorities = acquirePriorities(events);
    const std::vector<StringTable::Id> hosts = m_hosts.acquireAll(events.m_hosts);
    const auto showings = static_cast<std::uint16_t>(m_dates.showings());
    for (auto &[id, date] : events.m_dateTexts) {
        m_extras[m_nextId + id].date = std::move(date);
    }
    if (!m_chunks.empty()) {
        m_chunks.back().close();
    }
    for (EventChunk &chunk : events.m_chunks) {
        chunk.setFirst(m_nextId);
        for (std::size_t position = 0; position < chunk.size(); ++position) {
            EventRecord &record = chunk.record(position);
            record.priority = priorities[record.priority];
            record.host = hosts[record.host];
            record.showings = showings;
            if (showing != nullptr) {
                const bool hasDate =
                    record.format != EventRecord::kTextDate || record.hasExtras != 0;
                show({&chunk, position}, *showing, hasDate);
            }
        }
        startChunk(std::move(chunk));
        m_nextId = m_chunks.back().endOfIds();
        m_size += m_chunks.back().size();
        m_countUpTo.back() = m_size;
    }
}

std::vector<StringTable::Id> EventList::acquirePriorities(const LoadedEvents &events) {
    std::vector<StringTable::Id> ids = m_priorities.acquireAll(events.m_priorities);
    m_classes.resize(m_priorities.idLimit());
    for (StringTable::Id id = 1; id < ids.size(); ++id) {
        m_classes[ids[id]] = events.m_classes[id];
    }
    return ids;
}

EventId EventList::insertRaw(const EventFields &fields) {
    if (m_inBulk) {
        add(fields);
    } else {
        tell(&EventListObserver::rowsWillBeInsertedAtTop, std::size_t{1});
        add(fields);
        tell(&EventListObserver::rowsWereInserted, std::size_t{1});
    }
    return m_nextId - 1;
}

EventId EventList::insertShown(const EventFields &fields, const AppState &state) {
    makeRoomForShowing();
    tell(&EventListObserver::rowsWillBeInsertedAtTop, std::size_t{1});
    show(add(fields), m_dates.showingFor(state), fields.date.has_value());
    tell(&EventListObserver::rowsWereInserted, std::size_t{1});
    return m_nextId - 1;
}

/// Shows a new event.
void EventList::show(const Place &place, const EventDates::Showing &showing, bool hasDate) {
    EventRecord &record = place.record();
    m_dates.showAtOnce(record, shownClass(record), showing, hasDate);
    if (record.hasExtras != 0) {
        m_extras[place.id()].date.reset();
    }
}

void EventList::show(const AppState &state) {
    makeRoomForShowing();
    m_dates.noteShowing(state);
}

void EventList::settle(const Place &place) {
    EventRecord &record = place.record();
    if (record.showings == m_dates.showings()) {
        return;
    }
    std::optional<std::string> none;
    Extras *extras = record.hasExtras != 0 ? &m_extras[place.id()] : nullptr;
    m_dates.settle(record, shownClass(record), extras != nullptr ? extras->date : none);
    place.chunk->addMoment(record.seconds);
}

void EventList::settle(EventChunk &chunk, std::size_t first, std::size_t last) {
    const auto showings = static_cast<std::uint16_t>(m_dates.showings());
    if (chunk.showings() == showings) {
        return;
    }
    for (std::size_t position = first; position < last; ++position) {
        settle({&chunk, position});
    }
    if (last == chunk.size() && chunk.haveAll(showings)) {
        chunk.noteShowings(showings);
    }
}

void EventList::countUp() {
    m_countUpTo.clear();
    std::size_t count = 0;
    for (const EventChunk &chunk : m_chunks) {
        m_countUpTo.push_back(count += chunk.size());
    }
    m_countsCurrent = true;
}

EventList::Place EventList::placeOfRow(std::size_t row) {
    const std::size_t age = m_size - 1 - row;
    const std::size_t lastStart = m_size - m_chunks.back().size();
    if (age >= lastStart) {
        return {&m_chunks.back(), age - lastStart};
    }
    if (!m_countsCurrent) {
        countUp();
    }
    const auto chunk =
        static_cast<std::size_t>(std::ranges::upper_bound(m_countUpTo, age) - m_countUpTo.begin());
    return {&m_chunks[chunk], age - (chunk == 0 ? 0 : m_countUpTo[chunk - 1])};
}

std::optional<EventList::Place> EventList::placeOf(EventId id) {
    const auto after = std::ranges::upper_bound(m_chunks, id, {}, &EventChunk::first);
    if (after == m_chunks.begin()) {
        return std::nullopt;
    }
    EventChunk &chunk = *std::prev(after);
    const auto position = chunk.positionOf(id);
    return position ? std::optional(Place{&chunk, *position}) : std::nullopt;
}

std::optional<std::string> EventList::dateText(const Place &place) {
    settle(place);
    const EventRecord &record = place.record();
    return dateText(record, record.hasExtras != 0 ? &m_extras[place.id()] : nullptr);
}

std::optional<std::string> EventList::dateText(const EventRecord &settled,
                                               const Extras *extras) const {
    if (extras != nullptr && extras->date) {
        return extras->date;
    }
    switch (settled.format) {
        case EventRecord::kRawDate:
            return std::to_string(settled.seconds);
        case EventRecord::kTextDate:
            return std::nullopt;
        default:
            return m_dates.format(settled.format).render(static_cast<double>(settled.seconds));
    }
}

std::optional<std::string> EventList::date(std::size_t row) {
    return dateText(placeOfRow(row));
}

std::optional<std::string_view> EventList::priority(std::size_t row) {
    const StringTable::Id id = placeOfRow(row).record().priority;
    return id == StringTable::kAbsent ? std::nullopt : std::optional(m_priorities.text(id));
}

std::optional<std::string_view> EventList::host(std::size_t row) {
    const StringTable::Id id = placeOfRow(row).record().host;
    return id == StringTable::kAbsent ? std::nullopt : std::optional(m_hosts.text(id));
}

std::optional<std::string_view> EventList::message(std::size_t row) {
    const Place place = placeOfRow(row);
    return place.chunk->message(place.record());
}

std::vector<std::pair<std::string_view, std::string_view>> EventList::others(std::size_t row) {
    const Place place = placeOfRow(row);
    if (place.record().hasExtras == 0) {
        return {};
    }
    const auto &others = m_extras[place.id()].others;
    return {others.begin(), others.end()};
}

std::string_view EventList::image(std::size_t row) {
    const Place place = placeOfRow(row);
    settle(place);
    return severityLevelName(std::int64_t{place.record().image} - 1);
}

const PriorityClasses &EventList::classes(std::size_t row) {
    const StringTable::Id id = placeOfRow(row).record().priority;
    return id == StringTable::kAbsent ? m_absentClasses : m_classes[id];
}

std::optional<std::int64_t> EventList::momentShown(std::size_t row, std::string_view dateFormat) {
    const EventDates::FormatId format = formatId(dateFormat);
    const Place place = placeOfRow(row);
    settle(place);
    const EventRecord &record = place.record();
    if (record.format != EventRecord::kRawDate && record.format != EventRecord::kTextDate) {
        return m_dates.format(record.format).roundTrip(record.seconds);
    }
    const auto text = dateText(place);
    const auto moment = text ? m_dates.format(format).parse(*text) : std::nullopt;
    return moment ? std::optional(static_cast<std::int64_t>(std::llround(*moment))) : std::nullopt;
}

std::optional<std::int64_t> EventList::momentHeld(std::size_t row) {
    const EventRecord &record = placeOfRow(row).record();
    return record.format == EventRecord::kTextDate ? std::nullopt : std::optional(record.seconds);
}

EventId EventList::idAt(std::size_t row) {
    return placeOfRow(row).id();
}

std::optional<std::size_t> EventList::rowOf(EventId id) {
    const auto place = placeOf(id);
    if (!place) {
        return std::nullopt;
    }
    if (!m_countsCurrent) {
        countUp();
    }
    const auto chunk = static_cast<std::size_t>(
        std::ranges::upper_bound(m_chunks, id, {}, &EventChunk::first) - m_chunks.begin() - 1);
    return m_size - 1 - place->position - (chunk == 0 ? 0 : m_countUpTo[chunk - 1]);
}

std::size_t EventList::rowFor(EventId id) {
    // Later events have larger ids and stand above.
    std::size_t first = 0;
    std::size_t last = m_size;
    while (first < last) {
        const std::size_t middle = first + (last - first) / 2;
        if (idAt(middle) > id) {
            first = middle + 1;
        } else {
            last = middle;
        }
    }
    return first;
}

EventDates::FormatId EventList::formatId(std::string_view setting) {
    makeRoomForShowing();
    return m_dates.formatId(setting);
}

template <typename Visit>
void EventList::forEachPlace(Visit visit) {
    for (auto *chunks : {&m_chunks, &m_aside}) {
        for (EventChunk &chunk : *chunks) {
            for (std::size_t position = 0; position < chunk.size(); ++position) {
                visit(Place{&chunk, position});
            }
        }
    }
}

void EventList::makeRoomForShowing() {
    if (!m_dates.isFull()) {
        return;
    }
    EventDates::FormatsInUse inUse;
    forEachPlace([&](const Place &place) {
        settle(place);
        place.record().showings = 0;
        inUse.set(place.record().format);
    });
    startDepartedOver(inUse);
    for (auto *chunks : {&m_chunks, &m_aside}) {
        for (EventChunk &chunk : *chunks) {
            chunk.noteShowings(std::nullopt);
        }
    }
    m_dates.startOver(inUse);
    if (m_dates.isFull()) {
        // Hundreds of formats that cannot read their own texts.
        forEachPlace([this](const Place &place) { turnDateToText(place); });
        turnDepartedDatesToText();
        m_dates.startOver({});
    }
}

void EventList::turnDateToText(const Place &place) {
    EventRecord &record = place.record();
    if (record.format == EventRecord::kRawDate || record.format == EventRecord::kTextDate) {
        return;
    }
    m_extras[place.id()].date = dateText(place);
    record.hasExtras = 1;
    record.format = EventRecord::kTextDate;
    place.chunk->addMoment(INT64_MIN);
    place.chunk->dropIndex();
}

}  // namespace quorbel
