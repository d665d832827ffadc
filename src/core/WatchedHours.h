#pragma once

#include "core/LocalClock.h"
#include "core/LongestGaps.h"

#include <array>
#include <cstdint>

namespace quorbel {

/// For how long anybody was heard at all. Time in which nothing arrives from anybody, beyond what
/// is usual, is nobody's silence: the service did not run, or its network was gone.
class WatchedHours {
public:
    /// Of how many hours it is known.
    static constexpr LocalClock::Hour kKept = 10 * LocalClock::kWeek;

    /// An arrival, from whomever. Moments may go back where the service's clock did.
    void arrive(std::int64_t moment, LocalClock::Hour hour);

    /// The seconds watched up to the last arrival; they never become fewer.
    [[nodiscard]] std::uint32_t total() const { return m_total; }
    /// The same up to a later moment.
    [[nodiscard]] std::uint32_t totalAt(std::int64_t moment) const {
        return m_total + watchedSince(moment);
    }
    /// Whether most of an hour was watched, as far as is known.
    [[nodiscard]] bool isWatched(LocalClock::Hour hour) const {
        return hour <= m_hour && hour > m_hour - kKept && m_seconds[place(hour)] >= kMostOfHour;
    }
    /// How long nothing may arrive from anybody and yet be listened to, in seconds.
    [[nodiscard]] std::uint32_t longestLull() const { return m_lull; }
    /// 0 before the first.
    [[nodiscard]] std::int64_t lastArrival() const { return m_last; }

private:
    static constexpr std::uint32_t kMostOfHour = LocalClock::kSeconds / 2;
    static constexpr std::uint32_t kShortestLull = 120;
    static constexpr std::uint32_t kLongestLull = LocalClock::kSeconds;

    [[nodiscard]] std::uint32_t watchedSince(std::int64_t moment) const;
    [[nodiscard]] static std::size_t place(LocalClock::Hour hour) {
        return static_cast<std::size_t>(hour % kKept);
    }
    void advance(LocalClock::Hour hour);

    std::int64_t m_last = 0;
    LocalClock::Hour m_hour = 0;
    std::uint32_t m_total = 0;
    std::uint32_t m_lull = kShortestLull;
    LongestGaps m_gaps;
    std::array<std::uint16_t, kKept> m_seconds{};  // by the hour that the arrival after them is of
};

}  // namespace quorbel
