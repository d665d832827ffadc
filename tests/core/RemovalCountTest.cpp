#include "EventListSamples.h"
#include "core/RemovalCount.h"
#include "support/Seed.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace quorbel {
namespace {

using testing::fields;

using Counts = std::array<std::size_t, kSeverityClassCount>;

Counts countIn(EventList &list, const RetentionRules::Limits &limits,
               const RetentionRules::Limits &before = {}) {
    RemovalCount count(list);
    count.start(limits, before);
    count.run([] { return false; });
    return count.counts();
}

TEST(RemovalCountTest, CountsByTheClassThatPicksTheImage) {
    EventList list;
    // "Emergency" comes before "Error" where both are named.
    for (const char *priority : {"Local7.Error", "Kern.Error", "Error.Emergency", "Odd", ""}) {
        list.insertRaw(fields("100", priority));
    }
    RetentionRules::Limits limits;
    limits.fill(100);
    EXPECT_EQ(countIn(list, limits), (Counts{1, 0, 0, 2, 0, 0, 0, 0, 2}));
    limits[3].reset();
    EXPECT_EQ(countIn(list, limits), (Counts{1, 0, 0, 0, 0, 0, 0, 0, 2}));
}

TEST(RemovalCountTest, CountsTheMomentOfTheLimitToo) {
    EventList list;
    for (const char *date : {"99", "100", "101", "no number", "-5"}) {
        list.insertRaw(fields(date));
    }
    RetentionRules::Limits limits;
    limits[3] = 100;
    Counts expected{};
    expected[3] = 2;
    const auto isCounted = [&] { return countIn(list, limits); };
    EXPECT_EQ(isCounted(), expected);
    list.show(testing::stateWith());
    EXPECT_EQ(isCounted(), expected);
}

TEST(RemovalCountTest, LeavesOutWhatWasDueBefore) {
    EventList list;
    for (const char *date : {"99", "100", "101", "102"}) {
        list.insertRaw(fields(date));
    }
    RetentionRules::Limits limits;
    RetentionRules::Limits before;
    limits[3] = 101;
    before[3] = 99;
    before[4] = 101;  // of others
    EXPECT_EQ(countIn(list, limits, before)[3], 2U);
    before[3] = 101;
    EXPECT_EQ(countIn(list, limits, before)[3], 0U);
}

TEST(RemovalCountTest, CountsNothingWhereAllIsKept) {
    EventList list;
    list.insertRaw(fields("1"));
    EXPECT_EQ(countIn(list, {}), Counts{});
}

TEST(RemovalCountTest, AgreesWithAPlainCount) {
    std::minstd_rand random(testing::seed());
    EventList list;
    RetentionRules::Limits limits;
    for (std::size_t i = 0; i < kSeverityClassCount; i += 2) {
        limits[i] = static_cast<std::int64_t>(random() % 1000);
    }
    Counts expected{};
    for (int i = 0; i < 20'000; ++i) {
        const std::size_t severity = random() % kUnknownClass;
        const auto moment = static_cast<std::int64_t>(random() % 1000);
        list.insertRaw(fields(std::to_string(moment),
                              "Local7." + std::string(kSeverityClasses[severity].name)));
        expected[severity] += limits[severity] && moment <= *limits[severity] ? 1U : 0U;
    }
    EXPECT_EQ(countIn(list, limits), expected);
}

}  // namespace
}  // namespace quorbel
