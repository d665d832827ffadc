#include "core/NoticeLedger.h"

#include <gtest/gtest.h>

#include <string>

namespace quorbel {
namespace {

using Verdict = NoticeLedger::Verdict;

FilePlace at(std::uint64_t offset, const std::string &name = "2026-11-21.log") {
    return {name, {7, 1}, offset};
}

/// Offsets are ten times the numbers, so that a place can be told.
Checkpoint told(std::uint64_t sets, std::uint64_t removes = 0, std::uint64_t epoch = 5) {
    return {epoch, sets, removes, 0, at(10 * sets)};
}

struct NoticeLedgerTest : ::testing::Test {
    NoticeLedgerTest() { ledger.caughtUp(told(100)); }

    NoticeLedger ledger{at(0)};
};

TEST_F(NoticeLedgerTest, NothingIsMissedWhileTheNumbersAreThoseCounted) {
    EXPECT_TRUE(ledger.tellSet("a"));
    EXPECT_TRUE(ledger.tellSet("a"));
    ledger.tellRemove();
    EXPECT_EQ(ledger.judge(told(102, 1)), Verdict::kFits);
    EXPECT_EQ(ledger.sure(), at(1020));
    EXPECT_FALSE(ledger.wasReceived("a"));
}

TEST_F(NoticeLedgerTest, WhatIsMissedIsInTheLogButForWhatWasReceived) {
    ledger.tellSet("a");
    ledger.tellSet("b");
    ledger.tellSet("a");
    EXPECT_EQ(ledger.judge(told(104)), Verdict::kGap);
    EXPECT_EQ(ledger.sure(), at(1000));
    EXPECT_TRUE(ledger.wasReceived("a"));
    EXPECT_TRUE(ledger.wasReceived("a"));
    EXPECT_FALSE(ledger.wasReceived("a"));
    EXPECT_FALSE(ledger.wasReceived("c"));
    EXPECT_TRUE(ledger.wasReceived("b"));
    ledger.caughtUp(told(104));
    EXPECT_EQ(ledger.sure(), at(1040));
    EXPECT_EQ(ledger.judge(told(104)), Verdict::kFits);
    EXPECT_TRUE(ledger.tellSet("d"));
    EXPECT_EQ(ledger.judge(told(105)), Verdict::kFits);
}

TEST_F(NoticeLedgerTest, WhatWasReadBeforeItIsToldIsLeftOut) {
    ledger.caughtUp(told(110), 3);
    EXPECT_FALSE(ledger.tellSet("a"));
    EXPECT_FALSE(ledger.tellSet());
    EXPECT_EQ(ledger.judge(told(109)), Verdict::kFits);
    EXPECT_EQ(ledger.sure(), at(1100));
    EXPECT_FALSE(ledger.tellSet("a"));
    EXPECT_TRUE(ledger.tellSet("a"));
    EXPECT_EQ(ledger.judge(told(111)), Verdict::kFits);
    EXPECT_EQ(ledger.sure(), at(1110));
}

TEST_F(NoticeLedgerTest, WhatIsLostOfWhatWasReadIsNoGap) {
    ledger.caughtUp(told(110), 3);
    EXPECT_EQ(ledger.judge(told(108)), Verdict::kFits);
    EXPECT_FALSE(ledger.tellSet("a"));
    EXPECT_EQ(ledger.judge(told(110)), Verdict::kFits);
    EXPECT_TRUE(ledger.tellSet("b"));
    EXPECT_EQ(ledger.judge(told(111)), Verdict::kFits);
}

TEST_F(NoticeLedgerTest, MissedRemovalsNeedTheWholeLog) {
    EXPECT_EQ(ledger.judge(told(100, 1)), Verdict::kAnew);
    EXPECT_EQ(ledger.judgeAnswer(told(100, 1), true), Verdict::kAnew);
    EXPECT_EQ(ledger.judgeAnswer(told(100, 0), false), Verdict::kGap);
}

TEST_F(NoticeLedgerTest, AnotherRunOfTheServiceIsKnownByTheFiles) {
    EXPECT_EQ(ledger.judge(told(101, 0, 6)), Verdict::kAsk);
    EXPECT_EQ(ledger.judgeAnswer(told(3, 2, 6), true), Verdict::kGap);
    EXPECT_EQ(ledger.judgeAnswer(told(3, 2, 6), false), Verdict::kAnew);
    EXPECT_EQ(NoticeLedger(at(0)).judgeAnswer(told(3, 2), true), Verdict::kGap);
    EXPECT_EQ(NoticeLedger(at(0)).judge(told(0)), Verdict::kAsk);
}

TEST_F(NoticeLedgerTest, NumbersThatGoBackAreAskedAbout) {
    EXPECT_EQ(ledger.judge(told(99)), Verdict::kAsk);
}

TEST_F(NoticeLedgerTest, AfterAClockThatWentBackByDaysTheFilesTellNoOrder) {
    ledger.tellSet("a");
    Checkpoint earlier = told(101);
    earlier.place = at(70, "2026-11-19.log");
    EXPECT_EQ(ledger.judge(earlier), Verdict::kFits);
    EXPECT_EQ(ledger.judge(told(105)), Verdict::kAnew);
    EXPECT_EQ(ledger.judgeAnswer(told(105), true), Verdict::kAnew);
}

}  // namespace
}  // namespace quorbel
