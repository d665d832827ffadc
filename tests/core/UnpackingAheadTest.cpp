#include "core/UnpackingAhead.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

namespace quorbel {
namespace {

class UnpackingAheadTest : public ::testing::Test {
protected:
    static MessageBytes bytesOf(unsigned number) {
        std::string text;
        for (unsigned i = 0; i < 20'000; ++i) {
            text += "link " + std::to_string(number) + " is up, ";
        }
        return {text.begin(), text.end()};
    }
    static std::shared_ptr<const PackedBytes> packed(unsigned number) {
        return std::make_shared<const PackedBytes>(*PackedBytes::pack(bytesOf(number)));
    }
    void begin(const std::shared_ptr<const PackedBytes> &packed) {
        MessageBytes room;
        m_ahead.begin(packed, room);
    }
    /// Takes them when they are there; they must have been begun with.
    MessageBytes takeWhenDone(const std::shared_ptr<const PackedBytes> &packed) {
        for (;;) {
            // Whoever is too early gets nothing, ever.
            std::this_thread::sleep_for(m_patience);
            if (auto bytes = m_ahead.take(*packed)) {
                return std::move(*bytes);
            }
            begin(packed);
            m_patience *= 2;
        }
    }

    UnpackingAhead m_ahead;
    std::chrono::milliseconds m_patience{1};
};

TEST_F(UnpackingAheadTest, GivesWhatItBeganWith) {
    const auto first = packed(1);
    const auto second = packed(2);
    begin(first);
    begin(second);
    EXPECT_EQ(takeWhenDone(second), bytesOf(2));
    EXPECT_EQ(takeWhenDone(first), bytesOf(1));
}

TEST_F(UnpackingAheadTest, GivesNothingElse) {
    begin(packed(1));
    EXPECT_FALSE(m_ahead.take(*packed(1)));
}

TEST_F(UnpackingAheadTest, GivesThemOnce) {
    const auto first = packed(1);
    begin(first);
    EXPECT_EQ(takeWhenDone(first), bytesOf(1));
    EXPECT_FALSE(m_ahead.take(*first));
}

TEST_F(UnpackingAheadTest, TakesTheRoomThatItNeeds) {
    MessageBytes room(1'000'000);
    const auto first = packed(1);
    m_ahead.begin(first, room);
    EXPECT_EQ(room.capacity(), 0U);
    MessageBytes other(10);
    m_ahead.begin(first, other);
    EXPECT_EQ(other.size(), 10U) << "it has begun already";
}

TEST_F(UnpackingAheadTest, ForgetsTheFirstOfTooMany) {
    std::vector<std::shared_ptr<const PackedBytes>> all;
    for (unsigned number = 0; number <= UnpackingAhead::kMost; ++number) {
        all.push_back(packed(number));
        begin(all.back());
    }
    EXPECT_FALSE(m_ahead.take(*all.front()));
    EXPECT_EQ(takeWhenDone(all.back()), bytesOf(UnpackingAhead::kMost));
}

TEST_F(UnpackingAheadTest, WhatIsForgottenWhileUnderWayDoesNoHarm) {
    for (unsigned number = 0; number < 200; ++number) {
        const auto some = packed(number % 3);
        begin(some);
        if (const auto bytes = m_ahead.take(*some)) {
            EXPECT_EQ(*bytes, bytesOf(number % 3));
        }
    }
}

}  // namespace
}  // namespace quorbel
