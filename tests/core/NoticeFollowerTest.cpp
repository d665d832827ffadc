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

TEST_F(NoticeFollowerTest, ManyAreTakenInTogetherAndInTheirOrder) {
    struct {
        std::size_t threads;
        std::uint64_t bytes;
    } const cases[] = {{1, 1}, {1, 10'000}, {2, 100}, {3, 40}};
    for (const auto &[threads, bytes] : cases) {
        SCOPED_TRACE(std::to_string(threads) + " threads, " + std::to_string(bytes) + " bytes");
        together = {.least = 1, .shares = {.threads = threads, .bytes = bytes}};
        window = {};
        open();
        connect();
        std::vector<std::string> messages;
        const auto numbered = [&](std::size_t count) {
            std::vector<std::string> next;
            for (; count > 0; --count) {
                next.push_back(std::to_string(messages.size()));
                messages.push_back(next.back());
            }
            return next;
        };
        arrive(numbered(100));
        tellBatch(true, 1 << 20);
        EXPECT_EQ(window.told, 100);
        EXPECT_GT(window.timesTogether, 0);
        arrive(numbered(300));
        seconds += 86'400;
        arrive(numbered(200));
        while (!queue->empty()) {
            queue->drop();
        }
        const int timesTold = std::exchange(window.timesTogether, 0);
        EXPECT_GE(timesTold, bytes == 1 ? 100 : 1);
        tellCheckpoint();
        EXPECT_EQ(window.read, 500);
        EXPECT_GT(window.timesTogether, bytes < 1000 ? 100 : 0);
        EXPECT_EQ(window.inOrder, messages);
        EXPECT_EQ(window.listed, logged());
        EXPECT_EQ(window.timesAnew, 0);
        window.inOrder.clear();
        arrive(numbered(10));
        while (!queue->empty()) {
            queue->drop();
        }
        startService();
        ++untold;
        connect();
        tellCheckpoint();
        EXPECT_EQ(window.listed, logged());
    }
}

TEST_F(NoticeFollowerTest, WhatIsAmongWhatWasMissedIsNotLoadedTwice) {
    together = {.least = 1, .shares = {.threads = 2, .bytes = 40}};
    open();
    connect();
    arrive({"a", "b", "c"});
    tellSingle();
    tellSingle(false);
    tellSingle();
    arrive({"d", "e"});
    tellCheckpoint();
    EXPECT_EQ(window.told, 2);
    EXPECT_EQ(window.read, 1);
    EXPECT_GT(window.timesTogether, 0);
    tellAll();
    EXPECT_EQ(window.listed, logged());
    EXPECT_EQ(window.read, 1);
}

TEST_F(NoticeFollowerTest, WaitsForItsThreadsWithoutBeingAskedAllTheTime) {
    together = {.least = 1, .shares = {.threads = 2, .bytes = 100'000}};
    open();
    connect();
    EXPECT_FALSE(follower->isWaiting());
    int timesWaited = 0;
    // Threads may be quicker than who asks for what they have, but hardly each time.
    for (int round = 1; round <= 50 && timesWaited == 0; ++round) {
        arrive(std::vector<std::string>(20'000, "a"));
        while (!queue->empty()) {
            queue->drop();
        }
        follower->checkpointCame(++number, told());
        while (follower->isBusy()) {
            const int before = window.read;
            follower->work(bus::Clock::time_point::min());
            if (follower->isWaiting()) {
                EXPECT_EQ(window.read, before);
                EXPECT_TRUE(follower->isBusy());
                ++timesWaited;
            }
        }
        EXPECT_FALSE(follower->isWaiting());
        EXPECT_EQ(window.read, round * 20'000);
        EXPECT_EQ(follower->takeRequests().taken, number);
    }
    EXPECT_GT(timesWaited, 0);
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
