#include "platform/UniqueFd.h"
#include "service/input/PacedSource.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>
#include <sys/eventfd.h>

#include <chrono>
#include <memory>

namespace quorbel {
namespace {

using namespace std::chrono_literals;

/// A descriptor that holds a number of things to read, which reading makes none.
struct PacedSourceTest : ::testing::Test {
    PacedSourceTest() {
        sd_event *made = nullptr;
        EXPECT_GE(sd_event_new(&made), 0);
        loop.reset(made);
    }

    // What is quick depends on the rest: a long one leaves a busy machine time enough.
    void watch(std::chrono::microseconds rest) {
        source = std::make_unique<PacedSource>(
            loop.get(), input.get(), [this] { return read(); }, rest);
    }
    std::size_t read() {
        ++readings;
        eventfd_t count = 0;
        eventfd_read(input.get(), &count);
        taken += count;
        return count;
    }
    void bring(std::size_t count) const { eventfd_write(input.get(), count); }
    void bringAndRun(std::size_t count) const {
        bring(count);
        sd_event_run(loop.get(), 0);
    }
    void makeRest() const {
        const auto start = std::chrono::steady_clock::now();
        while (!source->isResting()) {
            bringAndRun(1);
            ASSERT_LT(std::chrono::steady_clock::now() - start, testing::kPatience);
        }
    }

    EventLoopPointer loop;
    UniqueFd input{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
    std::size_t readings = 0;
    std::size_t taken = 0;
    std::unique_ptr<PacedSource> source;
};

TEST_F(PacedSourceTest, ReadsAtOnceWhatComesAfterAPause) {
    watch(1us);
    for (std::size_t i = 1; i <= 5 * PacedSource::kQuickReadings; ++i) {
        const auto start = std::chrono::steady_clock::now();
        while (std::chrono::steady_clock::now() - start < 5us) {
        }
        bringAndRun(1);
        ASSERT_EQ(taken, i);
        ASSERT_FALSE(source->isResting());
    }
}

TEST_F(PacedSourceTest, RestsWhenOneComesCloseBehindTheOther) {
    watch(900ms);
    makeRest();
    EXPECT_GE(readings, PacedSource::kQuickReadings);
    const std::size_t before = readings;
    const std::size_t takenBefore = taken;
    for (int i = 0; i < 10; ++i) {
        bringAndRun(1);
    }
    // Ten bring a reading or none: several would take many rests.
    EXPECT_LE(readings, before + 1);
    ASSERT_TRUE(testing::waitUntil([&] {
        sd_event_run(loop.get(), 0);
        return taken == takenBefore + 10;
    }));
    EXPECT_LE(readings, before + 2);
}

TEST_F(PacedSourceTest, ReadsAfterEachRest) {
    watch(20ms);
    makeRest();
    for (int i = 0; i < 5; ++i) {
        bring(1);
        const std::size_t expected = taken + 1;
        ASSERT_TRUE(testing::waitUntil([&] {
            sd_event_run(loop.get(), 0);
            return taken == expected;
        }));
        ASSERT_TRUE(source->isResting());
    }
}

TEST_F(PacedSourceTest, ReadsAtOnceAgainWhenARestBroughtNothing) {
    watch(20ms);
    makeRest();
    ASSERT_TRUE(testing::waitUntil([this] {
        sd_event_run(loop.get(), 0);
        return !source->isResting();
    }));
    const std::size_t before = taken;
    bringAndRun(1);
    EXPECT_EQ(taken, before + 1);
}

TEST_F(PacedSourceTest, DoesNotRestWhileThereIsEnoughToDo) {
    watch(900ms);
    for (std::size_t i = 0; i < 5 * PacedSource::kQuickReadings; ++i) {
        bringAndRun(PacedSource::kEnough);
        ASSERT_FALSE(source->isResting());
    }
    makeRest();
    const std::size_t expected = taken + PacedSource::kEnough;
    bring(PacedSource::kEnough);
    ASSERT_TRUE(testing::waitUntil([&] {
        sd_event_run(loop.get(), 0);
        return taken >= expected;
    }));
    EXPECT_FALSE(source->isResting());
}

TEST_F(PacedSourceTest, TheLoopCanWaitWhileNothingComes) {
    watch(20ms);
    makeRest();
    ASSERT_TRUE(testing::waitUntil([this] {
        sd_event_run(loop.get(), 0);
        return !source->isResting();
    }));
    const std::size_t before = readings;
    // Whatever the timer had left to say is said by now.
    while (sd_event_run(loop.get(), 0) > 0) {
    }
    EXPECT_EQ(sd_event_run(loop.get(), 60'000), 0);
    EXPECT_EQ(readings, before);
}

TEST_F(PacedSourceTest, ReadsNothingOnceItIsGone) {
    watch(20ms);
    makeRest();
    const std::size_t before = readings;
    source.reset();
    bring(1);
    EXPECT_EQ(sd_event_run(loop.get(), 60'000), 0);
    EXPECT_EQ(readings, before);
}

}  // namespace
}  // namespace quorbel
