#pragma once

#include <cstdint>
#include <span>
#include <unordered_map>

namespace quorbel {

/// Rounded down below zero, too. `by` is positive.
constexpr std::int64_t floorDivide(std::int64_t number, std::int64_t by) {
    return number / by - (number % by < 0 ? 1 : 0);
}

/// Cuts time into columns that are numbered one after the other and begin where the local clock or
/// calendar begins something: an hour, half a day, a week with its Monday, a month, a year. So when
/// clocks change, or in February, one of them is longer or shorter than its like.
class TimeColumns {
public:
    /// About how long columns may be, in seconds, the shortest first.
    static std::span<const std::int64_t> lengths();

    /// `length` is one of lengths(). Columns of up to an hour count from a clock that reads
    /// `clockOffset` seconds later than UTC all the time.
    TimeColumns(std::int64_t length, std::int64_t clockOffset);

    [[nodiscard]] std::int64_t columnOf(std::int64_t moment) const;
    /// In seconds since 1970; where the column before it ends.
    [[nodiscard]] std::int64_t startOf(std::int64_t column) const;

private:
    [[nodiscard]] std::int64_t guess(std::int64_t moment) const;
    [[nodiscard]] std::int64_t askCalendar(std::int64_t column) const;

    std::int64_t m_length;
    std::int64_t m_clockOffset;
    int m_months;  // 0 for columns that are no months
    // What the calendar has said: it takes microseconds, and a frame asks for a thousand of them.
    mutable std::unordered_map<std::int64_t, std::int64_t> m_starts;
};

}  // namespace quorbel
