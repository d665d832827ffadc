#pragma once

#include "core/EventQuery.h"

#include <cstdint>
#include <optional>

namespace quorbel {

/// A span of time, in seconds since 1970.
struct SpanMoments {
    std::optional<std::int64_t> from;   ///< the first moment
    std::optional<std::int64_t> until;  ///< the one past the last
    bool operator==(const SpanMoments &) const = default;
};

/// What a span that goes on with the clock is at a moment: by whole minutes, and by the days of the
/// local calendar.
SpanMoments momentsOf(MovingSpan span, std::int64_t now);

/// The filter as it is to be looked for at a moment, with moments in place of spans that go on.
EventQuery queryAt(const EventQuery &query, std::int64_t now);

}  // namespace quorbel
