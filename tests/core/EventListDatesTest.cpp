// The dates of the event list: how showings render them, and how they are read back.

#include "core/AppState.h"
#include "core/EventList.h"
#include "core/EventListSamples.h"

#include <gtest/gtest.h>
#include <unicode/timezone.h>

#include <string>
#include <utility>

namespace quorbel {
namespace {

using namespace testing;

TEST(EventListDatesTest, ANewFormatReRendersFromTheOldOne) {
    EventList list;
    list.insertRaw(fields("1700000042"));
    list.show(stateWith("dd.MM.yyyy HH:mm"));
    EXPECT_EQ(list.date(0), "14.11.2023 22:14");
    // The seconds were not shown, so they are gone.
    list.show(stateWith("yyyy-MM-dd HH:mm:ss", "dd.MM.yyyy HH:mm"));
    EXPECT_EQ(list.date(0), "2023-11-14 22:14:00");
}

constexpr std::string_view kFifthOfNovember = "1699179003";  // 2023-11-05 10:10:03 UTC

TEST(EventListDatesTest, ADateIsReadInItsOwnFormatHoweverOftenItIsShown) {
    EventList list;
    list.insertRaw(fields(kFifthOfNovember));
    list.show(stateWith("dd/MM/yyyy HH:mm:ss"));
    EXPECT_EQ(list.date(0), "05/11/2023 10:10:03");
    const AppState changed = stateWith("MM/dd/yyyy HH:mm:ss", "dd/MM/yyyy HH:mm:ss");
    for (int showing = 0; showing < 5; ++showing) {
        list.show(changed);
        EXPECT_EQ(list.date(0), "11/05/2023 10:10:03");
        EXPECT_EQ(list.momentShown(0, changed.newDateFormat), 1699179003);
        EXPECT_EQ(list.find(fields(kFifthOfNovember), changed.newDateFormat), 0U);
    }
    // The showings that nobody looked at do no harm either.
    list.insertRaw(fields(kFifthOfNovember));
    for (int showing = 0; showing < 4; ++showing) {
        list.show(changed);
    }
    EXPECT_EQ(list.date(0), "11/05/2023 10:10:03");
    EXPECT_EQ(list.date(1), "11/05/2023 10:10:03");
}

TEST(EventListDatesTest, AFormatSavedTwiceBeforeTheNextShowingIsTakenByAllRows) {
    EventList list;
    list.insertRaw(fields(kFifthOfNovember));
    list.show(stateWith("dd/MM/yyyy HH:mm:ss"));
    const AppState savedTwice = stateWith("MM/dd/yyyy HH:mm:ss");
    list.insertRaw(fields(kFifthOfNovember));
    // Until then, each date reads in the format in which it stands.
    EXPECT_EQ(list.date(1), "05/11/2023 10:10:03");
    EXPECT_EQ(list.momentShown(1, savedTwice.newDateFormat), 1699179003);
    EXPECT_EQ(list.find(fields(kFifthOfNovember), savedTwice.newDateFormat), 1U);
    list.show(savedTwice);
    for (const std::size_t row : {0U, 1U}) {
        EXPECT_EQ(list.date(row), "11/05/2023 10:10:03");
        EXPECT_EQ(list.momentShown(row, savedTwice.newDateFormat), 1699179003);
    }
}

TEST(EventListDatesTest, ADateThatCameAsTextIsReadInTheOldFormat) {
    EventList list;
    list.insertRaw(fields("14.11.2023 22:14"));
    list.insertRaw(fields("soon"));
    const AppState unchanged = stateWith("dd.MM.yyyy HH:mm");
    list.show(unchanged);
    EXPECT_EQ(list.date(1), "14.11.2023 22:14");
    EXPECT_EQ(list.momentShown(1, unchanged.newDateFormat), 1700000040);
    list.show(stateWith("MM/dd/yyyy HH:mm", "dd.MM.yyyy HH:mm"));
    EXPECT_EQ(list.date(0), "soon");
    EXPECT_EQ(list.date(1), "11/14/2023 22:14");
}

TEST(EventListDatesTest, ADateThatItsOwnFormatCannotReadStays) {
    EventList list;
    list.insertRaw(fields(kFifthOfNovember));
    list.show(stateWith("yyyy 'open"));
    EXPECT_EQ(list.date(0), "");
    EXPECT_EQ(list.momentShown(0, kFormat), std::nullopt);
    list.show(stateWith(std::string(kFormat), "yyyy 'open"));
    EXPECT_EQ(list.date(0), "");
}

TEST(EventListDatesTest, TheDayPeriodMarkerBecomesTheLetter) {
    EventList list;
    list.insertRaw(fields("1700000042"));
    list.show(stateWith("yyyy-MM-dd hh:mm:ss AM/PM"));
    EXPECT_EQ(list.date(0), "2023-11-14 10:14:02 PM");
}

TEST(EventListDatesTest, AnEmptyFormatIsShortDateAndMediumTime) {
    EventList list;
    list.insertRaw(fields("1700000042"));
    list.show(stateWith(""));
    EXPECT_EQ(list.date(0), "2023-11-14 22:14:02");
}

/// A list of several chunks, with an event each three minutes.
void fillOverDays(EventList &list, std::int64_t count) {
    for (std::int64_t i = 0; i < count; ++i) {
        list.insertRaw(fields(std::to_string(1698530000 + 180 * i), "Local7.Error", "10.0.0.5",
                              std::to_string(i % 7)));
    }
}

TEST(EventListDatesTest, FindsEachOfManyRowsInWhateverFormatItIsShown) {
    EventList list;
    constexpr std::int64_t kCount = 20'000;
    fillOverDays(list, kCount);
    std::string before = "dd/MM/yyyy HH:mm";
    for (const std::string format :
         {"dd/MM/yyyy HH:mm", "MM/dd/yyyy HH:mm:ss", "d/M/yy h:mm:ss AM/PM", "", "HH:mm"}) {
        const AppState state = stateWith(format, std::exchange(before, format));
        list.show(state);
        for (std::int64_t i = 0; i < kCount; i += 997) {
            const auto row = static_cast<std::size_t>(kCount - 1 - i);
            const auto moment = list.momentShown(row, format);
            ASSERT_TRUE(moment) << format;
            const auto found = list.find(
                fields(std::to_string(*moment), "Local7.Error", "10.0.0.5", std::to_string(i % 7)),
                format);
            ASSERT_TRUE(found) << format << " " << i;
            // A time of day alone comes again, and the newest row is found.
            EXPECT_TRUE(format == "HH:mm" ? *found <= row : *found == row) << format << " " << i;
            EXPECT_EQ(list.date(*found), list.date(row));
        }
    }
}

TEST(EventListDatesTest, FindsAMinuteThatTheClockShowsTwice) {
    icu::TimeZone::adoptDefault(icu::TimeZone::createTimeZone("Europe/Berlin"));
    EventList list;
    const AppState state = stateWith();
    list.insertRaw(fields("1698540540"));
    list.show(state);
    EXPECT_EQ(list.date(0), "2023-10-29 02:49:00");
    EXPECT_EQ(list.find(fields("1698544140"), state.newDateFormat), 0U);  // an hour later
    EXPECT_EQ(list.find(fields("1698547740"), state.newDateFormat), std::nullopt);
    icu::TimeZone::adoptDefault(icu::TimeZone::createTimeZone("UTC"));
}

TEST(EventListDatesTest, MoreShowingsAndFormatsThanItsNumbersHold) {
    EventList list;
    list.insertRaw(fields("1700000000"));
    std::string format = "HH:mm:ss";
    list.show(stateWith(format));
    for (int i = 0; i < 600; ++i) {
        const std::string next = "HH:mm:ss '" + std::to_string(i) + "'";
        list.show(stateWith(next, format));
        format = next;
        list.insertShown(fields("1700000001"), stateWith(format));
        ASSERT_EQ(list.date(list.size() - 1), "22:13:20 " + std::to_string(i));
    }
    for (int i = 0; i < 66'000; ++i) {
        list.show(stateWith(i % 2 == 0 ? "HH" : "HH:mm"));
    }
    list.insertRaw(fields("1700000002"));
    list.show(stateWith("HH:mm:ss"));
    EXPECT_EQ(list.date(0), "22:13:22");
    // What "HH" did not show is gone.
    EXPECT_EQ(list.date(list.size() - 1), "22:00:00");
}

TEST(EventListDatesTest, MoreFormatsThatReadNothingThanItsNumbersHold) {
    EventList list;
    for (int i = 0; i < 600; ++i) {
        list.insertShown(fields("1700000001"), stateWith("'" + std::to_string(i) + "' d '"));
    }
    const AppState readable = stateWith();
    list.insertShown(fields("1700000002"), readable);
    list.show(readable);
    EXPECT_EQ(list.date(0), "2023-11-14 22:13:22");
    EXPECT_EQ(list.find(fields("1700000002"), readable.newDateFormat), 0U);
    for (std::size_t row = 1; row < list.size(); ++row) {
        ASSERT_EQ(list.date(row), "");
    }
}

}  // namespace
}  // namespace quorbel
