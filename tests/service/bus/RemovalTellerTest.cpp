#include "service/bus/RemovalTeller.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <future>
#include <string>

namespace quorbel {
namespace {

using testing::waitUntil;
using Bus = RemovalTeller::Bus;

const std::string kNew = "2,User.Notice,h,new\r\n";
const std::string kOld = "1,User.Notice,h,old\r\n";

struct RemovalTellerTest : ::testing::Test {
    /// Offers events that were removed, as the thread that removes does.
    void offer(const std::string &lines) {
        taken = std::async(std::launch::async, [this, lines] { return feed.offer(lines); });
        ASSERT_TRUE(waitUntil([this] { return feed.isOffered(); }));
    }

    RemovalFeed feed;
    NotificationQueue queue;
    RemovalTeller teller{feed, queue};
    std::future<bool> taken;
};

TEST_F(RemovalTellerTest, TellsNewEventsBeforeRemovals) {
    queue.push(NotificationType::kSet, kNew);
    queue.push(NotificationType::kSet, kNew);
    offer(kOld + kOld);
    for (int left = 2; left > 0; --left) {
        EXPECT_FALSE(teller.canTell(Bus::kThere));
        teller.tell(Bus::kThere);
        EXPECT_EQ(queue.size(), static_cast<std::size_t>(left));
        EXPECT_EQ(queue.front().type, NotificationType::kSet);
        queue.pop();
    }
    EXPECT_TRUE(teller.canTell(Bus::kThere));
    teller.tell(Bus::kThere);
    EXPECT_TRUE(taken.get());
    ASSERT_EQ(queue.size(), 2U);
    EXPECT_EQ(queue.front().type, NotificationType::kRemove);
    EXPECT_EQ(queue.front().line, kOld);
    // The next piece waits for these, and for what arrives meanwhile.
    queue.push(NotificationType::kSet, kNew);
    offer(kOld);
    queue.pop();
    queue.pop();
    EXPECT_FALSE(teller.canTell(Bus::kThere));
    queue.pop();
    teller.tell(Bus::kThere);
    EXPECT_TRUE(taken.get());
    EXPECT_EQ(queue.size(), 1U);
    EXPECT_EQ(teller.untold(), 0U);
}

TEST_F(RemovalTellerTest, OnlyCountsThemWithoutABus) {
    queue.push(NotificationType::kSet, kNew);
    offer(kOld + kOld + kOld);
    EXPECT_FALSE(teller.canTell(Bus::kUnknown));
    teller.tell(Bus::kUnknown);
    EXPECT_TRUE(feed.isOffered());
    EXPECT_TRUE(teller.canTell(Bus::kMissing));
    teller.tell(Bus::kMissing);
    EXPECT_TRUE(taken.get());
    EXPECT_EQ(teller.untold(), 3U);
    EXPECT_EQ(queue.size(), 1U);
    EXPECT_FALSE(teller.canTell(Bus::kMissing));
}

}  // namespace
}  // namespace quorbel
