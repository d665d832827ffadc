// Counts by time against a plain look at every moment.

#include "core/TimeCounts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

namespace quorbel {
namespace {

using Moments = std::vector<std::pair<std::int64_t, EventRating>>;

RatingCounts plainSum(const Moments &moments, std::int64_t from, std::int64_t until) {
    RatingCounts counts{};
    for (const auto &[moment, rating] : moments) {
        if (moment >= from && moment < until) {
            ++counts[rating];
        }
    }
    return counts;
}

class TimeCountsTest : public ::testing::TestWithParam<std::int64_t> {
protected:
    std::int64_t pick(std::int64_t count) {
        return std::uniform_int_distribution<std::int64_t>(0, count - 1)(m_random);
    }
    // From single seconds to all there is.
    std::int64_t someMoment() {
        const std::int64_t spread = GetParam();
        const std::int64_t start = std::min<std::int64_t>(1'700'000'000, TimeCounts::kEnd - spread);
        return start + (pick(4) == 0 ? pick(spread) : pick(std::min<std::int64_t>(spread, 5000)));
    }
    void compare() {
        ASSERT_EQ(m_counts.isEmpty(), m_moments.empty());
        if (m_moments.empty()) {
            return;
        }
        ASSERT_EQ(m_counts.first(), std::ranges::min(m_moments).first);
        ASSERT_EQ(m_counts.last(), std::ranges::max(m_moments).first);
        for (int i = 0; i < 20; ++i) {
            const auto [from, until] = std::minmax({someMoment(), someMoment()});
            ASSERT_EQ(m_counts.sum(from, until), plainSum(m_moments, from, until))
                << from << " " << until;
        }
        const auto [first, rating] =
            m_moments[static_cast<std::size_t>(pick(std::ssize(m_moments)))];
        for (const std::int64_t length : {1, 59, 60, 61, 3600, 86'400, 10'000'000}) {
            ASSERT_EQ(m_counts.sum(first, first + length),
                      plainSum(m_moments, first, first + length));
            ASSERT_EQ(m_counts.sum(first - length, first),
                      plainSum(m_moments, first - length, first));
        }
    }

    std::mt19937 m_random{7};
    TimeCounts m_counts;
    Moments m_moments;
};

TEST_P(TimeCountsTest, SumsWhatWasAddedAndNotTakenAway) {
    for (int round = 0; round < 60 && !HasFatalFailure(); ++round) {
        for (std::int64_t i = pick(80); i > 0; --i) {
            m_moments.emplace_back(someMoment(), static_cast<EventRating>(pick(kRatingCount)));
            m_counts.add(m_moments.back().first, m_moments.back().second);
        }
        for (std::int64_t i = pick(round % 10 == 9 ? 4000 : 60); i > 0 && !m_moments.empty(); --i) {
            std::swap(m_moments[static_cast<std::size_t>(pick(std::ssize(m_moments)))],
                      m_moments.back());
            m_counts.subtract(m_moments.back().first, m_moments.back().second);
            m_moments.pop_back();
        }
        compare();
    }
    for (const auto &[moment, rating] : m_moments) {
        m_counts.subtract(moment, rating);
    }
    EXPECT_TRUE(m_counts.isEmpty());
}

INSTANTIATE_TEST_SUITE_P(Spreads, TimeCountsTest,
                         ::testing::Values(10, 7000, 100'000'000, TimeCounts::kEnd));

TEST(TimeCountsLimitsTest, TakesTheFirstAndTheLastMoment) {
    TimeCounts counts;
    counts.add(0, 1);
    counts.add(TimeCounts::kEnd - 1, 3);
    EXPECT_EQ(counts.first(), 0);
    EXPECT_EQ(counts.last(), TimeCounts::kEnd - 1);
    EXPECT_EQ(counts.sum(INT64_MIN, INT64_MAX), (RatingCounts{0, 1, 0, 1}));
    EXPECT_EQ(counts.sum(1, TimeCounts::kEnd - 1), RatingCounts{});
    EXPECT_EQ(counts.sum(5, 5), RatingCounts{});
    EXPECT_EQ(counts.sum(TimeCounts::kEnd, 0), RatingCounts{});
    EXPECT_FALSE(TimeCounts::canCount(-1));
    EXPECT_FALSE(TimeCounts::canCount(TimeCounts::kEnd));
}

TEST(TimeCountsLimitsTest, TakesNothingAwayThatIsNotThere) {
    TimeCounts counts;
    counts.add(1'700'000'000, 1);
    counts.subtract(1'700'000'000, 2);
    counts.subtract(1'700'000'001, 1);
    counts.subtract(5, 1);
    EXPECT_EQ(counts.sum(0, TimeCounts::kEnd), (RatingCounts{0, 1, 0, 0}));
}

}  // namespace
}  // namespace quorbel
