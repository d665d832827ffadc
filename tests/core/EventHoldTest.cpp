#include "core/AppState.h"
#include "core/EventHold.h"
#include "core/EventIntake.h"
#include "core/PageLinks.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quorbel {
namespace {

using namespace std::chrono_literals;

/// A page that keeps its list as the real one does.
class ListPage : public EventListPageLink {
public:
    ListPage(EventList &list, const AppState &state) : m_list(list), m_state(state) {}
    [[nodiscard]] bool isOnScreen() const override { return onScreen; }
    EventId insertEvent(const EventFields &event) override {
        calls.push_back("insert " + std::string(event.message.value_or("(absent)")));
        return m_list.insertShown(event, m_state);
    }
    [[nodiscard]] bool canInsertMany() const override { return true; }
    void insertEvents(LoadedEvents events) override {
        calls.push_back("insert " + std::to_string(events.size()));
        m_list.insertAllShown(std::move(events), m_state);
    }
    void setFilter(const EventQuery & /*query*/) override {}
    void removeEvent(const EventFields &announced) override {
        calls.push_back("remove " + std::string(announced.message.value_or("(absent)")));
        if (const auto row = m_list.find(announced, m_state.newDateFormat)) {
            m_list.removeRows({{*row, 1}});
        }
    }

    bool onScreen = true;
    std::vector<std::string> calls;

private:
    EventList &m_list;
    const AppState &m_state;
};

class HomePage : public HomePageLink {
public:
    [[nodiscard]] bool isOnScreen() const override { return true; }
    void setEventsStatus() override { ++refreshed; }
    [[nodiscard]] int severityStatus() const override { return 0; }

    int refreshed = 0;
};

class EventHoldTest : public ::testing::Test {
protected:
    EventHoldTest() { state.newDateFormat = state.oldDateFormat = "yyyy-MM-dd HH:mm:ss"; }

    static EventFields fields(std::string_view message, std::string_view date = "1700000000") {
        return {date, "Local7.Error", "10.0.0.5", message, {}};
    }
    EventPlace arrive(std::string_view message) { return intake.setNotification(fields(message)); }
    void remove(std::string_view message) { intake.removeNotification(fields(message)); }
    void releaseAll() {
        hold.setOn(false);
        while (hold.delays()) {
            hold.release(1ms, page);
        }
    }
    std::vector<std::string> messages() {
        std::vector<std::string> texts;
        for (std::size_t row = 0; row < list.size(); ++row) {
            texts.emplace_back(list.message(row).value_or("(absent)"));
        }
        return texts;
    }
    using Texts = std::vector<std::string>;

