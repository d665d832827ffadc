#include "core/EventList.h"
#include "core/EventListSamples.h"
#include "core/LoadedEvents.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quorbel {
namespace {

using namespace testing;

TEST(EventListTest, NewestIsOnTop) {
    EventList list;
    list.insertRaw(fields("1", "A.Error", "a", "first"));
    list.insertRaw(fields("2", "B.Debug", "b", "second"));
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list.message(0), "second");
    EXPECT_EQ(list.message(1), "first");
    EXPECT_EQ(list.date(0), "2");
    EXPECT_EQ(list.priority(1), "A.Error");
    EXPECT_EQ(list.host(1), "a");
    EXPECT_EQ(list.image(0), "");
}

struct DateCase {
    const char *raw;
    const char *afterShowing;
};

TEST(EventListTest, ShowingConvertsRawDatesOnly) {
    const DateCase cases[] = {
        {"1700000000", "2023-11-14 22:13:20"},
        {"0", "1970-01-01 00:00:00"},
        {"007", "1970-01-01 00:00:07"},
        {"", "1970-01-01 00:00:00"},                  // no character that is no digit
        {"\xd9\xa1\xd9\xa2", "1970-01-01 00:00:00"},  // digits of another script, no number
        {"1700000000.5", "1700000000.5"},             // a point is no digit
        {"-5", "-5"},
        {"soon", "soon"},
    };
    for (const DateCase &c : cases) {
        EventList list;
        list.insertRaw(fields(c.raw));
        EXPECT_EQ(list.date(0), c.raw);
        list.show(stateWith());
        EXPECT_EQ(list.date(0), c.afterShowing) << c.raw;
    }
}

TEST(EventListTest, InsertingWhileShownRendersWhateverNumberTheDateStartsWith) {
    const DateCase cases[] = {
        {"1700000000", "2023-11-14 22:13:20"}, {"1700000000.5", "2023-11-14 22:13:20"},
        {"-5", "1969-12-31 23:59:55"},         {"soon", "1970-01-01 00:00:00"},
        {"", "1970-01-01 00:00:00"},
    };
    for (const DateCase &c : cases) {
        EventList list;
        list.insertShown(fields(c.raw), stateWith());
        EXPECT_EQ(list.date(0), c.afterShowing) << c.raw;
        EXPECT_EQ(list.image(0), "Moderate");
    }
}

TEST(EventListTest, AnAbsentFieldStaysAbsent) {
    EventList list;
    list.insertRaw({});
    list.insertShown({}, stateWith());
    list.show(stateWith());
    for (const std::size_t row : {0U, 1U}) {
        EXPECT_FALSE(list.date(row));
        EXPECT_FALSE(list.priority(row));
        EXPECT_FALSE(list.host(row));
        EXPECT_FALSE(list.message(row));
        EXPECT_EQ(list.image(row), "Normal");
        EXPECT_EQ(list.classes(row).shown, kUnknownClass);
    }
}

TEST(EventListTest, EveryShowingTakesTheLevelsInForce) {
    EventList list;
    list.insertRaw(fields("1", "Local7.Informational"));
    list.insertRaw(fields("1", "AlertFeed.Notice"));
    AppState state = stateWith();
    list.show(state);
    EXPECT_EQ(list.image(1), "Normal");
    EXPECT_EQ(list.image(0), "Severe");
    state.iSeverityInformation = kModerate;
    state.iSeverityAlerting = kNormal;
    list.show(state);
    EXPECT_EQ(list.image(1), "Moderate");
    EXPECT_EQ(list.image(0), "Normal");
    // Any other value leaves the image as it was.
    state.iSeverityInformation = 3;
    state.iSeverityAlerting = -1;
    list.show(state);
    list.insertRaw(fields("1", "Local7.Informational"));
    list.show(state);
    EXPECT_EQ(list.image(2), "Moderate");
    EXPECT_EQ(list.image(1), "Normal");
    EXPECT_EQ(list.image(0), "");
}

