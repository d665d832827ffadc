#include "core/EventTimes.h"

#include <algorithm>
#include <utility>

namespace quorbel {

namespace {

constexpr std::size_t kRun = 512;
/// More are sooner counted anew, between other things, than taken out at once.
constexpr std::size_t kMostTakenOut = 1024;

bool isCountable(const EventRecord &record) {
    return record.format != EventRecord::kTextDate && TimeCounts::canCount(record.seconds);
}

}  // namespace

EventTimes::EventTimes(ArrangedEvents &events, EventGroups groups)
    : m_events(events), m_reader(events.list()), m_groups(std::move(groups)) {
    m_events.addObserver(*this);
}

EventTimes::~EventTimes() {
    m_events.removeObserver(*this);
}

const EventRecord &EventTimes::recordOf(EventId id) const {
    EventChunk &chunk = m_reader.chunk(m_reader.chunkFrom(id));
    return m_reader.settled(chunk, chunk.countBefore(id));
}

void EventTimes::add(const EventRecord &record) {
    if (isCountable(record)) {
        followed().add(record.seconds, m_groups.groupOf(record, m_reader));
    }
}

void EventTimes::recount() {
    m_filter = m_events.filterInForce();
    m_fresh = {};
    m_next = 1;
    m_isBehind = true;
    m_isOverdue = false;
}

void EventTimes::recountSoon() {
    if (m_isBehind && m_next > 1) {
        // Starting over each time would never come to an end while there is much to follow.
        m_isOverdue = true;
    } else {
        recount();
    }
}

void EventTimes::listChangedAtLarge() {
    if (m_filter == m_events.filterInForce()) {
        recountSoon();
    } else {
        recount();
    }
}

void EventTimes::count(const std::function<bool()> &isTimeUp) {
    while (m_isBehind) {
        if (!countRun()) {
            finish();
        }
        if (isTimeUp()) {
            return;
        }
    }
}

void EventTimes::finish() {
    m_counts = std::exchange(m_fresh, {});
    m_isBehind = false;
    if (m_isOverdue) {
        recount();
    }
}

bool EventTimes::countRun() {
    if (m_events.isFiltered()) {
        return countMatchingRun();
    }
    const std::size_t number = m_reader.chunkFrom(m_next);
    if (number == m_reader.chunkCount()) {
        return false;
    }
    EventChunk &chunk = m_reader.chunk(number);
    const std::size_t first = chunk.countBefore(m_next);
    const std::size_t last = std::min(first + kRun, chunk.size());
    for (std::size_t position = first; position < last; ++position) {
        add(m_reader.settled(chunk, position));
    }
    m_next = chunk.idFrom(last);
    return true;
}

bool EventTimes::countMatchingRun() {
    // Rows [0, end) are those that are not counted yet, the newest first.
    const std::size_t end = m_events.placeOf(m_next - 1);
    const std::size_t first = end - std::min(end, kRun);
    EventChunk *chunk = nullptr;
    for (std::size_t row = end; row > first; --row) {
        const EventId id = m_events.idAt(row - 1);
        if (chunk == nullptr || id >= chunk->endOfIds()) {
            chunk = &m_reader.chunk(m_reader.chunkFrom(id));
        }
        add(m_reader.settled(*chunk, chunk->countBefore(id)));
        m_next = id + 1;
    }
    return end > 0;
}

void EventTimes::rowsWereInserted(std::size_t count) {
    if (m_isBehind) {
        return;
    }
    for (std::size_t row = count; row > 0; --row) {
        const EventId id = m_events.idAt(row - 1);
        add(recordOf(id));
        m_next = id + 1;
    }
}

void EventTimes::rowsWillBeRemoved(std::size_t first, std::size_t count) {
    if (count > kMostTakenOut) {
        recountSoon();
        return;
    }
    for (std::size_t row = first; row < first + count; ++row) {
        const EventId id = m_events.idAt(row);
        const EventRecord &record = recordOf(id);
        if (id < m_next && isCountable(record)) {
            followed().subtract(record.seconds, m_groups.groupOf(record, m_reader));
        }
    }
}

}  // namespace quorbel
