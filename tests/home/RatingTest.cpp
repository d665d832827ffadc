#include "common/Severity.h"
#include "core/AppState.h"
#include "home/Rating.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace quorbel {

namespace {

constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();

struct ClassState {
    std::size_t severity;  ///< index into kSeverityClasses
    std::int64_t count;
    std::int64_t level;
};

struct RatingCase {
    const char *what;
    std::vector<ClassState> classes;
    std::int64_t rating;
};

const std::vector<RatingCase> kCases{
    {"nothing at all", {}, 0},
    {"levels without events", {{0, 0, 2}, {3, 0, 1}, {8, 0, 2}}, 0},
    {"one debug 0, one error 1", {{7, 1, 0}, {3, 1, 1}}, 1},
    {"one critical 2", {{2, 1, 2}}, 2},
    {"the highest wins, first", {{0, 1, 2}, {8, 1, 1}}, 2},
    {"the highest wins, last", {{0, 1, 1}, {8, 1, 2}}, 2},
    {"unknown counts too", {{8, 1, 1}}, 1},
    {"many events of a normal class", {{6, 1'000'000, 0}}, 0},
    {"the largest counter", {{4, kLargest, 1}}, 1},
    {"a negative counter is no event", {{0, -1, 2}}, 0},
    {"a negative level never counts", {{0, 5, -3}}, 0},
    {"the smallest level", {{0, 5, kSmallest}, {1, 1, 1}}, 1},
    {"a damaged level passes through", {{0, 5, 3}, {1, 1, 2}}, 3},
    {"a damaged level without events", {{0, 0, 3}, {1, 1, 2}}, 2},
    {"a level beyond 32 bits", {{0, 1, (std::int64_t{1} << 32) + 1}}, (std::int64_t{1} << 32) + 1},
};

}  // namespace

TEST(RatingTest, IsTheHighestLevelThatHasEvents) {
    for (const RatingCase &test : kCases) {
        AppState state;
        for (const ClassState &entry : test.classes) {
            state.*kSeverityCounters[entry.severity] = entry.count;
            state.*kSeverityLevels[entry.severity] = entry.level;
        }
        EXPECT_EQ(rateEvents(state), test.rating) << test.what;
    }
}

TEST(RatingTest, EachClassIsRatedByItsOwnLevel) {
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        AppState state;
        state.*kSeverityCounters[i] = 1;
        state.*kSeverityLevels[i] = kSevere;
        EXPECT_EQ(rateEvents(state), kSevere) << kSeverityClasses[i].label;
        state.*kSeverityLevels[i] = kModerate;
        EXPECT_EQ(rateEvents(state), kModerate) << kSeverityClasses[i].label;
    }
}

TEST(RatingTest, OnlyTheThreeLevelsAreRatings) {
    for (const auto &[value, expected] :
         std::vector<std::pair<std::int64_t, bool>>{{0, true},
                                                    {1, true},
                                                    {2, true},
                                                    {3, false},
                                                    {-1, false},
                                                    {std::int64_t{1} << 32, false},
                                                    {kLargest, false}}) {
        EXPECT_EQ(isRating(value), expected) << value;
    }
}

TEST(RatingTest, ImagesAreNamedAfterTheLevels) {
    for (std::size_t i = 0; i < kRatings.size(); ++i) {
        EXPECT_EQ(kRatings.at(i).image, severityLevelName(static_cast<std::int64_t>(i)));
    }
}

}  // namespace quorbel
