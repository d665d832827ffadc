#pragma once

#include "core/NoticeFollower.h"
#include "platform/Files.h"
#include "service/bus/NotificationQueue.h"
#include "service/store/LogStore.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorbel::testing {

using Events = std::map<std::string, int>;

inline std::string joined(const EventFields &event) {
    return std::string(*event.date) + "," + std::string(*event.priority) + "," +
           std::string(*event.host) + "," + std::string(*event.message);
}

inline void add(Events &events, const std::string &event, int count) {
    if ((events[event] += count) == 0) {
        events.erase(event);
    }
}

/// The window: what it lists.
struct Window final : NoticeSink {
    void notified(const NotificationInfo &info) override {
        std::map<std::string_view, std::string_view> values(info.begin(), info.end());
        const std::string event =
            joined({values["Date"], values["Priority"], values["Host"], values["Message"], {}});
        const bool isSet = values["Type"] == "Set";
        if (isSet) {
            inOrder.emplace_back(values["Message"]);
        }
        if (isSet || listed.contains(event)) {
            add(listed, event, isSet ? 1 : -1);
        }
        ++told;
    }
    void missed(const EventFields &event) override {
        add(listed, joined(event), 1);
        inOrder.emplace_back(*event.message);
        ++read;
    }
    void logBeginsAnew() override {
        listed.clear();
        ++timesAnew;
    }
    void readAnew(const EventFields &event) override { add(listed, joined(event), 1); }
    void logWasReadAnew() override { ++timesReadAnew; }
    [[nodiscard]] bool canTakeMany() const override { return takesMany; }
    void manyNotified(LoadedArrivals events) override {
        takeEach(events, told);
        ++timesTogether;
    }
    void manyMissed(LoadedArrivals events) override {
        takeEach(events, read);
        ++timesTogether;
    }
    void manyReadAnew(LoadedArrivals events) override {
        int unused = 0;
        takeEach(events, unused);
        ++timesTogether;
    }
    void takeEach(const LoadedArrivals &events, int &count) {
        EXPECT_TRUE(areMany);
        EXPECT_TRUE(takesMany);
        events.events.visitFields([&](const EventFields &event) {
            add(listed, joined(event), 1);
            inOrder.emplace_back(*event.message);
            ++count;
        });
    }
    void manyBegin() override { EXPECT_FALSE(std::exchange(areMany, true)); }
    void manyEnd() override { EXPECT_TRUE(std::exchange(areMany, false)); }

    Events listed;
    std::vector<std::string> inOrder;  // the messages, as they came
    bool takesMany = true;
    int timesTogether = 0;
    int told = 0;
    int read = 0;
    int timesAnew = 0;
    int timesReadAnew = 0;
    bool areMany = false;
};

/// A service with its log, what it tells, and a bus that loses some of it.
class NoticeFollowerTest : public ::testing::Test {
protected:
    NoticeFollowerTest() { startService(); }

    // The service.

