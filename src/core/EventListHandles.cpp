// The list's events as those see them who hold them, and what stays of one that left.

#include "core/EventList.h"

namespace quorbel {

void EventList::hold(EventId id) {
    m_handles.add(id);
}

void EventList::release(EventId id) {
    if (m_handles.remove(id)) {
        m_successors.erase(id);
        m_departed.letGo(id);
    }
}

void EventList::leadOn(EventId id, EventList &other, EventId newId) {
    if (m_handles.has(id)) {
        m_successors.try_emplace(m_successors.end(), id, other, newId);
    }
}

void EventList::keepForHandles(const EventChunk &chunk,
                               const std::vector<EventChunk::Positions> &ranges) {
    if (!m_handles.mayHaveAny(chunk.first(), chunk.endOfIds())) {
        return;
    }
    if (const auto held = heldOnes(chunk, ranges); !held.empty()) {
        m_departed.add(chunk, held, m_dates.showings(), m_extras);
    }
}

/// Their positions.
std::vector<std::uint32_t> EventList::heldOnes(
    const EventChunk &chunk, const std::vector<EventChunk::Positions> &ranges) const {
    std::vector<std::uint32_t> all;
    for (const EventChunk::Positions &range : ranges) {
        for (std::size_t position = range.first; position < range.last; ++position) {
            all.push_back(static_cast<std::uint32_t>(position));
        }
    }
    std::vector<std::uint32_t> held;
    chunk.visitIds(all, [&](std::uint32_t position, EventId id) {
        if (m_handles.has(id) && !m_successors.contains(id)) {
            held.push_back(position);
        }
    });
    return held;
}

/// The showings after it left are none of its.
void EventList::settle(const DepartedEvents::Found &event) const {
    std::optional<std::string> none;
    EventRecord &record = event.departed.record;
    m_dates.settleUpTo(event.departed.showings, record, shownClass(record),
                       event.extras != nullptr ? event.extras->date : none);
}

void EventList::startDepartedOver(EventDates::FormatsInUse &inUse) {
    m_departed.visit([&](EventId id, DepartedEvents::Departed &departed) {
        settle(*m_departed.find(id));
        departed.record.showings = departed.showings = 0;
        inUse.set(departed.record.format);
    });
}

void EventList::turnDepartedDatesToText() {
    m_departed.visit([this](EventId id, DepartedEvents::Departed &departed) {
        EventRecord &record = departed.record;
        if (record.format != EventRecord::kRawDate && record.format != EventRecord::kTextDate) {
            m_departed.extrasOf(id).date = dateText(record, nullptr);
            record.hasExtras = 1;
            record.format = EventRecord::kTextDate;
        }
    });
}

std::optional<std::string> EventList::value(EventId id, std::string_view key) {
    if (const auto successor = m_successors.find(id); successor != m_successors.end()) {
        return successor->second.value(key);
    }
    Fields fields;
    if (const auto place = placeOf(id)) {
        fields = fieldsOf(*place);
    } else if (const auto departed = m_departed.find(id)) {
        fields = fieldsOf(*departed);
    }
    const auto found = fields.find(key);
    return found == fields.end() ? std::nullopt : std::optional(found->second);
}

EventList::Fields EventList::fieldsOf(const Place &place) {
    settle(place);
    const EventRecord &record = place.record();
    return fieldsOf(record, record.hasExtras != 0 ? &m_extras[place.id()] : nullptr,
                    place.chunk->message(record));
}

EventList::Fields EventList::fieldsOf(const DepartedEvents::Found &event) {
    settle(event);
    const EventRecord &record = event.departed.record;
    return fieldsOf(record, event.extras, event.messages.at(record));
}

EventList::Fields EventList::fieldsOf(const EventRecord &settled, const Extras *extras,
                                      std::optional<std::string_view> message) const {
    Fields fields;
    if (extras != nullptr) {
        fields.insert(extras->others.begin(), extras->others.end());
    }
    if (auto date = dateText(settled, extras)) {
        fields["Date"] = std::move(*date);
    }
    if (settled.priority != StringTable::kAbsent) {
        fields["Priority"] = m_priorities.text(settled.priority);
    }
    if (settled.host != StringTable::kAbsent) {
        fields["Host"] = m_hosts.text(settled.host);
    }
    if (message) {
        fields["Message"] = *message;
    }
    if (settled.image > 0) {
        fields["Image"] = severityLevelName(std::int64_t{settled.image} - 1);
    }
    return fields;
}

}  // namespace quorbel
