#pragma once

#include "platform/Value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorbel {

/// How many events must match an action within how long before it acts: the dictionary "threshold"
/// of its record, with the integers "Matches" and "Minutes" and, when each host counts for itself,
/// the flag "PerHost". An action without one acts each time.
struct ActionThreshold {
    static constexpr std::int64_t kMostMatches = 1'000;
    static constexpr std::int64_t kMostMinutes = std::int64_t{24} * 60;

    std::int64_t matches;  ///< 1 to kMostMatches
    std::int64_t minutes;  ///< 1 to kMostMinutes
    bool perHost;          ///< whether so many must come from one host

    bool operator==(const ActionThreshold &) const = default;
};

inline constexpr std::string_view kThresholdKey = "threshold";

/// What the record of an action says of its threshold.
struct ThresholdReading {
    std::optional<ActionThreshold> threshold;
    /// Why it counts as none, for the end of a sentence; empty when it does not.
    std::string problem;
};

/// Without the key, and with an empty dictionary there, nothing is there and nothing wrong. What is
/// of another kind or out of bounds makes the whole of it count as none.
ThresholdReading readThreshold(const Dictionary &record);

/// What stands in a record for it.
Dictionary thresholdRecord(const ActionThreshold &threshold);

}  // namespace quorbel
