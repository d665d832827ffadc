#pragma once

#include "core/HourlyArrivals.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace quorbel {

/// What a chart shows: the counts of the clock hours of a day up to the one that goes on, which
/// comes last, and of the same hours a day before.
struct HourCounts {
    static constexpr std::size_t kColumns = 24;

    HourlyArrivals::Hour current = 0;  ///< the last column's
    std::array<std::uint64_t, kColumns> lastDay{};
    std::array<std::uint64_t, kColumns> dayBefore{};

    /// Of the day from 0 to 23.
    [[nodiscard]] int clockHour(std::size_t column) const;
    [[nodiscard]] std::uint64_t total() const;
    bool operator==(const HourCounts &) const = default;
};

/// Of one severity class.
HourCounts hourCounts(const HourlyArrivals &arrivals, std::size_t severityClass,
                      HourlyArrivals::Hour current);

/// Turns counts into heights: by their square roots, so that chance looks alike everywhere, a storm
/// does not flatten the night, and a single event shows.
class HourScale {
public:
    explicit HourScale(const HourCounts &counts);

    /// What stands for the whole height: one of few round numbers, so that it rarely changes.
    [[nodiscard]] std::uint64_t top() const { return m_top; }
    /// Of a chart that is so many pixels high: 0 for nothing, `least` for anything, and at most
    /// all.
    [[nodiscard]] int height(std::uint64_t count, int pixels, int least) const;
    /// Whether a count of the day before is so far above all others that the chart is open there.
    [[nodiscard]] bool isBeyond(std::uint64_t count) const { return count > m_top; }

private:
    std::uint64_t m_top;
};

}  // namespace quorbel
