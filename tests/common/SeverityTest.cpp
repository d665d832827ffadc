#include "common/Severity.h"

#include <gtest/gtest.h>

#include <string>

namespace quorbel {
namespace {

struct Case {
    const char *priority;
    const char *counted;  // the keyPart letters of the classes counted, in table order
    std::uint8_t shown;
    std::uint8_t deleted;
};

std::string countedParts(const PriorityClasses &classes) {
    std::string parts;
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        if (classes.counted[i]) {
            parts += (parts.empty() ? "" : " ") + std::string(kSeverityClasses[i].keyPart);
        }
    }
    return parts;
}

TEST(SeverityTest, ClassifiesPriorities) {
    const Case cases[] = {
        {"Kern.Emergency", "Emergency", 0, 0},
        {"Auth.Alert", "Alerting", 1, 1},
        {"Mail.Critical", "Critical", 2, 2},
        {"Local7.Error", "Error", 3, 3},
        {"Daemon.Warning", "Warning", 4, 4},
        {"User.Notice", "Notice", 5, 5},
        {"Local7.Informational", "Information", 6, 6},
        {"Local7.Debug", "Debug", 7, 7},
        // Two names: both are counted, the earlier one is shown.
        {"AlertFeed.Notice", "Alerting Notice", 1, 1},
        {"Debug.Emergency", "Emergency Debug", 0, 0},
        // No name of the table.
        {"local7.debug", "Unknown", 8, 8},
        {"", "Unknown", 8, 8},
        {"Local7.", "Unknown", 8, 8},
        // The deletion word is shorter than the name, and differs only here.
        {"Local7.Information", "Unknown", 8, 6},
        {"Information.Notice", "Notice", 5, 5},
        {"Information.Debug", "Debug", 7, 6},
    };
    for (const Case &c : cases) {
        const PriorityClasses classes = classifyPriority(c.priority);
        EXPECT_EQ(countedParts(classes), c.counted) << c.priority;
        EXPECT_EQ(classes.shown, c.shown) << c.priority;
        EXPECT_EQ(classes.deleted, c.deleted) << c.priority;
    }
}

TEST(SeverityTest, TableHasTheDefaultLevelsInOrder) {
    const std::int64_t expected[] = {2, 2, 2, 1, 1, 1, 0, 0, 0};
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        EXPECT_EQ(kSeverityClasses[i].defaultLevel, expected[i]) << kSeverityClasses[i].keyPart;
    }
}

TEST(SeverityTest, LevelNames) {
    EXPECT_EQ(severityLevelName(0), "Normal");
    EXPECT_EQ(severityLevelName(1), "Moderate");
    EXPECT_EQ(severityLevelName(2), "Severe");
    EXPECT_EQ(severityLevelName(3), "");
    EXPECT_EQ(severityLevelName(-1), "");
}

}  // namespace
}  // namespace quorbel
