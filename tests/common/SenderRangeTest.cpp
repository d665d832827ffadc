#include "common/SenderRange.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

namespace quorbel {
namespace {

constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();

TEST(SenderRangeTest, TellsWhomItStandsFor) {
    struct Case {
        const char *address;
        std::int64_t mask;
        const char *meaning;  ///< "any", "nobody", or how many bits are free
        bool isTooLong;
    };
    const Case cases[] = {
        {"0.0.0.0", 0, "any", false},
        {"::", 0, "any", false},
        {"", 0, "any", false},
        {" ", -1, "any", false},
        {"10.0.0.5", 0, "any, not the address", false},
        {"2001:db8::1", 0, "any, not the address", false},
        {"router.example.org", 0, "any, not the address", false},
        {"router.example.org", 32, "nobody", false},
        {"router.example.org", 33, "nobody", false},
        {"", 32, "nobody", false},
        {"10.0.0", 8, "nobody", false},
        {"10.0.0.5", 32, "0", false},
        {" 10.0.0.5 ", 31, "1", false},
        {"10.0.0.5", 24, "8", false},
        {"0.0.0.0", 1, "31", false},
        {"10.0.0.5", 33, "0", true},
        {"10.0.0.5", 255, "0", true},
        {"10.0.0.5", kMost, "0", true},
        {"2001:db8::1", 128, "0", false},
        {"2001:db8::1", 129, "0", true},
        {"2001:db8::1", 64, "64", false},
        {"2001:db8::1", 1, "127", false},
        {"::ffff:10.0.0.5", 128, "0", false},
        {"::ffff:10.0.0.5", 120, "8", false},
        {"::ffff:10.0.0.5", 24, "32", false},
    };
    for (const Case &c : cases) {
        const SenderRange range(c.address, c.mask);
        std::string meaning = range.ignoresAddress() ? "any, not the address" : "any";
        if (!range.isAnybody()) {
            meaning = range.isNobody() ? "nobody" : std::to_string(range.freeBits());
        }
        EXPECT_EQ(meaning, c.meaning) << c.address << '/' << c.mask;
        EXPECT_EQ(range.isMaskTooLong(), c.isTooLong) << c.address << '/' << c.mask;
    }
}

TEST(SenderRangeTest, ContainsAsManyAddressesAsItSays) {
    const auto last = [](unsigned i) {
        return std::to_string(i / 256) + '.' + std::to_string(i % 256);
    };
    for (int mask = 16; mask <= 34; ++mask) {
        const SenderRange range("10.3.200.77", mask);
        unsigned count = 0;
        for (unsigned i = 0; i < 65536; ++i) {
            count += range.contains(*IpAddress::parse("10.3." + last(i))) ? 1U : 0U;
        }
        EXPECT_EQ(count, 1U << range.freeBits()) << mask;
        EXPECT_TRUE(range.contains(*IpAddress::parse("10.3.200.77")));
        EXPECT_FALSE(range.contains(*IpAddress::parse("10.4.200.77")));
        EXPECT_FALSE(range.contains(*IpAddress::parse("::a03:c84d")));
    }
}

TEST(SenderRangeTest, ReadsARecord) {
    const auto bits = [](const Dictionary &record) { return SenderRange(record).freeBits(); };
    EXPECT_EQ(bits({{"IP", "10.0.0.5"}, {"Mask", "24"}}), 8U);
    EXPECT_EQ(bits({{"IP", "10.0.0.5"}, {"Mask", " 24x"}}), 8U);
    EXPECT_EQ(bits({{"IP", "10.0.0.5"}, {"Mask", 24}}), 8U);
    EXPECT_TRUE(SenderRange(Dictionary{}).isAnybody());
    EXPECT_TRUE(SenderRange(Dictionary{{"IP", 5}, {"Mask", "8"}}).isNobody());
    EXPECT_TRUE(SenderRange(Dictionary{{"IP", "10.0.0.5"}, {"Mask", Array()}}).ignoresAddress());
    EXPECT_EQ(SenderRange::maskOf({{"Mask", "255.0.0.0"}}), 255);
}

}  // namespace
}  // namespace quorbel
