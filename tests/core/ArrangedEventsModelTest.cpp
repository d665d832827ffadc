// What a filter arranges, and when that happened, against a plain look at every event of the list,
// while events come and go, leave and come back, dates and ratings change and filters follow one
// another, complete or not.

#include "EventListSamples.h"
#include "core/ArrangedEvents.h"
#include "core/EventTimes.h"
#include "core/LoadedEvents.h"
#include "platform/Text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace quorbel {
namespace {

/// Keeps the rows as a table would, by what it is told alone.
class Mirror : public EventListObserver {
public:
    explicit Mirror(ArrangedEvents &events) : m_events(events) { m_events.addObserver(*this); }
    ~Mirror() override { m_events.removeObserver(*this); }
    Mirror(const Mirror &) = delete;
    Mirror &operator=(const Mirror &) = delete;

    std::vector<EventId> rows;  // oldest first

private:
    void rowsWillBeInsertedAtTop(std::size_t count) override {
        EXPECT_GT(count, 0U);
        EXPECT_EQ(m_events.size(), rows.size());
    }
    void rowsWereInserted(std::size_t count) override {
        for (std::size_t row = count; row > 0; --row) {
            rows.push_back(m_events.idAt(row - 1));
        }
        EXPECT_EQ(m_events.size(), rows.size());
    }
    void rowsWillBeRemoved(std::size_t first, std::size_t count) override {
        EXPECT_EQ(m_events.size(), rows.size());
        const auto end = rows.end() - static_cast<std::ptrdiff_t>(first);
        rows.erase(end - static_cast<std::ptrdiff_t>(count), end);
    }
    void rowsWereRemoved() override { EXPECT_EQ(m_events.size(), rows.size()); }
    void listWillChangeAtLarge() override {}
    void listChangedAtLarge() override {
        rows.clear();
        for (std::size_t row = m_events.size(); row > 0; --row) {
            rows.push_back(m_events.idAt(row - 1));
        }
    }

    ArrangedEvents &m_events;
};

std::string lowered(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char letter) {
        return static_cast<char>(std::tolower(letter));
    });
    const std::string_view longS = "\u017F";
    for (std::size_t place = 0; (place = text.find(longS, place)) != std::string::npos;) {
        text.replace(place, longS.size(), "s");
    }
    return text;
}

/// An expression is a choice of plain texts here.
bool contains(const std::string &text, const TextPattern::Spec &spec) {
    if (const std::size_t bar = spec.text.find('|'); bar != std::string::npos) {
        return contains(text, {spec.text.substr(0, bar), spec.isCaseSensitive}) ||
               contains(text, {spec.text.substr(bar + 1), spec.isCaseSensitive});
    }
    return spec.isCaseSensitive ? text.find(spec.text) != std::string::npos
                                : lowered(text).find(lowered(spec.text)) != std::string::npos;
}

constexpr std::int64_t kHour = 3600;

class ArrangedEventsModelTest : public ::testing::TestWithParam<unsigned> {
protected:
    std::size_t pick(std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(m_random);
    }
    template <typename Values>
    auto oneOf(const Values &values) {
        return values[pick(values.size())];
    }

