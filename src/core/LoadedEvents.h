#pragma once

#include "common/EventFields.h"
#include "common/Severity.h"
#include "core/EventChunk.h"
#include "core/HourlyArrivals.h"
#include "core/StringTable.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorbel {

/// New events on their way into a list, as it keeps them: many can be made at once, by a
/// thread each, and EventList::append() takes each over with no more than a look at its records.
/// Not shared between threads.
class LoadedEvents {
public:
    /// `expectedBytes` is how much room the messages of the first thousands will probably take.
    explicit LoadedEvents(std::size_t expectedBytes = 0) : m_expectedBytes(expectedBytes) {}

    /// One event, as it is now.
    struct Added {
        const EventRecord &record;
        const PriorityClasses &classes;
    };
    /// Adds an event behind the others. Precondition: `fields.others` is empty.
    Added add(const EventFields &fields);
    /// Returns unused memory; called when no further event will come.
    void close();
    [[nodiscard]] std::size_t size() const { return m_size; }

    /// How many events of each severity class there are, each in all that count it.
    [[nodiscard]] std::array<std::size_t, kSeverityClassCount> countByClass() const;
    /// What to expect of events like these.
    [[nodiscard]] std::size_t expectedBytes() const;

    /// Calls `visit(host, moment, classes)` for each event, the first one first: its host, empty
    /// when it has none, and the number that its date is, if it is one.
    template <typename Visit>
    void visitArrivals(Visit visit) const;
    /// Calls `visit(fields)` for each event, as add() got it. The views last as long as the call.
    template <typename Visit>
    void visitFields(Visit visit) const;

private:
    friend class EventList;

    using DateTexts = std::vector<std::pair<EventId, std::string>>;

    StringTable::Id acquirePriority(const std::optional<std::string_view> &text);
    void startChunk();
    template <typename Visit>
    void visitRecords(Visit visit) const;
    /// The number that a text is, if it is one.
    static std::optional<std::int64_t> momentOf(const std::string &date);

    std::size_t m_expectedBytes;
    std::deque<EventChunk> m_chunks;  // oldest first; ids from 0
    std::size_t m_size = 0;
    StringTable m_priorities;
    StringTable m_hosts;
    /// By priority id; the first is that of events without one.
    std::vector<PriorityClasses> m_classes{classifyPriority({})};
    DateTexts m_dateTexts;  // what records do not say, by ascending ids
};

/// New events with what is counted of them.
struct LoadedArrivals {
    LoadedEvents events;
    HourlyArrivals byHour{};

    /// Adds an event that arrived at `now`, in seconds since 1970.
    void add(const EventFields &fields, std::int64_t now);
};

template <typename Visit>
void LoadedEvents::visitRecords(Visit visit) const {
    auto text = m_dateTexts.begin();
    for (const EventChunk &chunk : m_chunks) {
        for (std::size_t position = 0; position < chunk.size(); ++position) {
            const EventRecord &record = chunk.record(position);
            visit(chunk, record, record.hasExtras != 0 ? &(text++)->second : nullptr);
        }
    }
}

template <typename Visit>
void LoadedEvents::visitArrivals(Visit visit) const {
    visitRecords([&](const EventChunk &, const EventRecord &record, const std::string *date) {
        std::optional<std::int64_t> moment;
        if (date != nullptr) {
            moment = momentOf(*date);
        } else if (record.format == EventRecord::kRawDate) {
            moment = record.seconds;
        }
        visit(m_hosts.text(record.host), moment, m_classes[record.priority]);
    });
}

template <typename Visit>
void LoadedEvents::visitFields(Visit visit) const {
    const auto textOf = [](const StringTable &texts, StringTable::Id id) {
        return id == StringTable::kAbsent ? std::nullopt : std::optional(texts.text(id));
    };
    visitRecords([&](const EventChunk &chunk, const EventRecord &record, const std::string *date) {
        const bool isPlain = date == nullptr && record.format == EventRecord::kRawDate;
        const std::string digits = isPlain ? std::to_string(record.seconds) : std::string();
        EventFields fields;
        if (isPlain || date != nullptr) {
            fields.date = isPlain ? digits : *date;
        }
        fields.priority = textOf(m_priorities, record.priority);
        fields.host = textOf(m_hosts, record.host);
        fields.message = chunk.message(record);
        visit(fields);
    });
}

}  // namespace quorbel
