#include "platform/Text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <string_view>

namespace quorbel {
namespace {

using namespace std::string_literals;

TEST(TextTest, KnowsDecimalDigits) {
    EXPECT_TRUE(isAllDecimalDigits(""));
    EXPECT_TRUE(isAllDecimalDigits("0123456789"));
    EXPECT_TRUE(isAllDecimalDigits("1700000000"));
    EXPECT_TRUE(isAllDecimalDigits("٣४1"));  // Arabic-Indic, Devanagari
    EXPECT_TRUE(isAllDecimalDigits("𝟗"));    // mathematical, beyond the first plane
    EXPECT_FALSE(isAllDecimalDigits("12.5"));
    EXPECT_FALSE(isAllDecimalDigits("-1"));
    EXPECT_FALSE(isAllDecimalDigits(" 1"));
    EXPECT_FALSE(isAllDecimalDigits("1a"));
    EXPECT_FALSE(isAllDecimalDigits("1²"));  // No, not Nd
    EXPECT_FALSE(isAllDecimalDigits("½"));
    EXPECT_FALSE(isAllDecimalDigits("Ⅷ"));  // Nl
    EXPECT_FALSE(isAllDecimalDigits("1\0"s));
    EXPECT_FALSE(isAllDecimalDigits("1\xD9"));  // a digit cut off
    EXPECT_FALSE(isAllDecimalDigits("\xFF"));
}

struct NumberCase {
    std::string_view text;
    double value;
};

TEST(TextTest, ReadsTheNumberAtTheStart) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const NumberCase cases[] = {
        {"1700000000", 1700000000.0},
        {"1.5", 1.5},
        {"-2e3x", -2000.0},
        {"+7", 7.0},
        {" \t\r\n\v\f8", 8.0},
        {"5.", 5.0},
        {".5", 0.5},
        {"1e", 1.0},
        {"1e+2", 100.0},
        {"12:30", 12.0},
        {"1,5", 1.0},
        {"0x10", 0.0},
        {"", 0.0},
        {"-", 0.0},
        {"+", 0.0},
        {".", 0.0},
        {"+-3", 0.0},
        {"--3", 0.0},
        {"inf", 0.0},
        {"-inf", 0.0},
        {"nan", 0.0},
        {"infinity", 0.0},
        {"abc", 0.0},
        {"1e999", kInfinity},
        {"-1e999", -kInfinity},
        {"1e-999", 0.0},
        {"- 3", 0.0},
    };
    for (const NumberCase &entry : cases) {
        EXPECT_EQ(floatingPointValue(entry.text), entry.value) << entry.text;
    }
    EXPECT_EQ(floatingPointValue(std::string_view("123456", 3)), 123.0);
}

struct WholeNumberCase {
    std::string_view text;
    std::int64_t value;
};

TEST(TextTest, ReadsTheWholeNumberAtTheStart) {
    using Limits = std::numeric_limits<std::int64_t>;
    const WholeNumberCase cases[] = {
        {"25", 25},
        {" \t\n25", 25},
        {"+25", 25},
        {"-25", -25},
        {"007", 7},
        {"25 and more", 25},
        {"2.9", 2},
        {"1e3", 1},
        {"", 0},
        {" ", 0},
        {"+", 0},
        {"-", 0},
        {"+-5", 0},
        {"-+5", 0},
        {"--5", 0},
        {"abc", 0},
        {"x25", 0},
        {"0x10", 0},
        {"9223372036854775807", Limits::max()},
        {"9223372036854775808", Limits::max()},
        {"-9223372036854775809", Limits::min()},
        {"99999999999999999999999", Limits::max()},
    };
    for (const WholeNumberCase &c : cases) {
        EXPECT_EQ(integerValue(c.text), c.value) << c.text;
    }
}

struct Utf8Case {
    std::string bytes;
    bool isValid;
};

TEST(TextTest, TakesTheBlanksAroundAway) {
    EXPECT_EQ(trimmed(""), "");
    EXPECT_EQ(trimmed(" \t\r\n"), "");
    EXPECT_EQ(trimmed("word"), "word");
    EXPECT_EQ(trimmed("\r\n two  words\t "), "two  words");
    // No-break spaces are text.
    EXPECT_EQ(trimmed(" \u00A0 "), "\u00A0");
}

TEST(TextTest, KnowsWellFormedUtf8) {
    const Utf8Case cases[] = {
        {"", true},
        {"plain", true},
        {"\0\x7F"s, true},
        {"é", true},
        {"漢字", true},
        {"\xF4\x8F\xBF\xBF", true},   // U+10FFFF
        {"\xED\x9F\xBF", true},       // U+D7FF
        {"\xEE\x80\x80", true},       // U+E000
        {"\x80", false},              // a continuation alone
        {"\xC3", false},              // cut off
        {"\xE6\xBC", false},          // cut off
        {"\xF0\x9F\x98", false},      // cut off
        {"\xC3\x28", false},          // no continuation
        {"\xC0\xAF", false},          // overlong
        {"\xC1\xBF", false},          // overlong
        {"\xE0\x9F\xBF", false},      // overlong
        {"\xF0\x8F\xBF\xBF", false},  // overlong
        {"\xED\xA0\x80", false},      // a surrogate
        {"\xED\xBF\xBF", false},      // a surrogate
        {"\xF4\x90\x80\x80", false},  // U+110000
        {"\xF5\x80\x80\x80", false},  // too large
        {"\xFF", false},
    };
    // At every place among the eight bytes that are looked at together.
    for (const Utf8Case &entry : cases) {
        for (std::size_t before = 0; before < 18; ++before) {
            const std::string text = std::string(before, 'x') + entry.bytes;
            EXPECT_EQ(isUtf8(text), entry.isValid) << before;
            EXPECT_EQ(isUtf8(text + "yyyyyyyyy"), entry.isValid) << before;
        }
    }
}

}  // namespace
}  // namespace quorbel
