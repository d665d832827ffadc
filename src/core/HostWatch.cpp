#include "core/HostWatch.h"

#include "core/LoadedEvents.h"
#include "core/TimeCounts.h"
#include "platform/Number.h"

#include <algorithm>

namespace quorbel {

namespace {

/// Nothing is unusual that takes less long, in seconds.
constexpr std::int64_t kShortQuiet = 900;

}  // namespace

void HostWatch::logWasLoaded() {
    m_end = m_reader.endOfIds();
}

void HostWatch::logBeginsAnew() {
    m_history = {};
    m_waiting = {};
    m_next = m_reader.endOfIds();
    m_end = m_next;
}

void HostWatch::eventArrived(const EventFields &event, std::uint8_t severityClass) {
    arrived(event.host.value_or(std::string_view()),
            readNumber<std::int64_t>(event.date.value_or("")), severityClass);
}

void HostWatch::eventsArrived(const LoadedEvents &events) {
    events.visitArrivals(
        [this](std::string_view host, std::optional<std::int64_t> moment,
               const PriorityClasses &classes) { arrived(host, moment, classes.shown); });
}

/// The moment of arrival is as the service stamps it; nothing for any other text.
void HostWatch::arrived(std::string_view host, std::optional<std::int64_t> moment,
                        std::uint8_t severityClass) {
    if (!moment || !TimeCounts::canCount(*moment)) {
        return;
    }
    if (!isCounting()) {
        m_history.add(host, *moment, severityClass);
        return;
    }
    m_waiting.push_back({std::string(host), *moment, severityClass});
    countRun();
}

void HostWatch::countRun() {
    const std::size_t number = m_reader.chunkFrom(m_next);
    if (number == m_reader.chunkCount()) {
        m_next = m_end;
    } else {
        EventChunk &chunk = m_reader.chunk(number);
        const std::size_t first = chunk.countBefore(m_next);
        const std::size_t last = std::min({first + kRun, chunk.size(), chunk.countBefore(m_end)});
        for (std::size_t position = first; position < last; ++position) {
            const EventRecord &record = chunk.record(position);
            if (record.format != EventRecord::kTextDate && TimeCounts::canCount(record.seconds)) {
                m_history.add(m_reader.host(record.host), record.seconds,
                              m_reader.classes(record.priority).shown);
            }
        }
        m_next = chunk.idFrom(last);
    }
    if (!isCounting()) {
        countWaiting();
    }
}

void HostWatch::countWaiting() {
    for (const Waiting &arrival : m_waiting) {
        m_history.add(arrival.host, arrival.moment, arrival.severityClass);
    }
    m_waiting = {};
}

bool HostWatch::run(std::int64_t now, const std::function<bool()> &isTimeUp) {
    while (isCounting()) {
        countRun();
        if (isTimeUp()) {
            return false;
        }
    }
    return m_history.judge(now, isTimeUp);
}

HostWatch::Summary HostWatch::summary(std::int64_t now) const {
    Summary summary;
    for (std::size_t number = 0; number < m_history.size(); ++number) {
        const HostRecord &host = m_history.host(number);
        if (!isExpected(host.name)) {
            continue;
        }
        if (host.habit.isRegular()) {
            ++summary.regular;
            summary.overdue += static_cast<std::size_t>(m_history.isOverdue(host, now));
        }
        const std::int64_t learned =
            host.activity.first() +
            (SilenceRule::kLearned + LocalClock::Hour{1}) * LocalClock::kSeconds;
        if (learned > now) {
            summary.learnedFrom = std::min(summary.learnedFrom.value_or(learned), learned);
        }
    }
    return summary;
}

std::optional<std::int64_t> HostWatch::quietSince(std::int64_t now) const {
    const WatchedHours &watched = m_history.watched();
    const auto usual = std::max<std::int64_t>(watched.longestLull(), kShortQuiet);
    const bool isQuiet = watched.lastArrival() > 0 && now - watched.lastArrival() > usual;
    return isQuiet ? std::optional(watched.lastArrival()) : std::nullopt;
}

void HostWatch::setExpected(const std::string &host, bool expected) {
    if (expected) {
        m_retired.erase(host);
    } else {
        m_retired.insert(host);
    }
}

}  // namespace quorbel