    /// Calls `take(fields)` for so many new events.
    template <typename Take>
    void make(std::size_t count, Take take) {
        static const std::vector<std::string> priorities = {"Local7.Error", "Kern.Emergency",
                                                            "User.Informational", "odd", ""};
        static const std::vector<std::string> words = {"disk",      "Disk", "sdb1", "link",
                                                       "di\u017Fk", "x",    ""};
        static const std::vector<std::string> odd = {"", "12.5", "soon"};
        for (; count > 0; --count) {
            const std::string date =
                pick(15) == 0 ? oneOf(odd) : std::to_string(1'700'000'000 + 7 * m_inserted++);
            const std::string priority = oneOf(priorities);
            const std::string host = "10.0.0." + std::to_string(pick(12));
            const std::string message = oneOf(words) + " " + oneOf(words) + oneOf(words);
            EventFields event = testing::fields(date, priority, host, message);
            if (pick(20) == 0) {
                event.message.reset();
            }
            take(event);
        }
    }
    void insert(std::size_t count) {
        make(count, [this](const EventFields &event) {
            if (m_inBulk || pick(2) == 0) {
                m_list.insertRaw(event);
            } else {
                m_list.insertShown(event, m_state);
            }
        });
    }
    void insertTogether(std::size_t count) {
        LoadedEvents events;
        make(count, [&events](const EventFields &event) { events.add(event); });
        events.close();
        if (pick(2) == 0) {
            m_list.insertAllRaw(std::move(events));
        } else {
            m_list.insertAllShown(std::move(events), m_state);
        }
    }

    void insertMany() {
        m_list.beginBulkInsert();
        m_inBulk = true;
        insert(1500);
        m_inBulk = false;
        m_list.endBulkInsert();
        finish();
    }

    EventQuery randomFilter() {
        static const std::vector<std::string> texts = {
            "d",  "di", "dis", "disk",     "sdb",       "ink ",      "err",
            "12", ":1", "Sev", "10.0.0.1", "disk|sdb1", "k x|err|12"};
        EventQuery filter;
        for (std::size_t i = pick(3); i > 0; --i) {
            const std::string text = oneOf(texts);
            const bool isExpression = text.find('|') != std::string::npos;
            filter.texts.push_back({{text, pick(2) == 0, isExpression}, pick(4) == 0});
        }
        if (pick(3) == 0) {
            filter.ratings.set(pick(kRatingCount));
            filter.ratings.set(pick(kRatingCount));
        }
        if (pick(5) == 0) {
            filter.leastSeverity = static_cast<std::uint8_t>(pick(8));
        }
        if (pick(5) == 0) {
            filter.classes.set(pick(kSeverityClassCount));
            filter.classes.set(pick(kSeverityClassCount));
        }
        filter.facility = pick(6) == 0 ? "Local7" : "";
        filter.host = pick(6) == 0 ? "10.0.0.1*" : "";
        if (pick(5) == 0) {
            filter.from = 1'700'000'000 + static_cast<std::int64_t>(pick(4000));
            filter.until = *filter.from + 10'000;
        }
        return filter;
    }

    bool isTextMeant(std::size_t row, const TextCondition &text) {
        const auto in = [&](auto field) {
            return contains(std::string(field.value_or("")), text.pattern);
        };
        return text.isNegated != (in(m_list.date(row)) || in(m_list.priority(row)) ||
                                  in(m_list.host(row)) || in(m_list.message(row)) ||
                                  contains(std::string(m_list.image(row)), text.pattern));
    }
    bool isInSpan(std::size_t row, const EventQuery &filter) {
        const std::string date = m_list.date(row).value_or("");
        const bool isRaw = isAllDecimalDigits(date) && !date.empty();
        const std::int64_t moment =
            isRaw ? integerValue(date) : m_list.momentShown(row, m_state.newDateFormat).value_or(0);
        return !filter.from || (moment >= *filter.from && moment < *filter.until);
    }
    EventRating ratingOf(std::size_t row) {
        for (std::int64_t level = 0; level < 3; ++level) {
            if (m_list.image(row) == severityLevelName(level)) {
                return static_cast<EventRating>(level + 1);
            }
        }
        return 0;
    }
    bool isMeant(std::size_t row, const EventQuery &filter) {
        const std::string priority(m_list.priority(row).value_or(""));
        const std::string host(m_list.host(row).value_or(""));
        return (filter.ratings.none() || filter.ratings[ratingOf(row)]) &&
               (!filter.leastSeverity || m_list.classes(row).shown <= *filter.leastSeverity) &&
               (filter.classes.none() || (m_list.classes(row).counted & filter.classes).any()) &&
               (filter.facility.empty() || priority.starts_with(filter.facility + ".")) &&
               (filter.host.empty() || host.starts_with("10.0.0.1")) && isInSpan(row, filter) &&
               std::ranges::all_of(filter.texts,
                                   [&](const auto &text) { return isTextMeant(row, text); });
    }

    void compare() {
        const EventQuery filter = m_events.filterInForce();
        std::vector<EventId> expected;
        std::array<std::size_t, kRatingCount> counts{};
        EventQuery ofAnyRating = filter;
        ofAnyRating.ratings.reset();
        for (std::size_t row = m_list.size(); row > 0; --row) {
            if (isMeant(row - 1, filter)) {
                expected.push_back(m_list.idAt(row - 1));
            }
            if (filter.isInUse() && isMeant(row - 1, ofAnyRating)) {
                ++counts[ratingOf(row - 1)];
            }
        }
        ASSERT_EQ(m_mirror.rows, expected);
        ASSERT_EQ(m_events.size(), expected.size());
        if (filter.isInUse()) {
            ASSERT_EQ(m_events.ratingCounts(), counts);
        }
        for (std::size_t i = 0; i < 10 && !expected.empty(); ++i) {
            const std::size_t row = pick(expected.size());
            const EventId id = expected[expected.size() - 1 - row];
            ASSERT_EQ(m_events.idAt(row), id);
            ASSERT_EQ(m_events.rowOf(id), row);
            ASSERT_EQ(m_events.placeOf(id), row);
            ASSERT_EQ(m_list.idAt(m_events.listRow(row)), id);
        }
    }

    /// What is counted of the rows of the mirror, if it claims to be counted.
    void compareTimes() {
        if (m_times.isCounting()) {
            return;
        }
        std::map<std::int64_t, RatingCounts> expected;
        for (const EventId id : m_mirror.rows) {
            const std::size_t row = m_list.rowOf(id).value();
            static_cast<void>(m_list.image(row));  // brings its date to what is shown, too
            const auto moment = m_list.momentHeld(row);
            if (moment && TimeCounts::canCount(*moment)) {
                ++expected[*moment / kHour][ratingOf(row)];
            }
        }
        ASSERT_EQ(m_times.counts().isEmpty(), expected.empty());
        RatingCounts all{};
        for (const auto &[hour, counts] : expected) {
            ASSERT_EQ(m_times.counts().sum(hour * kHour, (hour + 1) * kHour), counts);
            std::ranges::transform(all, counts, all.begin(), std::plus());
        }
        ASSERT_EQ(m_times.counts().sum(0, TimeCounts::kEnd), all);
        ++m_timesCompared;
    }

    std::vector<RowRange> randomRows() {
        std::vector<RowRange> ranges;
        for (std::size_t row = pick(50); row < m_list.size() && ranges.size() < 1 + pick(4);) {
            const std::size_t count = std::min(1 + pick(9), m_list.size() - row);
            ranges.push_back({row, count});
            row += count + 1 + pick(200);
        }
        return ranges;
    }

    void show() {
        m_state.oldDateFormat = m_state.newDateFormat;
        static const std::vector<std::string> formats = {
            "yyyy-MM-dd HH:mm:ss", "dd.MM.yyyy hh:mm:ss AM/PM", "", "EEE d MMM y HH:mm:ss"};
        m_state.newDateFormat = oneOf(formats);
        m_state.iSeverityError = static_cast<std::int64_t>(pick(5)) - 1;
        m_list.show(m_state);
        m_times.recount();
        m_events.refresh();
        finish();
    }
    void finish() {
        m_events.search([] { return false; });
        ASSERT_FALSE(m_events.isSearching());
    }
    /// One step of a count, or all that is left of it.
    void count() {
        const bool isAll = pick(2) == 0;
        m_times.count([isAll] { return !isAll; });
    }

    std::mt19937 m_random{GetParam()};
    EventList m_list;
    ArrangedEvents m_events{m_list};
    Mirror m_mirror{m_events};
    EventTimes m_times{m_events};
    AppState m_state = testing::stateWith();
    std::int64_t m_inserted = 0;
    std::size_t m_timesCompared = 0;
    bool m_inBulk = false;
};

TEST_P(ArrangedEventsModelTest, ArrangesWhatAPlainLookMeans) {
    std::size_t arranged = 0;
    const auto onceIn = [this](std::size_t times, auto act) {
        if (!HasFatalFailure() && pick(times) == 0) {
            act();
            compareTimes();
        }
    };
    for (std::size_t step = 0; step < 120 && !HasFatalFailure(); ++step) {
        onceIn(1, [this] { insert(pick(60)); });
        onceIn(10, [this] { insertTogether(pick(pick(4) == 0 ? 5000 : 200)); });
        if (step % 20 == 5) {
            insertMany();
        }
        onceIn(3, [this] {
            ASSERT_EQ(m_events.setFilter(pick(5) == 0 ? EventQuery() : randomFilter()), "");
        });
        // One run, and the next change comes.
        onceIn(3, [this] { m_events.search([] { return true; }); });
        onceIn(6, [this] { m_list.removeRows(randomRows()); });
        onceIn(6, [this] { m_list.setAside(randomRows()); });
        onceIn(6, [this] {
            m_list.putBack();
            finish();
        });
        onceIn(2, [this] { count(); });
        onceIn(12, [this] { show(); });
        onceIn(2, [this] { finish(); });
        onceIn(3, [this] { compare(); });
        arranged += m_events.isFiltered() ? m_events.size() : 0;
    }
    EXPECT_GT(m_list.size(), 8192U);
    EXPECT_GT(arranged, 1000U);
    EXPECT_GT(m_timesCompared, 100U);
}

INSTANTIATE_TEST_SUITE_P(Seeds, ArrangedEventsModelTest, ::testing::Values(1U, 2U, 3U));

}  // namespace
}  // namespace quorbel
