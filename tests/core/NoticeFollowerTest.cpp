// The window's side of the telling against the service's own queue and store.

#include "core/NoticeFollowerFixture.h"

#include <filesystem>

namespace quorbel {
namespace {

using testing::NoticeFollowerTest;

TEST_F(NoticeFollowerTest, TakesInBatchesAndSinglesAlike) {
    open();
    connect();
    arrive({"a", "b", "c"});
    tellSingle();
    tellBatch();
    arrive({"d"});
    tellSingle();
    tellCheckpoint();
    EXPECT_EQ(window.listed, logged());
    EXPECT_EQ(window.told, 4);
    EXPECT_EQ(window.read, 0);
    EXPECT_EQ(window.timesAnew, 0);
}

TEST_F(NoticeFollowerTest, ABatchIsTakenInSlices) {
    open();
    connect();
    arrive(std::vector<std::string>(100, "a"));
    const auto runs = queue->frontRuns(1 << 20);
    const UniqueFd file = NotificationBatch::write(runs);
    const Checkpoint before = told();
    const std::size_t size = runs.front().lines.size();
    queue->popRuns(runs);
    follower->batchCame(1, NotificationBatch::read(file.get(), {{"Set", size}}), before, told());
    follower->work(bus::Clock::time_point::min());
    EXPECT_TRUE(follower->isBusy());
    EXPECT_GT(window.told, 0);
    EXPECT_LT(window.told, 40);
    EXPECT_FALSE(follower->takeRequests().taken);
    while (follower->isBusy()) {
        follower->work(bus::Clock::time_point::min());
    }
    EXPECT_EQ(window.told, 100);
    EXPECT_EQ(follower->takeRequests().taken, 1U);
}

TEST_F(NoticeFollowerTest, WhatComesBetweenLoadAndAnswerIsThereOnce) {
    arrive({"loaded and told", "loaded"});
    open();
    arrive({"neither", "told before the answer"});
    follower->askedToListen();
    tellSingle();
    tellSingle();
    tellSingle();
    answer();
    tellAll();
    EXPECT_EQ(window.listed, logged());
    arrive({"after"});
    tellAll();
    EXPECT_EQ(window.listed, logged());
    EXPECT_EQ(window.timesAnew, 0);
}

TEST_F(NoticeFollowerTest, WhatWasLostIsReadFromTheLog) {
    open();
    connect();
    arrive({"a", "a", "b", "c"});
    tellSingle();
    tellSingle(false);
    tellSingle(false);
    tellSingle();
    tellCheckpoint();
    EXPECT_EQ(window.listed, logged());
    EXPECT_EQ(window.read, 2);
    seconds += 86400;
    arrive({"d"});
    tellBatch(false);
    seconds += 86400;
    arrive({"e"});
    tellBatch(false);
    arrive({"f"});
    tellBatch();
    EXPECT_EQ(window.listed, logged());
    EXPECT_EQ(window.read, 4);
    EXPECT_EQ(window.timesAnew, 0);
}

TEST_F(NoticeFollowerTest, AServiceThatKnowsNoBatchesIsHeard) {
    open();
    follower->askedToListen();
    arrive({"a", "b"});
    tellSingle();
    EXPECT_TRUE(window.listed.empty());
    follower->hearsSinglesOnly();
    tellSingle();
    EXPECT_EQ(window.listed, logged());
    EXPECT_EQ(window.told, 2);
}

TEST_F(NoticeFollowerTest, MissedRemovalsAreMadeUpForByTheWholeLog) {
    arrive({"a", "b", "b", "c"});
    open();
    connect();
    tellAll();
    remove(std::to_string(seconds) + ",Local7.Error,h,b", false);
    tellCheckpoint();
    EXPECT_EQ(window.listed, logged());
    EXPECT_EQ(window.timesAnew, 1);
    EXPECT_EQ(window.timesReadAnew, 1);
    arrive({"d"});
    tellAll();
    EXPECT_EQ(window.listed, logged());
    EXPECT_EQ(window.timesAnew, 1);
}

TEST_F(NoticeFollowerTest, RemovalsThatARunOfTheServiceDidNotTellAreSeenInTheFiles) {
    arrive({"a", "b"});
    open();
    connect();
    tellAll();
    follower->serviceWent();
    remove(std::to_string(seconds) + ",Local7.Error,h,b");
    startService();
    connect();
    EXPECT_EQ(window.listed, logged());
    EXPECT_EQ(window.timesAnew, 1);
    // And those that it told are no reason to read all of it.
    remove(std::to_string(seconds) + ",Local7.Error,h,a");
    tellAll();
    follower->serviceWent();
    startService();
    connect();
    EXPECT_EQ(window.listed, logged());
    EXPECT_EQ(window.timesAnew, 1);
}

TEST_F(NoticeFollowerTest, ABatchThatCannotBeReadIsMadeUpForByTheLog) {
    open();
    connect();
    arrive({"a", "b"});
    const Checkpoint before = told();
    queue->popRuns(queue->frontRuns(1000));
    follower->batchCame(7, std::nullopt, before, told());
    EXPECT_FALSE(follower->isBusy());
    EXPECT_EQ(follower->takeRequests().taken, 7U);
    EXPECT_TRUE(window.listed.empty());
    arrive({"c"});
    tellAll();
    EXPECT_EQ(window.listed, logged());
}

TEST_F(NoticeFollowerTest, ABatchThatIsNotWhatIsSaidOfItHarmsNothing) {
    open();
    connect();
    arrive({"a", "b"});
    const auto runs = queue->frontRuns(1000);
    const UniqueFd file = NotificationBatch::write(
        {{NotificationType::kSet, "1,Local7.Error,h,x\r\n\r\n1,Local7.Error,h,y\n,\n"}});
    const Checkpoint before = told();
    queue->popRuns(runs);
    follower->batchCame(7, NotificationBatch::read(file.get(), {{"Set", 43}}), before, told());
    settle();
    EXPECT_EQ(window.listed, logged());
}

TEST_F(NoticeFollowerTest, ALogThatCannotBeReadDoesNotStopTheTelling) {
    open();
    arrive({"a"});
    std::filesystem::remove(folder.path() / store->end().name);
    Checkpoint nowhere = toldAndWaiting();
    nowhere.place = {"2023-11-14.log", {1, 1}, 20};
    follower->askedToListen();
    int asked = 0;
    do {
        follower->listens(nowhere, 0);
        ASSERT_LT(++asked, 20);
    } while (follower->takeRequests().listen);
    follower->notified({{"Type", "Set"},
                        {"Date", "1"},
                        {"Priority", "Local7.Error"},
                        {"Host", "h"},
                        {"Message", "m"}});
    EXPECT_EQ(window.told, 1);
}

}  // namespace
}  // namespace quorbel