TEST(EventListTest, FindsTheFirstRowThatReadsLikeTheAnnouncedEvent) {
    EventList list;
    const AppState state = stateWith("yyyy-MM-dd HH:mm");
    list.insertRaw(fields("1700000000"));
    list.insertRaw(fields("1700000030"));
    list.insertRaw(fields("1700000400"));
    list.show(state);
    // Both read "22:13"; the newer one is first.
    EXPECT_EQ(list.find(fields("1700000000"), state.newDateFormat), 1U);
    EXPECT_EQ(list.find(fields("1700000000.9"), state.newDateFormat), 1U);
    EXPECT_EQ(list.find(fields("1700000460"), state.newDateFormat), std::nullopt);
    EXPECT_EQ(list.find(fields("1700000400", "Local7.error"), state.newDateFormat), std::nullopt);
    EXPECT_EQ(list.find(fields("1700000400", "Local7.Error", "10.0.0.6"), state.newDateFormat),
              std::nullopt);
    EXPECT_EQ(
        list.find(fields("1700000400", "Local7.Error", "10.0.0.5", "disk"), state.newDateFormat),
        std::nullopt);
    EventFields incomplete = fields("1700000400");
    incomplete.message.reset();
    EXPECT_EQ(list.find(incomplete, state.newDateFormat), std::nullopt);
}

TEST(EventListTest, ARawDateIsNeverFound) {
    EventList list;
    const AppState state = stateWith();
    list.insertRaw(fields("1700000000"));
    EXPECT_EQ(list.find(fields("1700000000"), state.newDateFormat), std::nullopt);
    list.show(state);
    EXPECT_EQ(list.find(fields("1700000000"), state.newDateFormat), 0U);
    list.insertRaw(fields("1700000000"));
    EXPECT_EQ(list.find(fields("1700000000"), state.newDateFormat), 1U);
}

TEST(EventListTest, FindPassesOverRowsMarkedForRemoval) {
    EventList list;
    const AppState state = stateWith();
    list.insertShown(fields("1700000000"), state);
    list.insertShown(fields("1700000000"), state);
    EXPECT_EQ(list.find(fields("1700000000"), state.newDateFormat), 0U);
    list.markForRemoval(0);
    EXPECT_EQ(list.find(fields("1700000000"), state.newDateFormat), 1U);
    list.markForRemoval(1);
    EXPECT_EQ(list.find(fields("1700000000"), state.newDateFormat), std::nullopt);
    EXPECT_EQ(list.size(), 2U);
    list.removeMarked();
    EXPECT_EQ(list.size(), 0U);
}

TEST(EventListTest, FindsADateThatIsTextByItsText) {
    EventList list;
    const AppState state = stateWith("yyyy-MM-dd HH:mm:ss");
    list.insertRaw(fields("2023-11-14 22:13:20"));
    list.insertRaw(fields("1600000000"));  // its chunk is of another time
    list.show(state);
    EXPECT_EQ(list.find(fields("1700000000"), state.newDateFormat), 1U);
}

TEST(EventListTest, AnEventStaysReadableAfterItLeft) {
    EventList list;
    const std::pair<std::string_view, std::string_view> other[] = {{"Extra", "more"}};
    EventFields event = fields("1700000000");
    event.others = other;
    std::optional<Event> held(std::in_place, list, list.insertRaw(event));
    EXPECT_EQ(held->value("Date"), "1700000000");
    EXPECT_EQ(held->value("Image"), std::nullopt);
    list.show(stateWith());
    EXPECT_EQ(held->value("Date"), "2023-11-14 22:13:20");
    const Event copy = *held;
    held.reset();
    list.removeRows({{0, 1}});
    list.insertRaw(fields("5"));
    EXPECT_EQ(copy.value("Date"), "2023-11-14 22:13:20");
    EXPECT_EQ(copy.value("Priority"), "Local7.Error");
    EXPECT_EQ(copy.value("Host"), "10.0.0.5");
    EXPECT_EQ(copy.value("Message"), "disk full");
    EXPECT_EQ(copy.value("Image"), "Moderate");
    EXPECT_EQ(copy.value("Extra"), "more");
    EXPECT_EQ(copy.value("Other"), std::nullopt);
}

