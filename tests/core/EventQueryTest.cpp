#include "EventListSamples.h"
#include "core/ArrangedEvents.h"
#include "core/EventQuery.h"
#include "core/HostPattern.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace quorbel {
namespace {

using testing::fields;

TextPattern plain(const std::string &text, bool isCaseSensitive = false) {
    return TextPattern({text, isCaseSensitive, false});
}
TextPattern expression(const std::string &text) {
    return TextPattern({text, false, true});
}

TEST(TextPatternTest, TakesCapitalAndSmallLettersAsAlikeInEveryScript) {
    EXPECT_TRUE(plain("größe").isIn("die GRÖSSE? nein, die GRÖßE"));
    EXPECT_TRUE(plain("ΔΊΣΚΟΣ").isIn("δίσκος"));
    EXPECT_TRUE(plain("диск").isIn("ДИСК полон"));
    EXPECT_FALSE(plain("диск", true).isIn("ДИСК полон"));
    EXPECT_FALSE(plain("a.c").isIn("abc"));
    EXPECT_TRUE(plain("a.c").isIn("xA.Cx"));
}

TEST(TextPatternTest, SearchesBytesThatAreNoText) {
    const std::string broken = "ab\xff\xfe\x80 disk \xc3";
    EXPECT_TRUE(plain("DISK").isIn(broken));
    EXPECT_FALSE(plain("ÿ").isIn(broken));
    EXPECT_TRUE(expression("d.sk").isIn(broken));
    EXPECT_FALSE(expression("ab.* disk").isIn(broken));
}

TEST(TextPatternTest, SaysWhatIsWrongWithAnExpression) {
    EXPECT_NE(expression("a(b").error(), "");
    EXPECT_NE(expression("(a{1000}){1000}").error(), "");
    EXPECT_EQ(expression("(a?){900}(b?){900}(c?){900}(d?){900}").error(), "expression too large");
    EXPECT_EQ(expression("a(b)").error(), "");
    EXPECT_EQ(plain("a(b").error(), "");
}

TEST(TextPatternTest, CannotBeMadeToHang) {
    const std::string text = std::string(1U << 16U, 'a') + "!";
    for (const char *hostile :
         {"(a+)+$", "(a|aa)+$", "(.*)*\\d", "(a?){500}a{500}b", "((a*)*)*b", ".*.*.*.*=.*"}) {
        const TextPattern pattern = expression(hostile);
        const auto start = std::chrono::steady_clock::now();
        if (pattern.error().empty()) {
            EXPECT_FALSE(pattern.isIn(text)) << hostile;
        }
        // Backtracking would take longer than there is time.
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::minutes(1)) << hostile;
    }
}

TEST(TextPatternTest, KnowsWhatNoDateCanHold) {
    const std::string_view characters = "0123456789-: APM";
    EXPECT_TRUE(plain("12:3").mayBeInTextOf(characters));
    EXPECT_TRUE(plain("1 pm").mayBeInTextOf(characters));
    EXPECT_FALSE(plain("12e").mayBeInTextOf(characters));
    EXPECT_TRUE(plain("Ω").mayBeInTextOf(characters));
    EXPECT_TRUE(expression("\\d+").mayBeInTextOf(characters));
    EXPECT_TRUE(expression("(12|x).*3").mayBeInTextOf(characters));
    EXPECT_TRUE(expression(".*").mayBeInTextOf(characters));
    EXPECT_FALSE(expression("12.*error").mayBeInTextOf(characters));
    EXPECT_FALSE(expression("(accepted|denied) 1").mayBeInTextOf(characters));
}

TEST(HostPatternTest, MeansAListAndExcludesFromIt) {
    const HostPattern some("fs*, 10.0.0.0/8, !fs02 , ! 10.0.0.7");
    EXPECT_TRUE(some.matches("fs01"));
    EXPECT_FALSE(some.matches("fs02"));
    EXPECT_TRUE(some.matches("10.0.0.8"));
    EXPECT_FALSE(some.matches("10.0.0.7"));
    EXPECT_FALSE(some.matches("db01"));
    const HostPattern allBut("!fs01,!192.168.0.0/16");
    EXPECT_TRUE(allBut.matches("db01"));
    EXPECT_TRUE(allBut.matches(""));
    EXPECT_FALSE(allBut.matches("FS01"));
    EXPECT_FALSE(allBut.matches("192.168.7.7"));
    EXPECT_TRUE(HostPattern(" ,, ").matches("fs01"));
}

TEST(HostPatternTest, MeansNamesByWildcardsAndAddressesByMasks) {
    EXPECT_TRUE(HostPattern("fs01").matches("FS01"));
    EXPECT_FALSE(HostPattern("fs0").matches("fs01"));
    EXPECT_TRUE(HostPattern("fs*").matches("fs01.example.org"));
    EXPECT_TRUE(HostPattern("fs0?").matches("fs01"));
    EXPECT_FALSE(HostPattern("fs.1").matches("fs01"));
    EXPECT_TRUE(HostPattern("10.1.0.0/16").matches("10.1.200.3"));
    EXPECT_FALSE(HostPattern("10.1.0.0/16").matches("10.2.200.3"));
    EXPECT_FALSE(HostPattern("10.1.0.0/16").matches("fs01"));
    EXPECT_TRUE(HostPattern("10.1.0.0/255.255.0.0").matches("10.1.200.3"));
    EXPECT_FALSE(HostPattern("10.1.0.0/255.255.0.0").matches("10.2.200.3"));
    EXPECT_TRUE(HostPattern("fe80::/10").matches("fe80::1"));
    EXPECT_FALSE(HostPattern("fe80::/10").matches("2001:db8::1"));
    EXPECT_TRUE(HostPattern("0.0.0.0/0").matches("10.2.200.3"));
}

