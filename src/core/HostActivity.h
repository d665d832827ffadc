#pragma once

#include "core/LocalClock.h"
#include "core/LongestGaps.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace quorbel {

/// When one host sent: in which clock hours of the last four weeks, and the longest gaps between
/// two of its events. 136 bytes, whatever it sends.
class HostActivity {
public:
    static constexpr LocalClock::Hour kKept = 4 * LocalClock::kWeek;

    /// An event of the host. `watched` is WatchedHours::total() with it.
    void arrive(std::int64_t moment, LocalClock::Hour hour, std::uint32_t watched) {
        if (m_first == 0) {
            begin(moment, hour);
        } else {
            m_gaps.note(hour, watched - m_watched);
        }
        if (hour != m_lastHour) {
            advance(hour);
        }
        m_first = std::min(m_first, moment);
        m_last = moment;
        m_watched = watched;
    }

    [[nodiscard]] std::int64_t first() const { return m_first; }
    /// That of the event that came last, also where the service's clock was put back.
    [[nodiscard]] std::int64_t last() const { return m_last; }
    [[nodiscard]] LocalClock::Hour firstHour() const { return m_firstHour; }
    [[nodiscard]] LocalClock::Hour lastHour() const { return m_lastHour; }
    [[nodiscard]] std::uint32_t watchedAtLast() const { return m_watched; }
    [[nodiscard]] const LongestGaps &gaps() const { return m_gaps; }
    // Precondition: one of the kKept hours up to and with lastHour().
    [[nodiscard]] bool wasActive(LocalClock::Hour hour) const {
        return (m_hours[word(hour)] >> bit(hour) & 1U) != 0;
    }

private:
    static constexpr LocalClock::Hour kBits = 64;
    static constexpr LocalClock::Hour kWords = (kKept + kBits - 1) / kBits;

    static std::size_t word(LocalClock::Hour hour) {
        return static_cast<std::size_t>(hour % (kWords * kBits) / kBits);
    }
    static unsigned bit(LocalClock::Hour hour) { return static_cast<unsigned>(hour % kBits); }
    void begin(std::int64_t moment, LocalClock::Hour hour);
    void advance(LocalClock::Hour hour);

    std::int64_t m_first = 0;
    std::int64_t m_last = 0;
    LocalClock::Hour m_firstHour = 0;
    LocalClock::Hour m_lastHour = 0;
    std::uint32_t m_watched = 0;
    LongestGaps m_gaps;
    std::array<std::uint64_t, kWords> m_hours{};
};

}  // namespace quorbel
