#include "common/RetentionRules.h"

#include <gtest/gtest.h>

#include <ctime>
#include <limits>
#include <string>

namespace quorbel {
namespace {

/// In the local time zone.
std::int64_t at(const char *text) {
    std::tm moment{};
    EXPECT_NE(strptime(text, "%Y-%m-%d %H:%M:%S", &moment), nullptr) << text;
    moment.tm_isdst = -1;
    return std::mktime(&moment);
}

std::string textOf(std::int64_t seconds) {
    const auto time = static_cast<std::time_t>(seconds);
    std::tm moment{};
    localtime_r(&time, &moment);
    char text[32];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &moment)};
}

RetentionRules rulesFor(const Value &amount, const Value &unit) {
    return RetentionRules({{"removalError", amount}, {"removalErrorUnits", unit}});
}

constexpr std::size_t kError = 3;

TEST(RetentionRulesTest, KeepForTheTimeThatTheSettingsGive) {
    struct Case {
        int amount;
        int unit;
        const char *now;
        const char *limit;
    };
    constexpr Case kCases[] = {
        {1, 0, "2026-11-21 12:00:00", "2026-11-21 11:59:00"},
        {90, 0, "2026-11-21 12:00:00", "2026-11-21 10:30:00"},
        {1, 1, "2026-11-21 12:00:00", "2026-11-21 11:00:00"},
        {30, 2, "2026-11-21 12:00:00", "2026-10-22 12:00:00"},
        {2, 3, "2026-11-21 12:00:00", "2026-11-07 12:00:00"},
        {1, 4, "2026-11-21 12:00:00", "2026-10-21 12:00:00"},
        {1, 4, "2026-01-21 12:00:00", "2025-12-21 12:00:00"},
        {12, 4, "2026-11-21 12:00:00", "2025-11-21 12:00:00"},
        {23, 4, "2026-11-21 12:00:00", "2024-12-21 12:00:00"},
        {1, 4, "2026-03-31 12:00:00", "2026-02-28 12:00:00"},
        {1, 4, "2024-03-31 12:00:00", "2024-02-29 12:00:00"},
        {1, 4, "2026-12-31 12:00:00", "2026-11-30 12:00:00"},
        {12, 4, "2024-02-29 12:00:00", "2023-02-28 12:00:00"},
    };
    for (const Case &c : kCases) {
        const auto limits = rulesFor(c.amount, c.unit).limitsAt(at(c.now));
        ASSERT_TRUE(limits[kError]) << c.limit;
        EXPECT_EQ(textOf(*limits[kError]), c.limit) << c.amount << " of " << c.unit;
        EXPECT_FALSE(limits[0]);
    }
}

TEST(RetentionRulesTest, KeepForEverWithoutAnAmountOrAUnit) {
    struct Case {
        Value amount;
        Value unit;
    };
    const Case cases[] = {{0, 2}, {-1, 2}, {30, -1}, {30, 5}, {"30", 2}, {30, "2x"}, {Null(), 2}};
    for (const Case &c : cases) {
        const bool keepsAll = rulesFor(c.amount, c.unit).keepsAll();
        // A unit of another kind reads as 0, minutes.
        EXPECT_EQ(keepsAll, c.unit.string() == nullptr);
    }
    EXPECT_TRUE(RetentionRules(Dictionary()).keepsAll());
    EXPECT_TRUE(RetentionRules().keepsAll());
}

TEST(RetentionRulesTest, ReadEachClassByItsOwnKeys) {
    constexpr const char *kKeys[] = {"Emergency", "Alerting",    "Critical", "Error",  "Warning",
                                     "Notice",    "Information", "Debug",    "Unknown"};
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        const std::string key = std::string("removal") + kKeys[i];
        const auto limits = RetentionRules({{key, 1}, {key + "Units", 0}}).limitsAt(600);
        for (std::size_t j = 0; j < kSeverityClassCount; ++j) {
            EXPECT_EQ(limits[j], i == j ? std::optional<std::int64_t>(540) : std::nullopt) << key;
        }
    }
}

TEST(RetentionRulesTest, TakeTheLargestNumbers) {
    constexpr auto kMost = std::numeric_limits<std::int64_t>::max();
    for (int unit = 0; unit <= 4; ++unit) {
        const auto rules = rulesFor(kMost, unit);
        EXPECT_LT(rules.limitsAt(1700000000)[kError].value(), 0);
        EXPECT_GT(rules.firstRemoval(1700000000).value(), 1700000000);
    }
}

TEST(RetentionRulesTest, SayWhenAnEventIsDue) {
    struct Case {
        int amount;
        int unit;
        const char *time;
        const char *end;
    };
    constexpr Case kCases[] = {
        {5, 0, "2026-11-21 12:00:00", "2026-11-21 12:05:00"},
        {2, 2, "2026-11-21 12:00:00", "2026-11-23 12:00:00"},
        {1, 4, "2026-10-21 12:00:00", "2026-11-21 12:00:00"},
        {1, 4, "2026-02-28 12:00:00", "2026-03-28 12:00:00"},
        {13, 4, "2026-11-30 12:00:00", "2027-12-30 12:00:00"},
    };
    for (const Case &c : kCases) {
        const auto rules = rulesFor(c.amount, c.unit);
        EXPECT_EQ(textOf(rules.endOf(kError, at(c.time)).value()), c.end);
        EXPECT_FALSE(rules.endOf(0, at(c.time)));
    }
}

// An event is due neither before limitsAt() says so nor much later, whatever day of a month it is.
TEST(RetentionRulesTest, AgreeWithThemselvesOnMonths) {
    constexpr std::int64_t kHour = 3600;
    for (const int months : {1, 2, 11, 12}) {
        const auto rules = rulesFor(months, 4);
        for (std::int64_t time = at("2023-12-01 06:30:00"); time < at("2025-03-15 00:00:00");
             time += 13 * kHour) {
            const std::int64_t end = rules.endOf(kError, time).value();
            EXPECT_LE(time, rules.limitsAt(end)[kError].value()) << textOf(time);
            EXPECT_GT(time, rules.limitsAt(end - kHour - 1)[kError].value()) << textOf(time);
        }
    }
}

TEST(RetentionRulesTest, RemoveInLargerStepsWhatIsKeptLonger) {
    struct Case {
        int amount;
        int unit;
        std::int64_t slack;
    };
    constexpr Case kCases[] = {{1, 0, 1}, {1, 1, 60}, {1, 2, 1440}, {30, 2, 3600}, {1, 4, 3600}};
    for (const Case &c : kCases) {
        EXPECT_EQ(rulesFor(c.amount, c.unit).slack(kError), c.slack);
    }
    // The class that is kept shortest counts.
    const RetentionRules rules({{"removalError", 1},
                                {"removalErrorUnits", 1},
                                {"removalDebug", 10},
                                {"removalDebugUnits", 0}});
    EXPECT_EQ(rules.firstEnd(1000), 1000 + 600);
    EXPECT_EQ(rules.firstRemoval(1000), 1000 + 600 + 10);
    EXPECT_EQ(RetentionRules().firstEnd(1000), std::nullopt);
}

}  // namespace
}  // namespace quorbel
