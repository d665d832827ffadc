#include "service/store/RetentionFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace quorbel {
namespace {

using ::testing::HasSubstr;
using testing::waitUntil;

using testing::kDay;
using testing::keepErrors;
using testing::kMinute;
using testing::kNow;
using testing::line;
using RetentionTest = testing::RetentionFixture;

TEST_F(RetentionTest, RemovesAndTellsWhatWasKeptForLongEnough) {
    const std::string old = line(kNow - 11 * kMinute, "Error", "old, with a comma");
    const std::string debug = line(kNow - 11 * kMinute, "Debug", "kept for ever");
    const std::string due = line(kNow - 10 * kMinute, "Error", "due now");
    const std::string fresh = line(kNow - 10 * kMinute + 1, "Error", "fresh");
    folder.write("2023-11-14.log", old + debug + due + fresh);
    folder.write("2023-11-13.log", old);
    folder.write("x.txt", old);
    start(keepErrors(10, 0));
    pass();
    EXPECT_EQ(content("2023-11-14.log"), debug + fresh);
    EXPECT_EQ(content("2023-11-13.log"), "(no file)");
    EXPECT_EQ(content("x.txt"), old);
    EXPECT_EQ(told, old + old + due);
    EXPECT_EQ(retention->removed(), 3U);
    EXPECT_EQ(retention->untold(), 0U);
}

TEST_F(RetentionTest, TakesTheClassThatTheFrontEndShows) {
    const std::string both = line(kNow - kDay, "Error.Debug", "shown as an error");
    const std::string none = line(kNow - kDay, "error", "no known severity");
    folder.write("2023-11-13.log", both + none);
    start({{"removalUnknown", 1}, {"removalUnknownUnits", 1}});
    pass();
    EXPECT_EQ(content("2023-11-13.log"), both);
    retention->configure(keepErrors(1, 1));
    pass();
    EXPECT_EQ(content("2023-11-13.log"), "(no file)");
    EXPECT_EQ(told, none + both);
}

TEST_F(RetentionTest, KeepsWhatHasNoTimeAndReadsLinesAsTheFrontEndDoes) {
    const std::string longMessage(1023 - 24, 'm');
    const std::string first = "1600000000,Local7.Error,h," + longMessage;
    const std::string content0 =
        "no time,Local7.Error,h,x\r\n"
        "99999999999999,Local7.Error,h,x\r\n"
        "1700000000,Local7.Error,h\r\n"
        "\r\n";
    ASSERT_EQ(first.size(), 1025U);
    folder.write("x.log", content0 + first.substr(0, 1023) +
                              "1600000001,Local7.Error,h,rest\r\n"
                              "1600000002,Local7.Error,,h,moved\n"
                              "1600000003,Local7.Error,h,unfinished");
    start(keepErrors(1, 2));
    pass();
    // The line end of the second piece stays, as the end of what was in front of it.
    EXPECT_EQ(content("x.log"), content0 + "\r\n");
    EXPECT_EQ(told, first.substr(0, 1023) +
                        "\r\n1600000001,Local7.Error,h,rest\r\n"
                        "1600000002,Local7.Error,,h,moved\n"
                        "1600000003,Local7.Error,h,unfinished\r\n");
}

TEST_F(RetentionTest, TellsNothingThatABusRefuses) {
    folder.write("x.log", line(1, "Error", "broken \xFF") + line(2, "Error", "odd \xEF\xBF\xBF") +
                              line(3, "Error", "fine \xC3\xA4") +
                              line(4, "Error", std::string("zero \0", 6)));
    start(keepErrors(1, 0));
    pass();
    EXPECT_EQ(content("x.log"), "(no file)");
    EXPECT_EQ(told, line(3, "Error", "fine \xC3\xA4"));
    EXPECT_EQ(retention->removed(), 4U);
    EXPECT_EQ(retention->untold(), 3U);
}

TEST_F(RetentionTest, LeavesTheFileInWorkAsItWasWhenItEnds) {
    const std::string lines =
        line(kNow - kDay, "Error", "old") + line(kNow - kDay, "Debug", "kept");
    folder.write("2023-11-13.log", lines);
    MutexLock lock(store.editLock());
    start(keepErrors(1, 1));
    ASSERT_TRUE(waitUntil([this] { return retention->isBusy(); }));
    ::testing::internal::CaptureStderr();
    retention->stop();
    lock.unlock();
    retention.reset();
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(content("2023-11-13.log"), lines);
}

TEST_F(RetentionTest, FollowsTheClockAndTheSettings) {
    const std::string error = line(kNow, "Error", "a");
    folder.write("2023-11-14.log", error);
    start(keepErrors(10, 0));
    pass();
    now = kNow + 9 * kMinute;
    pass();
    EXPECT_EQ(content("2023-11-14.log"), error);
    // With the slack of ten seconds.
    now = kNow + 10 * kMinute + 10;
    pass();
    EXPECT_EQ(content("2023-11-14.log"), "(no file)");

    folder.write("2023-11-14.log", error);
    retention->configure(Dictionary());
    pass();
    EXPECT_EQ(content("2023-11-14.log"), error);
    retention->configure(keepErrors(10, 0));
    pass();
    EXPECT_EQ(content("2023-11-14.log"), "(no file)");
}

TEST_F(RetentionTest, LooksAgainAtFilesThatGrowOrAreReplaced) {
    const std::string fresh = line(kNow, "Error", "a");
    folder.write("2023-11-14.log", fresh);
    start(keepErrors(10, 0));
    pass();
    ASSERT_EQ(store.append(line(kNow + 1, "Error", "b"), kNow, false).stored, 1U);
    now = kNow + 11 * kMinute;
    pass();
    EXPECT_EQ(content("2023-11-14.log"), "(no file)");
    // Somebody brings an old one back.
    const std::string old = line(kNow - kDay, "Error", "old");
    folder.write("2023-11-14.log", old);
    pass();
    EXPECT_EQ(content("2023-11-14.log"), "(no file)");
    EXPECT_THAT(told, HasSubstr(old));
}

// Each search keeps whoever wants to take events out waiting.
TEST_F(RetentionTest, DoesNotReadAgainWhatHasNotGrown) {
    const std::string dueLater = line(kNow - kDay, "Error", "due later");
    const std::string dueNow = line(kNow - kDay, "Debug", "due now");
    const std::string kept = line(kNow - kDay, "Notice", "kept for ever");
    folder.write("2023-11-12.log", line(kNow - 2 * kDay, "Notice", "kept for ever"));
    folder.write("2023-11-13.log", dueLater + dueNow + kept);
    folder.write("2023-11-14.log", line(kNow, "Notice", "kept for ever"));
    start({{"removalDebug", 5},
           {"removalDebugUnits", 0},
           {"removalError", 2},
           {"removalErrorUnits", 2}});
    pass();
    ASSERT_EQ(content("2023-11-13.log"), dueLater + kept);
    {
        // No search could get past this, nor could a pass end then.
        const MutexLock lock(store.editLock());
        for (int minutes = 10; minutes <= 60; minutes += 10) {
            now = kNow + minutes * kMinute;
            ASSERT_NO_FATAL_FAILURE(pass());
        }
    }
    const std::string added = line(now, "Debug", "added");
    ASSERT_EQ(store.append(added, kNow, false).stored, 1U);
    pass();
    EXPECT_THAT(content("2023-11-14.log"), HasSubstr(added));
    now = now + 5 * kMinute + 5;
    pass();
    EXPECT_EQ(content("2023-11-14.log"), line(kNow, "Notice", "kept for ever"));
    // The slack of 2 days is 48 minutes.
    now = kNow + kDay + 48 * kMinute - 1;
    {
        const MutexLock lock(store.editLock());
        ASSERT_NO_FATAL_FAILURE(pass());
    }
    now = kNow + kDay + 48 * kMinute;
    pass();
    EXPECT_EQ(content("2023-11-13.log"), kept);
}

// A large file is not to be rewritten each minute because a few more of its events are due.
TEST_F(RetentionTest, RewritesFilesInLargerSteps) {
    std::string lines;
    for (std::int64_t i = 0; i < 10; ++i) {
        lines += line(kNow - kDay + i * 10 * kMinute, "Error", std::to_string(i));
    }
    folder.write("2023-11-13.log", lines);
    start(keepErrors(1, 2));
    pass();
    const ino_t first = inode("2023-11-13.log");
    now = kNow + 20 * kMinute;
    pass();
    EXPECT_EQ(inode("2023-11-13.log"), first);
    // 24 minutes after the oldest is due, whatever is due goes.
    now = kNow + 34 * kMinute;
    pass();
    EXPECT_NE(inode("2023-11-13.log"), first);
    EXPECT_EQ(content("2023-11-13.log"), lines.substr(lines.find("\r\n") * 4 + 8));
}

TEST_F(RetentionTest, DoesNotReadFilesThatCannotHoldAnythingDue) {
    // What stands in a daily file is not older than its day and its first event.
    const std::string old = line(kNow - 3 * kDay, "Error", "out of place");
    folder.write("2023-11-14.log", line(kNow, "Error", "a") + old);
    folder.write("2023-11-13.log", old + line(kNow, "Error", "a"));
    folder.write("2023-11-99.log", line(kNow, "Error", "a") + old);
    start(keepErrors(2, 2));
    pass();
    EXPECT_THAT(content("2023-11-14.log"), HasSubstr("out of place"));
    EXPECT_EQ(content("2023-11-13.log"), line(kNow, "Error", "a"));
    EXPECT_EQ(content("2023-11-99.log"), line(kNow, "Error", "a"));
}

TEST_F(RetentionTest, TellsManyInBoundedPiecesAndLosesNone) {
    constexpr int kMany = 20'000;
    std::string removed;
    std::string lines;
    for (int i = 0; i < kMany; ++i) {
        const bool goes = i % 3 != 0;
        const std::string text = line(kNow - kDay, goes ? "Error" : "Debug", std::to_string(i));
        lines += text;
        removed += goes ? text : "";
    }
    folder.write("2023-11-13.log", lines);
    start(keepErrors(1, 1));
    std::size_t largest = 0;
    ASSERT_TRUE(waitUntil([&] {
        const std::string piece = feed.take().value_or("");
        largest = std::max(largest, piece.size());
        told += piece;
        return told.size() >= removed.size();
    }));
    EXPECT_EQ(told, removed);
    EXPECT_LT(largest, 32'000U);
    EXPECT_EQ(retention->untold(), 0U);
}

TEST_F(RetentionTest, LosesNothingThatArrivesMeanwhile) {
    const std::string name = logFileName(kNow);
    constexpr int kRounds = 300;
    start(keepErrors(10, 0));
    std::string expected;
    for (int i = 0; i < kRounds; ++i) {
        const std::string text = line(kNow, "Debug", std::to_string(i));
        store.append(line(kNow - kDay, "Error", "old") + text, kNow, false);
        expected += text;
        if (i % 50 == 0) {
            // So that there is something to be removed at each pass.
            retention->configure(Dictionary());
            retention->configure(keepErrors(10, 0));
        }
        told += feed.take().value_or("");
    }
    retention->configure(keepErrors(9, 0));
    pass();
    EXPECT_EQ(content(name), expected);
    EXPECT_EQ(retention->removed(), std::uint64_t{kRounds});
}

TEST_F(RetentionTest, EndsAlthoughNobodyTakesWhatItTells) {
    std::string lines;
    for (int i = 0; i < 1000; ++i) {
        lines += line(kNow - kDay, "Error", std::to_string(i));
    }
    folder.write("2023-11-13.log", lines);
    start(keepErrors(1, 1));
    ASSERT_TRUE(waitUntil([this] { return feed.isOffered(); }));
    EXPECT_TRUE(retention->isBusy());
    ::testing::internal::CaptureStderr();
    const auto begin = std::chrono::steady_clock::now();
    retention.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
    EXPECT_EQ(content("2023-11-13.log"), "(no file)");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "<4>1000 removed events could not be reported to the window; open it again to see "
              "what is stored\n");
}

TEST_F(RetentionTest, GoesOnWithoutAListenerAfterAWhile) {
    RemovalFeed impatient(std::chrono::milliseconds(20));
    folder.write("2023-11-13.log", line(kNow - kDay, "Error", "a"));
    Retention other(
        store, impatient,
        [] {
            return ClockReading{kNow, 0, true};
        },
        std::chrono::milliseconds(5));
    other.configure(keepErrors(1, 1));
    EXPECT_TRUE(waitUntil([&] { return other.untold() == 1; }));
    EXPECT_FALSE(impatient.isOffered());
    EXPECT_FALSE(impatient.take());
}

TEST_F(RetentionTest, SaysOnceWhatGoesWrong) {
    std::filesystem::create_directory(folder.path() / "folder.log");
    std::filesystem::create_directory(folder.path() / "other.log");
    folder.write("2023-11-13.log", line(kNow - kDay, "Error", "a"));
    ::testing::internal::CaptureStderr();
    start(keepErrors(1, 1));
    pass();
    now = kNow + 2 * kMinute;
    pass();
    now = kNow + 4 * kMinute;
    pass();
    const std::string journal = ::testing::internal::GetCapturedStderr();
    for (const std::string name : {"folder.log", "other.log"}) {
        const std::string problem =
            "Old events are kept: " + name + " could not be read: Invalid argument";
        EXPECT_THAT(journal, HasSubstr(problem));
        EXPECT_EQ(journal.find(problem), journal.rfind(problem));
    }
    EXPECT_EQ(content("2023-11-13.log"), "(no file)");
}

TEST_F(RetentionTest, WaitsForWhoeverTakesEventsOut) {
    folder.write("2023-11-13.log", line(kNow - kDay, "Error", "a"));
    MutexLock lock(store.editLock());
    start(keepErrors(1, 1));
    ASSERT_TRUE(waitUntil([this] { return retention->isBusy(); }));
    EXPECT_NE(content("2023-11-13.log"), "(no file)");
    lock.unlock();
    pass();
    EXPECT_EQ(content("2023-11-13.log"), "(no file)");
}

}  // namespace
}  // namespace quorbel
