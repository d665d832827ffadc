#pragma once

#include <cstdint>

namespace quorbel {

/// Hours and days as the clock on the wall shows them: where it is put forward an hour is missing,
/// where it is put back one is there twice under the same number. Main thread only.
class LocalClock {
public:
    using Hour = std::int32_t;
    static constexpr Hour kDay = 24;
    static constexpr Hour kWeek = 7 * kDay;
    static constexpr std::int64_t kSeconds = 3600;

    /// The number of the clock hour in which a moment is, in seconds since 1970, up to the year
    /// 10000. Asks the system once for each quarter of an hour, one after the other.
    [[nodiscard]] Hour hourOf(std::int64_t moment) {
        if (const std::int64_t quarter = moment / kQuarter; quarter != m_quarter) {
            m_quarter = quarter;
            m_offset = offsetAt(moment);
        }
        return static_cast<Hour>((moment + m_offset) / kSeconds);
    }
    /// The first hour of the day that an hour is of.
    [[nodiscard]] static Hour midnightBefore(Hour hour) { return hour - hour % kDay; }

private:
    static constexpr std::int64_t kQuarter = 900;  // clocks are put on at the end of one

    static std::int64_t offsetAt(std::int64_t moment);

    std::int64_t m_quarter = -1;
    std::int64_t m_offset = 0;
};

}  // namespace quorbel
