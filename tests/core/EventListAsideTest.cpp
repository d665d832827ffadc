// Events that are taken out of the list and put back.

#include "core/EventList.h"
#include "core/EventListSamples.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <string>
#include <vector>

namespace quorbel {
namespace {

using ::testing::ElementsAre;
using testing::fields;
using ::testing::IsEmpty;
using testing::stateWith;

class EventListAsideTest : public ::testing::Test {
protected:
    EventId add(const std::string &message) {
        return list.insertRaw(fields("1700000000", "Local7.Error", "10.0.0.5", message));
    }
    void addMany(int first, int last) {
        for (int number = first; number <= last; ++number) {
            add(std::to_string(number));
        }
    }
    std::vector<std::string> messages() {
        std::vector<std::string> all;
        for (std::size_t row = 0; row < list.size(); ++row) {
            all.emplace_back(list.message(row).value_or("-"));
        }
        return all;
    }

    EventList list;
};

TEST_F(EventListAsideTest, EventsStandWhereTheyStoodAmongWhatCameAndWent) {
    addMany(1, 6);
    list.setAside({{0, 1}, {2, 2}});  // 6, 4, 3
    EXPECT_EQ(list.asideCount(), 3U);
    EXPECT_THAT(messages(), ElementsAre("5", "2", "1"));
    add("7");
    list.removeRows({{2, 1}});  // 2
    EXPECT_THAT(list.putBack(), ElementsAre(3, 4, 6));
    EXPECT_THAT(messages(), ElementsAre("7", "6", "5", "4", "3", "1"));
    EXPECT_EQ(list.asideCount(), 0U);
    EXPECT_THAT(list.putBack(), IsEmpty());
    EXPECT_EQ(list.size(), 6U);
}

TEST_F(EventListAsideTest, OnlyWhatWasTakenLastComesBack) {
    addMany(1, 3);
    list.setAside({{0, 1}});
    list.setAside({{0, 1}});
    list.putBack();
    EXPECT_THAT(messages(), ElementsAre("2", "1"));
}

// What came since may have gone, so that the events put back are the last ones again.
TEST_F(EventListAsideTest, LaterEventsKeepTheirOwnIds) {
    addMany(1, 3);
    list.setAside({{0, 3}});
    const EventId between = add("4");
    list.removeRows({{0, 1}});
    list.putBack();
    const EventId next = add("5");
    EXPECT_GT(next, between);
    EXPECT_EQ(list.idAt(0), next);
    EXPECT_EQ(list.rowOf(next), 0U);
    EXPECT_THAT(messages(), ElementsAre("5", "3", "2", "1"));
}

TEST_F(EventListAsideTest, ARemovalNoticeMeansThemOnlyWhileTheyAreListed) {
    const AppState state = stateWith();
    const EventFields event = fields("1700000000", "Local7.Error", "10.0.0.5", "2");
    addMany(1, 3);
    list.show(state);
    list.markForRemoval(1);
    EXPECT_EQ(list.find(event, testing::kFormat), std::nullopt);
    list.setAside({{1, 1}});
    EXPECT_EQ(list.find(event, testing::kFormat), std::nullopt);
    list.removeMarked();
    list.putBack();
    EXPECT_EQ(list.find(event, testing::kFormat), 1U);
}

TEST_F(EventListAsideTest, WhoeverHoldsOneReadsItAllTheTime) {
    addMany(1, 2);
    const Event event(list, list.idAt(1));
    list.setAside({{0, 2}});
    EXPECT_EQ(event.value("Message"), "1");
    EXPECT_EQ(event.value("Date"), "1700000000");
    list.putBack();
    list.show(stateWith());
    EXPECT_EQ(event.value("Date"), "2023-11-14 22:13:20");
}

TEST_F(EventListAsideTest, EveryFieldComesBack) {
    const std::vector<std::pair<std::string_view, std::string_view>> others{{"Odd", "one"}};
    list.insertRaw({"soon", {}, "h", "m", others});
    list.insertRaw({"007", "p", {}, {}, {}});
    list.setAside({{0, 2}});
    list.putBack();
    EXPECT_EQ(list.date(0), "007");
    EXPECT_EQ(list.priority(0), "p");
    EXPECT_EQ(list.host(0), std::nullopt);
    EXPECT_EQ(list.message(0), std::nullopt);
    EXPECT_EQ(list.date(1), "soon");
    EXPECT_EQ(list.others(1), others);
    EXPECT_EQ(list.momentHeld(0), 7);
    EXPECT_EQ(list.momentHeld(1), std::nullopt);
}

// As if they had been shown with the others; the list starts over with its numbers of formats
// meanwhile.
TEST_F(EventListAsideTest, TheyFollowEachFormatMeanwhile) {
    addMany(1, 2);
    std::string format;
    for (int i = 0; i < 260; ++i) {
        list.setAside({{0, 1}});
        const std::string next = "yyyy-MM-dd HH:mm:ss '" + std::to_string(i) + "'";
        list.show(stateWith(next, format));
        list.putBack();
        ASSERT_EQ(list.date(0), "2023-11-14 22:13:20 " + std::to_string(i));
        format = next;
    }
    EXPECT_EQ(list.momentHeld(0), 1700000000);
}

TEST_F(EventListAsideTest, ALossOfSecondsIsSharedOnlyByWhatWasShown) {
    addMany(1, 2);
    list.insertShown(fields("1700000025"), stateWith("yyyy-MM-dd HH:mm"));
    list.setAside({{0, 1}});
    list.putBack();
    EXPECT_EQ(list.momentHeld(0), 1700000025);
    list.show(stateWith("HH:mm dd.MM.yyyy", "yyyy-MM-dd HH:mm"));
    EXPECT_EQ(list.date(0), "22:13 14.11.2023");
    EXPECT_EQ(list.momentHeld(0), 1699999980);
}

// Texts that only they have stay, and go with them.
TEST_F(EventListAsideTest, TheirTextsAreKeptAsLongAsThey) {
    list.insertRaw(fields("1700000000", "Only.One", "only-one"));
    list.setAside({{0, 1}});
    list.insertRaw(fields("1700000000", "Another.Alert", "another"));
    list.putBack();
    EXPECT_EQ(list.priority(1), "Only.One");
    EXPECT_EQ(list.host(1), "only-one");
    list.setAside({{1, 1}});
    list.setAside({{0, 1}});
    list.insertRaw(fields("1700000000", "Third.Notice", "third"));
    list.putBack();
    EXPECT_EQ(list.priority(0), "Third.Notice");
    EXPECT_EQ(list.priority(1), "Another.Alert");
    EXPECT_EQ(list.size(), 2U);
}

TEST_F(EventListAsideTest, ManyTimesTheSameTakeNoMoreMemory) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizers keep what is freed";
#endif
    const std::string message(10'000, 'x');
    for (int i = 0; i < 4000; ++i) {
        add(message);
    }
    const auto usedNow = [] { return mallinfo2().uordblks + mallinfo2().hblkhd; };
    const std::size_t before = usedNow();
    for (int i = 0; i < 50; ++i) {
        list.setAside({{10, 1500}});
        list.putBack();
    }
    EXPECT_LT(usedNow(), before + before / 2);
    EXPECT_EQ(list.message(2000), message);
}

}  // namespace
}  // namespace quorbel
