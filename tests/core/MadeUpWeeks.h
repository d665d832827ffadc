#pragma once

#include "core/LocalClock.h"
#include "support/ScopedVariable.h"
#include "support/Seed.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel::testing {

/// Weeks of made-up traffic, the same for the same seed, on clocks that are put forward or back.
class MadeUpWeeks {
public:
    static constexpr std::int64_t kMinute = 60;
    static constexpr std::int64_t kHour = 60 * kMinute;
    static constexpr std::int64_t kDay = 24 * kHour;
    static constexpr std::int64_t kWeek = 7 * kDay;

    /// A moment of a day, as the clock on the wall shows it: day 0 is the first one, a Monday.
    using DayTime = std::function<std::int64_t(int day, std::int64_t seconds)>;
    using Send = std::function<void(std::int64_t moment)>;
    struct Days {
        std::int64_t start;
        int count;
        DayTime at;
        std::mt19937 &random;
        Send send;

        [[nodiscard]] double share() const {
            return std::uniform_real_distribution<>(0, 1)(random);
        }
        [[nodiscard]] std::int64_t between(std::int64_t least, std::int64_t most) const {
            return std::uniform_int_distribution<std::int64_t>(least, most)(random);
        }
        [[nodiscard]] std::int64_t gap(double mean) const {
            return 1 + static_cast<std::int64_t>(std::exponential_distribution<>(1 / mean)(random));
        }
        [[nodiscard]] std::int64_t end() const { return at(count, 0); }
        /// Messages at random from one moment to another, with so long between them on average.
        void atRandom(std::int64_t from, std::int64_t until, double mean) const {
            for (std::int64_t next = from + gap(mean); next < until; next += gap(mean)) {
                send(next);
            }
        }
    };
    struct Kind {
        std::string_view name;
        int hosts;
        bool isRegular;  ///< whether anybody would expect the host
        int mostFalse;   ///< alarms for hosts that are well
        int mostMissed;  ///< of the half that dies
        double latest;   ///< hours after its last message by which a dead one is told
        std::function<void(const Days &)> sends;
    };

    static const std::vector<Kind> &kinds();
};

inline bool isWorkday(int day) {
    return day % 7 < 5;
}

/// A day at work: begins and ends about then, with a break, and with meetings now and then.
inline void workday(const MadeUpWeeks::Days &days, int day, double mean) {
    const auto start = days.at(day, 8 * MadeUpWeeks::kHour + days.between(-30, 45) * 60);
    const auto noon = days.at(day, 12 * MadeUpWeeks::kHour + days.between(-15, 30) * 60);
    const auto end = days.at(day, 17 * MadeUpWeeks::kHour + days.between(-60, 60) * 60);
    days.atRandom(start, noon, mean);
    const bool isAway = days.share() < 0.1;  // three hours in a meeting
    days.atRandom(noon + (isAway ? 180 : 45) * MadeUpWeeks::kMinute, end, mean);
}

inline const std::vector<MadeUpWeeks::Kind> &MadeUpWeeks::kinds() {
    static const std::vector<Kind> kinds{
        {"every 30 s at random", 6, true, 0, 0, 1,
         [](const Days &d) { d.atRandom(d.start, d.end(), 30); }},
        {"every 5 min, 3 % lost", 20, true, 0, 0, 1.5,
         [](const Days &d) {
             for (auto at = d.start + d.between(0, 300); at < d.end(); at += 300) {
                 if (d.share() >= 0.03) {
                     d.send(at + d.between(0, 8));
                 }
             }
         }},
        {"every 5 min at random", 20, true, 0, 0, 3,
         [](const Days &d) { d.atRandom(d.start, d.end(), 300); }},
        {"busy by day, 20 min at night", 20, true, 0, 0, 24,
         [](const Days &d) {
             for (int day = 0; day < d.count; ++day) {
                 d.atRandom(d.at(day, 0), d.at(day, 7 * kHour), 1200);
                 d.atRandom(d.at(day, 7 * kHour), d.at(day, 20 * kHour), 90);
                 d.atRandom(d.at(day, 20 * kHour), d.at(day + 1, 0), 1200);
             }
         }},
        {"every hour", 20, true, 0, 0, 3,
         [](const Days &d) {
             for (auto at = d.start + d.between(0, 3600); at < d.end(); at += 3600) {
                 d.send(at + d.between(0, 20));
             }
         }},
        {"every 6 h", 20, true, 0, 0, 36,
         [](const Days &d) {
             for (auto at = d.start + d.between(0, 6 * kHour); at < d.end(); at += 6 * kHour) {
                 d.send(at + d.between(0, 60));
             }
         }},
        {"backup at night, in a burst", 20, true, 0, 0, 97,
         [](const Days &d) {
             for (int day = 0; day < d.count; ++day) {
                 const auto at = d.at(day, 2 * kHour + d.between(0, 50) * kMinute + 300);
                 d.atRandom(at, at + 20 * kMinute, 10);
             }
         }},
        {"every day at 3:10 UTC", 20, true, 0, 0, 145,
         [](const Days &d) {
             for (auto at = d.start - d.start % kDay + 3 * kHour + 600; at < d.end(); at += kDay) {
                 d.send(at + d.between(0, 120));
             }
         }},
        {"workdays, 8 to 17", 20, true, 1, 0, 97,
         [](const Days &d) {
             for (int day = 0; day < d.count; ++day) {
                 if (isWorkday(day)) {
                     workday(d, day, 240);
                 }
             }
         }},
        {"the same, days off, leave", 20, true, 60, 4, 192,
         [](const Days &d) {
             const auto leave = static_cast<int>(d.between(0, d.count));
             for (int day = 0; day < d.count; ++day) {
                 const bool isOff = (day >= leave && day < leave + 7) || d.share() < 0.04;
                 if (isWorkday(day) && !isOff) {
                     workday(d, day, 240);
                 }
             }
         }},
        {"six times a day at random", 20, true, 2, 0, 168,
         [](const Days &d) { d.atRandom(d.start, d.end(), 4 * kHour); }},
        {"bursts, 8 h apart at random", 20, true, 3, 2, 192,
         [](const Days &d) {
             for (auto at = d.start + d.gap(8 * kHour); at < d.end(); at += d.gap(8 * kHour)) {
                 d.atRandom(at, at + 10 * kMinute, 8);
             }
         }},
        {"printer, at work, now and then", 20, true, 2, 1, 192,
         [](const Days &d) {
             for (int day = 0; day < d.count; ++day) {
                 if (isWorkday(day)) {
                     d.atRandom(d.at(day, 8 * kHour), d.at(day, 18 * kHour), 90 * kMinute);
                 }
             }
         }},
        {"once a week", 10, true, 0, 5, 192,
         [](const Days &d) {
             for (int day = 6; day < d.count; day += 7) {
                 d.atRandom(d.at(day, 4 * kHour), d.at(day, 5 * kHour), 60);
             }
         }},
        {"once, for an hour", 60, false, 0, 0, 0,
         [](const Days &d) {
             const auto at = d.start + d.between(0, d.count - 2) * kDay + d.between(0, kDay);
             d.atRandom(at, at + kHour, 120);
         }},
        {"a visitor, for three days", 30, false, 0, 0, 0,
         [](const Days &d) {
             const auto first = static_cast<int>(d.between(0, d.count - 4));
             for (int day = first; day < first + 3; ++day) {
                 workday(d, day, 300);
             }
         }},
    };
    return kinds;
}

}  // namespace quorbel::testing
