#include "service/message/EventFilter.h"
#include "service/message/RecordWriter.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>

namespace quorbel {
namespace {

constexpr Priority kLocal7Error{23, 3};

/// A message from `host`, written as the service does.
struct Message {
    explicit Message(std::string_view host, std::string_view text = "disk full",
                     Priority priority = kLocal7Error)
        : address(IpAddress::parse(host).value()) {
        prefix = RecordWriter().append({1700000000, priority, host, text}, lines).prefix;
        subject.set(address, priority, lines, prefix);
    }

    IpAddress address;
    std::string lines;
    std::size_t prefix = 0;
    FilterSubject subject;
};

bool matches(const Dictionary &record, const Message &message) {
    return EventFilter(record).matches(message.subject);
}

TEST(EventFilterTest, ComparesTheSendersAddress) {
    struct Case {
        const char *ip;
        Value mask;
        const char *sender;
        bool matches;
    };
    const Case cases[] = {
        {"0.0.0.0", "0", "10.1.2.3", true},
        {"0.0.0.0", "0", "2001:db8::1", true},
        {"10.1.2.3", "0", "192.168.0.1", true},
        {"no address", "0", "192.168.0.1", true},
        {"no address", "", "192.168.0.1", true},
        {"no address", "8", "192.168.0.1", false},
        {"", "8", "0.0.0.0", false},
        {"10.1.2.3", "32", "10.1.2.3", true},
        {"10.1.2.3", "32", "10.1.2.2", false},
        {"10.1.2.3", "31", "10.1.2.2", true},
        {"10.1.2.3", "31", "10.1.2.1", false},
        {"10.1.2.3", "24", "10.1.2.200", true},
        {"10.1.2.3", "24", "10.1.3.3", false},
        {"10.1.2.3", "1", "127.0.0.1", true},
        {"10.1.2.3", "1", "128.0.0.1", false},
        {"10.1.2.3", "33", "10.1.2.3", true},
        {"10.1.2.3", "33", "10.1.2.2", false},
        {"10.1.2.3", "99999999999999999999", "10.1.2.2", false},
        {"10.1.2.3", "-1", "192.168.0.1", true},
        {"10.1.2.3", "mask", "192.168.0.1", true},
        {"10.1.2.3", "24x", "10.1.2.4", true},
        {"10.1.2.3", "24x", "10.1.3.4", false},
        {"10.1.2.3", 32, "10.1.2.2", false},
        {"10.1.2.3", Array(), "10.1.2.2", true},
        {" 10.1.2.3 ", " 32", "10.1.2.3", true},
        {" 10.1.2.3 ", " 32", "10.1.2.2", false},
        {"0.0.0.0", "1", "2001:db8::1", false},
        {"10.1.2.3", "8", "::a01:203", false},
        {"2001:db8::", "32", "2001:db8:ffff::1", true},
        {"2001:db8::", "32", "2001:db9::1", false},
        {"2001:db8::1", "128", "2001:db8::1", true},
        {"2001:db8::1", "128", "2001:db8::2", false},
        {"2001:db8::1", "200", "2001:db8::2", false},
        {"::", "1", "10.1.2.3", false},
        {"::", "1", "2001:db8::1", true},
        {"::ffff:10.1.2.3", "128", "10.1.2.3", true},
        {"::ffff:10.1.2.3", "128", "10.1.2.4", false},
        {"::ffff:10.0.0.0", "104", "10.9.9.9", true},
        {"::ffff:10.0.0.0", "104", "11.9.9.9", false},
    };
    for (const Case &c : cases) {
        const std::string mask = c.mask.string() != nullptr ? *c.mask.string() : "(no text)";
        EXPECT_EQ(matches({{"IP", c.ip}, {"Mask", c.mask}}, Message(c.sender)), c.matches)
            << c.ip << '/' << mask << " for " << c.sender;
    }
}

TEST(EventFilterTest, ComparesFacilityAndSeverity) {
    struct Case {
        Value facility;
        Value severity;
        bool matches;  ///< Local7.Error
    };
    const Case cases[] = {
        {"Any", "Any", true},      {"", "", true},
        {Null(), 5, true},         {"Local7", "Any", true},
        {"Local7", "", true},      {"Local6", "Any", false},
        {"Any", "Error", true},    {"Any", "Warning", false},
        {"Local7", "Error", true}, {"Local7", "Notice", false},
        {"Kern", "Error", false},  {"Nobody", "Any", false},
        {"Any", "Unknown", false}, {"local7", "Any", false},
    };
    const Message message("10.1.2.3");
    for (const Case &c : cases) {
        const std::string facility = c.facility.string() != nullptr ? *c.facility.string() : "-";
        EXPECT_EQ(matches({{"Facility", c.facility}, {"Severity", c.severity}}, message), c.matches)
            << facility;
    }
    // Pages may show another word than the one in the log files.
    const Message informational("10.1.2.3", "x", {0, 6});
    EXPECT_TRUE(matches({{"Severity", "Information"}}, informational));
    EXPECT_TRUE(matches({{"Severity", "Informational"}}, informational));
    EXPECT_FALSE(matches({{"Severity", "Debug"}}, informational));
}

TEST(EventFilterTest, ComparesTheMessageAsItIsListed) {
    struct Case {
        Value pattern;
        std::string text;
        bool matches;
    };
    const std::string longText = "begin " + std::string(3000, 'x') + " end";
    const Case cases[] = {
        {"*", "disk full", true},
        {"", "disk full", true},
        {Null(), "disk full", true},
        {7, "disk full", true},
        {"disk full", "Disk Full", true},
        {"disk", "disk full", false},
        {"*full", "disk full", true},
        {"a,b*", "a,b,c", true},
        {"*#012*", "two\nlines", true},
        {"two?lines", "two\nlines", false},
        {"-", "", true},
        {"*\xEF\xBF\xBD*", "broken \xFF", true},
        // In one piece, although it becomes several events.
        {"begin*end", longText, true},
        {"begin*xend", longText, false},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(matches({{"Message", c.pattern}}, Message("10.1.2.3", c.text)), c.matches)
            << c.text;
    }
}

TEST(EventFilterTest, WantsAllConditionsToHold) {
    const std::pair<const char *, const char *> fields[] = {
        {"IP", "10.1.2.4"}, {"Facility", "Kern"}, {"Severity", "Debug"}, {"Message", "other"}};
    const Dictionary whole{{"Name", "x"},          {"IP", "10.1.2.3"},    {"Mask", "32"},
                           {"Facility", "Local7"}, {"Severity", "Error"}, {"Message", "disk*"}};
    const Message message("10.1.2.3");
    EXPECT_TRUE(matches(whole, message));
    EXPECT_TRUE(matches({}, message));
    for (const auto &[key, value] : fields) {
        Dictionary changed = whole;
        changed.set(key, value);
        EXPECT_FALSE(matches(changed, message)) << key;
    }
}

TEST(FilterSubjectTest, MakesItsTextsAnewForEachMessage) {
    FilterSubject subject;
    const Message first("10.1.2.3", "First");
    const Message second("10.1.2.3", "Second");
    subject.set(first.address, kLocal7Error, first.lines, first.prefix);
    EXPECT_EQ(subject.foldedMessage(), "first");
    EXPECT_EQ(subject.message(), "First");
    subject.set(second.address, kLocal7Error, second.lines, second.prefix);
    EXPECT_EQ(subject.message(), "Second");
    EXPECT_EQ(subject.foldedMessage(), "second");
}

TEST(FilterSetTest, TellsWhichFilterKeepsAMessageOut) {
    const Dictionary kept{{"Name", "kept"}, {"Message", "*b*"}};
    const Dictionary first{{"Name", "first"}, {"Message", "*c"}};
    const Dictionary second{{"Name", "second"}, {"Message", "a*"}};
    const FilterSet filters(
        {{"includeFiltersArray", Array{kept}}, {"excludeFiltersArray", Array{first, second}}});
    const auto refusalOf = [&filters](const char *text) {
        return filters.refusalOf(Message("10.1.2.3", text).subject);
    };
    EXPECT_EQ(refusalOf("b"), std::nullopt);
    EXPECT_EQ(refusalOf("x"), "");
    EXPECT_EQ(refusalOf("abc"), "first");
    EXPECT_EQ(refusalOf("ab"), "second");
}

TEST(FilterSetTest, IncludesFirstAndExcludesThen) {
    const auto filterFor = [](const char *pattern) { return Dictionary{{"Message", pattern}}; };
    struct Case {
        Array includes;
        Array excludes;
        const char *passing;  ///< which of the texts "ab", "b", "c" pass
    };
    const Case cases[] = {
        {{}, {}, "ab b c "},
        {{filterFor("*b")}, {}, "ab b "},
        {{filterFor("a*"), filterFor("c")}, {}, "ab c "},
        {{}, {filterFor("*b")}, "c "},
        {{filterFor("*b")}, {filterFor("a*")}, "b "},
        {{filterFor("*b")}, {filterFor("*")}, ""},
        {{filterFor("x")}, {}, ""},
        // What is no record is no filter.
        {{"text", 5, Null()}, {Array()}, "ab b c "},
    };
    for (const Case &c : cases) {
        const FilterSet filters(
            {{"includeFiltersArray", c.includes}, {"excludeFiltersArray", c.excludes}});
        std::string passing;
        for (const char *text : {"ab", "b", "c"}) {
            if (filters.passes(Message("10.1.2.3", text).subject)) {
                passing += std::string(text) + ' ';
            }
        }
        EXPECT_EQ(passing, c.passing);
    }
    EXPECT_TRUE(FilterSet().isEmpty());
    EXPECT_TRUE(FilterSet(Dictionary{{"includeFiltersArray", "wrong"}}).isEmpty());
    EXPECT_FALSE(FilterSet({{"excludeFiltersArray", Array{filterFor("x")}}}).isEmpty());
}

}  // namespace
}  // namespace quorbel
