#include "core/WatchedHours.h"

#include <algorithm>
#include <limits>

namespace quorbel {

std::uint32_t WatchedHours::watchedSince(std::int64_t moment) const {
    const std::int64_t gap = m_last == 0 ? 0 : std::max<std::int64_t>(moment - m_last, 0);
    return static_cast<std::uint32_t>(std::min<std::int64_t>(gap, m_lull));
}

void WatchedHours::advance(LocalClock::Hour hour) {
    if (hour == m_hour) {
        return;
    }
    // An hour that the clock was put back to begins anew.
    const LocalClock::Hour first =
        hour - m_hour > 0 ? std::max(m_hour + 1, hour - kKept + 1) : hour;
    for (LocalClock::Hour h = first; h <= hour; ++h) {
        m_seconds[place(h)] = 0;
    }
    m_hour = hour;
    m_lull = std::clamp(2 * m_gaps.usual(), kShortestLull, kLongestLull);
}

void WatchedHours::arrive(std::int64_t moment, LocalClock::Hour hour) {
    const std::uint32_t watched = watchedSince(moment);
    if (m_last != 0 && moment > m_last) {
        m_gaps.note(hour, static_cast<std::uint32_t>(
                              std::min<std::int64_t>(moment - m_last, kLongestLull)));
    }
    advance(hour);
    m_total += watched;
    const std::uint32_t most = std::numeric_limits<std::uint16_t>::max();
    auto &seconds = m_seconds[place(hour)];
    seconds = static_cast<std::uint16_t>(std::min(seconds + watched, most));
    m_last = moment;
}

}  // namespace quorbel
