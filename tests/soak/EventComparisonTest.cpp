#include "core/EventList.h"
#include "soak/EventComparison.h"
#include "soak/MemoryCurve.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>

namespace quorbel::soak {
namespace {

struct EventComparisonTest : ::testing::Test {
    /// Logs an event of that second.
    void log(const std::string &date, const std::string &message) {
        lines += date + ",User.Notice,h," + message + "\r\n";
        folder.write("2026-01-01.log", lines);
    }
    void show(const std::string &date, const std::string &message) {
        list.insertRaw({date, "User.Notice", "h", message, {}});
    }
    testing::TemporaryFolder folder;
    testing::ScopedVariable library{"QUORBEL_LIBRARY", folder.path().c_str()};
    std::string lines;
    EventList list;
};

TEST_F(EventComparisonTest, TheSameEventsAreEqualInAnyOrder) {
    log("1", "one");
    log("2", "two");
    log("2", "two");
    show("2", "two");
    show("1", "one");
    show("2", "two");
    const Comparison found = compare(list, {});
    EXPECT_TRUE(found.isEqual()) << found.example;
    EXPECT_EQ(found.logged, 3U);
}

TEST_F(EventComparisonTest, FindsWhatIsNotListed) {
    log("1", "one");
    log("1", "one");
    show("1", "one");
    const Comparison found = compare(list, {});
    EXPECT_EQ(found.missing, 1U);
    EXPECT_EQ(found.tooMany, 0U);
    EXPECT_EQ(found.example, "1,User.Notice,h,one,");
}

TEST_F(EventComparisonTest, FindsWhatIsInNoLog) {
    log("1", "one");
    show("1", "one");
    show("2", "one");  // another second
    const Comparison found = compare(list, {});
    EXPECT_EQ(found.missing, 0U);
    EXPECT_EQ(found.tooMany, 1U);
    EXPECT_EQ(found.example, "2,User.Notice,h,one,");
}

TEST_F(EventComparisonTest, OfAFullDiskNothingIsTooMany) {
    show("10", "first");
    show("11", "second");
    show("13", "third");
    const Comparison found = compare(list, {{10, 12}});
    EXPECT_EQ(found.unstored, 2U);
    EXPECT_EQ(found.tooMany, 1U);
    EXPECT_EQ(found.example, "13,User.Notice,h,third,");
}

TEST(MemoryCurveTest, TellsGrowthOverTheSecondHalf) {
    MemoryCurve memory;
    EXPECT_EQ(memory.growth(), 0);
    for (const double mebibytes :
         {1.0, 1.0, 1.0, 9.0, 9.0, 9.0, 100.0, 500.0, 100.0, 110.0, 110.0, 20.0}) {
        memory.add(mebibytes);
    }
    EXPECT_EQ(memory.most(), 500);
    EXPECT_NEAR(memory.growth(), 0.1, 1e-9);
}

}  // namespace
}  // namespace quorbel::soak
