#include "alerts/AlertDecision.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {
namespace {

using Labels = std::vector<std::string>;

TEST(FindArrayTest, FindsTheFirstElementThatContainsTheKey) {
    struct Case {
        Labels array;
        const char *key;
        std::int64_t index;
    };
    constexpr std::int64_t kNone = std::numeric_limits<std::int64_t>::max();
    const std::vector<Case> cases{
        {{"Emergency", "Alert"}, "Emergency", 0},
        {{"Emergency", "Alert"}, "Alert", 1},
        {{"Alert", "Alerts", "Alert"}, "Alert", 0},
        {{"Informational"}, "Information", 0},
        {{"Show errors: Error"}, "Error", 0},
        {{"Information"}, "Informational", kNone},
        {{"alert"}, "Alert", kNone},
        {{""}, "Alert", kNone},
        {{}, "Alert", kNone},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(findArray(c.array, c.key), c.index) << c.key;
    }
}

CountedClasses classesOf(std::string_view priority) {
    return classifyPriority(priority).counted;
}

struct Selection {
    const char *priority;
    Labels labels;
    bool selected;
};

const std::vector<Selection> kSelections{
    {"Local7.Emergency", {"Emergency"}, true},
    {"Local7.Alert", {"Alert"}, true},
    {"Local7.Critical", {"Critical"}, true},
    {"Local7.Error", {"Error"}, true},
    {"Local7.Warning", {"Warning"}, true},
    {"Local7.Notice", {"Notice"}, true},
    {"Local7.Informational", {"Information"}, true},
    {"Local7.Informational", {"Informational"}, true},
    {"Local7.Debug", {"Debug"}, true},
    // One label selects no other severity.
    {"Local7.Debug",
     {"Emergency", "Alert", "Critical", "Error", "Warning", "Notice", "Information", "Unknown"},
     false},
    {"Local7.Information", {"Information"}, false},
    {"Local7.alert", {"Alert"}, false},
    {"Local7.Alert", {}, false},
    // Unknown is for those without any name, and for no others.
    {"Local7.Something", {"Unknown"}, true},
    {"Local7.Something", {"Unknown events"}, true},
    {"Local7.Something", {"Debug"}, false},
    {"Local7.Unknown", {"Unknown"}, true},
    {"", {"Unknown"}, true},
    {"Local7.Debug", {"Unknown"}, false},
    // Two names count as both.
    {"Alert.Debug", {"Alert"}, true},
    {"Alert.Debug", {"Debug"}, true},
    {"Alert.Debug", {"Error"}, false},
    {"Alert.Debug", {"Unknown"}, false},
};

TEST(IsSelectedTest, LooksUpEverySeverityNamed) {
    for (const Selection &c : kSelections) {
        EXPECT_EQ(isSelected(classesOf(c.priority), c.labels), c.selected)
            << c.priority << " of " << c.labels.size();
    }
}

TEST(IsPopupWantedTest, AsksForATimeAndALabelOfItsOwnList) {
    const AlertSettings on{5, "", {"Alert"}, {}};
    EXPECT_TRUE(isPopupWanted(classesOf("Kern.Alert"), on));
    EXPECT_FALSE(isPopupWanted(classesOf("Kern.Debug"), on));
    EXPECT_FALSE(isPopupWanted(classesOf("Kern.Alert"), {0, "", {"Alert"}, {}}));
    EXPECT_FALSE(isPopupWanted(classesOf("Kern.Alert"), {-1, "", {"Alert"}, {}}));
    EXPECT_TRUE(isPopupWanted(classesOf("Kern.Alert"), {1, "", {"Alert"}, {}}));
    EXPECT_FALSE(isPopupWanted(classesOf("Kern.Alert"), {5, "/bell.wav", {}, {"Alert"}}));
}

TEST(IsSoundWantedTest, AsksForAFileAndALabelOfItsOwnList) {
    const AlertSettings on{0, "/bell.wav", {}, {"Alert"}};
    EXPECT_TRUE(isSoundWanted(classesOf("Kern.Alert"), on));
    EXPECT_FALSE(isSoundWanted(classesOf("Kern.Debug"), on));
    EXPECT_FALSE(isSoundWanted(classesOf("Kern.Alert"), {5, "", {}, {"Alert"}}));
    EXPECT_FALSE(isSoundWanted(classesOf("Kern.Alert"), {5, "/bell.wav", {"Alert"}, {}}));
}

}  // namespace
}  // namespace quorbel
