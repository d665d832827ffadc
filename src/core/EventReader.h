#pragma once

#include "core/EventList.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// Reads a list's events in the order in which they came, as they are kept: by the chunk, texts
/// that many share by number. For what looks at all of them. Chunk numbers are good until the list
/// changes. Main thread only.
class EventReader {
public:
    /// `list` outlives the reader.
    explicit EventReader(EventList &list) : m_list(list) {}

    [[nodiscard]] std::size_t chunkCount() const { return m_list.m_chunks.size(); }
    [[nodiscard]] EventChunk &chunk(std::size_t number) const { return m_list.m_chunks[number]; }
    /// The chunk that holds the event, or what came next after it; chunkCount() when nothing did.
    [[nodiscard]] std::size_t chunkFrom(EventId id) const {
        const auto after = std::ranges::upper_bound(m_list.m_chunks, id, {}, &EventChunk::first);
        const auto number = static_cast<std::size_t>(after - m_list.m_chunks.begin());
        return number > 0 && id < chunk(number - 1).endOfIds() ? number - 1 : number;
    }

    /// Searches messages of packed chunks on other processors.
    [[nodiscard]] SearchAhead &searchAhead() const { return m_list.m_searchAhead; }
    /// One more than the largest id that an event has or had; 0 when there are none.
    [[nodiscard]] EventId endOfIds() const {
        return m_list.m_chunks.empty() ? 0 : m_list.m_chunks.back().endOfIds();
    }

    /// Brings dates and images of the records from `first` up to `last` to what is shown now.
    void settle(EventChunk &chunk, std::size_t first, std::size_t last) const {
        m_list.settle(chunk, first, last);
    }
    /// A record whose date and image are as they are shown now.
    [[nodiscard]] const EventRecord &settled(EventChunk &chunk, std::size_t position) const {
        m_list.settle({&chunk, position});
        return chunk.record(position);
    }
    /// Whether all records of a chunk are as they are shown now.
    [[nodiscard]] bool isSettled(const EventChunk &chunk) const {
        return chunk.showings() == static_cast<std::uint16_t>(m_list.m_dates.showings());
    }
    [[nodiscard]] std::optional<std::string> date(EventChunk &chunk, std::size_t position) const {
        return m_list.dateText({&chunk, position});
    }
    /// The date format, as the settings hold it, that a rendered date's record names.
    [[nodiscard]] std::string_view dateSetting(EventDates::FormatId format) const {
        return m_list.m_dates.setting(format);
    }

    /// Empty for an absent one. Ids may come to mean another text when events have been removed.
    [[nodiscard]] std::string_view priority(StringTable::Id id) const {
        return m_list.m_priorities.text(id);
    }
    [[nodiscard]] std::string_view host(StringTable::Id id) const {
        return m_list.m_hosts.text(id);
    }
    /// One more than the largest ids.
    [[nodiscard]] std::size_t priorityLimit() const { return m_list.m_priorities.idLimit(); }
    [[nodiscard]] std::size_t hostLimit() const { return m_list.m_hosts.idLimit(); }
    [[nodiscard]] const PriorityClasses &classes(StringTable::Id priority) const {
        return priority == StringTable::kAbsent ? m_list.m_absentClasses
                                                : m_list.m_classes[priority];
    }
    /// Calls `visit(classes, events)` for each priority there is, and for none at all.
    template <typename Visit>
    void visitPriorities(Visit visit) const {
        std::size_t others = m_list.size();
        for (StringTable::Id id = 1; id < m_list.m_priorities.idLimit(); ++id) {
            const auto uses = static_cast<std::size_t>(m_list.m_priorities.uses(id));
            others -= uses;
            visit(classes(id), uses);
        }
        visit(m_list.m_absentClasses, others);
    }
    /// Calls `visit(text)` for each text that some event has.
    template <typename Visit>
    void visitPriorityTexts(Visit visit) const {
        visitTexts(m_list.m_priorities, visit);
    }
    template <typename Visit>
    void visitHosts(Visit visit) const {
        visitTexts(m_list.m_hosts, visit);
    }
    /// Calls `visit(text, events)` for each text that some event of the list has. Looks at all that
    /// are set aside, two million of them in some milliseconds.
    template <typename Visit>
    void visitPriorityUses(Visit visit) const {
        visitUses(m_list.m_priorities, &EventRecord::priority, visit);
    }
    template <typename Visit>
    void visitHostUses(Visit visit) const {
        visitUses(m_list.m_hosts, &EventRecord::host, visit);
    }

private:
    template <typename Visit>
    static void visitTexts(const StringTable &texts, Visit visit) {
        for (StringTable::Id id = 1; id < texts.idLimit(); ++id) {
            if (texts.uses(id) > 0) {
                visit(texts.text(id));
            }
        }
    }
    template <typename Visit>
    void visitUses(const StringTable &texts, StringTable::Id EventRecord::*member,
                   Visit visit) const {
        std::vector<std::uint64_t> aside(texts.idLimit());
        for (const EventChunk &chunk : m_list.m_aside) {
            for (std::size_t position = 0; position < chunk.size(); ++position) {
                ++aside[chunk.record(position).*member];
            }
        }
        for (StringTable::Id id = 1; id < texts.idLimit(); ++id) {
            if (const std::uint64_t events = texts.uses(id) - aside[id]; events > 0) {
                visit(texts.text(id), events);
            }
        }
    }

    EventList &m_list;
};

}  // namespace quorbel
