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
    m_alike.reserve(m_restored.size());
    m_command.setName("restore");
    m_command.begin("Events", LineCommand::Kind::kListed);
}

bool RestorationLines::work(std::chrono::milliseconds limit) {
    const auto end = limit == std::chrono::milliseconds::max() ? Time::max() : Clock::now() + limit;
    if (!nameRestored(end)) {
        return false;
    }
    if (!std::exchange(m_namesOthers, true)) {
        m_command.begin("Listed", LineCommand::Kind::kListed);
    }
    return nameOthers(end);
}

bool RestorationLines::nameRestored(Time end) {
    for (std::size_t looked = 0; m_next < m_restored.size(); ++m_next) {
        if (++looked % kRowsBetweenLooks == 0 && Clock::now() >= end) {
            return false;
        }
        const auto row = m_list.rowOf(m_restored[m_next]);
        const auto seconds = row ? m_list.momentHeld(*row) : std::nullopt;
        const auto line = seconds ? lineOf(*row, *seconds) : std::nullopt;
        if (!line) {
            m_unnamed += row ? 1U : 0U;
            continue;
        }
        const std::size_t minute = hashOf(minuteOf(*seconds));
        if (!knows(m_minutes, minute)) {
            m_minutes.insert(minute, 0);
        }
        addLine(hashOf(minuteOf(*seconds), *line), *line);
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
    const auto line = lineOf(row, *seconds);
    const std::size_t hash = line ? hashOf(minuteOf(*seconds), *line) : 0;
    if (line && knows(m_alike, hash)) {
        addLine(hash, *line);
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

void RestorationLines::addLine(std::size_t hash, std::string_view line) {
    const auto equal =
        m_alike.find(hash, [&](LineCommand::Place place) { return m_command.line(place) == line; });
    if (equal) {
        m_command.again(*equal);
    } else {
        m_alike.insert(hash, m_command.add(line));
    }
}

bool RestorationLines::knows(const HashIndex &index, std::size_t hash) {
    return index.find(hash, [](std::uint32_t) { return true; }).has_value();
}

LineCommand RestorationLines::takeCommand() {
    return std::move(m_command);
}

}  // namespace quorbel
