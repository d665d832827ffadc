// Events that somebody holds while they leave the list.

#include "core/EventList.h"
#include "core/EventListSamples.h"
#include "core/EventReader.h"
#include "core/MessagePacking.h"
#include "platform/AllocationMeter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <deque>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace quorbel {
namespace {

using ::testing::ElementsAre;
using testing::fields;
using ::testing::IsEmpty;
using testing::stateWith;

constexpr std::size_t kSlots = EventChunk::kSlots;

class EventListHandlesTest : public ::testing::Test {
protected:
    void add(std::size_t count, const std::string &message = "disk full") {
        for (std::size_t i = 0; i < count; ++i) {
            list.insertRaw(fields("1700000000", "Local7.Error", "10.0.0.5", message));
        }
    }
    /// Of the oldest ones.
    void hold(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            held.emplace_back(list, list.idAt(list.size() - 1 - i));
        }
    }
    void removeAll() { list.removeRows({{0, list.size()}}); }
    [[nodiscard]] std::weak_ptr<const ChunkMessages> messages(std::size_t chunk) {
        return EventReader(list).chunk(chunk).messages();
    }
    void pack() {
        MessagePacking packing(list);
        while (packing.step()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    std::vector<std::string> hosts() {
        std::vector<std::string> all;
        EventReader(list).visitHosts([&all](std::string_view host) { all.emplace_back(host); });
        return all;
    }

    EventList list;
    std::deque<Event> held;
};

// No text is made of them before somebody looks.
TEST_F(EventListHandlesTest, ManyThatLeaveTakeNoMoreThanTheirRecords) {
    constexpr std::size_t kMany = 50'000;
    add(kMany, std::string(500, 'x'));
    hold(kMany);
    list.show(stateWith());
    const testing::AllocationMeter meter;
    removeAll();
    EXPECT_LT(meter.peak() / kMany, 60U);
    EXPECT_EQ(held.front().value("Message"), std::string(500, 'x'));
    EXPECT_EQ(held.back().value("Date"), "2023-11-14 22:13:20");
}

TEST_F(EventListHandlesTest, WhatIsHeldOfAChunkIsGivenBackWithItsLastOne) {
    add(2 * kSlots);
    hold(2);
    const auto first = messages(0);
    const auto second = messages(1);
    removeAll();
    EXPECT_TRUE(second.expired());
    held.pop_front();
    EXPECT_EQ(held.front().value("Message"), "disk full");
    held.pop_front();
    EXPECT_TRUE(first.expired());
}

TEST_F(EventListHandlesTest, OneThatLeftIsPackedWithItsChunk) {
    add(4 * kSlots, std::string(100, 'x'));
    hold(1);
    list.removeRows({{list.size() - 1, 1}});
    const std::weak_ptr<const MessageBytes> plain = messages(0).lock()->plain;
    pack();
    EXPECT_TRUE(EventReader(list).chunk(0).isPacked());
    EXPECT_TRUE(plain.expired());
    EXPECT_EQ(held.front().value("Message"), std::string(100, 'x'));
}

TEST_F(EventListHandlesTest, TheyLeaveAPackedChunkOneByOne) {
    for (std::size_t i = 0; i < 4 * kSlots; ++i) {
        add(1, "message " + std::to_string(i));
    }
    hold(kSlots);
    pack();
    // In two rounds, so that later ones stand among those that left before.
    for (const std::size_t step : {2U, 1U}) {
        for (std::size_t i = kSlots; i > 0; i -= step) {
            if (const auto row = list.rowOf(held[i - 1].id())) {
                list.removeRows({{*row, 1}});
            }
        }
    }
    ASSERT_EQ(list.size(), 3 * kSlots);
    for (std::size_t i = 0; i < kSlots; ++i) {
        ASSERT_EQ(held[i].value("Message"), "message " + std::to_string(i));
    }
}

TEST_F(EventListHandlesTest, TextsThatOnlyTheyHaveAreNotOfTheList) {
    list.insertRaw(fields("1700000000", "Local7.Error", "gone"));
    hold(1);
    removeAll();
    EXPECT_THAT(hosts(), IsEmpty());
    list.insertRaw(fields("1700000000", "Local7.Error", "new"));
    EXPECT_THAT(hosts(), ElementsAre("new"));
    EXPECT_EQ(held.front().value("Host"), "gone");
    list.insertRaw(fields("1700000000", "Local7.Error", "gone"));
    held.clear();
    EXPECT_EQ(list.host(0), "gone");
    removeAll();
    EXPECT_THAT(hosts(), IsEmpty());
}

TEST_F(EventListHandlesTest, TextsOfNobodyMakeRoomForOthers) {
    for (int i = 0; i < 100; ++i) {
        list.insertRaw(fields("1700000000", "priority " + std::to_string(i), std::to_string(i)));
        hold(1);
        removeAll();
        held.clear();
    }
    EXPECT_EQ(EventReader(list).hostLimit(), 2U);
    EXPECT_EQ(EventReader(list).priorityLimit(), 2U);
}

TEST_F(EventListHandlesTest, OneThatAnswersARemovalNoticeStaysReadable) {
    add(2);
    hold(2);
    list.markForRemoval(1);
    list.removeMarked();
    EXPECT_EQ(held.front().value("Message"), "disk full");
    list.markForRemoval(0);
    list.setAside({{0, 1}});
    EXPECT_EQ(held.back().value("Message"), "disk full");
}

TEST_F(EventListHandlesTest, OneKeepsWhatCameWithIt) {
    const std::vector<std::pair<std::string_view, std::string_view>> others{{"Odd", "one"}};
    list.insertRaw({"soon", {}, {}, {}, others});
    hold(1);
    removeAll();
    EXPECT_EQ(held.front().value("Odd"), "one");
    EXPECT_EQ(held.front().value("Date"), "soon");
    EXPECT_EQ(held.front().value("Host"), std::nullopt);
    EXPECT_EQ(held.front().value("Message"), std::nullopt);
}

// One that was set aside has left; when it is put back, it has never.
TEST_F(EventListHandlesTest, ItIsAsItWasWhenItLeftLast) {
    add(2);
    hold(2);
    list.setAside({{0, 2}});
    list.show(stateWith());
    EXPECT_EQ(held.front().value("Date"), "1700000000");
    list.putBack();
    EXPECT_EQ(held.front().value("Date"), "2023-11-14 22:13:20");
    list.setAside({{0, 1}});
    list.removeRows({{0, 1}});
    EXPECT_EQ(held.front().value("Date"), "2023-11-14 22:13:20");
    EXPECT_EQ(held.back().value("Date"), "2023-11-14 22:13:20");
}

// The list starts over with its numbers of showings and formats meanwhile.
TEST_F(EventListHandlesTest, NoShowingSinceChangesIt) {
    add(2);
    list.insertRaw(fields("soon"));
    hold(3);
    list.show(stateWith());
    list.removeRows({{0, 1}});
    list.setAside({{0, 2}});
    std::string format(testing::kFormat);
    for (int i = 0; i < 600; ++i) {
        const std::string next = "yyyy 'open" + std::to_string(i);
        list.show(stateWith(next, format));
        list.insertShown(fields("1"), stateWith(next, format));
        format = next;
    }
    EXPECT_EQ(held[0].value("Date"), "2023-11-14 22:13:20");
    EXPECT_EQ(held[0].value("Image"), "Moderate");
    EXPECT_EQ(held[2].value("Date"), "soon");
}

TEST_F(EventListHandlesTest, AnEventThatNobodyHeldWhenItLeftIsGone) {
    add(3);
    hold(2);
    removeAll();
    const Event again(list, held.front().id());
    held.pop_front();
    EXPECT_EQ(again.value("Message"), "disk full");
    const Event none(list, held.front().id() + 1);
    EXPECT_EQ(none.value("Message"), std::nullopt);
}

}  // namespace
}  // namespace quorbel
