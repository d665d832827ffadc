#include "common/Severity.h"
#include "core/EventHold.h"
#include "core/EventIntake.h"
#include "core/EventList.h"
#include "core/LoadedEvents.h"
#include "platform/Files.h"
#include "platform/KeyedArchive.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

namespace quorbel {
namespace {

class FakeEventListPage : public EventListPageLink {
public:
    FakeEventListPage(const AppState &state, EventList &events) : list(events), m_state(state) {}
    [[nodiscard]] bool isOnScreen() const override { return onScreen; }
    EventId insertEvent(const EventFields &event) override {
        ++inserted;
        return list.insertShown(event, m_state);
    }
    [[nodiscard]] bool canInsertMany() const override { return isQuick; }
    void insertEvents(LoadedEvents many) override {
        inserted += static_cast<int>(many.size());
        list.insertAllShown(std::move(many), m_state);
    }
    void removeEvent(const EventFields &announced) override {
        removed.emplace_back(announced.message.value_or(""));
    }
    void setFilter(const EventQuery & /*query*/) override {}

    EventList &list;
    bool onScreen = false;
    bool isQuick = true;
    int inserted = 0;
    std::vector<std::string> removed;

private:
    const AppState &m_state;
};

class FakeHomePage : public HomePageLink {
public:
    explicit FakeHomePage(const AppState &state) : m_state(state) {}
    [[nodiscard]] bool isOnScreen() const override { return onScreen; }
    void setEventsStatus() override { errorsSeen.push_back(m_state.iError); }
    [[nodiscard]] int severityStatus() const override { return 0; }

    bool onScreen = false;
    std::vector<std::int64_t> errorsSeen;  // the counter at each call

private:
    const AppState &m_state;
};

class EventIntakeTest : public ::testing::Test {
protected:
    EventIntakeTest() { setenv("QUORBEL_LIBRARY", folder.path().c_str(), 1); }
    ~EventIntakeTest() override { unsetenv("QUORBEL_LIBRARY"); }

    [[nodiscard]] std::vector<std::int64_t> counters() const {
        std::vector<std::int64_t> values;
        for (const auto counter : kSeverityCounters) {
            values.push_back(state.*counter);
        }
        return values;
    }
    [[nodiscard]] std::vector<std::int64_t> levels() const {
        std::vector<std::int64_t> values;
        for (const auto level : kSeverityLevels) {
            values.push_back(state.*level);
        }
        return values;
    }
    void writeSettings(const Dictionary &settings) {
        folder.write("Quorbel.ini", writeKeyedArchive(settings));
    }
    std::vector<std::string> messages() {
        std::vector<std::string> texts;
        for (std::size_t row = 0; row < page.list.size(); ++row) {
            texts.emplace_back(page.list.message(row).value_or("(absent)"));
        }
        return texts;
    }

