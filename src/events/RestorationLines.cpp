#include "events/RestorationLines.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace quorbel {

namespace {

constexpr std::int64_t kMinute = 60;
constexpr std::size_t kRowsBetweenLooks = 64;

using Clock = std::chrono::steady_clock;

std::int64_t minuteOf(std::int64_t seconds) {
    return seconds / kMinute;
}

std::size_t hashOf(std::int64_t minute) {
    return static_cast<std::size_t>(minute) * 0x9E3779B97F4A7C15U;
}

/// Of what an event's line holds but for the second.
std::size_t hashOf(std::int64_t minute, std::string_view line) {
    return hashOf(minute) ^ hashBytes(line.substr(line.find(',')));
}

}  // namespace

RestorationLines::RestorationLines(EventList &list, std::vector<EventId> restored)
    : m_list(list),
      m_restored(std::move(restored)),
      m_left(m_restored.size()),
      m_nextOther(std::numeric_limits<EventId>::max()) {
    m_events.reserve(m_restored.size());
    m_alike.reserve(m_restored.size());
}

bool RestorationLines::work(std::chrono::milliseconds limit) {
    const auto end = limit == std::chrono::milliseconds::max() ? Time::max() : Clock::now() + limit;
    return nameRestored(end) && nameOthers(end);
}

bool RestorationLines::nameRestored(Time end) {
    for (std::size_t looked = 0; m_next < m_restored.size(); ++m_next) {
        if (++looked % kRowsBetweenLooks == 0 && Clock::now() >= end) {
            return false;
        }
        const auto row = m_list.rowOf(m_restored[m_next]);
        const auto seconds = row ? m_list.momentHeld(*row) : std::nullopt;
        auto line = seconds ? lineOf(*row, *seconds) : std::nullopt;
        if (!line) {
            m_unnamed += row ? 1U : 0U;
            continue;
        }
        note(m_minutes, hashOf(minuteOf(*seconds)));
        note(m_alike, hashOf(minuteOf(*seconds), *line));
        m_events.emplace_back(std::move(*line));
    }
    return true;
}

/// Walks the list from its top. New events, which come in there, are of a later command's.
bool RestorationLines::nameOthers(Time end) {
    std::size_t looked = 0;
    for (std::size_t row = m_list.rowFor(m_nextOther); row < m_list.size(); ++row) {
        const EventId id = m_list.idAt(row);
        if (++looked % kRowsBetweenLooks == 0 && Clock::now() >= end) {
            m_nextOther = id;
            return false;
        }
        nameIfAlike(row, id);
    }
    return true;
}

void RestorationLines::nameIfAlike(std::size_t row, EventId id) {
    while (m_left > 0 && m_restored[m_left - 1] > id) {
        --m_left;
    }
    const bool isRestored = m_left > 0 && m_restored[m_left - 1] == id;
    const auto seconds = isRestored ? std::nullopt : m_list.momentHeld(row);
    if (!seconds || !knows(m_minutes, hashOf(minuteOf(*seconds)))) {
        return;
    }
    if (auto line = lineOf(row, *seconds);
        line && knows(m_alike, hashOf(minuteOf(*seconds), *line))) {
        m_listed.emplace_back(std::move(*line));
    }
}

std::optional<std::string> RestorationLines::lineOf(std::size_t row, std::int64_t seconds) {
    std::string line = std::to_string(seconds);
    for (const auto &field : {m_list.priority(row), m_list.host(row), m_list.message(row)}) {
        if (!field) {
            return std::nullopt;
        }
        line += ',';
        line += *field;
    }
    line += '\n';
    return line;
}

void RestorationLines::note(HashIndex &index, std::size_t hash) {
    if (!knows(index, hash)) {
        index.insert(hash, 0);
    }
}

bool RestorationLines::knows(const HashIndex &index, std::size_t hash) {
    return index.find(hash, [](std::uint32_t) { return true; }).has_value();
}

Dictionary RestorationLines::takeCommand() {
    Dictionary command;  // not as a list of entries, which would be copied
    command.append("command", "restore");
    command.append("Events", std::exchange(m_events, {}));
    command.append("Listed", std::exchange(m_listed, {}));
    return command;
}

}  // namespace quorbel
