#include "control/EventStatistics.h"
#include "control/LogSearch.h"
#include "control/QueryOptions.h"
#include "control/VisibleText.h"
#include "core/StartSettings.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quorbel {
namespace {

TEST(VisibleTextTest, ShowsWhatIsSeenAndSpellsOutTheRest) {
    struct Case {
        std::string_view text;
        std::string_view visible;
        std::string_view json;
    };
    const Case cases[] = {
        {"", "", R"("")"},
        {R"(plain, "quoted" \)", R"(plain, "quoted" \)", R"("plain, \"quoted\" \\")"},
        {"\x1B[2J\t\x7F", "#033[2J#011#177", R"("\u001b[2J\u0009\u007f")"},
        {std::string_view("a\0b", 3), "a#000b", R"("a\u0000b")"},
        {"gr\xC3\xBC\xC3\x9F \xE6\xBC\xA2", "gr\xC3\xBC\xC3\x9F \xE6\xBC\xA2",
         "\"gr\xC3\xBC\xC3\x9F \xE6\xBC\xA2\""},
        // Overlong, a surrogate, cut short.
        {"\xC0\x80", "#300#200", "\"\xEF\xBF\xBD\xEF\xBF\xBD\""},
        {"\xED\xA0\x80", "#355#240#200", "\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\""},
        {"\xE2\x82", "#342#202", "\"\xEF\xBF\xBD\xEF\xBF\xBD\""},
        // Turns the direction of reading; ends a line for some; a tag, beyond 16 bits.
        {"\xE2\x80\xAE", "#342#200#256", R"("\u202e")"},
        {"\xE2\x80\xA8", "#342#200#250", R"("\u2028")"},
        {"\xF3\xA0\x80\x81", "#363#240#200#201", R"("\udb40\udc01")"},
        {"\xC2\x9B", "#302#233", R"("\u009b")"},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(visible(c.text), c.visible);
        std::string json;
        appendJson(json, c.text);
        EXPECT_EQ(json, c.json);
    }
}

TEST(QueryOptionsTest, ReadsMoments) {
    EXPECT_EQ(momentOf("2023-11-14T22:13:20Z"), 1700000000);
    EXPECT_EQ(momentOf("1700000000"), 1700000000);
    EXPECT_EQ(momentOf("2023-11-14 22:13:20"), 1700000000);
    EXPECT_EQ(momentOf("2023-11-14 22:13"), 1699999980);
    EXPECT_EQ(momentOf("2023-11-14"), 1699920000);
    for (const char *wrong :
         {"", "yesterday", "2023-11-31", "2023-11-14 25:00", "2023-11-14T", "14.11.2023"}) {
        EXPECT_EQ(momentOf(wrong), std::nullopt) << wrong;
    }
}

std::vector<std::string> found(const EventQuery &query, std::size_t lines) {
    AppState state;
    takeStartSettings(state);
    std::vector<std::string> messages;
    LogSearch search(state, query, [&messages](const LogLine &event, EventRating /*rating*/) {
        messages.emplace_back(event.message);
        return true;
    });
    for (std::size_t i = 0; i < lines; ++i) {
        const std::string host = "host" + std::to_string(i % 5000);
        const std::string message = "number " + std::to_string(i);
        search.add({"1700000000", i % 2 == 0 ? "User.Error" : "User.Debug", host, message});
    }
    search.finish();
    return messages;
}

// Texts that many events share have other numbers in each batch.
TEST(LogSearchTest, FindsInManyBatchesWhatOneWouldHold) {
    constexpr std::size_t kMany = 200'000;
    EventQuery query;
    EXPECT_EQ(found(query, kMany).size(), kMany);
    query.host = "host17";
    query.leastSeverity = 3;
    EXPECT_EQ(found(query, kMany).size(), 0U);  // odd ones are debugging
    query.host = "host16";
    const auto messages = found(query, kMany);
    ASSERT_EQ(messages.size(), kMany / 5000);
    for (std::size_t i = 0; i < messages.size(); ++i) {
        EXPECT_EQ(messages[i], "number " + std::to_string(i * 5000 + 16));
    }
    query = {};
    query.texts.push_back({{"host4999", false, false}, false});
    EXPECT_EQ(found(query, kMany).size(), kMany / 5000);
}

TEST(LogSearchTest, EndsWhenItsHandlerWantsNoMore) {
    std::size_t count = 0;
    LogSearch search({}, {}, [&count](const LogLine & /*event*/, EventRating /*rating*/) {
        return ++count < 3;
    });
    bool goesOn = true;
    std::size_t added = 0;
    while (goesOn && added < 1'000'000) {
        goesOn = search.add({"1", "User.Error", "h", "m"});
        ++added;
    }
    EXPECT_EQ(count, 3U);
    EXPECT_LT(added, 100'000U);
    EXPECT_FALSE(search.add({"1", "User.Error", "h", "m"}));
}

TEST(LogSearchTest, LooksOnlyIntoFilesThatMayHoldTheSpan) {
    EventQuery query;
    query.from = 1700000000;  // 2023-11-14
    query.until = 1700000000 + 3600;
    for (const char *name : {"2023-11-13.log", "2023-11-14.log", "2023-11-15.log", "x.log"}) {
        EXPECT_TRUE(mayHoldSpan(name, query)) << name;
    }
    for (const char *name : {"2023-11-10.log", "2023-11-18.log"}) {
        EXPECT_FALSE(mayHoldSpan(name, query)) << name;
        EXPECT_TRUE(mayHoldSpan(name, {})) << name;
    }
}

TEST(EventStatisticsTest, HoldsNoMoreHostsThanItMay) {
    EventStatistics statistics;
    for (std::size_t i = 0; i < EventStatistics::kMostHosts + 7; ++i) {
        statistics.add({"1", "User.Error", "host" + std::to_string(i), "m"}, 2);
    }
    EXPECT_NE(statistics.json().find("\"otherHosts\":7,"), std::string::npos);
    EXPECT_NE(statistics.text().find("\n           7  other hosts\n"), std::string::npos);
}

}  // namespace
}  // namespace quorbel