    testing::TemporaryFolder folder;
    AppState state;
    EventList events;
    FakeEventListPage page{state, events};
    FakeHomePage home{state};
    EventHold hold{events};
    EventIntake intake{state, events, hold, page, home};
};

using Counters = std::vector<std::int64_t>;

struct CountCase {
    std::optional<std::string_view> priority;
    Counters counters;
};

TEST_F(EventIntakeTest, CountsEveryNameThatThePriorityContains) {
    const CountCase cases[] = {
        {"Local7.Debug", {0, 0, 0, 0, 0, 0, 0, 1, 0}},
        {"AlertFeed.Notice", {0, 1, 0, 0, 0, 1, 0, 0, 0}},
        {"local7.debug", {0, 0, 0, 0, 0, 0, 0, 0, 1}},
        {"Local7.Informational", {0, 0, 0, 0, 0, 0, 1, 0, 0}},
        {"Local7.Information", {0, 0, 0, 0, 0, 0, 0, 0, 1}},
        {"", {0, 0, 0, 0, 0, 0, 0, 0, 1}},
        {std::nullopt, {0, 0, 0, 0, 0, 0, 0, 0, 1}},
    };
    for (const CountCase &c : cases) {
        for (const bool onScreen : {false, true}) {
            state = AppState();
            page.onScreen = onScreen;
            intake.setNotification({"1", c.priority, "h", "m", {}});
            EXPECT_EQ(counters(), c.counters) << c.priority.value_or("(absent)");
        }
    }
}

TEST_F(EventIntakeTest, CountsWhatArrivedInItsHourWhateverLeavesTheList) {
    const std::int64_t now = std::time(nullptr);
    const auto count = [this](std::size_t severityClass, std::int64_t seconds) {
        return state.arrivals.count(severityClass, HourlyArrivals::hourOf(seconds));
    };
    const std::string date = std::to_string(now);
    const std::string earlier = std::to_string(now - 7200);
    intake.setNotification({date, "Local7.Error", "h", "m", {}});
    intake.setNotification({earlier, "AlertFeed.Notice", "h", "m", {}});
    intake.setNotification({"1", "Local7.Error", "h", "too old", {}});
    intake.setNotification({std::nullopt, "Local7.Error", "h", "no date", {}});
    hold.setOn(true);
    intake.setNotification({date, "Local7.Error", "h", "waits", {}});
    intake.removeNotification({date, "Local7.Error", "h", "m", {}});
    events.removeRows({{0, events.size()}});
    EXPECT_EQ(count(3, now), 2U);
    EXPECT_EQ(count(1, now - 7200), 1U);
    EXPECT_EQ(count(5, now - 7200), 1U);
    EXPECT_EQ(state.arrivals.latest(), now);

    folder.write("2026-01-01.log", earlier + ",Local7.Error,h,m\r\n100,Local7.Error,h,m\r\n");
    intake.initializeLog();
    EXPECT_EQ(count(3, now), 0U);
    EXPECT_EQ(count(3, now - 7200), 1U);
    EXPECT_EQ(state.arrivals.latest(), now - 7200);
}

TEST_F(EventIntakeTest, TellsTheHomePageOnceForAllThatComeTogether) {
    home.onScreen = true;
    const EventFields event{"1", "Local7.Error", "h", "m", {}};
    const auto two = [&event] {
        LoadedArrivals arrivals;
        arrivals.add(event, 1);
        arrivals.add(event, 1);
        return arrivals;
    };
    intake.setNotification(event);
    EXPECT_EQ(home.errorsSeen, Counters{1});
    intake.takeMany(two());
    EXPECT_EQ(home.errorsSeen, (Counters{1, 3}));
    intake.beginMany();
    intake.setNotification(event);
    intake.takeMany(two());
    intake.setNotification(event);
    EXPECT_EQ(home.errorsSeen.size(), 2U);
    intake.endMany();
    EXPECT_EQ(home.errorsSeen, (Counters{1, 3, 7}));
    // Nothing came.
    intake.beginMany();
    intake.endMany();
    EXPECT_EQ(home.errorsSeen.size(), 3U);
    intake.setNotification(event);
    EXPECT_EQ(home.errorsSeen.size(), 4U);
    home.onScreen = false;
    intake.takeMany(two());
    EXPECT_EQ(home.errorsSeen.size(), 4U);
}

TEST_F(EventIntakeTest, ListsRawWhileThePageIsHidden) {
    intake.setNotification({"1700000000", "Local7.Error", "h", "m", {}});
    EXPECT_EQ(page.inserted, 0);
    EXPECT_EQ(page.list.date(0), "1700000000");
    EXPECT_EQ(page.list.image(0), "");
}

TEST_F(EventIntakeTest, HandsToThePageWhileItIsShown) {
    page.onScreen = true;
    const EventPlace place = intake.setNotification({"1700000000", "Local7.Error", "h", "m", {}});
    EXPECT_EQ(page.inserted, 1);
    EXPECT_EQ(&place.list, &events);
    EXPECT_EQ(page.list.rowOf(place.id), 0U);
    EXPECT_EQ(page.list.date(0), "2023-11-14 22:13:20");
}

TEST_F(EventIntakeTest, RefreshesTheHomePageAfterCountingWhileItIsShown) {
    intake.setNotification({"1", "Local7.Error", "h", "m", {}});
    EXPECT_TRUE(home.errorsSeen.empty());
    home.onScreen = true;
    intake.setNotification({"1", "Local7.Error", "h", "m", {}});
    EXPECT_EQ(home.errorsSeen, (std::vector<std::int64_t>{2}));
}

TEST_F(EventIntakeTest, ARemovalChangesNoCounterAndNoHomePage) {
    home.onScreen = true;
    intake.setNotification({"1", "Local7.Error", "h", "m", {}});
    intake.removeNotification({"1", "Local7.Error", "h", "m", {}});
    EXPECT_EQ(page.removed, (std::vector<std::string>{"m"}));
    EXPECT_EQ(counters(), (Counters{0, 0, 0, 1, 0, 0, 0, 0, 0}));
    EXPECT_EQ(home.errorsSeen.size(), 1U);
}

TEST_F(EventIntakeTest, LoadsLogFilesOldestFirstAndCounts) {
    state.iDebug = 17;
    folder.write("2026-01-02.log", "3,Local7.Error,h,third\r\n4,Kern.Emergency,h,fourth\r\n");
    folder.write("2026-01-01.log", "1,Local7.Debug,h,first\r\n\r\n2,AlertX.Notice,h,second\r\n");
    folder.write("system.LOG", "5,Local7.Error,h,not read\r\n");
    folder.write("old.log.1", "6,Local7.Error,h,not read\r\n");
    folder.write(".log", "7,Local7.Error,h,not read\r\n");
    folder.write("x.log", "1700000000,Local7.Error,10.0.0.5,disk full, retrying\r\n");
    std::uint64_t read = 0;
    std::uint64_t total = 0;
    intake.initializeLog([&](std::uint64_t bytes, std::uint64_t all) {
        read = bytes;
        total = all;
    });
    EXPECT_EQ(messages(), (std::vector<std::string>{"disk full, retrying", "fourth", "third",
                                                    "second", "first"}));
    EXPECT_EQ(page.list.date(0), "1700000000");
    EXPECT_EQ(counters(), (Counters{1, 1, 0, 2, 0, 1, 0, 1, 0}));
    EXPECT_GT(total, 0U);
    EXPECT_EQ(read, total);
}

TEST_F(EventIntakeTest, SaysHowFarItReadTheLogFiles) {
    const auto whole = folder.write("a.log", "1,Local7.Error,h,m\r\n\r\n");
    const auto torn = folder.write("b.log", "1,Local7.Error,h,m\r\n2,Local7.Er");
    const auto empty = folder.write("c.log", "");
    std::filesystem::create_directory(folder.path() / "d.log");
    const auto extents = intake.initializeLog();
    ASSERT_EQ(extents.size(), 3U);
    const auto inode = [](const std::filesystem::path &file) {
        struct stat status {};
        return ::stat(file.c_str(), &status) == 0 ? status.st_ino : 0;
    };
    EXPECT_EQ(extents[0].file, whole);
    EXPECT_EQ(extents[0].inode, inode(whole));
    EXPECT_EQ(extents[0].bytes, 22U);
    EXPECT_EQ(extents[0].lines, 22U);
    EXPECT_EQ(extents[1].inode, inode(torn));
    EXPECT_EQ(extents[1].bytes, 31U);
    EXPECT_EQ(extents[1].lines, 20U);
    EXPECT_EQ(extents[2].file, empty);
    EXPECT_EQ(extents[2].bytes, 0U);
}

TEST_F(EventIntakeTest, AFieldThatIsNoTextEndsTheRecord) {
    folder.write("x.log",
                 "1,Local7.Error,h,\xff\xfe\r\n"
                 "2,Local7.Error,\xff,m\r\n"
                 "3,\xc0\x80,h,m\r\n"
                 "\xed\xa0\x80,Local7.Error,h,m\r\n");
    intake.initializeLog();
    ASSERT_EQ(page.list.size(), 4U);
    EXPECT_EQ(page.list.host(3), "h");
    EXPECT_EQ(page.list.message(3), std::nullopt);
    EXPECT_EQ(page.list.priority(2), "Local7.Error");
    EXPECT_EQ(page.list.host(2), std::nullopt);
    EXPECT_EQ(page.list.message(2), std::nullopt);
    EXPECT_EQ(page.list.date(1), "3");
    EXPECT_EQ(page.list.priority(1), std::nullopt);
    EXPECT_EQ(page.list.message(1), std::nullopt);
    EXPECT_EQ(page.list.date(0), std::nullopt);
    EXPECT_EQ(page.list.message(0), std::nullopt);
    EXPECT_EQ(counters(), (Counters{0, 0, 0, 2, 0, 0, 0, 0, 2}));
}

TEST_F(EventIntakeTest, WithoutSettingsTheDefaultsHold) {
    state.iPopupEvents = 9;
    intake.initializeLog();
    EXPECT_EQ(levels(), (Counters{2, 2, 2, 1, 1, 1, 0, 0, 0}));
    EXPECT_EQ(state.iPopupEvents, 0);
    EXPECT_EQ(state.newDateFormat, "");
}

TEST_F(EventIntakeTest, ADamagedDocumentCountsAsNone) {
    const std::string damaged = "bplist00 and then nothing that makes sense";
    const auto file = folder.write("Quorbel.ini", damaged);
    intake.initializeLog();
    EXPECT_EQ(levels(), (Counters{2, 2, 2, 1, 1, 1, 0, 0, 0}));
    EXPECT_EQ(readFile(file), damaged);
}

TEST_F(EventIntakeTest, TakesTheSettingsIntoTheState) {
    writeSettings({{"severityEmergency", 1},
                   {"severityAlerting", 0},
                   {"severityUnknown", 2},
                   {"popupEvents", 12},
                   {"dateFormat", "dd.MM.yyyy HH:mm"},
                   {"popupSound", "/tmp/a.aiff"},
                   {"popupDisplayArray", Array{"Emergency", "Alert"}},
                   {"popupPlayArray", Array{"Debug"}}});
    intake.initializeLog();
    EXPECT_EQ(levels(), (Counters{1, 0, 0, 0, 0, 0, 0, 0, 2}));
    EXPECT_EQ(state.iPopupEvents, 12);
    EXPECT_EQ(state.newDateFormat, "dd.MM.yyyy HH:mm");
    EXPECT_EQ(state.oldDateFormat, "dd.MM.yyyy HH:mm");
    EXPECT_EQ(state.popupSound, "/tmp/a.aiff");
    EXPECT_EQ(state.popupDisplayArray, (std::vector<std::string>{"Emergency", "Alert"}));
    EXPECT_EQ(state.popupPlayArray, (std::vector<std::string>{"Debug"}));
}

TEST_F(EventIntakeTest, AMissingKeyIsNormalAndNotTheDefault) {
    writeSettings({{"severityAlerting", 2}});
    intake.initializeLog();
    EXPECT_EQ(levels(), (Counters{0, 2, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_TRUE(state.popupDisplayArray.empty());
}

TEST_F(EventIntakeTest, AFolderOrFileThatCannotBeReadIsSkipped) {
    const auto unreadable = folder.write("a.log", "1,Local7.Error,h,hidden\r\n");
    std::filesystem::create_directory(folder.path() / "folder.log");
    folder.write("b.log", "2,Local7.Error,h,shown\r\n");
    ASSERT_EQ(unlink(unreadable.c_str()), 0);
    ASSERT_EQ(symlink("missing", unreadable.c_str()), 0);
    intake.initializeLog();
    EXPECT_EQ(messages(), (std::vector<std::string>{"shown"}));

    setenv("QUORBEL_LIBRARY", (folder.path() / "missing").c_str(), 1);
    intake.initializeLog();
    EXPECT_EQ(counters(), Counters(9, 0));
}

}  // namespace
}  // namespace quorbel
