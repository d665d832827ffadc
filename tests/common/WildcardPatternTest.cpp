#include "common/WildcardPattern.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <string_view>

namespace quorbel {
namespace {

std::string folded(std::string_view text) {
    std::string result;
    foldCase(text, result);
    return result;
}

TEST(WildcardPatternTest, MatchesWholeTexts) {
    struct Case {
        std::string_view pattern;
        std::string_view text;
        bool matches;
    };
    constexpr Case kCases[] = {
        {"", "", true},
        {"", "a", false},
        {"*", "", true},
        {"*", "anything, at all", true},
        {"**", "", true},
        {"disk full", "disk full", true},
        {"disk full", "disk full!", false},
        {"disk full", "the disk full", false},
        {"disk*", "disk", true},
        {"disk*", "disk full", true},
        {"disk*", "a disk", false},
        {"*disk", "a disk", true},
        {"*disk", "a disk ", false},
        {"*disk*", "the disk is full", true},
        {"*disk*", "the dis k", false},
        {"a*b", "ab", true},
        {"a*b", "aXXb", true},
        {"a*b", "aXXbc", false},
        {"a*a", "a", false},
        {"ab*ba", "aba", false},
        {"ab*ba", "abba", true},
        {"a*b*c", "a-c-b-c", true},
        {"a*b*c", "a-c-b", false},
        {"*ab*ab*", "ab", false},
        {"*ab*ab*", "xabab", true},
        {"*aab*", "aaab", true},
        {"*ab?d", "abxd abyd", true},
        {"?", "", false},
        {"?", "a", true},
        {"?", "ab", false},
        {"??", "ab", true},
        {"a?c", "abc", true},
        {"a?c", "ac", false},
        {"a?*", "a", false},
        {"a?*", "ab", true},
        {"*?", "", false},
        {"*?", "abc", true},
        {"*?c", "c", false},
        {"*a?c*", "aabc", true},
        {"*a?c*", "aacb", true},
        {"*a?c*", "acb", false},
        {"*??*", "a", false},
        {"*??*", "ab", true},
        // Without regard to the case, beyond ASCII as well.
        {"ERROR*", "Error 5", true},
        {"error*", "ERROR 5", true},
        {"[Z_`@]", "[z_`@]", true},
        {"*stra\xC3\x9F"
         "e*",
         "\xC3\x84 STRA\xE1\xBA\x9E"
         "E",
         true},
        {"*\xC3\x84rger*", "viel \xC3\xA4RGER", true},
        {"\xCE\xA3", "\xCF\x82", true},
        // One question mark is one character, however many bytes.
        {"a?b",
         "a\xC3\xA4"
         "b",
         true},
        {"a??b",
         "a\xC3\xA4"
         "b",
         false},
        {"*?\xE2\x82\xAC", "x\xE2\x82\xAC", true},
        {"*?\xE2\x82\xAC", "\xE2\x82\xAC", false},
        {"*\xF0\x9F\x98\x80?", "\xF0\x9F\x98\x80\xF0\x9F\x98\x81", true},
        {"?*?", "\xC3\xA4", false},
        // Nothing else is special.
        {"[a-z].+\\", "[a-z].+\\", true},
        {"\\*", "\\anything", true},
    };
    for (const Case &c : kCases) {
        const WildcardPattern pattern(c.pattern);
        EXPECT_EQ(pattern.matches(folded(c.text)), c.matches) << c.pattern << " | " << c.text;
    }
}

TEST(WildcardPatternTest, KnowsWhenEverythingMatches) {
    struct Case {
        const char *pattern;
        bool everything;
    };
    constexpr Case kCases[] = {{"*", true},   {"***", true}, {"", false},
                               {"*?", false}, {"?", false},  {"*a", false}};
    for (const Case &c : kCases) {
        EXPECT_EQ(WildcardPattern(c.pattern).matchesEverything(), c.everything) << c.pattern;
    }
}

TEST(WildcardPatternTest, FoldsWhatIsNoUtf8AsItStands) {
    EXPECT_EQ(folded("A\xFF"
                     "B\xC3"),
              "a\xFF"
              "b\xC3");
    EXPECT_EQ(folded("\xC3\x84"), "\xC3\xA4");
}

// Patterns over which a matcher that tries again after each star would take ages.
TEST(WildcardPatternTest, TakesNoAges) {
    const std::string text(60'000, 'a');
    std::string stars;
    for (int i = 0; i < 50; ++i) {
        stars += "*aaaa?";
    }
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(WildcardPattern(stars + "b").matches(text));
    EXPECT_FALSE(WildcardPattern(stars + "b*").matches(text));
    EXPECT_FALSE(WildcardPattern("*" + std::string(1000, 'a') + "b*").matches(text));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

}  // namespace
}  // namespace quorbel