TEST(EventListTest, KeepsMessagesOfAnyBytesAndLength) {
    EventList list;
    const std::string nul("a\0b", 3);
    const std::string lengths[] = {"", nul, std::string(127, 'x'), std::string(128, 'y'),
                                   std::string(70'000, 'z')};
    for (const std::string &message : lengths) {
        list.insertRaw(fields("1", "P", "h", message));
        EXPECT_EQ(list.message(0), message);
    }
    list.removeRows({{1, 2}});
    EXPECT_EQ(list.message(0), lengths[4]);
    EXPECT_EQ(list.message(1), lengths[1]);
    EXPECT_EQ(list.message(2), lengths[0]);
}

/// Tells what an observer was told, one letter a call.
class Recorder : public EventListObserver {
public:
    explicit Recorder(EventList &list) : m_list(list) {}
    void rowsWillBeInsertedAtTop(std::size_t count) override {
        note("i" + std::to_string(count) + " ");
    }
    void rowsWereInserted(std::size_t count) override { note("I" + std::to_string(count) + " "); }
    void rowsWillBeRemoved(std::size_t first, std::size_t count) override {
        note("r" + std::to_string(first) + "+" + std::to_string(count) + " ");
    }
    void rowsWereRemoved() override { note("R"); }
    void listWillChangeAtLarge() override { note("l"); }
    void listChangedAtLarge() override { note("L"); }

    std::string calls;

private:
    void note(const std::string &call) { calls += call + std::to_string(m_list.size()) + ";"; }
    EventList &m_list;
};

TEST(EventListTest, TellsItsObserverBeforeAndAfter) {
    EventList list;
    Recorder recorder(list);
    list.addObserver(recorder);
    list.insertRaw(fields("1"));
    list.insertShown(fields("2"), stateWith());
    EXPECT_EQ(recorder.calls, "i1 0;I1 1;i1 1;I1 2;");
    recorder.calls.clear();
    const auto two = [] {
        LoadedEvents events;
        events.add(fields("3"));
        events.add(fields("4"));
        return events;
    };
    list.insertAllRaw(two());
    list.insertAllShown(two(), stateWith());
    list.insertAllRaw(LoadedEvents());
    EXPECT_EQ(recorder.calls, "i2 2;I2 4;i2 4;I2 6;");
    list.removeRows({{2, 4}});
    recorder.calls.clear();
    list.beginBulkInsert();
    for (int i = 0; i < 38; ++i) {
        list.insertRaw(fields("3"));
    }
    list.endBulkInsert();
    EXPECT_EQ(recorder.calls, "l2;L40;");
    recorder.calls.clear();
    list.removeRows({{10, 2}});
    EXPECT_EQ(recorder.calls, "r10+2 40;R38;");
    recorder.calls.clear();
    list.removeRows({{1, 2}, {10, 1}});
    EXPECT_EQ(recorder.calls, "l38;L35;");
    recorder.calls.clear();
    list.removeRows({});
    EXPECT_EQ(recorder.calls, "");
    for (const std::size_t row : {7U, 5U, 6U}) {
        list.markForRemoval(row);
    }
    EXPECT_EQ(recorder.calls, "");
    list.removeMarked();
    EXPECT_EQ(recorder.calls, "r5+3 35;R32;");
    list.removeMarked();
    EXPECT_EQ(list.size(), 32U);
}

TEST(EventListTest, IdsFindTheirRows) {
    EventList list;
    std::vector<EventId> ids;
    for (int i = 0; i < 10'000; ++i) {
        ids.push_back(list.insertRaw(fields(std::to_string(i))));
    }
    list.removeRows({{0, 1}, {2, 1}, {5000, 3000}});
    EXPECT_EQ(list.rowOf(ids[9999]), std::nullopt);
    EXPECT_EQ(list.rowOf(ids[9998]), 0U);
    EXPECT_EQ(list.rowOf(ids[9996]), 1U);
    for (std::size_t row = 0; row < list.size(); row += 97) {
        EXPECT_EQ(list.rowOf(list.idAt(row)), row);
        EXPECT_EQ(list.date(row), std::to_string(list.idAt(row) - 1));
    }
    EXPECT_EQ(list.rowOf(0), std::nullopt);
    EXPECT_EQ(list.rowOf(ids.back() + 1), std::nullopt);
}

}  // namespace
}  // namespace quorbel
