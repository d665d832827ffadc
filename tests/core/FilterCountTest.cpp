#include "EventListSamples.h"
#include "core/FilterCount.h"
#include "service/message/EventFilter.h"
#include "service/message/RecordWriter.h"
#include "support/Seed.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using testing::fields;

Dictionary record(const char *ip, const char *mask, const char *facility = "Any",
                  const char *severity = "Any", const char *message = "*") {
    return {{"Name", "n"},          {"IP", ip},
            {"Message", message},   {"Mask", mask},
            {"Facility", facility}, {"Severity", severity}};
}

class FilterCountTest : public ::testing::Test {
protected:
    void insert(std::string_view host, std::string_view message = "disk full",
                std::string_view priority = "Local7.Error", std::string_view date = "1000") {
        m_list.insertRaw(fields(date, priority, host, message));
    }
    FilterCount::Counts count(const Dictionary &record, std::int64_t today = 0) {
        m_count.start(record, today);
        return countOn();
    }
    FilterCount::Counts countOn() {
        m_count.run([] { return false; });
        EXPECT_FALSE(m_count.isRunning());
        return m_count.counts();
    }

    EventList m_list;
    FilterCount m_count{m_list};
};

TEST_F(FilterCountTest, CountsNothingInAnEmptyList) {
    EXPECT_EQ(count(record("0.0.0.0", "0")), FilterCount::Counts{});
}

TEST_F(FilterCountTest, CountsThoseOfTodayToo) {
    insert("10.0.0.1", "a", "Local7.Error", "999");
    insert("10.0.0.1", "a", "Local7.Error", "1000");
    insert("10.0.0.1", "a", "Local7.Error", "no number");
    EXPECT_EQ(count(record("0.0.0.0", "0"), 1000), (FilterCount::Counts{3, 1, 0}));
    m_list.show(testing::stateWith());
    EXPECT_EQ(count(record("0.0.0.0", "0"), 1000), (FilterCount::Counts{3, 1, 0}));
}

TEST_F(FilterCountTest, DoesNotKnowTheAddressBehindAName) {
    insert("printer");
    insert("printer", "toner low");
    insert("10.0.0.1");
    EXPECT_EQ(count(record("10.0.0.0", "8")), (FilterCount::Counts{1, 1, 2}));
    EXPECT_EQ(count(record("10.0.0.0", "8", "Any", "Any", "toner*")),
              (FilterCount::Counts{0, 0, 1}));
    EXPECT_EQ(count(record("0.0.0.0", "0")), (FilterCount::Counts{3, 3, 0}));
    EXPECT_EQ(count(record("no address", "8")), FilterCount::Counts{});
}

TEST_F(FilterCountTest, MeansNoPriorityThatTheServiceDoesNotWrite) {
    for (const char *priority : {"Local7", "Error", "Local7.Unknown", "Local7.Error2", ".", ""}) {
        insert("10.0.0.1", "a", priority);
    }
    EXPECT_EQ(count(record("0.0.0.0", "0")), FilterCount::Counts{});
}

TEST_F(FilterCountTest, GoesOnWithWhatArrives) {
    insert("10.0.0.1");
    EXPECT_EQ(count(record("10.0.0.0", "8")).meant, 1U);
    for (int i = 0; i < 5000; ++i) {
        insert("10.0.0.2");
    }
    EXPECT_TRUE(m_count.isRunning());
    EXPECT_EQ(countOn().meant, 5001U);
}

TEST_F(FilterCountTest, IsWrongOnceEventsHaveLeft) {
    for (int i = 0; i < 10; ++i) {
        insert("10.0.0.1");
    }
    EXPECT_EQ(count(record("10.0.0.0", "8")).meant, 10U);
    EXPECT_FALSE(m_count.isStale());
    m_list.removeRows({{0, 4}});
    insert("10.0.0.1");
    EXPECT_TRUE(m_count.isStale());
    EXPECT_FALSE(m_count.isRunning());
    m_count.restart();
    EXPECT_FALSE(m_count.isStale());
    EXPECT_EQ(countOn().meant, 7U);
}

