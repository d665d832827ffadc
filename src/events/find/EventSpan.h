#pragma once

#include "core/SpanMoments.h"

#include <QDateTime>
#include <QString>

#include <cstdint>
#include <optional>

namespace quorbel {

/// A span of time that somebody asks for. All but one go on with the time.
struct EventSpan {
    /// Those between the first and the last are a MovingSpan each.
    enum class Kind { kAny, kLastHour, kToday, kYesterday, kLastDay, kFromTo };

    Kind kind = Kind::kAny;
    QDateTime from{};  ///< of kFromTo, as is the next one
    QDateTime to{};    ///< the moment past the last one

    [[nodiscard]] static EventSpan of(MovingSpan span) {
        return {static_cast<Kind>(static_cast<int>(Kind::kLastHour) + static_cast<int>(span))};
    }
    /// Nothing for any and for kFromTo.
    [[nodiscard]] std::optional<MovingSpan> moving() const;

    using Moments = SpanMoments;
    /// At that time. Spans that go on do so by whole minutes.
    [[nodiscard]] Moments momentsAt(const QDateTime &now) const;
    /// How the clock's part of kFromTo is shown: with seconds where they matter.
    [[nodiscard]] QString clockFormat() const;
    /// As it is shown at that time; empty for any.
    [[nodiscard]] QString textAt(const QDateTime &now) const;
    /// The same where there is little room: without the year that it is, and without the day on
    /// which it ends if that is clear.
    [[nodiscard]] QString shortTextAt(const QDateTime &now) const;
};

/// The filter as it is to be looked for at that time, with moments in place of spans that go on.
EventQuery queryAt(const EventQuery &query, const QDateTime &now);

}  // namespace quorbel
