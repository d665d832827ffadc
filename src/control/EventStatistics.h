#pragma once

#include "common/LogReader.h"
#include "common/Severity.h"
#include "core/EventQuery.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace quorbel {

/// How many events there are, by rating, severity, host and day of the local calendar.
class EventStatistics {
public:
    /// Of so many hosts each has a number of its own; later ones are counted together.
    static constexpr std::size_t kMostHosts = 100'000;

    /// `count` events like this one.
    void add(const LogLine &event, EventRating rating, std::uint64_t count = 1);

    [[nodiscard]] std::uint64_t events() const { return m_events; }
    /// What people read, or an object of JSON; ended by a line feed.
    [[nodiscard]] std::string text() const;
    [[nodiscard]] std::string json() const;

private:
    using Count = std::pair<std::string, std::uint64_t>;

    std::uint64_t &countOfDay(std::string_view date);
    [[nodiscard]] std::vector<Count> ratings() const;
    [[nodiscard]] std::vector<Count> severities() const;
    [[nodiscard]] std::vector<Count> hosts() const;
    [[nodiscard]] std::vector<Count> days() const;

    std::uint64_t m_events = 0;
    std::array<std::uint64_t, kRatingCount> m_ratings{};
    std::array<std::uint64_t, kSeverityClassCount> m_severities{};
    std::unordered_map<std::string, std::uint64_t> m_hosts;
    std::uint64_t m_otherHosts = 0;
    std::map<std::string, std::uint64_t> m_days;
    std::int64_t m_quarter = INT64_MIN;  ///< of an hour: the last one looked up, with its day
    std::uint64_t *m_quarterDay = nullptr;
};

}  // namespace quorbel
