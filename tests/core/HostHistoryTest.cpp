// What is known of hosts against a plain count, and how much of it there can be.

#include "core/EventHold.h"
#include "core/EventIntake.h"
#include "core/EventList.h"
#include "core/HostHistory.h"
#include "core/HostWatch.h"
#include "support/NoHomePage.h"
#include "support/ScopedVariable.h"
#include "support/Seed.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <ctime>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace quorbel {
namespace {

constexpr std::int64_t kStart = 1'774'500'000;  // in the week in which the clock is put forward
constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kDay = 24 * kHour;

struct Arrival {
    std::string host;
    std::int64_t moment;
    std::uint8_t severityClass;
};

/// By a look at each arrival.
struct PlainHost {
    std::int64_t first = std::numeric_limits<std::int64_t>::max();
    std::int64_t last = 0;
    std::uint64_t arrivals = 0;
    std::uint64_t today = 0;
    std::uint64_t lastDay = 0;
    std::uint64_t dayBefore = 0;
    std::array<std::uint64_t, kSeverityClassCount> classes{};
};

std::int64_t wallHour(std::int64_t moment) {
    std::tm local{};
    const std::time_t time = moment;
    ::localtime_r(&time, &local);
    return (moment + local.tm_gmtoff) / kHour;
}

PlainHost plainCount(const std::vector<Arrival> &arrivals, const std::string &name,
                     std::int64_t now) {
    PlainHost host;
    for (const Arrival &arrival : arrivals) {
        if (arrival.host != name) {
            continue;
        }
        const std::int64_t age = wallHour(now) - wallHour(arrival.moment);
        host.first = std::min(host.first, arrival.moment);
        host.last = arrival.moment;
        ++host.arrivals;
        host.today += wallHour(arrival.moment) / 24 == wallHour(now) / 24 ? 1U : 0U;
        host.lastDay += age < 24 ? 1U : 0U;
        host.dayBefore += age >= 24 && age < 48 ? 1U : 0U;
        ++host.classes[arrival.severityClass];
    }
    return host;
}

class HostWatchTest : public ::testing::Test {
protected:
    HostWatchTest() { ::tzset(); }
    ~HostWatchTest() override { ::tzset(); }

    class ListPage : public EventListPageLink {
    public:
        [[nodiscard]] bool isOnScreen() const override { return false; }
        EventId insertEvent(const EventFields &) override { return 0; }
        [[nodiscard]] bool canInsertMany() const override { return true; }
        void insertEvents(LoadedEvents) override {}
        void removeEvent(const EventFields &) override {}
        void setFilter(const EventQuery &) override {}
    };

    std::int64_t pick(std::int64_t count) {
        return std::uniform_int_distribution<std::int64_t>(0, count - 1)(m_random);
    }
    Arrival someArrival() {
        m_now += pick(4) == 0 ? pick(3 * kHour) : pick(30);
        return {"host-" + std::to_string(pick(pick(20) + 1)), m_now,
                static_cast<std::uint8_t>(pick(kUnknownClass))};
    }
    static std::string priorityOf(const Arrival &arrival) {
        return "Local7." + std::string(kSeverityClasses[arrival.severityClass].name);
    }
    void arrive() {
        const Arrival arrival = someArrival();
        m_arrivals.push_back(arrival);
        const std::string date = std::to_string(arrival.moment);
        const std::string priority = priorityOf(arrival);
        m_intake.setNotification({date, priority, arrival.host, "hello", {}});
    }
    /// What retention, the user, and taking that back do to the list.
    void removeSome() {
        const std::size_t size = m_list.size();
        if (size < 2) {
            return;
        }
        const auto first = static_cast<std::size_t>(pick(static_cast<std::int64_t>(size)));
        const auto count =
            std::min<std::size_t>(static_cast<std::size_t>(pick(40)) + 1, size - first);
        switch (pick(3)) {
            case 0:
                m_list.removeRows({{first, count}});
                break;
            case 1:
                m_list.setAside({{first, count}});
                break;
            default:
                m_list.putBack();
                break;
        }
    }
    void load(std::size_t lines) {
        std::string log;
        for (std::size_t i = 0; i < lines; ++i) {
            const Arrival arrival = someArrival();
            m_arrivals.push_back(arrival);
            log += std::to_string(arrival.moment) + ',' + priorityOf(arrival) + ',' + arrival.host +
                   ",hello\r\n";
        }
        m_folder.write("2026-03-26.log", log);
        m_intake.initializeLog();
    }
    void compare() {
        for (int i = 0; i < 20; ++i) {
            const std::string name = "host-" + std::to_string(i);
            const PlainHost plain = plainCount(m_arrivals, name, m_now);
            const HostRecord *host = m_watch.history().find(name);
            ASSERT_EQ(host != nullptr, plain.arrivals > 0) << name;
            if (host != nullptr) {
                compare(*host, plain);
            }
        }
    }
    void compare(const HostRecord &host, const PlainHost &plain) {
        const LocalClock::Hour hour = m_watch.hourOf(m_now);
        ASSERT_EQ(host.activity.first(), plain.first) << host.name;
        ASSERT_EQ(host.activity.last(), plain.last) << host.name;
        ASSERT_EQ(host.arrivals, plain.arrivals) << host.name;
        ASSERT_EQ(host.today(hour), plain.today) << host.name;
        ASSERT_EQ(host.hours.lastDay(hour), plain.lastDay) << host.name;
        ASSERT_EQ(host.hours.dayBefore(hour), plain.dayBefore) << host.name;
        ASSERT_EQ(host.classes, plain.classes) << host.name;
    }
    void countAll() {
        ASSERT_TRUE(m_watch.run(m_now, [] { return false; }));
        ASSERT_FALSE(m_watch.isCounting());
    }

