#pragma once

#include "core/EventQuery.h"
#include "core/EventReader.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace quorbel {

/// By what events are told apart.
enum class EventGrouping { kRating, kHost, kFacility };

/// Which group an event belongs to, one of kRatingCount. By rating, that is its rating. By host or
/// facility, groups from 1 on are those that most events have, the most frequent first, and group 0
/// is all others.
class EventGroups {
public:
    /// By rating.
    EventGroups() = default;
    /// With what is most frequent in the list now.
    EventGroups(EventGrouping grouping, EventList &list);

    [[nodiscard]] EventGrouping grouping() const { return m_grouping; }
    /// Of the groups from 1 on, as many as there are; none by rating.
    [[nodiscard]] const std::vector<std::string> &names() const { return m_names; }
    [[nodiscard]] std::uint8_t groupOf(const EventRecord &record, const EventReader &reader) const;
    bool operator==(const EventGroups &) const = default;

private:
    EventGrouping m_grouping = EventGrouping::kRating;
    std::vector<std::string> m_names;
};

}  // namespace quorbel
