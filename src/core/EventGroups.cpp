#include "core/EventGroups.h"

#include <algorithm>
#include <map>
#include <string_view>

namespace quorbel {

namespace {

std::string_view facilityOf(std::string_view priority) {
    return priority.substr(0, priority.find('.'));
}

/// The names that most events have, the most frequent first; there may be a million to choose from.
class MostFrequent {
public:
    void add(std::string_view name, std::uint64_t events) {
        if (name.empty()) {
            return;
        }
        const Candidate added{events, name};
        m_candidates.insert(std::ranges::upper_bound(m_candidates, added, isBefore), added);
        m_candidates.resize(std::min(m_candidates.size(), kRatingCount - 1));
    }
    [[nodiscard]] std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const Candidate &candidate : m_candidates) {
            names.emplace_back(candidate.name);
        }
        return names;
    }

private:
    struct Candidate {
        std::uint64_t events = 0;
        std::string_view name{};
    };
    static bool isBefore(const Candidate &one, const Candidate &other) {
        return one.events != other.events ? one.events > other.events : one.name < other.name;
    }

    std::vector<Candidate> m_candidates;
};

std::vector<std::string> mostFrequentHosts(const EventReader &reader) {
    MostFrequent most;
    reader.visitHostUses(
        [&](std::string_view host, std::uint64_t events) { most.add(host, events); });
    return most.names();
}

std::vector<std::string> mostFrequentFacilities(const EventReader &reader) {
    std::map<std::string_view, std::uint64_t> facilities;
    reader.visitPriorityUses([&](std::string_view priority, std::uint64_t events) {
        facilities[facilityOf(priority)] += events;
    });
    MostFrequent most;
    for (const auto &[name, events] : facilities) {
        most.add(name, events);
    }
    return most.names();
}

}  // namespace

EventGroups::EventGroups(EventGrouping grouping, EventList &list) : m_grouping(grouping) {
    if (grouping == EventGrouping::kHost) {
        m_names = mostFrequentHosts(EventReader(list));
    } else if (grouping == EventGrouping::kFacility) {
        m_names = mostFrequentFacilities(EventReader(list));
    }
}

std::uint8_t EventGroups::groupOf(const EventRecord &record, const EventReader &reader) const {
    if (m_grouping == EventGrouping::kRating) {
        return record.image;
    }
    const std::string_view name = m_grouping == EventGrouping::kHost
                                      ? reader.host(record.host)
                                      : facilityOf(reader.priority(record.priority));
    const auto found = std::ranges::find(m_names, name);
    return found == m_names.end() ? 0 : static_cast<std::uint8_t>(found - m_names.begin() + 1);
}

}  // namespace quorbel