    void startService() {
        store = std::make_unique<LogStore>(folder.path());
        store->prepare();
        queue = std::make_unique<NotificationQueue>();
        ++epoch;
        settled = 0;
        untold = 0;
    }
    void arrive(const std::vector<std::string> &messages) {
        std::string lines;
        for (const std::string &message : messages) {
            lines += std::to_string(seconds) + ",Local7.Error,h," + message + "\r\n";
        }
        const LogStore::Result result = store->append(lines, seconds, false);
        queue->push(NotificationType::kSet, lines, result.behind);
    }
    Checkpoint told() {
        if (queue->waiting(NotificationType::kRemove) == 0) {
            settled = store->edits();
        }
        return {epoch, queue->told(NotificationType::kSet),
                queue->told(NotificationType::kRemove) + untold, settled,
                queue->toldPlace().value_or(store->end())};
    }
    Checkpoint toldAndWaiting() {
        Checkpoint checkpoint = told();
        checkpoint.sets += queue->waiting(NotificationType::kSet);
        checkpoint.place = store->end();
        return checkpoint;
    }
    /// Takes all lines of that kind out of the files; how many they were.
    int cut(const std::string &event) {
        const std::string line = event + "\r\n";
        int count = 0;
        for (const std::string &name : listFolder(folder.path())) {
            const std::string bytes = readFile(folder.path() / name).value_or("");
            std::vector<ByteRange> ranges;
            for (std::size_t at = bytes.find(line); at != std::string::npos;
                 at = bytes.find(line, at + line.size())) {
                ranges.push_back({at, at + line.size()});
            }
            if (!ranges.empty()) {
                const MutexLock lock(store->editLock());
                EXPECT_TRUE(store->cutOut(name, openLogFile(folder.path() / name), ranges));
            }
            count += static_cast<int>(ranges.size());
        }
        return count;
    }
    void remove(const std::string &event, bool isTold = true) {
        const int count = cut(event);
        for (int i = 0; i < count; ++i) {
            if (isTold) {
                queue->push(NotificationType::kRemove, event + "\r\n");
            } else {
                ++untold;
            }
        }
    }
    [[nodiscard]] Events logged() const {
        Events events;
        for (const std::string &name : listFolder(folder.path())) {
            LogReader::readFile(folder.path() / name, [&](const LogLine &line) {
                add(events, joined({line.date, line.priority, line.host, line.message, {}}), 1);
                return true;
            });
        }
        return events;
    }

    // The bus.

    void open() {
        window.listed = logged();
        std::vector<LogExtent> read;
        for (const std::string &name : listFolder(folder.path())) {
            LogReader::readFile(
                folder.path() / name, [](const LogLine &) { return true; }, {},
                &read.emplace_back());
        }
        follower = std::make_unique<NoticeFollower>(window, folder.path(), read, together);
    }
    void connect() {
        follower->askedToListen();
        answer();
    }
    void answer() {
        follower->listens(toldAndWaiting(), queue->waiting(NotificationType::kSet));
        settle();
    }
    /// The observer's part.
    void settle() {
        for (int asked = 0;; ++asked) {
            ASSERT_LT(asked, 20);
            while (follower->isBusy()) {
                follower->work(bus::Clock::time_point::min());
            }
            if (!follower->takeRequests().listen) {
                return;
            }
            follower->askedToListen();
            follower->listens(toldAndWaiting(), queue->waiting(NotificationType::kSet));
        }
    }
    void tellSingle(bool arrives = true) {
        if (queue->empty()) {
            return;
        }
        const Notification notice = queue->front();
        const auto line = splitLogLine(notice.line);
        if (arrives) {
            follower->notified({{"Type", nameOf(notice.type)},
                                {"Date", line->date},
                                {"Priority", line->priority},
                                {"Host", line->host},
                                {"Message", line->message}});
        }
        queue->pop();
        settle();
    }
    void tellBatch(bool arrives = true, std::size_t mostBytes = 200) {
        if (queue->empty()) {
            return;
        }
        const auto runs = queue->frontRuns(mostBytes);
        const UniqueFd file = NotificationBatch::write(runs);
        std::vector<NotificationBatch::Extent> extents;
        for (const NotificationRun &run : runs) {
            extents.push_back({nameOf(run.type), run.lines.size()});
        }
        const Checkpoint before = told();
        queue->popRuns(runs);
        if (arrives) {
            follower->batchCame(++number, NotificationBatch::read(file.get(), extents), before,
                                told());
            settle();
        }
    }
    void tellCheckpoint() {
        follower->checkpointCame(++number, told());
        settle();
    }
    void tellAll() {
        while (!queue->empty()) {
            tellBatch();
        }
        tellCheckpoint();
    }

    TemporaryFolder folder;
    std::unique_ptr<LogStore> store;
    std::unique_ptr<NotificationQueue> queue;
    std::uint64_t epoch = 0;
    std::uint64_t settled = 0;
    std::uint64_t untold = 0;
    std::int64_t seconds = 1'700'000'000;
    std::uint64_t number = 0;
    /// Events come together only where a test says so.
    NoticeFollower::Together together{.least = 1U << 20U};
    Window window;
    std::unique_ptr<NoticeFollower> follower;
};

}  // namespace quorbel::testing
