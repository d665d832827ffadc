// Hosts that live and die in made-up weeks: which are told to be silent, when, and which wrongly.

#include "MadeUpWeeks.h"
#include "core/HostHistory.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <optional>

namespace quorbel {
namespace {

using testing::MadeUpWeeks;

constexpr int kDays = 70;
constexpr int kDeathsFrom = 56;  // in the ninth week, every other host that is expected dies
constexpr std::int64_t kLook = 10 * MadeUpWeeks::kMinute;
constexpr std::int64_t kToldWithin = 8 * MadeUpWeeks::kDay;

struct Arrival {
    std::int64_t moment;
    std::uint32_t host;
};

struct MadeUpHost {
    std::string name;
    std::size_t kind;
    std::int64_t death;
    bool isTold = false;  // as overdue, at the last look
    int falseAlarms = 0;
    std::optional<std::int64_t> toldAfter{};
};

/// What became of the hosts of a kind.
struct Outcome {
    int hosts = 0;
    int deaths = 0;
    int falseAlarms = 0;
    std::vector<std::int64_t> delays;
};

class SilenceSimulationTest : public ::testing::Test {
protected:
    SilenceSimulationTest() { tzset(); }
    ~SilenceSimulationTest() override { tzset(); }

    std::int64_t at(int day, std::int64_t seconds) const {
        std::tm time{};
        time.tm_year = m_year - 1900;
        time.tm_mon = m_month;
        time.tm_mday = m_monday + day;
        time.tm_hour = static_cast<int>(seconds / 3600);
        time.tm_min = static_cast<int>(seconds % 3600 / 60);
        time.tm_sec = static_cast<int>(seconds % 60);
        time.tm_isdst = -1;
        return std::mktime(&time);
    }
    void startOn(int year, int month, int monday) {
        m_year = year;
        m_month = month - 1;
        m_monday = monday;
    }
    /// The service did not run then.
    void stopService(std::int64_t from, std::int64_t until) { m_stops.emplace_back(from, until); }

    void makeUp() {
        const std::int64_t start = at(0, 0);
        const auto &kinds = MadeUpWeeks::kinds();
        for (std::size_t kind = 0; kind < kinds.size(); ++kind) {
            for (int i = 0; i < kinds[kind].hosts; ++i) {
                makeUpHost(kind, i, start);
            }
        }
        std::ranges::sort(m_arrivals, {}, &Arrival::moment);
    }
    void makeUpHost(std::size_t kind, int number, std::int64_t start) {
        const auto &made = MadeUpWeeks::kinds()[kind];
        MadeUpHost host{std::string(made.name) + '#' + std::to_string(number), kind, at(kDays, 0)};
        if (made.isRegular && number % 2 == 0) {
            host.death = at(kDeathsFrom, 0) + std::uniform_int_distribution<std::int64_t>(
                                                  0, 5 * MadeUpWeeks::kDay)(m_random);
        }
        const auto index = static_cast<std::uint32_t>(m_hosts.size());
        made.sends({start, kDays, [this](int day, std::int64_t s) { return at(day, s); }, m_random,
                    [&](std::int64_t moment) {
                        if (moment < host.death && !isStopped(moment)) {
                            m_arrivals.push_back({moment, index});
                        }
                    }});
        m_hosts.push_back(std::move(host));
    }
    [[nodiscard]] bool isStopped(std::int64_t moment) const {
        return std::ranges::any_of(m_stops, [=](const auto &stop) {
            return moment >= stop.first && moment < stop.second;
        });
    }

