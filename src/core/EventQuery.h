#pragma once

#include "common/Severity.h"
#include "core/TextPattern.h"

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quorbel {

/// How an event is rated: 0 for one without an image, else 1 + SeverityLevel.
using EventRating = std::uint8_t;
inline constexpr std::size_t kRatingCount = 4;

/// A text that some shown field of an event (rating, date, priority, host, message) has to contain,
/// or that none of them may.
struct TextCondition {
    TextPattern::Spec pattern;
    bool isNegated = false;
    bool operator==(const TextCondition &) const = default;
};

/// Spans of time that go on with the clock.
enum class MovingSpan : std::uint8_t { kLastHour, kToday, kYesterday, kLastDay };
inline constexpr std::size_t kMovingSpanCount = 4;

/// Which events are meant: those that meet every condition. One that is left empty is met by all.
struct EventQuery {
    std::vector<TextCondition> texts;
    std::bitset<kRatingCount> ratings;
    /// A severity class (see kSeverityClasses) that an event's has to be, or a worse one.
    std::optional<std::uint8_t> leastSeverity;
    /// Severity classes: an event has to be counted in one of them, as the home page counts.
    std::bitset<kSeverityClassCount> classes;
    /// What stands before the point in the priority.
    std::string facility;
    /// See HostPattern.
    std::string host;
    std::optional<std::int64_t> from;   ///< the first moment, in seconds since 1970
    std::optional<std::int64_t> until;  ///< the moment that is past the last one
    /// By MovingSpan: those that an event has to be of. To who matches events they mean nothing: at
    /// each time, `from` and `until` are made of them.
    std::bitset<kMovingSpanCount> spans;

    [[nodiscard]] bool isInUse() const;
    /// Whether events of this rating are meant.
    [[nodiscard]] bool meansRating(EventRating rating) const {
        return ratings.none() || ratings[rating];
    }
    bool operator==(const EventQuery &) const = default;
};

/// A filter whose events meet the conditions of both: but where both name a facility, a host,
/// ratings or classes, it is those of the first one.
EventQuery bothOf(const EventQuery &first, const EventQuery &second);

/// Whether every event that the first filter means is meant by the second one, as far as that can
/// be said at a glance. So it is while somebody types on.
bool isNarrowerThan(const EventQuery &narrow, const EventQuery &wide);

}  // namespace quorbel
