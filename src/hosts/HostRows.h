#pragma once

#include "core/AppState.h"
#include "core/EventQuery.h"
#include "core/HostWatch.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace quorbel {

/// A host as tables show it, at one moment.
struct HostRow {
    QString name;
    std::int64_t first = 0;
    std::int64_t last = 0;
    std::uint64_t today = 0;
    std::uint64_t lastDay = 0;
    std::uint64_t dayBefore = 0;
    std::optional<double> dailyMean{};
    double severeShare = 0;  ///< from 0 to 1
    std::optional<double> usualGap{};
    std::int64_t silentFor = 0;  ///< seconds
    bool isLearning = false;
    bool isExpected = true;
    bool isOverdue = false;
    bool operator==(const HostRow &) const = default;
};

/// All hosts, in no order. `levels` says which severities are severe ones.
std::vector<HostRow> hostRows(HostWatch &hosts, const SeverityLevels &levels, std::int64_t now);

/// The events of that host alone, as far as others are known.
EventQuery eventsOf(const QString &host, const HostHistory &hosts);

/// Overdue hosts, the longest first.
std::vector<HostRow> overdueHosts(const std::vector<HostRow> &rows);
/// The hosts that sent most in 24 hours, at most so many.
std::vector<HostRow> loudestHosts(const std::vector<HostRow> &rows, std::size_t most);

}  // namespace quorbel
