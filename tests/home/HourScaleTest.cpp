#include "home/HourScale.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace quorbel {
namespace {

HourCounts withHighest(std::uint64_t lastDay, std::uint64_t dayBefore = 0) {
    HourCounts counts;
    counts.lastDay[5] = lastDay;
    counts.lastDay[6] = lastDay / 2;
    counts.dayBefore[7] = dayBefore;
    return counts;
}

std::uint64_t topFor(std::uint64_t lastDay, std::uint64_t dayBefore = 0) {
    return HourScale(withHighest(lastDay, dayBefore)).top();
}

TEST(HourScaleTest, TheTopIsOneOfFewRoundNumbers) {
    EXPECT_EQ(topFor(0), 25U);
    EXPECT_EQ(topFor(25), 25U);
    EXPECT_EQ(topFor(26), 37U);
    EXPECT_EQ(topFor(38), 50U);
    EXPECT_EQ(topFor(51), 75U);
    EXPECT_EQ(topFor(76), 125U);
    EXPECT_EQ(topFor(126), 175U);
    EXPECT_EQ(topFor(176), 250U);
    EXPECT_EQ(topFor(251), 375U);
    EXPECT_EQ(topFor(1'000'000), 1'250'000U);
    constexpr auto kMost = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(topFor(kMost, kMost), kMost);
    for (std::uint64_t count = 0; count < 20'000; ++count) {
        EXPECT_GE(topFor(count), count);
    }
}

TEST(HourScaleTest, TheDayBeforeCountsUpToTwiceTheTop) {
    EXPECT_EQ(topFor(10, 50), 50U);
    EXPECT_EQ(topFor(10, 51), 25U);
    EXPECT_FALSE(HourScale(withHighest(10, 50)).isBeyond(50));
    EXPECT_TRUE(HourScale(withHighest(10, 51)).isBeyond(51));
    EXPECT_EQ(topFor(1000, 1200), 1250U);
}

TEST(HourScaleTest, HeightsAreSquareRoots) {
    const HourScale scale(withHighest(100));
    ASSERT_EQ(scale.top(), 125U);
    EXPECT_EQ(scale.height(0, 100, 2), 0);
    EXPECT_EQ(scale.height(125, 100, 2), 100);
    EXPECT_EQ(scale.height(100, 100, 2), 89);
    EXPECT_EQ(scale.height(5, 100, 2), 20);
    EXPECT_EQ(scale.height(20, 100, 2), 40);
    EXPECT_EQ(scale.height(500, 100, 2), 100);
    EXPECT_EQ(scale.height(1, 12, 2), 2);  // a single event shows
    EXPECT_EQ(HourScale(withHighest(1'000'000)).height(1, 25, 2), 2);
}

TEST(HourScaleTest, TakesTheHoursOfTwoDays) {
    setenv("TZ", "UTC", 1);
    HourlyArrivals arrivals;
    const std::int64_t now = 1'795'219'200 + 13 * 3600 + 1800;  // 13:30
    const auto add = [&](std::size_t severityClass, std::int64_t seconds, int times) {
        std::bitset<kSeverityClassCount> classes;
        classes.set(severityClass);
        for (int i = 0; i < times; ++i) {
            arrivals.add(classes, seconds, now);
        }
    };
    add(4, now, 3);
    add(4, now - 3600, 5);
    add(4, now - 23 * 3600, 7);
    add(4, now - 24 * 3600, 11);
    add(4, now - 47 * 3600, 13);
    add(4, now - 48 * 3600, 17);
    add(5, now, 19);
    const HourCounts counts = hourCounts(arrivals, 4, HourlyArrivals::hourOf(now));
    HourCounts expected;
    expected.current = counts.current;
    expected.lastDay[23] = 3;
    expected.lastDay[22] = 5;
    expected.lastDay[0] = 7;
    expected.dayBefore[23] = 11;
    expected.dayBefore[0] = 13;
    EXPECT_EQ(counts, expected);
    EXPECT_EQ(counts.total(), 15U);
    EXPECT_EQ(counts.clockHour(23), 13);
    EXPECT_EQ(counts.clockHour(10), 0);
    EXPECT_EQ(counts.clockHour(0), 14);
}

}  // namespace
}  // namespace quorbel
