#include "EventListSamples.h"
#include "core/ArrangedEvents.h"
#include "core/EventCounter.h"
#include "core/MessagePacking.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace quorbel {
namespace {

constexpr std::size_t kChunks = 12;

/// Searches packed messages while this and that happens to the list, beside a plain look at each
/// event.
class PackedSearchTest : public ::testing::TestWithParam<unsigned> {
protected:
    PackedSearchTest() {
        add(kChunks * EventChunk::kSlots);
        m_list.show(m_state);
        packAll();
    }
    std::size_t pick(std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(m_random);
    }
    /// A chance of one in so many.
    bool happens(std::size_t oneIn) { return pick(oneIn) == 0; }

    void add(std::size_t count) {
        static const std::vector<std::string> severities = {"Error", "Notice", "Debug"};
        for (std::size_t i = 0; i < count; ++i) {
            const std::string date = std::to_string(1'700'000'000 + 7 * m_added++);
            const std::string priority = "Auth." + severities[pick(severities.size())];
            const std::string host = "10.0.0." + std::to_string(pick(30));
            EventFields event = testing::fields(date, priority, host, message());
            if (happens(200)) {
                event.message.reset();
            }
            m_list.insertRaw(event);
        }
    }
    /// The text that `fields` view lasts until the next one.
    const std::string &message() {
        static const std::vector<std::string> words = {"accepted", "Denied", "disk",  "di\u017Fk",
                                                       "link up",  "kelvin", "error", "f\u00fcnf"};
        m_message = words[pick(words.size())] + " " + std::to_string(pick(5000)) + " ";
        if (happens(50)) {
            m_message += std::string(pick(3000), 'x');
        }
        m_message += words[pick(words.size())];
        if (happens(1000)) {
            m_message.clear();
        }
        return m_message;
    }
    void packAll() {
        MessagePacking packing(m_list);
        while (packing.step()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    EventQuery randomFilter() {
        static const std::vector<TextPattern::Spec> specs = {{"accepted"},
                                                             {"DISK"},
                                                             {"denied", true},
                                                             {"link up 1"},
                                                             {"xyzzy"},
                                                             {"10.0.0.7"},
                                                             {"error"},
                                                             {"7"},
                                                             {"2023-11-1"},
                                                             {"x"},
                                                             {"f\u00dcnf"},
                                                             {"^accepted [0-9]*7 ", false, true},
                                                             {"^$", false, true},
                                                             {"(disk|kelvin) .*up$", false, true},
                                                             {"[0-9]{4}", false, true}};
        EventQuery filter;
        for (std::size_t i = 1 + pick(3); i > 0; --i) {
            filter.texts.push_back({specs[pick(specs.size())], happens(4)});
        }
        filter.host = happens(4) ? "10.0.0.1*" : "";
        if (happens(4)) {
            filter.leastSeverity = 3;
        }
        if (happens(4)) {
            filter.from = 1'700'000'000 + static_cast<std::int64_t>(pick(7 * m_added));
        }
        return filter;
    }
    static std::string described(const EventQuery &filter) {
        std::string text = "host " + filter.host;
        for (const TextCondition &condition : filter.texts) {
            text += (condition.isNegated ? ", not " : ", ") + condition.pattern.text;
        }
        return text + (filter.leastSeverity ? ", severe" : "") + (filter.from ? ", late" : "");
    }
    /// The slow way, with patterns of its own.
    std::vector<EventId> plainLook(const EventQuery &filter) {
        std::vector<TextPattern> patterns;
        for (const TextCondition &text : filter.texts) {
            patterns.emplace_back(text.pattern);
        }
        std::vector<EventId> ids;
        for (std::size_t row = 0; row < m_list.size(); ++row) {
            if (isMeant(row, filter, patterns)) {
                ids.push_back(m_list.idAt(row));
            }
        }
        return ids;
    }
    bool isMeant(std::size_t row, const EventQuery &filter,
                 const std::vector<TextPattern> &patterns) {
        EventReader reader(m_list);
        EventChunk &chunk = reader.chunk(reader.chunkFrom(m_list.idAt(row)));
        const EventRecord &record = reader.settled(chunk, *chunk.positionOf(m_list.idAt(row)));
        const std::string host(*m_list.host(row));
        if ((filter.from && record.seconds < *filter.from) ||
            (filter.leastSeverity && m_list.priority(row) != "Auth.Error") ||
            (!filter.host.empty() && host.rfind("10.0.0.1", 0) != 0)) {
            return false;
        }
        const std::string rating(severityLevelName(std::int64_t{record.image} - 1));
        const std::string shown[] = {rating, *m_list.date(row), std::string(*m_list.priority(row)),
                                     host, std::string(m_list.message(row).value_or(""))};
        for (std::size_t i = 0; i < patterns.size(); ++i) {
            const bool isIn = std::ranges::any_of(
                shown, [&](const std::string &text) { return patterns[i].matches(text); });
            if (isIn == filter.texts[i].isNegated) {
                return false;
            }
        }
        return true;
    }
    static std::vector<EventId> idsOf(const ArrangedEvents &events) {
        std::vector<EventId> ids;
        for (std::size_t row = 0; row < events.size(); ++row) {
            ids.push_back(events.idAt(row));
        }
        return ids;
    }
    /// Something that happens to a list that is looked at.
    void changeList() {
        const std::size_t row = pick(m_list.size());
        switch (pick(6)) {
            case 0:
                m_list.removeRows(
                    {{row, std::min<std::size_t>(1 + pick(300), m_list.size() - row)}});
                break;
            case 1:
                add(1 + pick(500));
                break;
            case 2:
                m_list.setAside({{row, std::min<std::size_t>(50, m_list.size() - row)}});
                m_list.putBack();
                break;
            case 3:
                packAll();
                break;
            default:
                // Time for the other processors.
                std::this_thread::sleep_for(std::chrono::microseconds(pick(500)));
        }
    }

    std::mt19937 m_random{GetParam()};
    AppState m_state = testing::stateWith();
    std::size_t m_added = 0;
    std::string m_message;
    EventList m_list;
    ArrangedEvents m_events{m_list};
};

TEST_P(PackedSearchTest, FindsWhatAPlainLookFindsWhileTheListChanges) {
    std::size_t found = 0;
    for (int round = 0; round < 12; ++round) {
        const EventQuery filter = randomFilter();
        ASSERT_EQ(m_events.setFilter(filter), "");
        while (m_events.isSearching()) {
            m_events.search([this] { return happens(20); });
            changeList();
        }
        const auto ids = idsOf(m_events);
        ASSERT_EQ(ids, plainLook(filter)) << described(filter);
        found += ids.size();
    }
    EXPECT_GT(found, 5'000U);
}

TEST_P(PackedSearchTest, AnotherFilterEndsASearchInTheMiddle) {
    for (int round = 0; round < 40; ++round) {
        ASSERT_EQ(m_events.setFilter(randomFilter()), "");
        m_events.search([this] { return happens(10); });
    }
    const EventQuery filter = randomFilter();
    ASSERT_EQ(m_events.setFilter({}), "");
    ASSERT_EQ(m_events.setFilter(filter), "");
    m_events.search([] { return false; });
    EXPECT_EQ(idsOf(m_events), plainLook(filter));
}

TEST_P(PackedSearchTest, CountsOfManyFiltersAreThoseOfAPlainLook) {
    EventCounter counter(m_list);
    std::vector<EventQuery> filters;
    for (int i = 0; i < 8; ++i) {
        filters.push_back(randomFilter());
    }
    counter.start(filters);
    while (counter.isCounting()) {
        counter.run([this] { return happens(20); });
    }
    for (std::size_t i = 0; i < filters.size(); ++i) {
        EXPECT_EQ(counter.count(i), plainLook(filters[i]).size());
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, PackedSearchTest, ::testing::Values(1U, 2U, 3U));

}  // namespace
}  // namespace quorbel
