#pragma once

#include "common/EventFields.h"
#include "common/Severity.h"
#include "core/EventChunk.h"
#include "core/StringTable.h"

#include <array>
#include <cstddef>
#include <deque>
#include <string>
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

    /// How many events of each severity class there are, each in all that count it.
    [[nodiscard]] std::array<std::size_t, kSeverityClassCount> countByClass() const;
    /// What to expect of events like these.
    [[nodiscard]] std::size_t expectedBytes() const;

private:
    friend class EventList;

    StringTable::Id acquirePriority(const std::optional<std::string_view> &text);
    void startChunk();

    std::size_t m_expectedBytes;
    std::deque<EventChunk> m_chunks;  // oldest first; ids from 0
    std::size_t m_size = 0;
    StringTable m_priorities;
    StringTable m_hosts;
    /// By priority id; the first is that of events without one.
    std::vector<PriorityClasses> m_classes{classifyPriority({})};
    std::vector<std::pair<EventId, std::string>> m_dateTexts;  // what records do not say
};

}  // namespace quorbel
