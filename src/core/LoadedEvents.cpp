#include "core/LoadedEvents.h"

#include "core/EventDates.h"
#include "platform/Number.h"

#include <bit>

namespace quorbel {

StringTable::Id LoadedEvents::acquirePriority(const std::optional<std::string_view> &text) {
    if (!text) {
        return StringTable::kAbsent;
    }
    const StringTable::Id id = m_priorities.acquire(*text);
    if (m_classes.size() <= id) {
        m_classes.push_back(classifyPriority(*text));
    }
    return id;
}

void LoadedEvents::startChunk() {
    if (m_chunks.empty()) {
        m_chunks.emplace_back(0, m_expectedBytes);
    } else {
        m_chunks.push_back(m_chunks.back().closeAndFollow(m_size));
    }
    m_chunks.back().takeMemory();
}

LoadedEvents::Added LoadedEvents::add(const EventFields &fields) {
    if (m_chunks.empty() || m_chunks.back().isFull()) {
        startChunk();
    }
    const std::size_t host = fields.host ? hashBytes(*fields.host) : 0;
    m_hosts.prefetch(host);
    EventChunk &chunk = m_chunks.back();
    EventRecord &record = chunk.append(fields.message);
    record.priority = acquirePriority(fields.priority);
    if (EventDates::setAsItCame(chunk, record, fields.date)) {
        m_dateTexts.emplace_back(m_size, *fields.date);
    }
    record.host = fields.host ? m_hosts.acquire(host, *fields.host) : StringTable::kAbsent;
    ++m_size;
    return {record, m_classes[record.priority]};
}

void LoadedEvents::close() {
    if (!m_chunks.empty()) {
        m_chunks.back().close();
    }
}

std::array<std::size_t, kSeverityClassCount> LoadedEvents::countByClass() const {
    std::array<std::size_t, kSeverityClassCount> counts{};
    std::size_t absent = m_size;
    const auto count = [&counts](const PriorityClasses &classes, std::size_t events) {
        for (unsigned long rest = classes.counted.to_ulong(); rest != 0; rest &= rest - 1) {
            counts.at(static_cast<std::size_t>(std::countr_zero(rest))) += events;
        }
    };
    for (StringTable::Id id = 1; id < m_classes.size(); ++id) {
        count(m_classes[id], m_priorities.uses(id));
        absent -= m_priorities.uses(id);
    }
    count(m_classes[StringTable::kAbsent], absent);
    return counts;
}

std::optional<std::int64_t> LoadedEvents::momentOf(const std::string &date) {
    return readNumber<std::int64_t>(date);
}

void LoadedArrivals::add(const EventFields &fields, std::int64_t now) {
    const auto [record, classes] = events.add(fields);
    // The record says the moment where it is plain.
    const bool isPlain = record.format == EventRecord::kRawDate && record.hasExtras == 0;
    const auto moment = isPlain ? std::optional(record.seconds)
                                : readNumber<std::int64_t>(fields.date.value_or(""));
    if (moment) {
        byHour.add(classes.counted, *moment, now);
    }
}

std::size_t LoadedEvents::expectedBytes() const {
    return m_chunks.size() < 2 ? m_expectedBytes : m_chunks.front().expectedBytes();
}

}  // namespace quorbel