TEST_F(FilterCountTest, StopsWhenTimeIsUp) {
    for (int i = 0; i < 10'000; ++i) {
        insert("10.0.0.1");
    }
    m_count.start(record("0.0.0.0", "0"), 0);
    int slices = 0;
    for (; m_count.isRunning(); ++slices) {
        m_count.run([] { return true; });
    }
    EXPECT_GT(slices, 20);
    EXPECT_EQ(m_count.counts().meant, 10'000U);
}

TEST_F(FilterCountTest, SaysWhenNothingIsLeft) {
    const auto meansEverything = [this](const Dictionary &record) {
        m_count.start(record, 0);
        return m_count.meansEverything();
    };
    EXPECT_TRUE(meansEverything(record("0.0.0.0", "0")));
    EXPECT_TRUE(meansEverything(record("10.0.0.1", "0", "", "", "**")));
    EXPECT_FALSE(meansEverything(record("10.0.0.1", "1")));
    EXPECT_FALSE(meansEverything(record("0.0.0.0", "0", "Kern")));
    EXPECT_FALSE(meansEverything(record("0.0.0.0", "0", "Any", "Debug")));
    EXPECT_FALSE(meansEverything(record("0.0.0.0", "0", "Any", "Any", "?*")));
}

// The service decides what a filter matches: over random messages, some of which leave the list
// again, both say the same.
TEST_F(FilterCountTest, CountsWhatTheServiceWouldHaveMatched) {
    constexpr std::array kHosts{"10.0.0.1", "10.0.1.1", "10.128.0.1", "2001:db8::1", "::1"};
    constexpr std::array kTexts{"disk full", "DISK FULL", "fan", "fan 3 failed", "ÄRGER", "ärger"};
    constexpr std::array kMasks{"0", "8", "9", "24", "32", "128", "x"};
    constexpr std::array kFacilities{"Any", "", "Kern", "Local7", "local7", "Nope"};
    constexpr std::array kSeverities{"Any", "Error", "Alert", "Debug", "Unknown", "Nope"};
    constexpr std::array kPatterns{"*", "", "disk*", "*full", "fan ? failed", "Ärg?r", "f*d", "?"};
    std::minstd_rand random(testing::seed());
    const auto pick = [&random](const auto &of) { return of[random() % of.size()]; };
    struct Message {
        IpAddress address;
        Priority priority;
        std::string lines;
        std::size_t prefix;
    };
    std::vector<Message> messages;
    RecordWriter writer;
    for (int i = 0; i < 3000; ++i) {
        const char *host = pick(kHosts);
        const char *text = pick(kTexts);
        const Priority priority = *Priority::fromValue(static_cast<unsigned>(random() % 192));
        Message &message = messages.emplace_back(
            Message{IpAddress::parse(host).value(), priority, std::string(), 0});
        message.prefix = writer.append({1'700'000'000, priority, host, text}, message.lines).prefix;
        insert(host, text, priority.text());
    }
    m_list.removeRows({{100, 1000}});  // of the newest on
    messages.erase(messages.end() - 1100, messages.end() - 100);
    std::size_t all = 0;
    for (int i = 0; i < 300; ++i) {
        const Dictionary filter = record(pick(kHosts), pick(kMasks), pick(kFacilities),
                                         pick(kSeverities), pick(kPatterns));
        const EventFilter service(filter);
        std::size_t matched = 0;
        for (const Message &message : messages) {
            FilterSubject subject;
            subject.set(message.address, message.priority, message.lines, message.prefix);
            matched += service.matches(subject) ? 1U : 0U;
        }
        ASSERT_EQ(count(filter).meant, matched);
        all += matched;
    }
    EXPECT_GT(all, 1000U);
}

}  // namespace
}  // namespace quorbel
