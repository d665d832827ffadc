#pragma once

#include "common/FilterConditions.h"
#include "core/EventPass.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace quorbel {

/// Counts the events of a list that a filter record of the settings means.
///
/// The service looks at messages, the list has events: a message that became several of them is
/// looked at in pieces. A sender's address is not known where its name stands as the host.
class FilterCount : public EventPass {
public:
    struct Counts {
        std::size_t meant = 0;
        std::size_t meantToday = 0;  ///< of these, since the moment that was given
        std::size_t unknown = 0;     ///< meant if the address behind the host's name is
        bool operator==(const Counts &) const = default;
    };

    /// The list outlives this.
    explicit FilterCount(EventList &list) : EventPass(list) {}

    /// Counts anew what a record means. `today` is when the day began, in seconds since 1970.
    void start(const Dictionary &record, std::int64_t today);
    /// Of the events that were looked at.
    [[nodiscard]] const Counts &counts() const { return m_counts; }
    [[nodiscard]] bool meansEverything() const { return m_conditions.meansEverything(); }

private:
    enum class Answer : std::uint8_t { kNot, kNo, kYes, kUnknown };

    void clear() override;
    void look(EventChunk &chunk, std::size_t first, std::size_t last) override;
    [[nodiscard]] Answer answerFor(const EventChunk &chunk, const EventRecord &record);
    [[nodiscard]] Answer ofPriority(StringTable::Id id);
    [[nodiscard]] Answer ofHost(StringTable::Id id);
    [[nodiscard]] bool isMessageMeant(const EventChunk &chunk, const EventRecord &record);

    FilterConditions m_conditions{Dictionary{}};
    std::int64_t m_today = 0;
    Counts m_counts;
    std::vector<Answer> m_priorities;  // by the texts' numbers
    std::vector<Answer> m_hosts;
    std::string m_folded;  // kept for its memory
};

}  // namespace quorbel
