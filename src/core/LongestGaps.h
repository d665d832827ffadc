#pragma once

#include "core/LocalClock.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace quorbel {

/// The longest gap of each of the last weeks in which there were any, in seconds.
class LongestGaps {
public:
    static constexpr std::size_t kWeeks = 5;  ///< with the one that is not over

    void note(LocalClock::Hour hour, std::uint32_t gap) {
        if (const LocalClock::Hour week = hour / LocalClock::kWeek; week != m_week) {
            begin(week);
        }
        if (gap > m_longest[0]) {
            m_longest[0] = gap;
        }
    }
    /// The longest that is usual: one that stands alone is taken for an accident as soon as there
    /// are weeks to compare it with. 0 where there was none.
    [[nodiscard]] std::uint32_t usual() const;

private:
    void begin(LocalClock::Hour week);

    LocalClock::Hour m_week = 0;
    std::array<std::uint32_t, kWeeks> m_longest{};  // of this week, the one before, and so on
};

}  // namespace quorbel
