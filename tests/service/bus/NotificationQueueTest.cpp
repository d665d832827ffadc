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

}  // namespace
}  // namespace quorbel
