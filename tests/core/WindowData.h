#pragma once

#include "core/ArrangedEvents.h"
#include "core/EventHold.h"
#include "core/EventIntake.h"
#include "core/EventReader.h"
#include "core/EventTimes.h"
#include "core/HostWatch.h"
#include "core/LoadedEvents.h"
#include "support/NoHomePage.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace quorbel::testing {

/// A page that keeps its list as the real one does.
class ListPage : public EventListPageLink {
public:
    ListPage(EventList &list, const AppState &state) : m_list(list), m_state(state) {}
    [[nodiscard]] bool isOnScreen() const override { return onScreen; }
    EventId insertEvent(const EventFields &event) override {
        return m_list.insertShown(event, m_state);
    }
    [[nodiscard]] bool canInsertMany() const override { return isQuick; }
    void insertEvents(LoadedEvents events) override {
        m_list.insertAllShown(std::move(events), m_state);
    }
    void removeEvent(const EventFields &announced) override {
        if (const auto row = m_list.find(announced, m_state.newDateFormat)) {
            m_list.removeRows({{*row, 1}});
        }
    }
    void setFilter(const EventQuery & /*query*/) override {}

    bool onScreen = false;
    bool isQuick = true;

private:
    EventList &m_list;
    const AppState &m_state;
};

/// A window's data without its pages.
struct Window {
    AppState state;
    EventList list;
    EventHold hold{list};
    ListPage page{list, state};
    NoHomePage home;
    EventIntake intake{state, list, hold, page, home};
    HostWatch hosts{list};

    /// Events from before, of which some are left: so that numbers of texts are free, in an order.
    void fill(int events) {
        for (int i = 0; i < events; ++i) {
            const std::string number = std::to_string(i);
            intake.setNotification(
                {number, "Facility" + number + ".Error", "host-" + number, "m", {}});
        }
        for (std::size_t row = 1; row + 2 < list.size(); row += 2) {
            list.removeRows({{row, 1}});
        }
        list.show(state);
    }
};

using Row = std::tuple<EventId, std::optional<std::string>, std::optional<std::string>,
                       std::optional<std::string>, std::optional<std::string>, std::string,
                       std::optional<std::int64_t>>;

inline Row rowAt(EventList &list, std::size_t row) {
    const auto text = [](const std::optional<std::string_view> &view) {
        return view ? std::optional<std::string>(*view) : std::nullopt;
    };
    return {list.idAt(row),       list.date(row),          text(list.priority(row)),
            text(list.host(row)), text(list.message(row)), std::string(list.image(row)),
            list.momentHeld(row)};
}

/// What is kept of each event, with the numbers of its texts.
using Kept = std::tuple<EventId, std::int64_t, StringTable::Id, StringTable::Id, int, int, int>;

inline std::vector<Kept> keptOf(EventList &list) {
    const EventReader reader(list);
    std::vector<Kept> kept;
    for (std::size_t number = 0; number < reader.chunkCount(); ++number) {
        EventChunk &chunk = reader.chunk(number);
        EXPECT_LE(chunk.size(), EventChunk::kSlots);
        for (std::size_t position = 0; position < chunk.size(); ++position) {
            const EventRecord &record = chunk.record(position);
            EXPECT_GE(record.seconds, chunk.earliest());
            EXPECT_LE(record.seconds, chunk.latest());
            kept.emplace_back(chunk.idAt(position), record.seconds, record.priority, record.host,
                              record.showings, record.format, record.hasExtras);
        }
    }
    return kept;
}

using Uses = std::vector<std::pair<std::string, std::uint64_t>>;

inline Uses usesOf(EventList &list) {
    Uses uses;
    const auto add = [&uses](std::string_view text, std::uint64_t events) {
        uses.emplace_back(text, events);
    };
    EventReader(list).visitPriorityUses(add);
    EventReader(list).visitHostUses(add);
    return uses;
}

using HourCounts = std::vector<std::uint64_t>;

inline HourCounts hoursOf(const AppState &state, std::int64_t now) {
    HourCounts counts;
    for (std::int64_t hour = HourlyArrivals::hourOf(now) - 60;
         hour < HourlyArrivals::hourOf(now) + 20; ++hour) {
        for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
            counts.push_back(state.arrivals.count(i, hour));
        }
    }
    return counts;
}

inline void expectSameHosts(const HostHistory &hosts, const HostHistory &expected) {
    ASSERT_EQ(hosts.size(), expected.size());
    for (std::size_t i = 0; i < hosts.size(); ++i) {
        ASSERT_EQ(hosts.host(i).name, expected.host(i).name);
        ASSERT_EQ(hosts.host(i).arrivals, expected.host(i).arrivals);
        ASSERT_EQ(hosts.host(i).classes, expected.host(i).classes);
        ASSERT_EQ(hosts.host(i).activity.first(), expected.host(i).activity.first());
        ASSERT_EQ(hosts.host(i).activity.last(), expected.host(i).activity.last());
    }
}

inline RatingCounts timesOf(EventList &list) {
    ArrangedEvents events(list);
    EventTimes times(events);
    times.count([] { return false; });
    return times.counts().sum(0, TimeCounts::kEnd);
}

inline void expectSame(Window &window, Window &expected, std::int64_t now) {
    ASSERT_EQ(window.list.size(), expected.list.size());
    EXPECT_EQ(keptOf(window.list), keptOf(expected.list));
    EXPECT_EQ(usesOf(window.list), usesOf(expected.list));
    for (const auto counter : kSeverityCounters) {
        EXPECT_EQ(window.state.*counter, expected.state.*counter);
    }
    EXPECT_EQ(hoursOf(window.state, now), hoursOf(expected.state, now));
    EXPECT_EQ(window.state.arrivals.latest(), expected.state.arrivals.latest());
    for (std::size_t row = 0; row < window.list.size(); ++row) {
        ASSERT_EQ(rowAt(window.list, row), rowAt(expected.list, row)) << row;
        ASSERT_EQ(window.list.classes(row).counted, expected.list.classes(row).counted) << row;
        ASSERT_EQ(window.list.rowOf(window.list.idAt(row)), row);
    }
    EXPECT_EQ(timesOf(window.list), timesOf(expected.list));
    while (!window.hosts.run(now, [] { return false; })) {
    }
    while (!expected.hosts.run(now, [] { return false; })) {
    }
    expectSameHosts(window.hosts.history(), expected.hosts.history());
}

}  // namespace quorbel::testing
