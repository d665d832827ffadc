// Being told in batches, from the queue over a real bus to whoever follows.

#include "common/LogReader.h"
#include "common/SettingsDocument.h"
#include "platform/bus/BusNames.h"
#include "platform/bus/NotificationObserver.h"
#include "service/bus/BusServer.h"
#include "service/bus/Commands.h"
#include "service/bus/Listeners.h"
#include "service/bus/NotificationQueue.h"
#include "support/PrivateBus.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::PrivateBus;
using testing::TemporaryFolder;
using testing::waitUntil;

std::string message(std::size_t number, std::size_t padding = 0) {
    return "number " + std::to_string(number) + std::string(padding, ' ') + "end";
}

std::string line(std::size_t number, std::size_t padding = 0) {
    return "1700000000,User.Notice,h," + message(number, padding) + "\r\n";
}

/// Notes all that it is told, and takes it as long as it is willing to.
struct Recorder final : NotificationFollower {
    void askedToListen() override { ++asked; }
    void listens(const Checkpoint &now, std::uint64_t stillWaiting) override {
        answer = now;
        waiting = stillWaiting;
        ++answered;
    }
    void hearsSinglesOnly() override { ++singlesOnly; }
    void serviceWent() override { ++went; }
    void notified(const NotificationInfo &info) override {
        for (const auto &[key, value] : info) {
            if (key == "Message") {
                messages.emplace_back(value);
            }
        }
        ++singles;
    }
    void batchCame(std::uint64_t number, std::optional<NotificationBatch> batch,
                   const Checkpoint &before, const Checkpoint &behind) override {
        ++batches;
        EXPECT_TRUE(batch);
        noteGap(before);
        // What comes singly between two checkpoints is counted by the next one.
        EXPECT_EQ(before.sets, messages.size() + missing);
        for (const NotificationRun &run : batch->runs()) {
            LogReader::readBytes(run.lines, [this](const LogLine &read) {
                messages.emplace_back(read.message);
                return true;
            });
        }
        EXPECT_EQ(behind.sets, messages.size() + missing);
        checkpoint = behind;
        take(number);
    }
    void checkpointCame(std::uint64_t number, const Checkpoint &now) override {
        ++checkpoints;
        noteGap(now);
        checkpoint = now;
        take(number);
    }
    [[nodiscard]] bool isBusy() const override { return false; }
    void work(bus::Clock::time_point /*until*/) override {}
    Requests takeRequests() override { return std::exchange(requests, {}); }

    /// As whoever was not waited for learns it.
    void noteGap(const Checkpoint &now) {
        if (mayLag && now.sets > messages.size() + missing) {
            missing = now.sets - messages.size();
        }
    }
    void take(std::uint64_t number) {
        last = number;
        if (takes) {
            requests.taken = number;
        }
    }

    bool takes = true;
    bool mayLag = false;
    int asked = 0;
    int answered = 0;
    int singlesOnly = 0;
    int went = 0;
    std::size_t singles = 0;
    int batches = 0;
    int checkpoints = 0;
    std::size_t missing = 0;  ///< not told to it, as it knows
    Checkpoint answer;
    std::uint64_t waiting = 0;
    Checkpoint checkpoint;
    std::uint64_t last = 0;
    std::vector<std::string> messages;
    Requests requests;
};