    testing::ScopedVariable m_zone{"TZ", "CET-1CEST,M3.5.0,M10.5.0/3"};
    testing::TemporaryFolder m_folder;
    testing::ScopedVariable m_library{"QUORBEL_LIBRARY", m_folder.path().string()};
    std::mt19937 m_random{testing::seed()};
    std::int64_t m_now = kStart;
    std::vector<Arrival> m_arrivals;
    AppState m_state;
    EventList m_list;
    EventHold m_hold{m_list};
    ListPage m_page;
    testing::NoHomePage m_home;
    EventIntake m_intake{m_state, m_list, m_hold, m_page, m_home};
    HostWatch m_watch{m_list};
};

TEST_F(HostWatchTest, CountsArrivalsWhateverBecomesOfThem) {
    m_intake.addObserver(m_watch);
    for (int round = 0; round < 3000; ++round) {
        arrive();
        if (pick(10) == 0) {
            removeSome();
        }
        if (pick(50) == 0) {
            m_hold.setOn(!m_hold.isOn());
        }
        if (round % 100 == 0) {
            compare();
        }
    }
    compare();
}

TEST_F(HostWatchTest, CountsWhatTheLogHadAndWhatArrivesMeanwhileInItsOrder) {
    m_intake.addObserver(m_watch);
    load(5000);
    ASSERT_TRUE(m_watch.isCounting());
    EXPECT_EQ(m_watch.history().size(), 0U);
    arrive();
    EXPECT_TRUE(m_watch.isCounting());
    countAll();
    compare();
    for (int i = 0; i < 100; ++i) {
        arrive();
    }
    compare();
}

TEST_F(HostWatchTest, ArrivalsAloneBringTheCountToItsEnd) {
    m_intake.addObserver(m_watch);
    load(10 * HostWatch::kRun);
    for (int i = 0; i < 15 && m_watch.isCounting(); ++i) {
        arrive();
    }
    EXPECT_FALSE(m_watch.isCounting());
    compare();
}

TEST_F(HostWatchTest, IsCountedInSlices) {
    m_intake.addObserver(m_watch);
    load(10 * HostWatch::kRun);
    int slices = 1;
    while (!m_watch.run(m_now, [] { return true; })) {
        ++slices;
    }
    EXPECT_GE(slices, 10);
    compare();
}

TEST_F(HostWatchTest, WhatLeavesBeforeItIsCountedWasNeverThere) {
    m_intake.addObserver(m_watch);
    load(5000);
    m_list.removeRows({{0, 4000}});
    m_arrivals.erase(m_arrivals.begin() + 1000, m_arrivals.end());
    countAll();
    compare();
}

TEST_F(HostWatchTest, DatesThatNobodyCanReadCountNowhere) {
    m_intake.addObserver(m_watch);
    for (const char *date : {"", "soon", "-5", "99999999999999", "1774500000.5"}) {
        m_intake.setNotification({date, "Local7.Error", "host-1", "hello", {}});
    }
    m_intake.setNotification({std::nullopt, "Local7.Error", "host-1", "hello", {}});
    EXPECT_EQ(m_watch.history().size(), 0U);
    m_intake.setNotification({"1774500000", "Local7.Error", std::nullopt, "hello", {}});
    EXPECT_EQ(m_watch.history().size(), 0U);
    EXPECT_EQ(m_watch.history().all().lastDay(m_watch.hourOf(kStart)), 1U);
}

TEST_F(HostWatchTest, HostThatIsNotExpectedIsNotOverdue) {
    for (std::int64_t at = kStart; at < kStart + 14 * kDay; at += 60) {
        const std::string date = std::to_string(at);
        m_watch.eventArrived({date, "Local7.Error", "always", "hello", {}}, 3);
        if (at < kStart + 13 * kDay) {
            m_watch.eventArrived({date, "Local7.Error", "host-1", "hello", {}}, 3);
        }
    }
    m_now = kStart + 14 * kDay;
    countAll();
    const HostRecord &host = *m_watch.history().find("host-1");
    EXPECT_TRUE(m_watch.isOverdue(host, m_now));
    EXPECT_EQ(m_watch.summary(m_now).regular, 2U);
    EXPECT_EQ(m_watch.summary(m_now).overdue, 1U);
    m_watch.setExpected("host-1", false);
    EXPECT_FALSE(m_watch.isOverdue(host, m_now));
    EXPECT_EQ(m_watch.summary(m_now).regular, 1U);
    EXPECT_EQ(m_watch.summary(m_now).overdue, 0U);
    m_watch.setExpected("host-1", true);
    EXPECT_TRUE(m_watch.isOverdue(host, m_now));
}

TEST_F(HostWatchTest, TellsHowMuchADayAndHowOften) {
    const std::int64_t midnight = 1'772'492'400;  // a Tuesday, three weeks before the clocks change
    const std::int64_t end = midnight + 20 * kDay + 12 * kHour;
    const std::map<std::string, std::int64_t> gaps{
        {"minute", 60}, {"hour", kHour}, {"quarter of a day", 6 * kHour}, {"day", kDay}};
    for (std::int64_t at = midnight; at < end; at += 60) {
        for (const auto &[host, gap] : gaps) {
            if ((at - midnight) % gap == 0) {
                m_watch.eventArrived({std::to_string(at), "Local7.Error", host, "hello", {}}, 3);
            }
        }
    }
    m_now = end - 1;
    countAll();
    for (const auto &[host, gap] : gaps) {
        const HostRecord &record = *m_watch.history().find(host);
        const double usual = record.usualGap().value_or(0);
        EXPECT_NEAR(usual, static_cast<double>(gap), 0.06 * static_cast<double>(gap)) << host;
        const double mean = record.dailyMean(m_watch.hourOf(m_now)).value_or(0);
        EXPECT_DOUBLE_EQ(mean, static_cast<double>(kDay / gap)) << host;
    }
    m_watch.eventArrived({std::to_string(m_now), "Local7.Error", "new", "hello", {}}, 3);
    EXPECT_FALSE(m_watch.history().find("new")->dailyMean(m_watch.hourOf(m_now)).has_value());
    EXPECT_FALSE(m_watch.history().find("new")->usualGap().has_value());
}

TEST_F(HostWatchTest, TellsSinceWhenNothingCameFromAnybody) {
    EXPECT_FALSE(m_watch.quietSince(kStart).has_value());
    m_watch.eventArrived({std::to_string(kStart), "Local7.Error", "host-1", "hello", {}}, 3);
    EXPECT_FALSE(m_watch.quietSince(kStart + 600).has_value());
    EXPECT_EQ(m_watch.quietSince(kStart + 1200), kStart);
}

std::size_t bytesInUse() {
    const auto memory = ::mallinfo2();
    return memory.uordblks + memory.hblkhd;
}

TEST(HostHistoryLimitsTest, ForgedHostsNeitherGrowNorPushOutThoseOfLongStanding) {
    HostHistory history;
    for (int hour = 0; hour < 48; ++hour) {
        for (int host = 0; host < 50; ++host) {
            history.add("real-" + std::to_string(host), kStart + hour * kHour + host, 6);
        }
    }
    const std::int64_t now = kStart + 48 * kHour;
    for (int i = 0; i < 1000; ++i) {
        history.add("loud-newcomer", now, 6);
    }
    const std::size_t before = bytesInUse();
    for (int i = 0; i < 300'000; ++i) {
        history.add("10.66." + std::to_string(i) + std::string(40, 'x'), now + i / 100, 6);
    }
    const std::size_t grown = bytesInUse() - before;
    std::printf("300,000 forged hosts: %zu kept, %.1f MiB, %zu bytes a host\n", history.size(),
                static_cast<double>(grown) / (1 << 20), grown / history.size());
    EXPECT_EQ(history.size(), HostHistory::kMostHosts);
    EXPECT_LT(grown, std::size_t{24} << 20U);
    EXPECT_GT(history.crowdedOut(), 280'000U);
    for (int host = 0; host < 50; ++host) {
        ASSERT_NE(history.find("real-" + std::to_string(host)), nullptr) << host;
    }
    EXPECT_NE(history.find("loud-newcomer"), nullptr);
    EXPECT_EQ(history.find("10.66.0" + std::string(40, 'x')), nullptr);
}

TEST(HostHistoryLimitsTest, HostsOfLongStandingFillItAtMost) {
    HostHistory history;
    for (int hour = 0; hour < 2; ++hour) {
        for (std::size_t host = 0; host < HostHistory::kMostHosts; ++host) {
            history.add("real-" + std::to_string(host), kStart + hour * kHour, 6);
        }
    }
    history.add("late", kStart + kHour, 6);
    EXPECT_EQ(history.find("late"), nullptr);
    EXPECT_EQ(history.size(), HostHistory::kMostHosts);
    EXPECT_EQ(history.crowdedOut(), 1U);
    EXPECT_EQ(history.all().lastDay(LocalClock().hourOf(kStart + kHour)),
              2 * HostHistory::kMostHosts + 1);
}

TEST(HostHistoryLimitsTest, TextTooLongForAHostIsNobody) {
    HostHistory history;
    history.add(std::string(HostHistory::kLongestName, 'x'), kStart, 6);
    history.add(std::string(HostHistory::kLongestName + 1, 'x'), kStart, 6);
    EXPECT_EQ(history.size(), 1U);
}

}  // namespace
}  // namespace quorbel
