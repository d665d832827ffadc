#include "hosts/HostRows.h"

#include "core/HostPattern.h"
#include "platform/gui/QtText.h"

#include <algorithm>

namespace quorbel {

namespace {

double severeShare(const HostRecord &host, const SeverityLevels &levels) {
    std::uint64_t severe = 0;
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        severe += levels.*kSeverityLevels[i] == kSevere ? host.classes[i] : 0;
    }
    return static_cast<double>(severe) / static_cast<double>(host.arrivals);
}

HostRow rowOf(HostWatch &hosts, const HostRecord &host, const SeverityLevels &levels,
              std::int64_t now, LocalClock::Hour hour) {
    return {.name = toQString(host.name),
            .first = host.activity.first(),
            .last = host.activity.last(),
            .today = host.today(hour),
            .lastDay = host.hours.lastDay(hour),
            .dayBefore = host.hours.dayBefore(hour),
            .dailyMean = host.dailyMean(hour),
            .severeShare = severeShare(host, levels),
            .usualGap = host.usualGap(),
            .silentFor = std::max<std::int64_t>(now - host.activity.last(), 0),
            .isLearning = host.habit.kind == HostHabit::Kind::kLearning,
            .isExpected = hosts.isExpected(host.name),
            .isOverdue = hosts.isOverdue(host, now)};
}

}  // namespace

std::vector<HostRow> hostRows(HostWatch &hosts, const SeverityLevels &levels, std::int64_t now) {
    const LocalClock::Hour hour = hosts.hourOf(now);
    const HostHistory &history = hosts.history();
    std::vector<HostRow> rows;
    rows.reserve(history.size());
    for (std::size_t number = 0; number < history.size(); ++number) {
        rows.push_back(rowOf(hosts, history.host(number), levels, now, hour));
    }
    return rows;
}

EventQuery eventsOf(const QString &host, const HostHistory &hosts) {
    const std::string name = host.toStdString();
    EventQuery query;
    query.host = HostPattern::meaning(name);
    const HostPattern pattern(query.host);
    for (std::size_t number = 0; number < hosts.size(); ++number) {
        const std::string &other = hosts.host(number).name;
        if (other != name && pattern.matches(other)) {
            query.host = HostPattern::quoted(name);
            break;
        }
    }
    return query;
}

std::vector<HostRow> overdueHosts(const std::vector<HostRow> &rows) {
    std::vector<HostRow> overdue;
    std::ranges::copy_if(rows, std::back_inserter(overdue), &HostRow::isOverdue);
    std::ranges::sort(overdue, [](const HostRow &one, const HostRow &other) {
        return one.silentFor != other.silentFor ? one.silentFor > other.silentFor
                                                : one.name < other.name;
    });
    return overdue;
}

std::vector<HostRow> loudestHosts(const std::vector<HostRow> &rows, std::size_t most) {
    std::vector<HostRow> loudest(std::min(most, rows.size()));
    const auto end =
        std::ranges::partial_sort_copy(rows, loudest, [](const HostRow &one, const HostRow &other) {
            return one.lastDay != other.lastDay ? one.lastDay > other.lastDay
                                                : one.name < other.name;
        }).out;
    loudest.erase(end, loudest.end());
    std::erase_if(loudest, [](const HostRow &row) { return row.lastDay == 0; });
    return loudest;
}

}  // namespace quorbel
