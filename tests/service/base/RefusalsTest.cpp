#include "service/base/Refusals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <string>

namespace quorbel {
namespace {

IpAddress sender(std::size_t number) {
    return IpAddress::parse("10.0." + std::to_string(number / 256) + "." +
                            std::to_string(number % 256))
        .value();
}

std::string textOf(const Refusals &refusals) {
    std::string text;
    for (const Refusals::Refusal &one : refusals.latest()) {
        text += one.sender.text() + " " + std::string(refusalReasonName(one.reason)) + " " +
                std::to_string(one.count) + " " + one.detail + "\n";
    }
    return text;
}

TEST(RefusalsTest, TellThoseOfEachSenderTheLastSenderFirst) {
    Refusals refusals;
    EXPECT_EQ(textOf(refusals), "");
    const auto before = std::time(nullptr);
    refusals.note(sender(1), RefusalReason::kFiltered, "Chatter");
    refusals.note(sender(2), RefusalReason::kClosed, {});
    refusals.note(sender(1), RefusalReason::kMalformed, "one");
    refusals.note(sender(1), RefusalReason::kMalformed, "two");
    EXPECT_EQ(textOf(refusals),
              "10.0.0.1 malformed 2 \"two\"\n"
              "10.0.0.1 filtered 1 \"Chatter\"\n"
              "10.0.0.2 connection closed 1 \n");
    refusals.note(sender(2), RefusalReason::kTooLong, {});
    EXPECT_TRUE(textOf(refusals).starts_with("10.0.0.2 too long 1 \n"));
    for (const Refusals::Refusal &one : refusals.latest()) {
        EXPECT_GE(one.seconds, before);
        EXPECT_LE(one.seconds, std::time(nullptr));
    }
}

TEST(RefusalsTest, KeepAsManySendersAsTheyMayWhoeverSends) {
    Refusals refusals;
    constexpr std::size_t kMany = 100'000;
    for (std::size_t i = 0; i < kMany; ++i) {
        refusals.note(sender(i % 65536), RefusalReason::kMalformed, std::string(5000, 'x'));
    }
    const auto latest = refusals.latest();
    ASSERT_EQ(latest.size(), Refusals::kMostSenders);
    EXPECT_EQ(latest.front().sender, sender((kMany - 1) % 65536));
    EXPECT_EQ(latest.back().sender, sender((kMany - Refusals::kMostSenders) % 65536));
    EXPECT_TRUE(std::ranges::all_of(
        latest, [](const Refusals::Refusal &one) { return one.detail.size() < 100; }));
}

// A bus refuses what is no UTF-8, and a terminal obeys control characters.
TEST(RefusalsTest, QuoteWhatStrangersSent) {
    Refusals refusals;
    refusals.note(sender(1), RefusalReason::kMalformed, "\x1B[2J\xFF\n");
    EXPECT_EQ(textOf(refusals), "10.0.0.1 malformed 1 \"?[2J??\"\n");
}

}  // namespace
}  // namespace quorbel
