#include "EventListSamples.h"
#include "core/ArrangedEvents.h"
#include "core/EventList.h"
#include "core/MessagePacking.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace quorbel {
namespace {

using testing::fields;

constexpr std::size_t kChunk = EventChunk::kSlots;

class MessagePackingTest : public ::testing::Test {
protected:
    static std::string messageOf(std::size_t number) {
        return "sshd[" + std::to_string(number) + "]: Accepted publickey for operator";
    }
    void fill(std::size_t chunks) {
        for (std::size_t number = 0; number < chunks * kChunk; ++number) {
            m_list.insertRaw(
                fields(std::to_string(number), "Auth.Notice", "10.0.0.1", messageOf(number)));
        }
    }
    void packAll() {
        while (m_packing->step()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    [[nodiscard]] std::size_t packed() {
        std::size_t count = 0;
        for (std::size_t number = 0; number < m_reader.chunkCount(); ++number) {
            count += m_reader.chunk(number).isPacked() ? 1U : 0U;
        }
        return count;
    }
    /// The event of that number, while none has left the list.
    [[nodiscard]] std::string_view shownMessage(std::size_t number) {
        return *m_list.message(m_list.size() - 1 - number);
    }

    EventList m_list;
    EventReader m_reader{m_list};
    std::unique_ptr<MessagePacking> m_packing = std::make_unique<MessagePacking>(m_list);
};

TEST_F(MessagePackingTest, AShortListStaysAsItIs) {
    EXPECT_FALSE(m_packing->step());
    fill(MessagePacking::kHotChunks);
    EXPECT_FALSE(m_packing->step());
    EXPECT_EQ(packed(), 0U);
}

TEST_F(MessagePackingTest, AllButTheNewestChunksArePackedAndReadAsBefore) {
    fill(MessagePacking::kMostUnderWay + 10);
    packAll();
    EXPECT_EQ(packed(), m_reader.chunkCount() - MessagePacking::kHotChunks);
    for (std::size_t number = 0; number < m_list.size(); number += 97) {
        ASSERT_EQ(shownMessage(number), messageOf(number));
    }
}

TEST_F(MessagePackingTest, AFewRowsCanBeHeldSideBySide) {
    fill(UnpackedMessages::kMost + 4);
    packAll();
    std::vector<std::string_view> messages;
    for (std::size_t row = 0; row < UnpackedMessages::kMost; ++row) {
        messages.push_back(shownMessage(row * kChunk));
    }
    for (std::size_t row = 0; row < messages.size(); ++row) {
        EXPECT_EQ(messages[row], messageOf(row * kChunk));
    }
}

TEST_F(MessagePackingTest, MessagesThatWereReplacedMeanwhileStand) {
    fill(4);
    ASSERT_TRUE(m_packing->step());
    // More than half of what the oldest chunk has.
    m_list.removeRows({{m_list.size() - kChunk, kChunk * 3 / 4}});
    packAll();
    EXPECT_EQ(packed(), 2U);
    for (std::size_t number = 0; number < kChunk / 4; ++number) {
        ASSERT_EQ(shownMessage(number), messageOf(number));
    }
}

TEST_F(MessagePackingTest, EventsThatLeftMeanwhileComeBackAsTheyWere) {
    fill(4);
    ASSERT_TRUE(m_packing->step());
    m_list.setAside({{0, m_list.size()}});
    while (m_packing->step()) {
    }
    EXPECT_EQ(packed(), 0U);
    m_list.putBack();
    packAll();
    EXPECT_EQ(packed(), 2U);
    EXPECT_EQ(shownMessage(7), messageOf(7));
}

TEST_F(MessagePackingTest, EventsLeaveAndComeBackWherePacked) {
    fill(4);
    packAll();
    m_list.setAside({{m_list.size() - kChunk / 2, kChunk / 4}, {m_list.size() - 10, 10}});
    EXPECT_EQ(m_list.message(m_list.size() - 1), messageOf(10));
    m_list.putBack();
    for (std::size_t number = 0; number < m_list.size(); number += 13) {
        ASSERT_EQ(shownMessage(number), messageOf(number));
    }
}

TEST_F(MessagePackingTest, WhatGainsNothingIsTriedOnce) {
    std::mt19937 random(5);
    for (std::size_t number = 0; number < 4 * kChunk; ++number) {
        std::string message(60, ' ');
        std::ranges::generate(message, [&] { return static_cast<char>(random()); });
        m_list.insertRaw(fields("1", "Auth.Notice", "10.0.0.1", message));
    }
    packAll();
    EXPECT_EQ(packed(), 0U);
    EXPECT_FALSE(m_packing->step());
}

TEST_F(MessagePackingTest, EndsWithWorkUnderWay) {
    fill(MessagePacking::kMostUnderWay);
    ASSERT_TRUE(m_packing->step());
    m_packing.reset();
    EXPECT_EQ(shownMessage(3), messageOf(3));
}

TEST_F(MessagePackingTest, FindsTheSameWherePacked) {
    fill(12);
    EventQuery query;
    query.texts.push_back({{.text = "[123", .isCaseSensitive = false, .isExpression = false}});
    query.texts.push_back({{.text = "4.*PUBLICKEY", .isExpression = true}});
    const auto found = [&] {
        ArrangedEvents arranged(m_list);
        EXPECT_EQ(arranged.setFilter(query), "");
        arranged.search([] { return false; });
        std::vector<EventId> ids;
        for (std::size_t row = 0; row < arranged.size(); ++row) {
            ids.push_back(arranged.idAt(row));
        }
        return ids;
    };
    const auto before = found();
    EXPECT_GT(before.size(), 10U);
    EXPECT_LT(before.size(), 100U);
    packAll();
    ASSERT_EQ(packed(), 10U);
    EXPECT_EQ(found(), before);
}

TEST_F(MessagePackingTest, FindsWhatOnlyAFewOfThemHave) {
    // Each in a chunk of its own, with letters that are alike to others.
    const std::vector<std::string> rare = {"a Moonlight sonata", "3 di\u017Fk", "5 \u212Aelvin",
                                           "f\u00fcnf", "x"};
    for (const std::string &message : rare) {
        fill(1);
        m_list.insertRaw(fields("1", "Auth.Notice", "10.0.0.1", message));
    }
    fill(MessagePacking::kHotChunks + 1);
    struct Case {
        TextPattern::Spec text;
        bool isNegated = false;
    };
    const Case cases[] = {
        {{"moonlight"}},
        {{"MOONLIGHT", true}},
        {{"Moonlight", true}},
        {{"disk"}},
        {{"KELVIN"}},
        {{"f\u00fcnf"}},
        {{"F\u00dcNF", true}},
        {{"x"}},
        {{"a m"}},
        {{"xyzzy"}},
        {{"xyzzy"}, true},
        {{"moonlight"}, true},
        {{"m.*light", false, true}},
        {{"zzz.*light", false, true}},
        {{"disk|kelvin", false, true}},
        {{"10.0.0.1"}},
        {{"auth.not"}},
        {{"[4095]: acc"}},
        {{"operator", true}},
    };
    std::vector<std::size_t> counts;
    const auto countAll = [&] {
        counts.clear();
        for (const Case &c : cases) {
            EventQuery query;
            query.texts.push_back({c.text, c.isNegated});
            ArrangedEvents arranged(m_list);
            EXPECT_EQ(arranged.setFilter(query), "");
            arranged.search([] { return false; });
            counts.push_back(arranged.size());
        }
        return counts;
    };
    const auto before = countAll();
    EXPECT_EQ((std::vector(before.begin(), before.begin() + 10)),
              (std::vector<std::size_t>{1, 0, 1, 1, 1, 1, 0, 1, 1, 0}));
    packAll();
    ASSERT_GT(packed(), rare.size());
    EXPECT_EQ(countAll(), before);
}

TEST_F(MessagePackingTest, RemovalNoticesFindTheirEventsWherePacked) {
    fill(12);
    packAll();
    const AppState state = testing::stateWith();
    m_list.show(state);
    for (std::size_t number = 0; number < m_list.size(); number += 1009) {
        const std::string message = messageOf(number);
        const std::string date = std::to_string(number);
        EXPECT_EQ(
            m_list.find(fields(date, "Auth.Notice", "10.0.0.1", message), state.newDateFormat),
            m_list.size() - 1 - number);
    }
}

}  // namespace
}  // namespace quorbel
