#pragma once

#include "core/Event.h"
#include "core/EventChunk.h"
#include "core/StringTable.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace quorbel {

/// What a list holds of the few events of which a record does not say all.
struct EventExtras {
    std::optional<std::string> date;
    std::vector<std::pair<std::string, std::string>> others;
};
using EventExtrasById = std::unordered_map<EventId, EventExtras>;

/// Events that left a list while somebody holds them, as they were then.
///
/// A million may leave at once while they wait for their alerts: nothing is made of them until
/// somebody looks. What is kept of each is its record; its messages it shares with its chunk, which
/// are kept as long as one of those that left with them is. Main thread only.
class DepartedEvents {
public:
    struct Departed {
        EventRecord record;      ///< `isLeaving` once nobody holds it
        std::uint16_t slot;      ///< in its chunk
        std::uint16_t showings;  ///< how many of the list it has seen, with those put off
    };
    /// Valid until the next change.
    struct Found {
        Departed &departed;
        const ChunkMessages &messages;
        EventExtras *extras;  ///< null where its record says all
    };

    /// The list's texts, which outlive this.
    DepartedEvents(StringTable &priorities, StringTable &hosts)
        : m_priorities(priorities), m_hosts(hosts) {}

    /// Events at ascending positions of a chunk leave after so many showings. `extras` has theirs.
    void add(const EventChunk &chunk, const std::vector<std::uint32_t> &positions,
             std::size_t showings, const EventExtrasById &extras);
    /// Nothing when it is not among them.
    [[nodiscard]] std::optional<Found> find(EventId id);
    /// Nobody holds it any more; one that is not among them is passed over.
    void letGo(EventId id);
    /// They are in the list again. Ascending; others are passed over.
    void letGo(const std::vector<EventId> &ids);
    /// Calls `visit(id, departed)` for each. It may ask extrasOf().
    template <typename Visit>
    void visit(Visit visit);
    /// Made when there are none.
    [[nodiscard]] EventExtras &extrasOf(EventId id) { return m_extras[id]; }

private:
    /// Those of a chunk whose messages stood in the same bytes.
    struct Group {
        std::shared_ptr<const ChunkMessages> messages;
        std::vector<Departed> events;  // by slot
        std::size_t held = 0;
    };
    using Groups = std::vector<Group>;
    using Chunks = std::map<EventId, Groups>;  // by the first id of the chunk

    [[nodiscard]] Group &groupFor(const EventChunk &chunk);
    [[nodiscard]] Chunks::iterator chunkOf(EventId id);
    [[nodiscard]] static Departed *find(Group &group, std::size_t slot);
    void drop(Group &group, EventId id, Departed &departed);
    void letGoIn(Group &group, EventId first, const std::vector<EventId> &ids);
    void tidy(Chunks::iterator chunk);

    StringTable &m_priorities;
    StringTable &m_hosts;
    Chunks m_chunks;
    EventExtrasById m_extras;
};

template <typename Visit>
void DepartedEvents::visit(Visit visit) {
    for (auto &[first, groups] : m_chunks) {
        for (Group &group : groups) {
            for (Departed &departed : group.events) {
                if (departed.record.isLeaving == 0) {
                    visit(first + departed.slot, departed);
                }
            }
        }
    }
}

}  // namespace quorbel
