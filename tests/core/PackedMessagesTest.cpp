#include "core/PackedMessages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace quorbel {
namespace {

MessageBytes bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

MessageBytes logBytes(std::size_t size, unsigned first = 0) {
    std::string text;
    for (unsigned number = first; text.size() < size; ++number) {
        text += "sshd[" + std::to_string(number) + "]: Accepted publickey for operator;";
    }
    return bytesOf(std::string_view(text).substr(0, size));
}

MessageBytes randomBytes(std::size_t size) {
    std::mt19937 random(1);
    MessageBytes bytes(size);
    std::ranges::generate(bytes, [&] { return static_cast<char>(random()); });
    return bytes;
}

class PackedMessagesTest : public ::testing::TestWithParam<std::size_t> {};

TEST_P(PackedMessagesTest, ComeBackAsTheyWere) {
    MessageBytes bytes = logBytes(GetParam());
    bytes[bytes.size() / 2] = 0;
    const auto packed = PackedBytes::pack(bytes);
    ASSERT_TRUE(packed);
    EXPECT_EQ(packed->unpackedSize(), bytes.size());
    MessageBytes unpacked = bytesOf("what stood there before");
    packed->unpackInto(unpacked);
    EXPECT_EQ(unpacked, bytes);
}

INSTANTIATE_TEST_SUITE_P(Sizes, PackedMessagesTest,
                         ::testing::Values(200, 65'535, 65'536, 300'000, PackedBytes::kMostBytes));

TEST(PackedBytesTest, WhatGainsNothingIsNotPacked) {
    EXPECT_FALSE(PackedBytes::pack({}));
    EXPECT_FALSE(PackedBytes::pack(bytesOf("a")));
    EXPECT_FALSE(PackedBytes::pack(randomBytes(100'000)));
}

TEST(PackedBytesTest, WhatWouldTakeMuchRoomUnpackedIsNotPacked) {
    EXPECT_FALSE(PackedBytes::pack(logBytes(PackedBytes::kMostBytes + 1)));
}

class UnpackedMessagesTest : public ::testing::Test {
protected:
    static constexpr unsigned kStep = 100'000;
    static constexpr std::size_t kSize = 100'000;

    UnpackedMessagesTest() {
        for (unsigned number = 0; number < 2 * UnpackedMessages::kMost; ++number) {
            m_all.push_back(std::make_unique<PackedMessages>(
                *PackedBytes::pack(logBytes(kSize + number, number * kStep)), m_unpacked));
        }
    }
    static MessageBytes expected(unsigned number) {
        return logBytes(kSize + number, number * kStep);
    }

    UnpackedMessages m_unpacked;
    std::vector<std::unique_ptr<PackedMessages>> m_all;
};

TEST_F(UnpackedMessagesTest, AllCanBeLookedAtAgainAndAgain) {
    for (int round = 0; round < 2; ++round) {
        for (unsigned number = 0; number < m_all.size(); ++number) {
            EXPECT_EQ(m_all[number]->bytes(), expected(number)) << number;
            EXPECT_EQ(m_all[number]->size(), expected(number).size());
        }
    }
}

TEST_F(UnpackedMessagesTest, StayWhereTheyAreWhileAFewOthersAreLookedAt) {
    const char *first = m_all[0]->bytes().data();
    for (unsigned number = 1; number < UnpackedMessages::kMost; ++number) {
        static_cast<void>(m_all[number]->bytes());
    }
    EXPECT_EQ(m_all[0]->bytes().data(), first);
    EXPECT_EQ(std::string_view(first, kSize), std::string_view(expected(0).data(), kSize));
}

TEST_F(UnpackedMessagesTest, OnesThatGoWhileUnpackedAreForgotten) {
    for (unsigned number = 0; number < UnpackedMessages::kMost; ++number) {
        static_cast<void>(m_all[number]->bytes());
    }
    m_all.erase(m_all.begin(), m_all.begin() + UnpackedMessages::kMost / 2);
    for (std::size_t number = 0; number < m_all.size(); ++number) {
        EXPECT_EQ(m_all[number]->bytes(),
                  expected(static_cast<unsigned>(number + UnpackedMessages::kMost / 2)));
    }
}

}  // namespace
}  // namespace quorbel
