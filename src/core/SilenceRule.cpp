#include "core/SilenceRule.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace quorbel {

namespace {

using Hour = LocalClock::Hour;

constexpr int kEnoughDays = 5;
/// Silence beyond this many times the longest that is usual, and a little more, is unusual.
constexpr double kPatience = 2;
constexpr double kMoreHours = 1.8;
constexpr double kMoreSeconds = 600;

/// In how many of the hours of a kind the host was active.
struct Tally {
    int watched = 0;
    int active = 0;
    [[nodiscard]] double share() const {
        return static_cast<double>(active) / static_cast<double>(watched);
    }
};

/// How much a host is expected in each hour of the week.
class Profile {
public:
    Profile(const HostActivity &host, const WatchedHours &watched)
        : m_first(std::max(host.firstHour(), host.lastHour() - HostActivity::kKept + 1)) {
        Hour day = -1;
        for (Hour hour = m_first; hour <= host.lastHour(); ++hour) {
            const bool isActive = host.wasActive(hour);
            if (isActive || watched.isWatched(hour)) {
                add(hour, isActive);
            }
            if (isActive && hour / LocalClock::kDay != day) {
                day = hour / LocalClock::kDay;
                ++m_activeDays;
            }
        }
    }

    [[nodiscard]] Hour first() const { return m_first; }
    [[nodiscard]] int activeDays() const { return m_activeDays; }
    [[nodiscard]] const Tally &all() const { return m_all; }
    /// From 0 to 1: as often as it sent at this hour of the day, and of the week. An hour of the
    /// week that was never watched expects nothing.
    [[nodiscard]] double expected(Hour hour) const {
        const Tally &week = ofWeek(hour);
        return week.watched == 0 ? 0 : std::min(ofDay(hour).share(), week.share());
    }
    /// The same for one of the silent hours counted, from what is known of all others. Where these
    /// say nothing of the week, the day alone says it: too much rather than too little.
    [[nodiscard]] double expectedBesides(Hour hour) const {
        const Tally day{ofDay(hour).watched - 1, ofDay(hour).active};
        const Tally week{ofWeek(hour).watched - 1, ofWeek(hour).active};
        if (day.watched == 0) {
            return 0;
        }
        return week.watched == 0 ? day.share() : std::min(day.share(), week.share());
    }
    [[nodiscard]] double expectedInWeek() const {
        double sum = 0;
        for (Hour hour = 0; hour < LocalClock::kWeek; ++hour) {
            sum += expected(hour);
        }
        return sum;
    }

private:
    [[nodiscard]] const Tally &ofDay(Hour hour) const {
        return m_ofDay[static_cast<std::size_t>(hour % LocalClock::kDay)];
    }
    [[nodiscard]] const Tally &ofWeek(Hour hour) const {
        return m_ofWeek[static_cast<std::size_t>(hour % LocalClock::kWeek)];
    }
    void add(Hour hour, bool isActive) {
        for (Tally *tally : {&m_all, &m_ofDay[static_cast<std::size_t>(hour % LocalClock::kDay)],
                             &m_ofWeek[static_cast<std::size_t>(hour % LocalClock::kWeek)]}) {
            ++tally->watched;
            tally->active += isActive ? 1 : 0;
        }
    }

    Hour m_first;
    int m_activeDays = 0;
    Tally m_all;
    std::array<Tally, LocalClock::kDay> m_ofDay{};
    std::array<Tally, LocalClock::kWeek> m_ofWeek{};
};

/// A run of watched hours without the host.
struct Silence {
    double expected = 0;
    int hours = 0;
};

/// The two longest silences of the past, by what was expected meanwhile.
class PastSilences {
public:
    PastSilences(const HostActivity &host, const WatchedHours &watched, const Profile &profile) {
        Silence run;
        for (Hour hour = profile.first(); hour <= host.lastHour(); ++hour) {
            if (host.wasActive(hour)) {
                add(run);
                run = {};
            } else if (watched.isWatched(hour)) {
                run.expected += profile.expectedBesides(hour);
                ++run.hours;
                ++m_hours;
            }
        }
    }

    /// The longest that is usual: one that stands alone is an accident.
    [[nodiscard]] double usual() const {
        return isAccident() ? m_second.expected : m_longest.expected;
    }
    /// Whether no hour was missed but in an accident.
    [[nodiscard]] bool isSteady() const {
        return m_hours == 0 || (isAccident() && m_hours == m_longest.hours);
    }

private:
    [[nodiscard]] bool isAccident() const {
        return m_longest.expected >= kPatience * m_second.expected + kMoreHours;
    }
    void add(const Silence &run) {
        if (run.expected > m_longest.expected) {
            m_second = m_longest;
            m_longest = run;
        } else if (run.expected > m_second.expected) {
            m_second = run;
        }
    }

    Silence m_longest;
    Silence m_second;
    int m_hours = 0;
};

double missedSince(const HostActivity &host, const WatchedHours &watched, const Profile &profile,
                   Hour now) {
    double missed = 0;
    for (Hour hour = host.lastHour() + 1; hour < now; ++hour) {
        missed += watched.isWatched(hour) ? profile.expected(hour) : 0;
    }
    return missed;
}

}  // namespace

HostHabit SilenceRule::judge(const HostActivity &host, const WatchedHours &watched, Hour now) {
    HostHabit habit;
    if (host.lastHour() - host.firstHour() < kLearned) {
        return habit;
    }
    const Profile profile(host, watched);
    habit.activeShare = profile.all().share();
    if (profile.activeDays() < kEnoughDays || now - host.lastHour() > kForgotten) {
        habit.kind = HostHabit::Kind::kIrregular;
        return habit;
    }
    const PastSilences past(host, watched, profile);
    if (past.isSteady()) {
        habit.kind = HostHabit::Kind::kSteady;
        habit.explained = kPatience * host.gaps().usual() + kMoreSeconds;
        return habit;
    }
    habit.explained = kPatience * past.usual() + kMoreHours;
    habit.kind = profile.expectedInWeek() >= habit.explained ? HostHabit::Kind::kAtHours
                                                             : HostHabit::Kind::kIrregular;
    habit.missed = missedSince(host, watched, profile, now);
    return habit;
}

bool SilenceRule::isOverdue(const HostHabit &habit, const HostActivity &host,
                            std::uint32_t watchedNow) {
    switch (habit.kind) {
        case HostHabit::Kind::kAtHours:
            return habit.missed >= habit.explained;
        case HostHabit::Kind::kSteady:
            return watchedNow - host.watchedAtLast() > habit.explained;
        default:
            return false;
    }
}

}  // namespace quorbel
