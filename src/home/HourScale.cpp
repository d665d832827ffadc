#include "home/HourScale.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace quorbel {

namespace {

constexpr std::uint64_t kLeastTop = 25;

/// kLeastTop times 1, 1.5, 2, 3, 5, 7, 10 and so on, at least `count`.
std::uint64_t roundTop(std::uint64_t count) {
    constexpr std::uint64_t kLargest = std::numeric_limits<std::uint64_t>::max() / 100;
    constexpr std::array<std::uint64_t, 6> kTenths{10, 15, 20, 30, 50, 70};
    for (std::uint64_t unit = kLeastTop; unit < kLargest; unit *= 10) {
        for (const std::uint64_t tenths : kTenths) {
            // 37.5 as 37: a top that is a little lower than its name.
            if (const std::uint64_t top = unit * tenths / 10; top >= count) {
                return top;
            }
        }
    }
    return count;
}

}  // namespace

int HourCounts::clockHour(std::size_t column) const {
    const auto hour = current + static_cast<HourlyArrivals::Hour>(column) -
                      static_cast<HourlyArrivals::Hour>(kColumns - 1);
    return static_cast<int>((hour % 24 + 24) % 24);
}

std::uint64_t HourCounts::total() const {
    return std::accumulate(lastDay.begin(), lastDay.end(), std::uint64_t{0});
}

HourCounts hourCounts(const HourlyArrivals &arrivals, std::size_t severityClass,
                      HourlyArrivals::Hour current) {
    HourCounts counts;
    counts.current = current;
    for (std::size_t i = 0; i < HourCounts::kColumns; ++i) {
        const auto before = static_cast<HourlyArrivals::Hour>(HourCounts::kColumns - 1 - i);
        const HourlyArrivals::Hour hour = current - before;
        counts.lastDay.at(i) = arrivals.count(severityClass, hour);
        counts.dayBefore.at(i) = arrivals.count(severityClass, hour - 24);
    }
    return counts;
}

HourScale::HourScale(const HourCounts &counts)
    : m_top(roundTop(*std::ranges::max_element(counts.lastDay))) {
    const std::uint64_t most = m_top > std::numeric_limits<std::uint64_t>::max() / 2
                                   ? std::numeric_limits<std::uint64_t>::max()
                                   : 2 * m_top;
    std::uint64_t highest = m_top;
    for (const std::uint64_t count : counts.dayBefore) {
        highest = count <= most ? std::max(highest, count) : highest;
    }
    m_top = roundTop(highest);
}

int HourScale::height(std::uint64_t count, int pixels, int least) const {
    if (count == 0) {
        return 0;
    }
    const double part = std::sqrt(static_cast<double>(count) / static_cast<double>(m_top));
    return std::clamp(static_cast<int>(std::lround(part * pixels)), std::min(least, pixels),
                      pixels);
}

}  // namespace quorbel
