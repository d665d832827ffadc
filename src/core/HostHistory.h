#pragma once

#include "common/Severity.h"
#include "core/HashIndex.h"
#include "core/HostActivity.h"
#include "core/SilenceRule.h"
#include "core/WatchedHours.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// Arrivals by the hour, for as long as a day and the day before it.
class HostHours {
public:
    static constexpr LocalClock::Hour kKept = 2 * LocalClock::kDay;

    void add(LocalClock::Hour hour);
    /// From an hour up to, and with, another one; none where it is not known.
    [[nodiscard]] std::uint64_t sum(LocalClock::Hour first, LocalClock::Hour last) const;
    /// Of the running clock hour and the 23 before it; of those before these.
    [[nodiscard]] std::uint64_t lastDay(LocalClock::Hour now) const {
        return sum(now - LocalClock::kDay + 1, now);
    }
    [[nodiscard]] std::uint64_t dayBefore(LocalClock::Hour now) const {
        return lastDay(now - LocalClock::kDay);
    }

private:
    LocalClock::Hour m_last = 0;
    std::array<std::uint32_t, kKept> m_counts{};
};

/// What is known of one host. Counts are of arrivals: removing and deleting events changes none.
struct HostRecord {
    std::string name;
    HostActivity activity;
    HostHours hours;
    std::uint64_t arrivals = 0;
    std::array<std::uint64_t, kSeverityClassCount> classes{};  ///< as kSeverityClasses has them
    HostHabit habit{};  ///< as it was judged last, see HostHistory::judge()

    [[nodiscard]] std::uint64_t today(LocalClock::Hour now) const {
        return hours.sum(LocalClock::midnightBefore(now), now);
    }
    /// Arrivals a day, up to today or to its end; nothing before it was known for a day.
    [[nodiscard]] std::optional<double> dailyMean(LocalClock::Hour now) const;
    /// The seconds between two events while it sends, or between the hours in which it does where
    /// these are few. Nothing unless it is regular.
    [[nodiscard]] std::optional<double> usualGap() const;
};

/// The hosts that events came from, told apart by the text of their Host field.
///
/// Memory is bounded, whoever sends: kMostHosts of about 700 bytes with their names. Where there is
/// no room, a host of a single hour makes it, one with few events rather than one with many; hosts
/// of several hours are never pushed out, and while there are only such a new one is only counted.
/// Main thread only.
class HostHistory {
public:
    static constexpr std::size_t kMostHosts = 16'384;
    static constexpr std::size_t kLongestName = 255;  ///< a longer text is no host's name

    /// An arrival, in O(1). `host` may be empty, and is then just somebody. Moments are seconds
    /// since 1970 that TimeCounts can count, in the order of arrival.
    void add(std::string_view host, std::int64_t moment, std::uint8_t severityClass);

    [[nodiscard]] std::size_t size() const { return m_hosts.size(); }
    /// In no order that means anything; numbers name hosts until the next arrival.
    [[nodiscard]] const HostRecord &host(std::size_t number) const { return m_hosts[number]; }
    /// Null for one that is not known.
    [[nodiscard]] const HostRecord *find(std::string_view name) const;
    /// Of everybody, known or not.
    [[nodiscard]] const HostHours &all() const { return m_all; }
    [[nodiscard]] const WatchedHours &watched() const { return m_watched; }
    /// How many hosts were forgotten, or never taken in, for want of room; one that came back is
    /// counted again.
    [[nodiscard]] std::uint64_t crowdedOut() const { return m_crowdedOut; }
    [[nodiscard]] LocalClock::Hour hourOf(std::int64_t moment) { return m_clock.hourOf(moment); }

    /// Judges the hosts' habits where that is due, once an hour each, until all are or `isTimeUp`,
    /// asked after each. False while some are left.
    bool judge(std::int64_t now, const std::function<bool()> &isTimeUp);
    /// By the habit judged last.
    [[nodiscard]] bool isOverdue(const HostRecord &host, std::int64_t now) const {
        return SilenceRule::isOverdue(host.habit, host.activity, m_watched.totalAt(now));
    }

private:
    struct Judged {
        LocalClock::Hour last = 0;
        LocalClock::Hour now = 0;
        bool operator==(const Judged &) const = default;
    };

    [[nodiscard]] HostRecord *place(std::string_view name);
    [[nodiscard]] HostRecord *makeRoom();

    LocalClock m_clock;
    WatchedHours m_watched;
    HostHours m_all;
    std::vector<HostRecord> m_hosts;
    std::vector<Judged> m_judged;  // when each habit was
    HashIndex m_index;
    std::size_t m_hand = 0;  // where room is looked for
    std::size_t m_toJudge = 0;
    std::uint64_t m_crowdedOut = 0;
};

}  // namespace quorbel