struct ListeningTest : ::testing::Test {
    ListeningTest() {
        sd_event *made = nullptr;
        sd_event_new(&made);
        loop.reset(made);
        worker = std::make_unique<CommandWorker>(loop.get(), commands);
        startServer();
    }
    void startServer() {
        server = std::make_unique<BusServer>(loop.get(), queue, *worker, store,
                                             [this] { return removals; });
    }
    bool runUntil(const std::function<bool()> &condition) {
        return waitUntil([&] {
            sd_event_run(loop.get(), 1000);
            server->sendNotifications();
            for (const auto &observer : observers) {
                observer->dispatch(std::chrono::milliseconds(1));
            }
            return condition();
        });
    }
    Recorder &listen() {
        Recorder &recorder = recorders.emplace_back();
        observers.push_back(std::make_unique<NotificationObserver>(recorder));
        EXPECT_TRUE(runUntil([&] { return recorder.answered == 1; }));
        return recorder;
    }
    /// Stores so many and lets them wait to be told.
    void arrive(std::size_t count) {
        std::string lines;
        for (std::size_t i = 0; i < count; ++i) {
            lines += line(arrived++, padding);
        }
        const auto result = store.append(lines, 1'700'000'000, false);
        EXPECT_EQ(result.stored, count);
        queue.push(NotificationType::kSet, lines, result.behind);
    }
    void expectAll(const Recorder &recorder) const {
        ASSERT_EQ(recorder.messages.size(), arrived);
        for (std::size_t i = 0; i < arrived; ++i) {
            ASSERT_EQ(recorder.messages[i], message(i, padding));
        }
    }

    TemporaryFolder folder;
    LogStore store{folder.path()};
    SettingsFile settings{folder.path() / kSettingsFileName};
    MailSender mail;
    Commands commands{store, settings, mail};
    NotificationQueue queue;
    NotificationSender::Removals removals;
    EventLoopPointer loop;
    std::unique_ptr<CommandWorker> worker;
    PrivateBus privateBus;
    std::unique_ptr<BusServer> server;
    std::deque<Recorder> recorders;
    std::vector<std::unique_ptr<NotificationObserver>> observers;
    std::size_t arrived = 0;
    std::size_t padding = 0;  ///< makes every message longer
};

TEST_F(ListeningTest, ManyTravelTogetherAndFewAlone) {
    Recorder &window = listen();
    arrive(NotificationSender::kMany - 1);
    ASSERT_TRUE(runUntil([&] { return window.messages.size() == arrived; }));
    EXPECT_EQ(window.batches, 0);
    arrive(NotificationSender::kMany);
    ASSERT_TRUE(runUntil([&] { return window.messages.size() == arrived; }));
    EXPECT_EQ(window.batches, 1);
    arrive(30'000);
    ASSERT_TRUE(runUntil([&] { return window.messages.size() == arrived; }));
    EXPECT_GE(window.batches, 2);
    EXPECT_LT(window.batches, 20);
    expectAll(window);
    EXPECT_EQ(window.checkpoint.sets, arrived);
    EXPECT_EQ(window.checkpoint.place, store.end());
    EXPECT_EQ(queue.dropped(), 0U);
}

TEST_F(ListeningTest, WithNobodyWhoListensAllGoAlone) {
    Recorder heard;
    std::size_t singles = 0;
    observers.push_back(std::make_unique<NotificationObserver>(
        [&](const NotificationInfo & /*info*/) { ++singles; }));
    ASSERT_TRUE(runUntil([&] { return observers.front()->isConnected(); }));
    arrive(3000);
    ASSERT_TRUE(runUntil([&] { return singles == arrived; }));
}

TEST_F(ListeningTest, WhoListensNoMoreIsForgotten) {
    Recorder &window = listen();
    arrive(1000);
    ASSERT_TRUE(runUntil([&] { return window.messages.size() == arrived; }));
    observers.clear();
    std::size_t singles = 0;
    observers.push_back(std::make_unique<NotificationObserver>(
        [&](const NotificationInfo & /*info*/) { ++singles; }));
    ASSERT_TRUE(runUntil([&] { return observers.front()->isConnected(); }));
    ASSERT_TRUE(runUntil([&] {
        arrive(singles == 0 ? 100 : 0);
        return singles > 0;
    }));
}

TEST_F(ListeningTest, TheAnswerSaysWhereTheLogIsAndWhatStillComes) {
    arrive(10);
    privateBus.freeze();
    ASSERT_TRUE(waitUntil([&] { return !queue.empty(); }));
    privateBus.thaw();
    Recorder &window = listen();
    EXPECT_EQ(window.answer.sets, 10U);
    EXPECT_LE(window.waiting, 10U);
    EXPECT_EQ(window.answer.place, store.end());
    EXPECT_EQ(window.answer.place.offset, 10 * line(0).size());
    EXPECT_EQ(window.asked, 1);
    EXPECT_EQ(window.singlesOnly, 0);
}

TEST_F(ListeningTest, AfterSinglesACheckpointComesOnce) {
    Recorder &window = listen();
    arrive(5);
    ASSERT_TRUE(runUntil([&] { return window.checkpoints == 1; }));
    EXPECT_EQ(window.checkpoint.sets, 5U);
    EXPECT_EQ(window.checkpoint.place, store.end());
    // Nothing is told meanwhile.
    const auto before = std::chrono::steady_clock::now();
    runUntil([&] {
        return std::chrono::steady_clock::now() - before > std::chrono::milliseconds(2500);
    });
    EXPECT_EQ(window.checkpoints, 1);
    removals.untold = 3;
    ASSERT_TRUE(runUntil([&] { return window.checkpoints == 2; }));
    EXPECT_EQ(window.checkpoint.removes, 3U);
}

TEST_F(ListeningTest, EditsAreToldOnceTheirRemovalsAre) {
    Recorder &window = listen();
    arrive(2);
    ASSERT_TRUE(runUntil([&] { return window.checkpoints == 1; }));
    EXPECT_EQ(window.checkpoint.edits, 0U);
    removals.areTold = false;
    const std::string name = store.end().name;
    {
        const MutexLock lock(store.editLock());
        ASSERT_TRUE(store.cutOut(name, openLogFile(folder.path() / name), {{0, line(0).size()}}));
    }
    removals.untold = 1;
    ASSERT_TRUE(runUntil([&] { return window.checkpoint.removes == 1; }));
    EXPECT_EQ(window.checkpoint.edits, 0U);
    EXPECT_EQ(window.checkpoint.place, store.end());
    removals.areTold = true;
    ASSERT_TRUE(runUntil([&] { return window.checkpoint.edits == 1; }));
}

TEST_F(ListeningTest, WhoTakesNothingIsWaitedForAndThenLags) {
    Recorder &window = listen();
    window.takes = false;
    // On a slow machine, one of two is the checkpoint of a second without a batch.
    const auto sent = [&] { return window.batches + window.checkpoints; };
    const auto begin = std::chrono::steady_clock::now();
    arrive(200'000);
    ASSERT_TRUE(runUntil([&] { return sent() == 2; }));
    // The third waits, until it is given up.
    const bool waits = !server->canNotify() && !queue.empty();
    EXPECT_TRUE(waits || std::chrono::steady_clock::now() - begin >= Listeners::kPatience);
    ASSERT_TRUE(runUntil([&] { return queue.empty(); }));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, Listeners::kPatience);
    EXPECT_EQ(sent(), 2);
    EXPECT_GT(queue.dropped(), 0U);
    // Once it has taken them, it hears what it has missed.
    window.takes = true;
    window.requests.taken = window.last;
    ASSERT_TRUE(runUntil([&] { return sent() == 3; }));
    EXPECT_EQ(window.checkpoint.sets, arrived);
    EXPECT_EQ(window.messages.size() + queue.dropped(), arrived);
    window.missing = queue.dropped();
    const int batches = window.batches;
    arrive(1000);
    ASSERT_TRUE(runUntil([&] { return window.batches > batches; }));
}

TEST_F(ListeningTest, OneWhoTakesNothingDoesNotKeepTheOthersWaiting) {
    Recorder &stopped = listen();
    Recorder &window = listen();
    stopped.takes = false;
    arrive(30'000);
    ASSERT_TRUE(runUntil([&] { return window.messages.size() == arrived; }));
    // More than half of what the queue holds does not wait for the other one. Nor for this one
    // where the machine is too busy for it to keep up: then once more. Long messages take it less.
    padding = 900;
    window.mayLag = true;
    std::size_t before = 0;
    std::size_t missing = 0;
    std::uint64_t dropped = 0;
    int tries = 0;
    do {
        before = window.messages.size();
        missing = window.missing;
        dropped = queue.dropped();
        arrive(NotificationQueue::kMostBytes * 3 / 4 / line(0, padding).size());
        ASSERT_TRUE(queue.isHalfFull());
        ASSERT_TRUE(runUntil([&] { return window.messages.size() + window.missing == arrived; }));
    } while (window.missing != missing && ++tries < 20);
    EXPECT_EQ(window.missing, missing);
    EXPECT_LT(stopped.messages.size(), window.messages.size());
    EXPECT_EQ(queue.dropped(), dropped);
    for (std::size_t i = before; i < window.messages.size(); ++i) {
        ASSERT_EQ(window.messages[i], message(i + missing, padding));
    }
}

TEST_F(ListeningTest, ListensAgainAfterTheBusAndTheService) {
    Recorder &window = listen();
    arrive(3);
    ASSERT_TRUE(runUntil([&] { return window.messages.size() == arrived; }));
    const std::uint64_t epoch = window.answer.epoch;
    ::testing::internal::CaptureStderr();
    privateBus.stop();
    ASSERT_TRUE(runUntil([&] { return window.went > 0; }));
    privateBus.start();
    ASSERT_TRUE(runUntil([&] { return window.answered == 2; }));
    EXPECT_EQ(window.answer.epoch, epoch);
    EXPECT_EQ(window.answer.sets, 3U);
    window.messages.assign(window.answer.sets, "");
    arrive(500);
    ASSERT_TRUE(runUntil([&] { return window.messages.size() == arrived; }));
    const int went = window.went;
    server.reset();
    ASSERT_TRUE(waitUntil([&] {
        observers.front()->dispatch(std::chrono::milliseconds(1));
        return window.went > went;
    }));
    startServer();
    ASSERT_TRUE(runUntil([&] { return window.answered == 3; }));
    EXPECT_NE(window.answer.epoch, epoch);
    ::testing::internal::GetCapturedStderr();
}

TEST_F(ListeningTest, OnlyTheServiceIsHeard) {
    Recorder &window = listen();
    sd_bus *opened = nullptr;
    ASSERT_GE(sd_bus_open_system(&opened), 0);
    const bus::BusPointer stranger(opened);
    // One of these is the window's.
    for (int number = 0; number < 10; ++number) {
        const std::string each = ":1." + std::to_string(number);
        sd_bus_message *made = nullptr;
        ASSERT_GE(sd_bus_message_new_signal(stranger.get(), &made, bus::kServicePath,
                                            bus::kNotificationInterface, bus::kCheckpoint),
                  0);
        const bus::MessagePointer signal(made);
        ASSERT_GE(sd_bus_message_append(signal.get(), "t", 1), 0);
        ASSERT_GE(bus::appendCheckpoint(signal.get(), {1, 99, 3, 4, {"x", {5, 6}, 7}}), 0);
        sd_bus_send_to(stranger.get(), signal.get(), each.c_str(), nullptr);
    }
    ASSERT_GE(sd_bus_flush(stranger.get()), 0);
    arrive(2);
    ASSERT_TRUE(runUntil([&] { return window.checkpoint.sets == 2; }));
    EXPECT_EQ(window.checkpoints, 1);
}

}  // namespace
}  // namespace quorbel
