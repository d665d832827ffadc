#include "common/ActionThreshold.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <utility>

namespace quorbel {
namespace {

ThresholdReading read(Value threshold) {
    return readThreshold({{"Name", "a"}, {"threshold", std::move(threshold)}});
}

TEST(ActionThresholdTest, IsReadAsItWasWritten) {
    for (const ActionThreshold &threshold :
         {ActionThreshold{1, 1, false}, ActionThreshold{5, 10, true},
          ActionThreshold{ActionThreshold::kMostMatches, ActionThreshold::kMostMinutes, true}}) {
        const ThresholdReading reading = read(thresholdRecord(threshold));
        EXPECT_EQ(reading.threshold, threshold);
        EXPECT_EQ(reading.problem, "");
    }
    // What says the same.
    for (const Value &perHost : {Value(false), Value(0)}) {
        EXPECT_EQ(read(Dictionary{{"Matches", 2}, {"Minutes", 3}, {"PerHost", perHost}}).threshold,
                  (ActionThreshold{2, 3, false}));
    }
    EXPECT_EQ(
        read(Dictionary{{"PerHost", 1}, {"Minutes", 3}, {"Matches", 2}, {"more", "x"}}).threshold,
        (ActionThreshold{2, 3, true}));
}

TEST(ActionThresholdTest, IsNotThereWithoutContent) {
    for (const Dictionary &record :
         {Dictionary{}, Dictionary{{"Name", "a"}}, Dictionary{{"threshold", Dictionary{}}}}) {
        EXPECT_EQ(readThreshold(record).threshold, std::nullopt);
        EXPECT_EQ(readThreshold(record).problem, "");
    }
}

TEST(ActionThresholdTest, CountsAsNoneWhenItMeansNothing) {
    const std::string matches = R"("Matches" is no whole number from 1 to 1000)";
    const std::string minutes = R"("Minutes" is no whole number from 1 to 1440)";
    const std::string perHost = R"("PerHost" is neither yes nor no)";
    constexpr std::int64_t kHuge = std::numeric_limits<std::int64_t>::max();
    struct Case {
        Value threshold;
        std::string problem;
    };
    const Case cases[] = {
        {"text", "it is no record"},
        {5, "it is no record"},
        {Null(), "it is no record"},
        {Array{Dictionary{{"Matches", 2}, {"Minutes", 3}}}, "it is no record"},
        {Dictionary{{"Minutes", 3}}, matches},
        {Dictionary{{"Matches", 0}, {"Minutes", 3}}, matches},
        {Dictionary{{"Matches", -1}, {"Minutes", 3}}, matches},
        {Dictionary{{"Matches", 1001}, {"Minutes", 3}}, matches},
        {Dictionary{{"Matches", kHuge}, {"Minutes", 3}}, matches},
        {Dictionary{{"Matches", -kHuge - 1}, {"Minutes", 3}}, matches},
        {Dictionary{{"Matches", "2"}, {"Minutes", 3}}, matches},
        {Dictionary{{"Matches", 2.5}, {"Minutes", 3}}, matches},
        {Dictionary{{"Matches", true}, {"Minutes", 3}}, matches},
        {Dictionary{{"Matches", Null()}, {"Minutes", 3}}, matches},
        {Dictionary{{"Matches", 2}}, minutes},
        {Dictionary{{"Matches", 2}, {"Minutes", 0}}, minutes},
        {Dictionary{{"Matches", 2}, {"Minutes", -5}}, minutes},
        {Dictionary{{"Matches", 2}, {"Minutes", 1441}}, minutes},
        {Dictionary{{"Matches", 2}, {"Minutes", kHuge}}, minutes},
        {Dictionary{{"Matches", 2}, {"Minutes", Array{3}}}, minutes},
        {Dictionary{{"Matches", 2}, {"Minutes", 3}, {"PerHost", 2}}, perHost},
        {Dictionary{{"Matches", 2}, {"Minutes", 3}, {"PerHost", "yes"}}, perHost},
        {Dictionary{{"Matches", 2}, {"Minutes", 3}, {"PerHost", Null()}}, perHost},
    };
    for (const Case &c : cases) {
        const ThresholdReading reading = read(c.threshold);
        EXPECT_EQ(reading.threshold, std::nullopt) << c.problem;
        EXPECT_EQ(reading.problem, c.problem);
    }
}

}  // namespace
}  // namespace quorbel
