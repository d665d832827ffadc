#pragma once

#include "core/HostActivity.h"
#include "core/WatchedHours.h"

#include <cstdint>

namespace quorbel {

/// What a host's habit says of its silence. docs/decisions.md tells why it is decided so.
struct HostHabit {
    enum class Kind : std::uint8_t {
        kLearning,   ///< heard for less than a week, or on too few days
        kIrregular,  ///< its silence would tell nothing within a week
        kAtHours,    ///< sends at certain hours: it is the missed ones that count
        kSteady,     ///< no hour without it: seconds count
    };

    Kind kind = Kind::kLearning;
    /// How much silence its habit explains: expected hours, or for a steady one seconds watched.
    double explained = 0;
    /// Expected hours that went by without it, each as far as it was expected.
    double missed = 0;
    /// The share of the hours watched in which it sent.
    double activeShare = 0;

    [[nodiscard]] bool isRegular() const { return kind >= Kind::kAtHours; }
};

/// Decides whether a host has fallen silent: a pure function of when it sent and when anybody did.
class SilenceRule {
public:
    /// How long a host is watched before anything is said of it.
    static constexpr LocalClock::Hour kLearned = LocalClock::kWeek;
    /// A host that was not heard for longer is not expected any more.
    static constexpr LocalClock::Hour kForgotten = HostActivity::kKept;

    /// Precondition: something arrived from the host.
    static HostHabit judge(const HostActivity &host, const WatchedHours &watched,
                           LocalClock::Hour now);
    /// The habit may have been judged in any moment of this hour.
    static bool isOverdue(const HostHabit &habit, const HostActivity &host,
                          std::uint32_t watchedNow);
};

}  // namespace quorbel