class ArrangedEventsTest : public ::testing::Test {
protected:
    void find(const TextPattern::Spec &spec, bool isNegated = false) {
        EventQuery filter;
        filter.texts.push_back({spec, isNegated});
        ASSERT_EQ(m_events.setFilter(filter), "");
        m_events.search([] { return false; });
    }
    std::string messages() {
        std::string all;
        for (std::size_t row = 0; row < m_events.size(); ++row) {
            all += std::string(m_list.message(m_events.listRow(row)).value_or("-")) + ";";
        }
        return all;
    }

    EventList m_list;
    ArrangedEvents m_events{m_list};
};

// Between the messages stand their lengths: 'A' is 65.
TEST_F(ArrangedEventsTest, FindsNothingAcrossTwoMessages) {
    m_list.insertRaw(fields("1", "p", "h", "tail"));
    m_list.insertRaw(fields("2", "p", "h", std::string(65, 'x')));
    m_list.insertRaw(fields("3", "p", "h", "lA"));
    find({"lA"});
    EXPECT_EQ(messages(), "lA;");
    find({"Ax"});
    EXPECT_EQ(messages(), "");
    find({"lAl"});
    EXPECT_EQ(messages(), "");
}

TEST_F(ArrangedEventsTest, FindsNothingInWhatIsGone) {
    for (const char *message : {"one", "two", "three", "four"}) {
        m_list.insertRaw(fields("1", "p", "h", message));
    }
    m_list.removeRows({{1, 2}});
    find({"t"});
    EXPECT_EQ(messages(), "");
    find({"o"});
    EXPECT_EQ(messages(), "four;one;");
    find({"o"}, true);
    EXPECT_EQ(messages(), "");
}

TEST_F(ArrangedEventsTest, KeepsTheLastResultWhenAnExpressionIsWrong) {
    m_list.insertRaw(fields("1", "p", "h", "one"));
    m_list.insertRaw(fields("2", "p", "h", "two"));
    find({"w"});
    EventQuery wrong;
    wrong.texts.push_back({{"(", false, true}, false});
    EXPECT_NE(m_events.setFilter(wrong), "");
    EXPECT_EQ(messages(), "two;");
    EXPECT_FALSE(m_events.isSearching());
}

TEST_F(ArrangedEventsTest, KnowsATextThatTookTheNumberOfAnother) {
    m_list.insertRaw(fields("1", "p", "alpha", "one"));
    m_list.insertRaw(fields("2", "p", "keep", "two"));
    find({"alpha"});
    EXPECT_EQ(messages(), "one;");
    m_list.removeRows({{1, 1}});
    m_list.insertRaw(fields("3", "p", "beta", "three"));
    EXPECT_EQ(messages(), "");
    m_list.insertRaw(fields("3", "p", "alpha", "four"));
    EXPECT_EQ(messages(), "four;");
}

TEST_F(ArrangedEventsTest, KnowsAHostThatTookTheNumberOfAnother) {
    m_list.insertRaw(fields("1", "p", "alpha", "one"));
    m_list.insertRaw(fields("2", "p", "keep", "two"));
    EventQuery filter;
    filter.host = "al*";
    ASSERT_EQ(m_events.setFilter(filter), "");
    m_events.search([] { return false; });
    EXPECT_EQ(messages(), "one;");
    m_list.removeRows({{1, 1}});
    m_list.insertRaw(fields("3", "p", "beta", "three"));
    EXPECT_EQ(messages(), "");
}

TEST_F(ArrangedEventsTest, LeavesOutWhatGoesWhileItSearches) {
    for (int i = 0; i < 100; ++i) {
        m_list.insertRaw(fields("1", "p", "h", std::to_string(i)));
    }
    EventQuery filter;
    filter.host = "h";
    ASSERT_EQ(m_events.setFilter(filter), "");
    m_events.search([] { return true; });
    ASSERT_TRUE(m_events.isSearching());
    m_list.removeRows({{0, 1}, {99, 1}});
    m_list.removeRows({{97, 1}});
    m_events.search([] { return false; });
    ASSERT_EQ(m_events.size(), 97U);
    EXPECT_EQ(m_list.message(m_events.listRow(96)), "2");
}

TEST_F(ArrangedEventsTest, FindsTheEndOfAHugeMessage) {
    m_list.insertRaw(fields("1", "p", "h", std::string(3U << 20U, 'a') + "NEEDLE"));
    m_list.insertRaw(fields("1", "p", "h", std::string(3U << 20U, 'a')));
    find({"needle"});
    EXPECT_EQ(m_events.size(), 1U);
}

}  // namespace
}  // namespace quorbel
