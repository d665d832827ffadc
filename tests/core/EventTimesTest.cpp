// When events happened, against a plain look at all of them, while they come and go, ratings and
// date formats change and filters follow one another.

#include "EventListSamples.h"
#include "core/EventTimes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace quorbel {
namespace {

constexpr std::int64_t kStart = 1'700'000'000;

class EventTimesTest : public ::testing::Test {
protected:
    void insert(std::string_view date, std::string_view priority = "Local7.Error",
                std::string_view host = "10.0.0.5") {
        m_list.insertShown(testing::fields(date, priority, host), m_state);
    }
    void finish() {
        m_all.count([] { return false; });
        m_matching.count([] { return false; });
    }
    static RatingCounts allOf(const EventTimes &times) {
        return times.counts().sum(0, TimeCounts::kEnd);
    }
    void filterBy(std::optional<std::int64_t> from, std::optional<std::int64_t> until) {
        EventQuery filter;
        filter.from = from;
        filter.until = until;
        ASSERT_EQ(m_events.setFilter(filter), "");
        m_events.search([] { return false; });
    }

    EventList m_list;
    AppState m_state = testing::stateWith();
    ArrangedEvents m_unfiltered{m_list};
    ArrangedEvents m_events{m_list};
    EventTimes m_all{m_unfiltered};
    EventTimes m_matching{m_events};
};

TEST_F(EventTimesTest, CountsAtOnceWhatArrivesAndLeaves) {
    finish();
    insert("1700000000");
    insert("1700000090", "Kern.Critical");
    insert("1699999000", "User.Debug");  // a clock was set back
    EXPECT_FALSE(m_all.isCounting());
    EXPECT_EQ(allOf(m_all), (RatingCounts{0, 1, 1, 1}));
    EXPECT_EQ(m_all.counts().sum(kStart + 90, kStart + 91), (RatingCounts{0, 0, 0, 1}));
    m_list.removeRows({{1, 1}});
    EXPECT_FALSE(m_all.isCounting());
    EXPECT_EQ(allOf(m_all), (RatingCounts{0, 1, 1, 0}));
    EXPECT_EQ(m_all.counts().last(), kStart);
}

TEST_F(EventTimesTest, FollowsNewRatings) {
    insert("1700000000");
    finish();
    m_state.iSeverityError = 2;
    m_list.show(m_state);
    m_all.recount();
    finish();
    EXPECT_EQ(allOf(m_all), (RatingCounts{0, 0, 0, 1}));
    m_list.removeRows({{0, 1}});
    EXPECT_TRUE(m_all.counts().isEmpty());
}

TEST_F(EventTimesTest, PassesOverDatesThatAreOnNoCalendar) {
    for (const std::string_view date : {"soon", "99999999999999", "1700000000", "253402300799"}) {
        m_list.insertRaw(testing::fields(date));
    }
    EventFields none = testing::fields("");
    none.date.reset();
    m_list.insertRaw(none);
    finish();
    EXPECT_EQ(m_all.counts().first(), kStart);
    EXPECT_EQ(m_all.counts().last(), TimeCounts::kEnd - 1);
    EXPECT_EQ(allOf(m_all), (RatingCounts{2, 0, 0, 0}));
    for (int i = 0; i < 5; ++i) {
        m_list.removeRows({{0, 1}});
    }
    EXPECT_TRUE(m_all.counts().isEmpty());
}

TEST_F(EventTimesTest, KeepsWhatItCountedWhileItCountsAnew) {
    for (int i = 0; i < 2000; ++i) {
        insert(std::to_string(kStart + std::min(i, 10)));
    }
    finish();
    m_all.recount();
    m_all.count([] { return true; });
    EXPECT_TRUE(m_all.isCounting());
    EXPECT_EQ(allOf(m_all)[2], 2000U);
    // What comes and goes meanwhile is in the new counts.
    insert(std::to_string(kStart + 5000));
    m_list.removeRows({{2000, 1}});  // counted already
    m_list.removeRows({{3, 1}});     // not yet
    finish();
    EXPECT_EQ(allOf(m_all)[2], 1999U);
    EXPECT_EQ(m_all.counts().first(), kStart + 1);
    EXPECT_EQ(m_all.counts().sum(kStart + 10, kStart + 11)[2], 1989U);
    EXPECT_EQ(m_all.counts().last(), kStart + 5000);
}

TEST_F(EventTimesTest, ComesToAnEndHoweverMuchChanges) {
    for (int i = 0; i < 20'000; ++i) {
        insert(std::to_string(kStart + i));
    }
    filterBy(kStart, kStart + 100'000);
    for (int i = 0; i < 2000 && m_matching.counts().isEmpty(); ++i) {
        m_list.removeRows({{0, 1}, {5, 1}});
        m_matching.count([] { return true; });
    }
    EXPECT_GT(allOf(m_matching)[2], 10'000U);
    finish();
    EXPECT_EQ(allOf(m_matching)[2], m_events.size());
    EXPECT_EQ(allOf(m_all)[2], m_list.size());
}

TEST_F(EventTimesTest, CountsWhatAFilterMeansOnly) {
    for (int i = 0; i < 5000; ++i) {
        insert(std::to_string(kStart + i));
    }
    finish();
    filterBy(kStart + 10, kStart + 20);
    EXPECT_TRUE(m_matching.isCounting());
    finish();
    EXPECT_EQ(allOf(m_matching), (RatingCounts{0, 0, 10, 0}));
    insert(std::to_string(kStart + 19));
    insert(std::to_string(kStart + 20));
    EXPECT_FALSE(m_matching.isCounting());
    EXPECT_EQ(allOf(m_matching), (RatingCounts{0, 0, 11, 0}));
    m_list.removeRows({{0, 100}});
    EXPECT_EQ(allOf(m_matching), (RatingCounts{0, 0, 10, 0}));
    filterBy({}, {});
    finish();
    EXPECT_EQ(allOf(m_matching), allOf(m_all));
}

TEST_F(EventTimesTest, CountsByTheHostsAndFacilitiesThatMostEventsHave) {
    for (const char *host : {"b", "a", "d", "b", "a", "b", "", "c", "c", "b"}) {
        insert("1700000000", *host == 'a' ? "Kern.Error" : "Mail.Debug", host);
    }
    insert("1700000000", "odd", "e");
    const EventGroups byHost(EventGrouping::kHost, m_list);
    EXPECT_EQ(byHost.names(), (std::vector<std::string>{"b", "a", "c"}));
    const EventGroups byFacility(EventGrouping::kFacility, m_list);
    EXPECT_EQ(byFacility.names(), (std::vector<std::string>{"Mail", "Kern", "odd"}));
    EXPECT_EQ(EventGroups(EventGrouping::kRating, m_list), EventGroups());
    EventTimes hosts(m_events, byHost);
    EventTimes facilities(m_events, byFacility);
    for (EventTimes *times : {&hosts, &facilities}) {
        times->count([] { return false; });
    }
    EXPECT_EQ(allOf(hosts), (RatingCounts{3, 4, 2, 2}));
    EXPECT_EQ(allOf(facilities), (RatingCounts{0, 8, 2, 1}));
    insert("1700000001", "Auth.Debug", "c");
    m_list.setAside({{2, 1}, {4, 1}});
    for (EventTimes *times : {&hosts, &facilities}) {
        times->count([] { return false; });
    }
    EXPECT_EQ(allOf(hosts), (RatingCounts{3, 3, 2, 2}));
    EXPECT_EQ(allOf(facilities), (RatingCounts{1, 6, 2, 1}));
    EXPECT_EQ(EventGroups(EventGrouping::kHost, m_list).names(),
              (std::vector<std::string>{"b", "a", "c"}));
    m_list.setAside({{0, 1}, {2, 1}});
    EXPECT_EQ(EventGroups(EventGrouping::kHost, m_list).names(),
              (std::vector<std::string>{"b", "a", "d"}));
}

TEST_F(EventTimesTest, CountsWhatComesBackAndWhereItStood) {
    for (int i = 0; i < 5000; ++i) {
        insert(std::to_string(kStart + i));
    }
    finish();
    m_list.setAside({{10, 1}});
    EXPECT_EQ(m_all.counts().sum(kStart + 4989, kStart + 4990), (RatingCounts{0, 0, 0, 0}));
    m_list.putBack();
    finish();
    EXPECT_EQ(m_all.counts().sum(kStart + 4989, kStart + 4990), (RatingCounts{0, 0, 1, 0}));
    // What comes back among those that are counted already is not forgotten.
    m_list.setAside({{1000, 4000}});
    m_all.count([] { return true; });
    m_list.putBack();
    finish();
    EXPECT_EQ(allOf(m_all)[2], 5000U);
    EXPECT_EQ(m_all.counts().first(), kStart);
}

class EventTimesModelTest : public EventTimesTest, public ::testing::WithParamInterface<unsigned> {
protected:
    std::size_t pick(std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(m_random);
    }
    template <typename Values>
    auto oneOf(const Values &values) {
        return values[pick(values.size())];
    }
    void insertSome(std::size_t count, bool isBulk = false) {
        static const std::vector<std::string> priorities = {"Local7.Error", "Kern.Emergency",
                                                            "User.Debug", "odd"};
        static const std::vector<std::string> odd = {"", "12.5", "soon", "99999999999999999"};
        for (; count > 0; --count) {
            m_clock += static_cast<std::int64_t>(pick(2) * pick(40)) - (pick(200) == 0 ? 5000 : 0);
            const std::string date = pick(30) == 0 ? oneOf(odd) : std::to_string(m_clock);
            const std::string host = "10.0.0." + std::to_string(pick(1 + pick(6)));
            const std::string priority = oneOf(priorities);
            const EventFields event = testing::fields(date, priority, host);
            if (isBulk || pick(2) == 0) {
                m_list.insertRaw(event);
            } else {
                m_list.insertShown(event, m_state);
            }
        }
    }
    void insertMany() {
        m_list.beginBulkInsert();
        insertSome(4500, true);
        m_list.endBulkInsert();
    }
    std::vector<RowRange> someRows() {
        std::vector<RowRange> ranges;
        const std::size_t wanted = pick(2) == 0 ? 1 : 1 + pick(4);
        for (std::size_t row = pick(300); row < m_list.size() && ranges.size() < wanted;) {
            const std::size_t most = pick(12) == 0 ? 6000 : 9;
            const std::size_t count = std::min(1 + pick(most), m_list.size() - row);
            ranges.push_back({row, count});
            row += count + 1 + pick(200);
        }
        return ranges;
    }
    void show() {
        static const std::vector<std::string> formats = {"yyyy-MM-dd HH:mm:ss", "dd.MM.y hh:mm a",
                                                         ""};
        m_state.oldDateFormat = m_state.newDateFormat;
        m_state.newDateFormat = oneOf(formats);
        m_state.iSeverityError = static_cast<std::int64_t>(pick(5)) - 1;
        m_state.iSeverityEmergency = static_cast<std::int64_t>(pick(3));
        m_list.show(m_state);
        m_all.recount();
        m_matching.recount();
        if (m_byHost) {
            m_byHost->recount();
        }
        m_events.refresh();
    }
    void filter() {
        EventQuery filter;
        if (pick(4) != 0) {
            filter.from = kStart + static_cast<std::int64_t>(pick(100'000));
            filter.until = *filter.from + static_cast<std::int64_t>(pick(100'000));
            filter.ratings[pick(kRatingCount)] = pick(3) == 0;
        }
        ASSERT_EQ(m_events.setFilter(filter), "");
    }
    struct Counted {
        std::int64_t moment;
        std::size_t group;
    };
    std::size_t groupOf(EventId id, EventRating rating, const EventGroups &groups) {
        if (groups.grouping() == EventGrouping::kRating) {
            return rating;
        }
        const auto &names = groups.names();
        const auto name = std::ranges::find(names, m_list.host(m_list.rowOf(id).value()).value());
        return name == names.end() ? 0 : 1 + static_cast<std::size_t>(name - names.begin());
    }
    std::vector<Counted> plainly(ArrangedEvents &events, const EventGroups &groups) {
        const EventReader reader(m_list);
        std::vector<Counted> counted;
        for (std::size_t row = 0; row < events.size(); ++row) {
            const EventId id = events.idAt(row);
            EventChunk &chunk = reader.chunk(reader.chunkFrom(id));
            const EventRecord &record = reader.settled(chunk, *chunk.positionOf(id));
            if (record.format != EventRecord::kTextDate && record.seconds >= 0 &&
                record.seconds < TimeCounts::kEnd) {
                counted.push_back({record.seconds, groupOf(id, record.image, groups)});
            }
        }
        return counted;
    }
    void compare(ArrangedEvents &events, const EventTimes &times) {
        if (times.isCounting()) {
            return;
        }
        const std::vector<Counted> plain = plainly(events, times.groups());
        ASSERT_EQ(times.counts().isEmpty(), plain.empty());
        for (int i = 0; i < 10; ++i) {
            const std::int64_t from =
                i == 0 ? 0 : kStart + static_cast<std::int64_t>(pick(200'000));
            const std::int64_t until = i == 0 ? TimeCounts::kEnd : from + 1 + 60 * (i * i * i);
            RatingCounts expected{};
            for (const auto &[moment, group] : plain) {
                expected[group] += moment >= from && moment < until ? 1 : 0;
            }
            ASSERT_EQ(times.counts().sum(from, until), expected);
        }
    }

    std::optional<EventTimes> m_byHost;
    std::mt19937 m_random{GetParam()};
    std::int64_t m_clock = kStart;
};

TEST_P(EventTimesModelTest, CountsWhatAPlainLookDoes) {
    std::size_t largest = 0;
    std::size_t cameBack = 0;
    for (std::size_t step = 0; step < 150 && !HasFatalFailure(); ++step) {
        insertSome(pick(120));
        if (step % 50 == 3) {
            m_byHost.emplace(m_events, EventGroups(EventGrouping::kHost, m_list));
        }
        if (m_byHost && pick(3) == 0) {
            m_byHost->count([] { return false; });
        }
        if (step % 20 == 7) {
            insertMany();
        }
        largest = std::max(largest, m_list.size());
        if (pick(4) == 0) {
            m_list.removeRows(someRows());
        }
        if (pick(6) == 0) {
            m_list.setAside(someRows());
        }
        if (pick(6) == 0) {
            cameBack += m_list.putBack().size();
        }
        if (pick(12) == 0) {
            show();
        }
        if (pick(5) == 0) {
            filter();
        }
        if (pick(2) == 0) {
            m_events.search([] { return false; });
        }
        if (pick(2) == 0) {
            m_all.count([] { return true; });  // one run, and the next change comes
            m_matching.count([] { return true; });
        }
        if (pick(2) == 0) {
            finish();
        }
        compare(m_unfiltered, m_all);
        compare(m_events, m_matching);
        if (m_byHost) {
            compare(m_events, *m_byHost);
        }
    }
    EXPECT_GT(largest, 8192U);
    EXPECT_GT(cameBack, 50U);
}

INSTANTIATE_TEST_SUITE_P(Seeds, EventTimesModelTest, ::testing::Values(1U, 2U, 3U, 4U));

}  // namespace
}  // namespace quorbel
