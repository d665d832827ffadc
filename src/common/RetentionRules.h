#pragma once

#include "common/Severity.h"
#include "platform/Value.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace quorbel {

/// How long events of each severity class are kept. Times are seconds since 1970; an event is the
/// one class's that also picks its image.
class RetentionRules {
public:
    /// A moment for each class: its events of then and before have been kept for long enough.
    /// Nothing for a class whose events are kept for ever.
    using Limits = std::array<std::optional<std::int64_t>, kSeverityClassCount>;

    RetentionRules() = default;
    /// Reads "removal<Class>", the amount, and "removal<Class>Units": 0 minutes, 1 hours, 2 days,
    /// 3 weeks, 4 months of the local calendar. Any other unit, and an amount below 1, keeps for
    /// ever.
    explicit RetentionRules(const Dictionary &settings);

    /// Whether everything is kept for ever.
    [[nodiscard]] bool keepsAll() const;
    [[nodiscard]] Limits limitsAt(std::int64_t now) const;
    /// When an event of that class and time will have been kept for long enough, or up to about an
    /// hour later.
    [[nodiscard]] std::optional<std::int64_t> endOf(std::size_t severityClass,
                                                    std::int64_t time) const;
    /// How much longer than wanted events of a class may be kept, so that a file of theirs need not
    /// be rewritten each minute: a sixtieth of the time, at most an hour.
    [[nodiscard]] std::int64_t slack(std::size_t severityClass) const;
    /// The first moment at which some event of that time or later will have been kept for long
    /// enough; the same with the slack.
    [[nodiscard]] std::optional<std::int64_t> firstEnd(std::int64_t time) const;
    [[nodiscard]] std::optional<std::int64_t> firstRemoval(std::int64_t time) const;

    bool operator==(const RetentionRules &) const = default;

private:
    /// How long events are kept: seconds or, when these are 0, calendar months.
    struct Period {
        std::int64_t seconds = 0;
        int months = 0;

        bool operator==(const Period &) const = default;
    };

    [[nodiscard]] std::optional<std::int64_t> firstOf(std::int64_t time, bool withSlack) const;
    static std::int64_t before(const Period &period, std::int64_t time);

    std::array<std::optional<Period>, kSeverityClassCount> m_periods;
};

}  // namespace quorbel
