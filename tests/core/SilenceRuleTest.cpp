// What is silence and what is not, case by case.

#include "core/HostHistory.h"

#include <gtest/gtest.h>

#include <string>

namespace quorbel {
namespace {

constexpr std::int64_t kStart = 1'767'571'200;  // a Monday, midnight UTC
constexpr std::int64_t kMinute = 60;
constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kDay = 24 * kHour;
constexpr std::int64_t kWeek = 7 * kDay;

class SilenceRuleTest : public ::testing::Test {
protected:
    /// Both hosts send every minute and every five, but for `silent` from some moment on.
    void send(std::int64_t from, std::int64_t until, std::int64_t silentFrom = INT64_MAX,
              std::int64_t silentUntil = INT64_MAX) {
        for (std::int64_t at = from; at < until; at += kMinute) {
            m_history.add("always", at, 6);
            if (at % (5 * kMinute) == 0 && (at < silentFrom || at >= silentUntil)) {
                m_history.add("host", at, 6);
            }
        }
    }
    HostHabit::Kind kindAt(std::int64_t now) {
        m_history.judge(now, [] { return false; });
        return m_history.find("host")->habit.kind;
    }
    bool isOverdueAt(std::int64_t now) {
        m_history.judge(now, [] { return false; });
        return m_history.isOverdue(*m_history.find("host"), now);
    }

    HostHistory m_history;
};

TEST_F(SilenceRuleTest, IsLearnedForAWeek) {
    send(kStart, kStart + kWeek - kHour);
    EXPECT_EQ(kindAt(kStart + kWeek - kHour), HostHabit::Kind::kLearning);
    send(kStart + kWeek - kHour, kStart + kWeek + 2 * kHour);
    EXPECT_EQ(kindAt(kStart + kWeek + 2 * kHour), HostHabit::Kind::kSteady);
    EXPECT_FALSE(isOverdueAt(kStart + kWeek + 2 * kHour));
}

TEST_F(SilenceRuleTest, NewHostThatFallsSilentWasNeverExpected) {
    send(kStart, kStart + 3 * kWeek, kStart + 5 * kDay);
    EXPECT_EQ(kindAt(kStart + 3 * kWeek), HostHabit::Kind::kLearning);
    EXPECT_FALSE(isOverdueAt(kStart + 3 * kWeek));
}

TEST_F(SilenceRuleTest, SteadyHostIsOverdueWithinHalfAnHour) {
    const std::int64_t death = kStart + 2 * kWeek;
    send(kStart, death + 14 * kMinute, death);
    EXPECT_FALSE(isOverdueAt(death + 14 * kMinute));
    send(death + 14 * kMinute, death + 21 * kMinute, death);
    EXPECT_TRUE(isOverdueAt(death + 21 * kMinute));
    m_history.add("host", death + 30 * kMinute, 6);
    EXPECT_FALSE(isOverdueAt(death + 31 * kMinute));
}

TEST_F(SilenceRuleTest, NobodyIsOverdueWhileNothingArrivesFromAnybody) {
    const std::int64_t stop = kStart + 2 * kWeek;
    send(kStart, stop);
    for (std::int64_t now = stop; now < stop + 3 * kDay; now += 10 * kMinute) {
        ASSERT_FALSE(isOverdueAt(now)) << now - stop;
    }
    // Nor when the other one is the first to be heard again.
    m_history.add("always", stop + 3 * kDay, 6);
    EXPECT_FALSE(isOverdueAt(stop + 3 * kDay + 1));
    send(stop + 3 * kDay, stop + 4 * kDay, stop + 3 * kDay);
    EXPECT_TRUE(isOverdueAt(stop + 4 * kDay));
}

TEST_F(SilenceRuleTest, OneAccidentIsNoHabitTwoAre) {
    const std::int64_t first = kStart + 2 * kWeek;
    send(kStart, first + kWeek, first, first + 6 * kHour);
    EXPECT_EQ(kindAt(first + kWeek), HostHabit::Kind::kSteady);
    const std::int64_t second = first + kWeek;
    send(second, second + 5 * kHour, second);
    EXPECT_TRUE(isOverdueAt(second + kHour));
    send(second + 5 * kHour, second + kWeek);
    EXPECT_EQ(kindAt(second + kWeek), HostHabit::Kind::kAtHours);
    send(second + kWeek, second + kWeek + 4 * kHour, second + kWeek);
    EXPECT_FALSE(isOverdueAt(second + kWeek + 4 * kHour));
}

TEST_F(SilenceRuleTest, ClockThatIsWrongForAWhileMakesNobodyOverdue) {
    const std::int64_t wrong = kStart + 2 * kWeek;
    send(kStart, wrong);
    for (const std::int64_t offset : {kHour, -kHour, 400 * kDay, -400 * kDay}) {
        send(wrong + offset, wrong + offset + kHour);
        EXPECT_FALSE(isOverdueAt(wrong + offset + kHour)) << offset;
        send(wrong + kHour, wrong + 2 * kHour);
        EXPECT_FALSE(isOverdueAt(wrong + 2 * kHour)) << offset;
    }
}

TEST_F(SilenceRuleTest, IsForgottenAfterFourWeeks) {
    const std::int64_t death = kStart + 2 * kWeek;
    send(kStart, death + 5 * kWeek, death);
    EXPECT_TRUE(isOverdueAt(death + 3 * kWeek));
    EXPECT_FALSE(isOverdueAt(death + 4 * kWeek + 2 * kHour));
}

// A day is 23 or 25 hours long then, and hosts keep to the clock on the wall.
TEST_F(SilenceRuleTest, HoursAreThoseOfTheClockOnTheWall) {
    ::setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    ::tzset();
    LocalClock clock;
    const std::int64_t spring = 1'774'746'000;  // 2026-03-29 01:00 UTC, from 2:00 to 3:00
    EXPECT_EQ(clock.hourOf(spring - 1) % 24, 1);
    EXPECT_EQ(clock.hourOf(spring) % 24, 3);
    const std::int64_t autumn = 1'792'890'000;  // 2026-10-25 01:00 UTC, from 3:00 to 2:00
    EXPECT_EQ(clock.hourOf(autumn - 1), clock.hourOf(autumn));
    EXPECT_EQ(clock.hourOf(autumn) + 1, clock.hourOf(autumn + kHour));
    ::unsetenv("TZ");
    ::tzset();
}

}  // namespace
}  // namespace quorbel