    AppState state;
    EventList list;
    EventHold hold{list};
    ListPage page{list, state};
    HomePage home;
    EventIntake intake{state, list, hold, page, home};
};

TEST_F(EventHoldTest, WhatIsNewWaitsInOrderAndIsCountedAtOnce) {
    arrive("listed");
    hold.setOn(true);
    arrive("first");
    remove("listed");
    arrive("second");
    EXPECT_EQ(messages(), (Texts{"listed"}));
    EXPECT_EQ(state.iError, 3);
    EXPECT_EQ(home.refreshed, 3);
    EXPECT_EQ(hold.arrivals(), 2U);
    EXPECT_EQ(hold.removals(), 1U);
    page.calls.clear();
    releaseAll();
    EXPECT_EQ(page.calls, (Texts{"insert first", "remove listed", "insert second"}));
    EXPECT_EQ(messages(), (Texts{"second", "first"}));
    EXPECT_EQ(list.date(0), "2023-11-14 22:13:20");
    EXPECT_EQ(state.iError, 3);
    EXPECT_EQ(home.refreshed, 3);
    EXPECT_EQ(hold.arrivals() + hold.removals(), 0U);
}

TEST_F(EventHoldTest, AnEventThatWaitsCanBeRemoved) {
    hold.setOn(true);
    arrive("comes and goes");
    remove("comes and goes");
    arrive("stays");
    releaseAll();
    EXPECT_EQ(messages(), (Texts{"stays"}));
}

TEST_F(EventHoldTest, WhatIsNewDuringTheReleaseGoesBehindWhatWaits) {
    hold.setOn(true);
    arrive("1");
    arrive("2");
    hold.setOn(false);
    arrive("3");
    hold.release(0ms, page);
    EXPECT_EQ(messages(), (Texts{"1"}));
    EXPECT_EQ(hold.arrivals(), 2U);
    arrive("4");
    releaseAll();
    EXPECT_EQ(messages(), (Texts{"4", "3", "2", "1"}));
    arrive("5");
    EXPECT_EQ(messages().front(), "5");
    EXPECT_FALSE(hold.delays());
}

TEST_F(EventHoldTest, HeldAgainDuringTheReleaseTheRestGoesOnWaiting) {
    hold.setOn(true);
    arrive("1");
    arrive("2");
    hold.setOn(false);
    hold.release(0ms, page);
    hold.setOn(true);
    arrive("3");
    EXPECT_EQ(messages(), (Texts{"1"}));
    EXPECT_EQ(hold.arrivals(), 2U);
    releaseAll();
    EXPECT_EQ(messages(), (Texts{"3", "2", "1"}));
}

TEST_F(EventHoldTest, ReleasedWhileThePageIsHiddenEventsAreListedAsTheyCame) {
    page.onScreen = false;
    hold.setOn(true);
    arrive("raw");
    remove("raw");
    releaseAll();
    EXPECT_EQ(page.calls, (Texts{"remove raw"}));
    EXPECT_EQ(messages(), (Texts{"raw"}));
    EXPECT_EQ(list.date(0), "1700000000");
}

TEST_F(EventHoldTest, EveryFieldComesThroughToTheLetter) {
    const std::vector<std::pair<std::string_view, std::string_view>> others{{"Extra", "x"},
                                                                            {"More", ""}};
    const std::vector<std::optional<std::string_view>> dates{"",     "007", "12.5",      "soon",
                                                             "1700", "-5",  std::nullopt};
    page.onScreen = false;
    hold.setOn(true);
    for (const auto &date : dates) {
        intake.setNotification({date, std::nullopt, "h", std::nullopt, others});
    }
    intake.setNotification({"1", "", "", "", {}});
    releaseAll();
    ASSERT_EQ(list.size(), dates.size() + 1);
    EXPECT_EQ(list.priority(0), "");
    EXPECT_EQ(list.message(0), "");
    EXPECT_TRUE(list.others(0).empty());
    for (std::size_t i = 0; i < dates.size(); ++i) {
        const std::size_t row = dates.size() - i;
        EXPECT_EQ(list.date(row), dates[i] ? std::optional<std::string>(*dates[i]) : std::nullopt);
        EXPECT_EQ(list.priority(row), std::nullopt);
        EXPECT_EQ(list.host(row), "h");
        EXPECT_EQ(list.message(row), std::nullopt);
        EXPECT_EQ(list.others(row), others);
    }
}

TEST_F(EventHoldTest, WhoHoldsAnEventThatWaitsSeesTheListsOwnFromTheRelease) {
    hold.setOn(true);
    std::optional<Event> event(arrive("alert"));
    EXPECT_EQ(event->value("Message"), "alert");
    EXPECT_EQ(event->value("Date"), "1700000000");
    releaseAll();
    EXPECT_EQ(event->value("Date"), "2023-11-14 22:13:20");
    std::optional<Event> copy = event;
    event.reset();
    state.oldDateFormat = std::exchange(state.newDateFormat, "dd.MM.yyyy HH:mm:ss");
    list.show(state);
    EXPECT_EQ(copy->value("Date"), "14.11.2023 22:13:20");
    list.removeRows({{0, 1}});
    EXPECT_EQ(copy->value("Message"), "alert");
    copy.reset();
}

TEST_F(EventHoldTest, ManyComeThroughInTheirOrder) {
    constexpr int kCount = 20'000;  // several chunks
    hold.setOn(true);
    for (int i = 0; i < kCount; ++i) {
        arrive(std::to_string(i));
        if (i % 3 == 0) {
            remove(std::to_string(i));
        }
    }
    releaseAll();
    std::size_t row = 0;
    for (int i = kCount - 1; i >= 0; --i) {
        if (i % 3 != 0) {
            ASSERT_EQ(list.message(row++), std::to_string(i));
        }
    }
    EXPECT_EQ(row, list.size());
}

}  // namespace
}  // namespace quorbel
