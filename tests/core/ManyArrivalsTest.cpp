// Events that arrive many at a time against the same that arrive one by one, in a window that is
// looked at, held, filtered and emptied meanwhile.

#include "core/WindowData.h"
#include "support/Seed.h"

#include <gtest/gtest.h>

#include <ctime>
#include <random>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using testing::expectSame;

struct Arrival {
    std::optional<std::string> date;
    std::optional<std::string> priority;
    std::optional<std::string> host;
    std::optional<std::string> message;

    [[nodiscard]] EventFields fields() const { return {date, priority, host, message, {}}; }
};

/// A window that counts its hosts and holds the filter of its page.
struct Window : testing::Window {
    Window() {
        intake.addObserver(hosts);
        state.newDateFormat = state.oldDateFormat = "yyyy-MM-dd HH:mm:ss";
    }
    ArrangedEvents arranged{list};
};

std::vector<EventId> rowsOf(const ArrangedEvents &events) {
    std::vector<EventId> ids;
    for (std::size_t row = 0; row < events.size(); ++row) {
        ids.push_back(events.idAt(row));
    }
    return ids;
}

class ManyArrivalsTest : public ::testing::Test {
protected:
    std::size_t below(std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(m_random);
    }
    std::string oneOf(const std::vector<std::string> &texts) { return texts[below(texts.size())]; }

