#pragma once

#include "common/Severity.h"

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace quorbel {

/// How many events of each severity class came in each clock hour of the last two days, by the
/// events' own times. What leaves the list is counted still. Takes little memory, always the same,
/// and a moment for each event.
class HourlyArrivals {
public:
    /// How many hours are known, with the one that goes on.
    static constexpr std::int64_t kHours = 48;

    /// An hour as the clocks of this place show it, in order: the two that follow one another when
    /// clocks are put back are the same one, and no event has the one that is left out when they
    /// are put forward. Those of a day begin at a multiple of 24.
    using Hour = std::int64_t;
    static Hour hourOf(std::int64_t seconds);

    /// Counts an event in some classes. Times are in seconds since 1970; one that is too old, or
    /// hours ahead of `now`, does not count.
    void add(const std::bitset<kSeverityClassCount> &classes, std::int64_t seconds,
             std::int64_t now);
    /// Counts what others counted, up to the same `now`.
    void add(const HourlyArrivals &others);
    /// Of an hour among the kHours up to now, and of a severity class.
    [[nodiscard]] std::uint64_t count(std::size_t severityClass, Hour hour) const;
    /// The latest time of all that were not ahead of the clock; nothing before the first of them.
    [[nodiscard]] std::optional<std::int64_t> latest() const { return m_latest; }

private:
    struct Counts {
        Hour hour = 0;
        std::array<std::uint64_t, kSeverityClassCount> byClass{};
    };
    /// The hour of moments that are close to one another.
    class KnownHour {
    public:
        Hour of(std::int64_t seconds);

    private:
        std::optional<std::int64_t> m_quarter;  // of an hour, since 1970
        Hour m_hour = 0;
    };

    /// Hours that differ by less have places of their own.
    static constexpr std::size_t kPlaces = 64;
    static std::size_t placeOf(Hour hour) { return static_cast<std::size_t>(hour) % kPlaces; }

    std::array<Counts, kPlaces> m_counts{};
    KnownHour m_eventHour;
    KnownHour m_clockHour;
    std::optional<std::int64_t> m_latest;
};

}  // namespace quorbel
