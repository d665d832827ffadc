#include "service/bus/Listeners.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quorbel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct ListenersTest : ::testing::Test {
    [[nodiscard]] bool areBusy(bool hurry = false) { return listeners.areBusy(now, hurry); }

    Listeners listeners;
    Listeners::Clock::time_point now{};
};

TEST_F(ListenersTest, AreBusyWithTwoOnTheirWay) {
    listeners.add(":1");
    EXPECT_FALSE(areBusy());
    EXPECT_EQ(listeners.send(":1", now), 1U);
    EXPECT_FALSE(areBusy());
    EXPECT_EQ(listeners.send(":1", now), 2U);
    EXPECT_TRUE(areBusy());
    listeners.taken(":1", 1, now);
    EXPECT_FALSE(areBusy());
    listeners.send(":1", now);
    EXPECT_TRUE(areBusy());
    // All up to that number.
    listeners.taken(":1", 3, now);
    listeners.send(":1", now);
    EXPECT_FALSE(areBusy());
}

TEST_F(ListenersTest, OneThatTakesNothingIsNotWaitedForLong) {
    listeners.add(":1");
    listeners.add(":2");
    for (int i = 0; i < 2; ++i) {
        listeners.send(":1", now);
        listeners.send(":2", now);
    }
    listeners.taken(":2", 2, now);
    EXPECT_TRUE(areBusy());
    now += Listeners::kPatience;
    EXPECT_FALSE(areBusy());
    EXPECT_THAT(listeners.ready(), ElementsAre(":2"));
    // Nor for the other one, which has taken everything, any sooner.
    listeners.send(":2", now);
    listeners.send(":2", now);
    EXPECT_TRUE(areBusy());
}

TEST_F(ListenersTest, OneThatIsSlowIsWaitedForWhileItTakesSomething) {
    listeners.add(":1");
    listeners.send(":1", now);
    listeners.send(":1", now);
    for (std::uint64_t number = 1; number < 10; ++number) {
        now += Listeners::kPatience - std::chrono::milliseconds(1);
        EXPECT_TRUE(areBusy());
        listeners.taken(":1", number, now);
        listeners.send(":1", now);
    }
    EXPECT_THAT(listeners.ready(), ElementsAre(":1"));
}

TEST_F(ListenersTest, InAHurryTheSlowAreNotWaitedForWhenOthersAreFaster) {
    listeners.add(":1");
    listeners.add(":2");
    for (int i = 0; i < 2; ++i) {
        listeners.send(":1", now);
        listeners.send(":2", now);
    }
    now += Listeners::kHurriedPatience;
    EXPECT_TRUE(areBusy(true));
    listeners.taken(":2", 1, now);
    EXPECT_TRUE(areBusy());
    EXPECT_FALSE(areBusy(true));
    EXPECT_THAT(listeners.ready(), ElementsAre(":2"));
    listeners.send(":2", now);
    EXPECT_TRUE(areBusy(true));
}

TEST_F(ListenersTest, InAHurryAMomentIsLeft) {
    listeners.add(":1");
    listeners.add(":2");
    listeners.send(":1", now);
    listeners.send(":1", now);
    now += Listeners::kHurriedPatience - std::chrono::milliseconds(1);
    EXPECT_TRUE(areBusy(true));
}

TEST_F(ListenersTest, OneThatLaggedIsBackWhenItHasTakenAll) {
    listeners.add(":1");
    listeners.send(":1", now);
    listeners.send(":1", now);
    now += Listeners::kPatience;
    EXPECT_FALSE(areBusy());
    EXPECT_FALSE(listeners.taken(":1", 1, now));
    EXPECT_THAT(listeners.ready(), IsEmpty());
    EXPECT_TRUE(listeners.taken(":1", 2, now));
    EXPECT_THAT(listeners.ready(), ElementsAre(":1"));
    EXPECT_EQ(listeners.send(":1", now), 3U);
}

TEST_F(ListenersTest, OneThatListensAnewHasTakenAll) {
    listeners.add(":1");
    listeners.send(":1", now);
    listeners.send(":1", now);
    now += Listeners::kPatience;
    EXPECT_FALSE(areBusy());
    listeners.add(":1");
    EXPECT_THAT(listeners.ready(), ElementsAre(":1"));
    EXPECT_EQ(listeners.send(":1", now), 3U);
    EXPECT_FALSE(areBusy());
}

TEST_F(ListenersTest, WhatWasNotSentCannotBeTaken) {
    listeners.add(":1");
    listeners.send(":1", now);
    listeners.send(":1", now);
    EXPECT_FALSE(listeners.taken(":1", 3, now));
    EXPECT_FALSE(listeners.taken(":2", 1, now));
    EXPECT_TRUE(areBusy());
    EXPECT_THAT(listeners.ready(), ElementsAre(":1"));
}

TEST_F(ListenersTest, ThoseGoneAreForgotten) {
    listeners.add(":1");
    listeners.add(":2");
    listeners.keep([](const std::string &name) { return name == ":2"; });
    EXPECT_THAT(listeners.ready(), ElementsAre(":2"));
    listeners.clear();
    EXPECT_TRUE(listeners.empty());
}

}  // namespace
}  // namespace quorbel