    std::optional<std::string> maybe(std::string text) {
        return below(40) == 0 ? std::nullopt : std::optional(std::move(text));
    }
    Arrival someArrival() {
        const std::int64_t moment = m_now - static_cast<std::int64_t>(below(200'000));
        const std::string date =
            below(10) == 0 ? oneOf({"0", "007", "-5", "1e9", "99999999999999999999", "soon", ""})
                           : std::to_string(moment);
        const std::string priority =
            below(9) == 0 ? "P" + std::to_string(below(50)) + ".Alert"
                          : oneOf({"Local7.Error", "AlertX.Notice", "Kern.Debug", "odd", ""});
        return {maybe(date), maybe(priority), maybe("10.0.0." + std::to_string(below(300))),
                maybe(oneOf({"disk", "Disk full", "", "link"}) + std::string(below(90), 'x'))};
    }

    /// The same to both.
    template <typename Act>
    void toBoth(Act act) {
        act(m_many);
        act(m_each);
    }
    void arriveEach(Window &window, const std::vector<Arrival> &arrivals) {
        for (const Arrival &arrival : arrivals) {
            window.intake.setNotification(arrival.fields());
        }
    }
    void arriveTogether(const std::vector<Arrival> &arrivals) {
        LoadedArrivals together;
        for (const Arrival &arrival : arrivals) {
            together.add(arrival.fields(), std::time(nullptr));
        }
        together.events.close();
        const EventPlace first = m_many.intake.takeMany(std::move(together));
        if (!arrivals.empty()) {
            const auto row = first.list.rowOf(first.id);
            ASSERT_TRUE(row);
            EXPECT_EQ(*row, arrivals.size() - 1);
            EXPECT_EQ(first.list.message(*row), arrivals.front().message);
        }
    }
    void arrive() {
        const std::size_t most = below(8) == 0 ? 9000 : 60;
        std::vector<Arrival> arrivals(below(most));
        std::ranges::generate(arrivals, [this] { return someArrival(); });
        if (below(4) == 0) {
            arriveEach(m_many, arrivals);
        } else {
            arriveTogether(arrivals);
        }
        arriveEach(m_each, arrivals);
    }
    void look() {
        const bool isSeen = below(2) == 0;
        const std::string format = oneOf({"yyyy-MM-dd HH:mm:ss", "dd.MM.yyyy hh:mm a", "HH:mm"});
        const auto level = static_cast<std::int64_t>(below(3));
        toBoth([&](Window &window) {
            window.page.onScreen = isSeen;
            window.state.oldDateFormat = window.state.newDateFormat;
            window.state.newDateFormat = format;
            window.state.iSeverityError = level;
            window.list.show(window.state);
            window.arranged.refresh();
            window.arranged.search([] { return false; });
        });
    }
    void filter() {
        EventQuery query;
        if (below(3) > 0) {
            query.texts.push_back({{oneOf({"disk", "10.0.0.1", "x", "Sev"})}, below(4) == 0});
        }
        if (below(3) == 0) {
            query.ratings.set(below(kRatingCount));
        }
        const bool isQuick = below(4) > 0;
        toBoth([&](Window &window) {
            window.page.isQuick = isQuick;
            EXPECT_EQ(window.arranged.setFilter(query), "");
            window.arranged.search([] { return false; });
        });
    }
    void remove() {
        const std::size_t size = m_each.list.size();
        if (size < 100) {
            return;
        }
        const std::vector<RowRange> rows{{below(40), 1 + below(9)}, {60 + below(9), below(30) + 1}};
        const std::size_t announced = below(size);
        toBoth([&](Window &window) {
            window.list.removeRows(rows);
            // As the service announces it: by the digits of its moment.
            const std::size_t row = std::min(announced, window.list.size() - 1);
            const std::string date = std::to_string(window.list.momentHeld(row).value_or(0));
            const std::string priority(window.list.priority(row).value_or(""));
            const std::string host(window.list.host(row).value_or(""));
            const std::string message(window.list.message(row).value_or(""));
            window.page.removeEvent({date, priority, host, message, {}});
        });
    }
    void hold() {
        const bool isOn = below(2) == 0;
        toBoth([&](Window &window) {
            window.hold.setOn(isOn);
            if (!isOn) {
                window.hold.release(std::chrono::hours(1), window.page);
            }
        });
    }
    void compare() {
        ASSERT_EQ(m_many.hold.arrivals(), m_each.hold.arrivals());
        expectSame(m_many, m_each, m_now);
        EXPECT_EQ(rowsOf(m_many.arranged), rowsOf(m_each.arranged));
        EXPECT_EQ(m_many.arranged.ratingCounts(), m_each.arranged.ratingCounts());
    }
    void step() {
        switch (below(9)) {
            case 0:
                look();
                break;
            case 1:
                filter();
                break;
            case 2:
                remove();
                break;
            case 3:
                hold();
                break;
            default:
                arrive();
        }
    }

    std::mt19937 m_random{testing::seed()};
    std::int64_t m_now = std::time(nullptr) / 3600 * 3600 - 1800;
    Window m_many;
    Window m_each;
};

TEST_F(ManyArrivalsTest, AreTakenInAsIfEachCameAlone) {
    for (int number = 1; number <= 150; ++number) {
        ASSERT_NO_FATAL_FAILURE(step());
        if (number % 15 == 0) {
            ASSERT_NO_FATAL_FAILURE(compare());
            ASSERT_FALSE(HasFailure()) << number;
        }
    }
    EXPECT_GT(m_each.list.size(), 10'000U);
}

TEST_F(ManyArrivalsTest, AreCountedByTheirHostsBehindWhatWasLoaded) {
    std::vector<Arrival> loaded(3000);
    std::vector<Arrival> arrivals(3000);
    std::ranges::generate(loaded, [this] { return someArrival(); });
    std::ranges::generate(arrivals, [this] { return someArrival(); });
    toBoth([&](Window &window) {
        for (const Arrival &arrival : loaded) {
            window.list.insertRaw(arrival.fields());
        }
        window.hosts.logWasLoaded();
    });
    arriveTogether(arrivals);
    arriveEach(m_each, arrivals);
    EXPECT_EQ(m_many.hosts.isCounting(), m_each.hosts.isCounting());
    compare();
    EXPECT_GT(m_many.hosts.history().size(), 100U);
}

TEST_F(ManyArrivalsTest, OfALogThatIsReadAnewAreListedPastTheHold) {
    std::vector<Arrival> arrivals(5000);
    std::ranges::generate(arrivals, [this] { return someArrival(); });
    for (const bool isSeen : {false, true}) {
        toBoth([&](Window &window) {
            window.hold.setOn(true);
            window.page.onScreen = isSeen;
            window.intake.beginAnew();
        });
        LoadedArrivals together;
        for (const Arrival &arrival : arrivals) {
            together.add(arrival.fields(), std::time(nullptr));
            m_each.intake.takeLogged(arrival.fields());
        }
        together.events.close();
        m_many.intake.takeLogged(std::move(together));
        toBoth([](Window &window) { window.intake.endAnew(); });
        compare();
        EXPECT_EQ(m_many.list.size(), arrivals.size());
        EXPECT_EQ(m_many.hold.arrivals(), 0U);
    }
}

}  // namespace
}  // namespace quorbel
