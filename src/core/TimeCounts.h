#pragma once

#include "core/EventQuery.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <vector>

namespace quorbel {

/// How many events there are of each rating, or of each group that they are told apart by instead.
using RatingCounts = std::array<std::size_t, kRatingCount>;

/// How many events of each rating happened when: counted by the second, the minute, the hour and
/// about the month, so that any span is the sum of few counts. A second in which there are events
/// takes eight bytes for each of their ratings; how far apart they are does not matter.
class TimeCounts {
public:
    /// Moments from 1970 up to the year 10000; others are on no clock's face and cannot be counted.
    [[nodiscard]] static constexpr bool canCount(std::int64_t moment) {
        return moment >= 0 && moment < kEnd;
    }
    /// The moment past the last that can be counted.
    static constexpr std::int64_t kEnd = 253'402'300'800;

    // Precondition: canCount(moment).
    void add(std::int64_t moment, EventRating rating);
    /// Does nothing when no such event was added.
    void subtract(std::int64_t moment, EventRating rating);

    /// The events from a moment up to, but not at, another one.
    [[nodiscard]] RatingCounts sum(std::int64_t from, std::int64_t until) const;
    [[nodiscard]] bool isEmpty() const { return m_levels.front().isEmpty(); }
    // Precondition: not empty.
    [[nodiscard]] std::int64_t first() const { return m_levels.front().first(); }
    [[nodiscard]] std::int64_t last() const { return m_levels.front().last(); }

private:
    /// Counts by the number of the unit of time, in sorted blocks.
    class Level {
    public:
        void add(std::int64_t unit, EventRating rating);
        /// False when there is none to take away.
        bool subtract(std::int64_t unit, EventRating rating);
        void addTo(RatingCounts &counts, std::int64_t firstUnit, std::int64_t endUnit) const;
        [[nodiscard]] bool isEmpty() const { return m_blocks.empty(); }
        [[nodiscard]] std::int64_t first() const;
        [[nodiscard]] std::int64_t last() const;

    private:
        static constexpr std::int64_t kBlock = 4096;
        struct Entry {
            std::uint16_t unit;  // within the block
            EventRating rating;
            std::uint32_t count;
            [[nodiscard]] std::size_t key() const { return unit * kRatingCount + rating; }
        };
        using Entries = std::vector<Entry>;

        std::map<std::int64_t, Entries> m_blocks;
    };

    static constexpr std::array<std::int64_t, 4> kUnits{1, 60, 3600, 1024 * std::int64_t{3600}};

    void addTo(RatingCounts &counts, std::size_t level, std::int64_t from,
               std::int64_t until) const;

    std::array<Level, kUnits.size()> m_levels;
};

}  // namespace quorbel
