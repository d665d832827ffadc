#include "EventListSamples.h"
#include "core/ArrangedEvents.h"
#include "core/EventQuery.h"
#include "core/HostPattern.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
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

TEST(EventQueryTest, AsksForBothWhereThatIsPossible) {
    EventQuery first;
    first.texts.push_back({{"disk", false, false}, false});
    first.host = "fs01";
    first.leastSeverity = 4;
    first.from = 100;
    first.until = 300;
    first.spans = 0b0001;
    EventQuery second;
    second.texts.push_back({{"OK", true, false}, true});
    second.host = "db*";
    second.facility = "Kern";
    second.ratings.set(3);
    second.leastSeverity = 3;
    second.classes.set(5);
    second.from = 200;
    second.until = 400;
    second.spans = 0b0101;
    EventQuery both = first;
    both.texts.push_back(second.texts.front());
    both.facility = "Kern";
    both.ratings.set(3);
    both.leastSeverity = 3;
    both.classes.set(5);
    both.from = 200;
    both.spans = 0b0101;
    EXPECT_EQ(bothOf(first, second), both);
    EXPECT_EQ(bothOf(first, {}), first);
    EXPECT_EQ(bothOf({}, second), second);
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

TEST(HostPatternTest, MeansANameInQuotationMarksToTheLetter) {
    const HostPattern some(R"( "a*b" ,! "a*b,c" , fs*, !"fs""1")");
    EXPECT_TRUE(some.matches("a*b"));
    EXPECT_FALSE(some.matches("axb"));
    EXPECT_FALSE(some.matches("A*b"));
    EXPECT_FALSE(some.matches("a*b,c"));
    EXPECT_TRUE(some.matches("fs01"));
    EXPECT_FALSE(some.matches("fs\"1"));
    EXPECT_FALSE(HostPattern("\"10.0.0.1\"").matches("::ffff:10.0.0.1"));
    EXPECT_FALSE(HostPattern("\"*\"").isAny());
    EXPECT_EQ(HostPattern::wrongNetworkIn("\"10.0.0.0/99\""), std::nullopt);
}

// As they always were: who has such a filter must not see other events.
TEST(HostPatternTest, QuotationMarksElsewhereArePartOfAName) {
    for (const char *name : {"\"", "\"a", "\"a\"b", "a\"b\"", "\"\"\"", "\"a\"\""}) {
        EXPECT_TRUE(HostPattern(name).matches(name)) << name;
        EXPECT_TRUE(HostPattern(std::string(name) + ",b").matches(name)) << name;
        EXPECT_FALSE(HostPattern(name).matches("a")) << name;
    }
    EXPECT_TRUE(HostPattern("\"a*").matches("\"abc"));
}

TEST(HostPatternTest, SaysWhatMeansAHostAlone) {
    const std::vector<std::string> names{
        "fs01", "*",     "?",   "!",           ",",        "\"",  "\"\"",     "a*b",
        "axb",  "!fs01", "a,b", "10.0.0.0/8",  "10.0.0.1", " a",  "a ",       "\"a*b\"",
        "a\"",  "x=y",   "\\*", "10.0.0.0/99", "a/b",      "a%1", "\xD7\xA9*"};
    for (const std::string &name : names) {
        const HostPattern pattern(HostPattern::meaning(name));
        const HostPattern allBut("!" + HostPattern::meaning(name));
        for (const std::string &other : names) {
            EXPECT_EQ(pattern.matches(other), other == name) << name << " and " << other;
            EXPECT_EQ(allBut.matches(other), other != name) << name << " and " << other;
        }
    }
    EXPECT_EQ(HostPattern::meaning("fs01.example.org"), "fs01.example.org");
}

std::size_t neededCount(const std::string &text) {
    const TextPattern pattern = expression(text);
    return pattern.needed() ? pattern.needed()->textCount() : 0;
}

TEST(TextPatternTest, KnowsWhichTextsAnExpressionNeeds) {
    EXPECT_EQ(neededCount("(accepted|denied).*52144"), 1U);
    EXPECT_EQ(neededCount("accepted|denied"), 2U);
    EXPECT_EQ(neededCount("accepted|.*"), 0U);
    EXPECT_EQ(neededCount("a|b|c1|d2|e3|f4"), 0U);
    EXPECT_EQ(neededCount("ab|cd|ef|gh|ij|kl"), 6U);
    EXPECT_EQ(neededCount("x.*(accepted|denied)"), 2U);
    EXPECT_EQ(neededCount("(a|b) (disk|fan|.).*: (failed|faulty)"), 2U);
    EXPECT_TRUE(expression("(a|b) (disk|fan|.).*: (failed|faulty)").isIn("B fan 1: faulty"));
    EXPECT_TRUE(expression("accepted|denied").isIn("it was DENIED"));
    EXPECT_FALSE(expression("accepted|denied").isIn("it was refused"));
    EXPECT_TRUE(expression("(accepted|denied).*52144").isIn("Accepted 52144"));
    EXPECT_FALSE(expression("(accepted|denied).*52144").isIn("52144 accepted"));
    const TextPattern sensitive({"ERR(OR)?", true, true});
    EXPECT_TRUE(sensitive.isIn("an ERROR"));
    EXPECT_FALSE(sensitive.isIn("an error"));
}

TEST(TextPatternTest, TakesTheLongSAndTheSignOfKelvinsAsLetters) {
    EXPECT_TRUE(plain("disk").isIn("DI\u017F\u212A"));
    EXPECT_TRUE(plain("di\u017Fk").isIn("DISK"));
    EXPECT_FALSE(plain("disk", true).isIn("di\u017Fk"));
    EXPECT_TRUE(expression("disk.*full").isIn("DI\u017F\u212A is full"));
}

TEST(TextPatternTest, SeesTheBeginningOfAHugeTextWhenTheExpressionIsLong) {
    const std::string text = std::string(1U << 20U, 'a') + "needle";
    EXPECT_TRUE(expression("a{2}").isIn(text));
    EXPECT_TRUE(plain("needle").isIn(text));
    const std::string steps = "(a|b){150}";
    EXPECT_TRUE(expression(steps).isIn(text));
    EXPECT_FALSE(expression(steps + "needle").isIn(text));
    EXPECT_FALSE(expression(steps + "needle").find(text));
    EXPECT_FALSE(expression(steps + "needle").find(text, 1U << 20U));
    EXPECT_TRUE(expression(steps + "needle").isIn(text.substr((1U << 20U) - 4096)));
    // What it sees does not end there.
    EXPECT_FALSE(expression(steps + "$").isIn(text));
    EXPECT_FALSE(expression(steps + "\\b").isIn(text));
}

TEST(HostPatternTest, TellsANetworkThatIsNone) {
    for (const char *wrong : {"10.0.0.0/99", "10.0.0/8", "fe80::/200", "10.0.0.0/", "10/8",
                              "10.0.0.0/255.0.255.0", "10.0.0.0/-1", "::1/x"}) {
        EXPECT_EQ(HostPattern::wrongNetworkIn(wrong), wrong);
        EXPECT_EQ(HostPattern::wrongNetworkIn("fs01, ! " + std::string(wrong) + " ,x"), wrong);
    }
    for (const char *right : {"", "10.0.0.0/8", "10.0.0.0/255.0.0.0", "fe80::/128", "::/0", "fs01",
                              "fs01/a", "*/24", "!10.0.0.0/8, web*"}) {
        EXPECT_EQ(HostPattern::wrongNetworkIn(right), std::nullopt) << right;
    }
}

TEST(HostPatternTest, MeansAnAddressHoweverItIsWritten) {
    const HostPattern pattern("2001:0DB8:0:0:0:0:0:0001");
    EXPECT_TRUE(pattern.matches("2001:db8::1"));
    EXPECT_TRUE(pattern.matches("2001:0db8:0:0:0:0:0:0001"));
    EXPECT_FALSE(pattern.matches("2001:db8::2"));
    EXPECT_TRUE(HostPattern("2001:db8::1").matches("2001:DB8:0:0:0:0:0:1"));
    EXPECT_FALSE(HostPattern("!2001:db8::1").matches("2001:DB8:0:0:0:0:0:1"));
    EXPECT_TRUE(HostPattern("10.0.0.5").matches("10.0.0.5"));
    EXPECT_FALSE(HostPattern("10.0.0.5").matches("10.0.0.50"));
}

TEST(HostPatternTest, IsAnyWhereNothingIsNamed) {
    for (const char *any : {"", " ", "!", ",", " ! , ,!"}) {
        EXPECT_TRUE(HostPattern(any).isAny()) << any;
        EXPECT_TRUE(HostPattern(any).matches("fs01")) << any;
    }
    EXPECT_FALSE(HostPattern("*").isAny());
    EXPECT_FALSE(HostPattern("!fs01").isAny());
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

TEST_F(ArrangedEventsTest, FindsWhatCameAfterASingleOneThatIsGone) {
    for (const char *message : {"a1", "a2", "a3"}) {
        m_list.insertRaw(fields("1", "p", "h", message));
    }
    m_list.removeRows({{2, 1}});
    find({"a"});
    EXPECT_EQ(messages(), "a3;a2;");
    find({"a3"});
    EXPECT_EQ(messages(), "a3;");
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

TEST_F(ArrangedEventsTest, FindsExpressionsInTheMessagesOfAChunk) {
    for (const char *message : {"accepted 1", "denied 2", "DENIED", "refused 2", "denied 21",
                                "di\u017F\u212A denied 2", "2 denied", ""}) {
        m_list.insertRaw(fields("1", "p", "h", message));
    }
    find({"(accepted|denied) 2", false, true});
    EXPECT_EQ(messages(), "di\u017F\u212A denied 2;denied 21;denied 2;");
    find({"disk|refused", false, true});
    EXPECT_EQ(messages(), "di\u017F\u212A denied 2;refused 2;");
    find({"denied$", true, true});
    EXPECT_EQ(messages(), "2 denied;");
    find({"disk"});
    EXPECT_EQ(messages(), "di\u017F\u212A denied 2;");
}

// A date is read back when its format changes: without its time, it is that of midnight.
TEST_F(ArrangedEventsTest, KnowsTheMomentsThatAChangedFormatLeaves) {
    constexpr std::int64_t kMidnight = 1'767'225'600;
    setenv("TZ", "UTC", 1);
    tzset();
    for (int i = 1; i <= 100; ++i) {
        m_list.insertRaw(fields(std::to_string(kMidnight + 600 * i)));
    }
    EventQuery filter;
    filter.from = kMidnight;
    filter.until = kMidnight + 1;
    const auto found = [&] {
        EXPECT_EQ(m_events.setFilter({}), "");
        EXPECT_EQ(m_events.setFilter(filter), "");
        m_events.search([] { return false; });
        return m_events.size();
    };
    m_list.show(testing::stateWith());
    EXPECT_EQ(found(), 0U);
    filter.from = kMidnight + 60'000;
    filter.until.reset();
    EXPECT_EQ(found(), 1U);
    EXPECT_EQ(found(), 1U);
    filter.from = kMidnight;
    filter.until = kMidnight + 1;
    m_list.show(testing::stateWith("yyyy-MM-dd"));
    EXPECT_EQ(found(), 0U);
    EXPECT_EQ(found(), 0U);
    m_list.show(testing::stateWith());
    EXPECT_EQ(found(), 100U);
    EXPECT_EQ(found(), 100U);
}

TEST_F(ArrangedEventsTest, KnowsTheRatingsOfAllWhenSomeWereLookedAt) {
    for (int i = 1; i < 100; ++i) {
        m_list.insertRaw(fields("1", "Local7.Error", "h", "x" + std::to_string(i)));
    }
    AppState state = testing::stateWith();
    state.iSeverityError = 0;
    m_list.show(state);
    find({"x9"});
    EXPECT_EQ(m_events.ratingCounts()[1], 11U);
    state.iSeverityError = 2;
    m_list.show(state);
    find({"x99"});  // narrows: looks at some of them
    EXPECT_EQ(m_events.ratingCounts()[3], 1U);
    find({"x"});
    EXPECT_EQ(m_events.ratingCounts()[3], 99U);
}

TEST_F(ArrangedEventsTest, FindsAnEventWithoutADateAtTheBeginningOfTime) {
    EventFields event = fields("1767225600");
    m_list.insertRaw(event);
    event.date.reset();
    m_list.insertRaw(event);
    EventQuery filter;
    filter.from = 0;
    filter.until = 10;
    ASSERT_EQ(m_events.setFilter(filter), "");
    m_events.search([] { return false; });
    EXPECT_EQ(m_events.size(), 1U);
}

// Showings are counted from the beginning again when there have been too many date formats.
TEST(ArrangedEventsShownTest, KnowsRatingsAfterHundredsOfDateFormats) {
    for (int more = 240; more < 270; ++more) {
        EventList list;
        ArrangedEvents events(list);
        list.insertRaw(fields("1767225600"));
        EventQuery filter;
        filter.host = "*";
        AppState state = testing::stateWith();
        const auto show = [&](int number) {
            const std::string format = "yyyy-MM-dd HH:mm:ss '" + std::to_string(number) + "'";
            state.oldDateFormat = state.newDateFormat = format;
            list.show(state);
        };
        const auto ratings = [&] {
            events.refresh();
            events.search([] { return false; });
            return events.ratingCounts();
        };
        ASSERT_EQ(events.setFilter(filter), "");
        state.iSeverityError = 0;
        for (int number = 0; number < 3; ++number) {
            show(number);
        }
        ASSERT_EQ(ratings()[1], 1U);
        for (int number = 3; number <= more; ++number) {
            state.iSeverityError = number == more ? 2 : 0;
            show(number);
        }
        ASSERT_EQ(ratings()[3], 1U) << more;
    }
}

/// How often a search for it asks for the time.
std::size_t timesAsked(ArrangedEvents &events, const EventQuery &filter) {
    std::size_t asked = 0;
    EXPECT_EQ(events.setFilter(filter), "");
    events.search([&] {
        ++asked;
        return false;
    });
    return asked;
}

EventQuery textQuery(const std::string &text, bool isExpression) {
    EventQuery query;
    query.texts.push_back({{text, false, isExpression}, false});
    return query;
}

TEST_F(ArrangedEventsTest, AsksForTheTimeAtEachHugeMessage) {
    for (int i = 0; i < 20; ++i) {
        m_list.insertRaw(fields("1", "p", "h", std::string(1U << 20U, 'a') + "b"));
    }
    EXPECT_GE(timesAsked(m_events, textQuery("b", false)), 20U);
    EXPECT_GE(timesAsked(m_events, textQuery("ab", false)), 20U);  // narrows
    EXPECT_GE(timesAsked(m_events, textQuery("c", false)), 20U);
    EXPECT_GE(timesAsked(m_events, textQuery("(a+)+c", true)), 20U);
    EventQuery rated;
    rated.ratings.set(0);
    EXPECT_GE(timesAsked(m_events, rated), 20U);
}

TEST_F(ArrangedEventsTest, AsksForTheTimeAtEachHalfMegabyteOfSmallMessages) {
    constexpr std::size_t kEvents = 40'000;
    constexpr std::size_t kMegabytes = 20;
    for (std::size_t i = 0; i < kEvents; ++i) {
        m_list.insertRaw(fields("1", "p", "h", std::string((kMegabytes << 20U) / kEvents, 'a')));
    }
    EXPECT_GE(timesAsked(m_events, textQuery("a", false)), 2 * kMegabytes);
    EXPECT_GE(timesAsked(m_events, textQuery("aa", false)), 2 * kMegabytes);  // narrows
    EXPECT_GE(timesAsked(m_events, textQuery("[^a]", true)), 2 * kMegabytes);
}

TEST_F(ArrangedEventsTest, FindsTheEndOfAHugeMessage) {
    m_list.insertRaw(fields("1", "p", "h", std::string(3U << 20U, 'a') + "NEEDLE"));
    m_list.insertRaw(fields("1", "p", "h", std::string(3U << 20U, 'a')));
    find({"needle"});
    EXPECT_EQ(m_events.size(), 1U);
}

}  // namespace
}  // namespace quorbel