    void run() {
        std::int64_t look = at(0, 0) + kLook;
        for (const Arrival &arrival : m_arrivals) {
            for (; look <= arrival.moment; look += kLook) {
                lookAround(look);
            }
            m_history.add(m_hosts[arrival.host].name, arrival.moment, 6);
        }
    }
    void lookAround(std::int64_t now) {
        m_history.judge(now, [] { return false; });
        for (MadeUpHost &host : m_hosts) {
            const HostRecord *record = m_history.find(host.name);
            const bool isTold = record != nullptr && m_history.isOverdue(*record, now);
            if (isTold && !host.isTold) {
                tell(host, now, *record);
            }
            host.isTold = isTold;
        }
    }
    void tell(MadeUpHost &host, std::int64_t now, const HostRecord &record) {
        if (now > host.death) {
            host.toldAfter = host.toldAfter.value_or(now - record.activity.last());
        } else {
            ++host.falseAlarms;
        }
    }

    std::map<std::size_t, Outcome> outcomes() const {
        std::map<std::size_t, Outcome> outcomes;
        for (const MadeUpHost &host : m_hosts) {
            Outcome &outcome = outcomes[host.kind];
            ++outcome.hosts;
            outcome.deaths += host.death < at(kDays, 0) ? 1 : 0;
            outcome.falseAlarms += host.falseAlarms;
            if (host.toldAfter && *host.toldAfter <= kToldWithin) {
                outcome.delays.push_back(*host.toldAfter);
            }
        }
        for (auto &[kind, outcome] : outcomes) {
            std::ranges::sort(outcome.delays);
        }
        return outcomes;
    }
    static void check(const std::map<std::size_t, Outcome> &outcomes) {
        for (const auto &[kind, outcome] : outcomes) {
            const auto &made = MadeUpWeeks::kinds()[kind];
            const auto told = static_cast<int>(outcome.delays.size());
            EXPECT_LE(outcome.falseAlarms, made.mostFalse) << made.name;
            EXPECT_LE(outcome.deaths - told, made.mostMissed) << made.name;
            EXPECT_TRUE(!made.isRegular || outcome.deaths >= made.hosts / 2) << made.name;
            if (told > 0) {
                EXPECT_LE(static_cast<double>(outcome.delays.back()) / 3600, made.latest)
                    << made.name;
            }
        }
    }
    static void print(const std::map<std::size_t, Outcome> &outcomes) {
        std::printf("%-32s %5s %6s %6s %6s %9s %9s %9s\n", "kind", "hosts", "false", "deaths",
                    "missed", "soonest", "median", "latest");
        for (const auto &[kind, outcome] : outcomes) {
            const auto hours = [&](std::size_t place) {
                return outcome.delays.empty() ? 0.0
                                              : static_cast<double>(outcome.delays[place]) / 3600;
            };
            const auto told = static_cast<int>(outcome.delays.size());
            const auto &made = MadeUpWeeks::kinds()[kind];
            std::printf("%-32s %5d %6d %6d %6d %8.1fh %8.1fh %8.1fh\n", made.name.data(),
                        outcome.hosts, outcome.falseAlarms, outcome.deaths, outcome.deaths - told,
                        hours(0), hours(outcome.delays.size() / 2),
                        hours(outcome.delays.empty() ? 0 : outcome.delays.size() - 1));
        }
    }

    testing::ScopedVariable m_zone{"TZ", "CET-1CEST,M3.5.0,M10.5.0/3"};
    std::mt19937 m_random{testing::seed()};
    HostHistory m_history;
    std::vector<MadeUpHost> m_hosts;
    std::vector<Arrival> m_arrivals;
    std::vector<std::pair<std::int64_t, std::int64_t>> m_stops;
    int m_year = 2026;
    int m_month = 0;
    int m_monday = 5;
};

TEST_F(SilenceSimulationTest, SpringWithStops) {
    startOn(2026, 2, 9);  // the clock is put forward in the seventh week
    stopService(at(24, 39600), at(24, 39600 + 2400));
    stopService(at(37, 68400), at(39, 21600));
    makeUp();
    run();
    print(outcomes());
    check(outcomes());
}

TEST_F(SilenceSimulationTest, Autumn) {
    startOn(2026, 9, 7);
    makeUp();
    run();
    print(outcomes());
    check(outcomes());
}

}  // namespace
}  // namespace quorbel
