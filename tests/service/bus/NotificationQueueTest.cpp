#include "service/bus/NotificationQueue.h"

#include <gtest/gtest.h>

#include <string>

namespace quorbel {
namespace {

std::string line(std::size_t number) {
    return "1,User.Notice,h," + std::to_string(number) + "\r\n";
}

TEST(NotificationQueueTest, GivesNotificationsInTheirOrder) {
    NotificationQueue queue;
    EXPECT_TRUE(queue.empty());
    queue.push(NotificationType::kSet, line(1));
    queue.push(NotificationType::kRemove, line(2));
    EXPECT_EQ(queue.size(), 2U);
    EXPECT_EQ(queue.front().type, NotificationType::kSet);
    EXPECT_EQ(queue.front().line, line(1));
    queue.pop();
    EXPECT_EQ(queue.front().type, NotificationType::kRemove);
    EXPECT_EQ(queue.front().line, line(2));
    queue.pop();
    EXPECT_TRUE(queue.empty());
    EXPECT_EQ(queue.dropped(), 0U);
}

TEST(NotificationQueueTest, KeepsItsOrderWhileItIsFilledAndEmptied) {
    NotificationQueue queue;
    std::size_t pushed = 0;
    std::size_t popped = 0;
    for (std::size_t round = 0; round < 2000; ++round) {
        for (std::size_t i = 0; i < round % 37; ++i) {
            queue.push(NotificationType::kSet, line(pushed++));
        }
        for (std::size_t i = 0; i < round % 31 && !queue.empty(); ++i) {
            ASSERT_EQ(queue.front().line, line(popped++));
            queue.pop();
        }
    }
    EXPECT_EQ(queue.size(), pushed - popped);
    EXPECT_EQ(queue.dropped(), 0U);
}

TEST(NotificationQueueTest, DropsAndCountsTheOldestWhenThereAreTooMany) {
    NotificationQueue queue;
    for (std::size_t i = 0; i < NotificationQueue::kMostNotifications + 5; ++i) {
        queue.push(NotificationType::kSet, line(i));
    }
    EXPECT_EQ(queue.size(), NotificationQueue::kMostNotifications);
    EXPECT_EQ(queue.dropped(), 5U);
    EXPECT_EQ(queue.front().line, line(5));
}

TEST(NotificationQueueTest, CountsWhatIsDroppedAtTheEnd) {
    NotificationQueue queue;
    for (std::size_t i = 0; i < 3; ++i) {
        queue.push(NotificationType::kSet, line(i));
    }
    queue.pop();
    queue.dropAll();
    EXPECT_TRUE(queue.empty());
    EXPECT_EQ(queue.dropped(), 2U);
}

TEST(NotificationQueueTest, DropsTheOldestWhenTheyTakeTooMuchRoom) {
    NotificationQueue queue;
    const std::string large = std::string(1021, 'x') + "\r\n";
    const std::size_t many = 40'000;
    for (std::size_t i = 0; i < many; ++i) {
        queue.push(NotificationType::kSet, large);
    }
    EXPECT_LE(queue.size() * large.size(), NotificationQueue::kMostBytes);
    EXPECT_GT(queue.size(), 30'000U);
    EXPECT_EQ(queue.size() + queue.dropped(), many);
}

FilePlace at(std::uint64_t offset, const char *name = "2026-11-21.log", std::uint64_t inode = 7) {
    return {name, {inode, 1}, offset};
}

std::string joined(const std::vector<NotificationRun> &runs) {
    std::string all;
    for (const NotificationRun &run : runs) {
        all += nameOf(run.type);
        all += ':';
        all += run.lines;
    }
    return all;
}

TEST(NotificationQueueTest, GivesRunsOfOneTypeInTheirOrder) {
    NotificationQueue queue;
    queue.push(NotificationType::kSet, line(1) + line(2), at(100));
    queue.push(NotificationType::kSet, line(3), at(100 + line(3).size()));
    queue.push(NotificationType::kRemove, line(1));
    queue.push(NotificationType::kRemove, line(2));
    queue.push(NotificationType::kSet, line(4), at(500));
    EXPECT_EQ(queue.size(), 6U);
    const auto runs = queue.frontRuns(10'000);
    EXPECT_EQ(joined(runs), "Set:" + line(1) + line(2) + line(3) + "Remove:" + line(1) + line(2) +
                                "Set:" + line(4));
    queue.popRuns(runs);
    EXPECT_TRUE(queue.empty());
    EXPECT_EQ(queue.told(NotificationType::kSet), 4U);
    EXPECT_EQ(queue.told(NotificationType::kRemove), 2U);
    EXPECT_EQ(queue.dropped(), 0U);
}

TEST(NotificationQueueTest, GivesNoMoreBytesThanAskedForButSomething) {
    NotificationQueue queue;
    queue.push(NotificationType::kSet, line(1));
    queue.push(NotificationType::kRemove, line(2));
    queue.push(NotificationType::kSet, line(3));
    EXPECT_EQ(joined(queue.frontRuns(1)), "Set:" + line(1));
    EXPECT_EQ(queue.frontRuns(2 * line(1).size()).size(), 2U);
    queue.dropRuns(queue.frontRuns(1));
    EXPECT_EQ(queue.dropped(), 1U);
    EXPECT_EQ(queue.front().line, line(2));
    EXPECT_EQ(queue.told(NotificationType::kSet), 1U);
    EXPECT_EQ(queue.waiting(NotificationType::kSet), 1U);
}

TEST(NotificationQueueTest, KnowsThePlaceBehindWhatWasTold) {
    NotificationQueue queue;
    const std::uint64_t size = line(1).size();
    EXPECT_FALSE(queue.toldPlace());
    queue.push(NotificationType::kSet, line(1) + line(2), at(1000));
    EXPECT_EQ(queue.toldPlace(), at(1000 - 2 * size));
    queue.pop();
    EXPECT_EQ(queue.toldPlace(), at(1000 - size));
    // One that could not be stored, and the next day.
    queue.push(NotificationType::kSet, line(3));
    queue.push(NotificationType::kSet, line(4), at(size, "2026-11-22.log", 8));
    queue.pop();
    EXPECT_EQ(queue.toldPlace(), at(0, "2026-11-22.log", 8));
    queue.pop();
    EXPECT_EQ(queue.front().line, line(4));
    EXPECT_EQ(queue.toldPlace(), at(0, "2026-11-22.log", 8));
    queue.pop();
    EXPECT_FALSE(queue.toldPlace());
}

TEST(NotificationQueueTest, APlaceIsThatOfItsFile) {
    NotificationQueue queue;
    const std::uint64_t size = line(1).size();
    queue.push(NotificationType::kSet, line(1), at(1000));
    // Replaced by a shorter one, in which the next line could stand right behind by chance.
    queue.push(NotificationType::kSet, line(2), at(1000 + size, "2026-11-21.log", 9));
    EXPECT_EQ(queue.toldPlace(), at(1000 - size));
    queue.pop();
    EXPECT_EQ(queue.toldPlace(), at(1000, "2026-11-21.log", 9));
}

}  // namespace
}  // namespace quorbel
