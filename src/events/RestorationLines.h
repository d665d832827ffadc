#pragma once

#include "core/EventList.h"
#include "core/HashIndex.h"
#include "platform/LineCommand.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// Names events that stand in the list again as the "restore" command does, a part at a time: each
/// as a line "seconds,priority,host,message\n", and beside them those that the list has besides and
/// that may differ from one of them in nothing but the second of its minute.
class RestorationLines {
public:
    /// The events, oldest first. Those that leave the list before they are named are left out. The
    /// list outlives this.
    RestorationLines(EventList &list, std::vector<EventId> restored);

    /// Goes on for about `limit`. Returns whether all are named.
    bool work(std::chrono::milliseconds limit);
    /// The command, once all are named; the lines are gone then.
    [[nodiscard]] LineCommand takeCommand();

    /// How many there are of which no log file can hold a line: they lack a field, or a time.
    [[nodiscard]] std::size_t unnamed() const { return m_unnamed; }

private:
    using Time = std::chrono::steady_clock::time_point;

    bool nameRestored(Time end);
    bool nameOthers(Time end);
    void nameIfAlike(std::size_t row, EventId id);
    [[nodiscard]] std::optional<std::string> lineOf(std::size_t row, std::int64_t seconds);
    void addLine(std::size_t hash, std::string_view line);
    [[nodiscard]] static bool knows(const HashIndex &index, std::size_t hash);

    EventList &m_list;
    std::vector<EventId> m_restored;
    std::size_t m_next = 0;  // of m_restored
    std::size_t m_left;      // of m_restored, while the list is walked from its top
    EventId m_nextOther;     // all larger ones were looked at
    std::size_t m_unnamed = 0;
    // By the hash of what of an event others may share; in the second index the lines.
    HashIndex m_minutes;
    HashIndex m_alike;
    bool m_namesOthers = false;
    LineCommand m_command;
};

}  // namespace quorbel
