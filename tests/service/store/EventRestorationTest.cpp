#include "common/LogReader.h"
#include "platform/ArchivedLists.h"
#include "platform/Files.h"
#include "platform/KeyedArchive.h"
#include "service/store/EventRemoval.h"
#include "service/store/EventRestoration.h"
#include "service/store/FileSizeLimit.h"
#include "service/store/SyncHook.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace quorbel {
namespace {

using ::testing::ElementsAre;
using testing::FileSizeLimit;
using testing::syncsNothing;
using testing::TemporaryFolder;
using testing::whileCopyIsSynced;

constexpr const char *kTuesday = "2023-11-14.log";
constexpr const char *kWednesday = "2023-11-15.log";
constexpr std::int64_t kTime = 1700000000;  // Tuesday, 22:13:20 in UTC
constexpr std::int64_t kDay = 24 * 3600;

/// An event's line in a command, so many seconds later.
std::string event(std::int64_t later, const std::string &message) {
    return std::to_string(kTime + later) + ",User.Notice,h," + message + "\n";
}
/// The same in a log file.
std::string line(std::int64_t later, const std::string &message) {
    std::string text = event(later, message);
    text.insert(text.size() - 1, "\r");
    return text;
}

struct EventRestorationTest : ::testing::Test {
    ~EventRestorationTest() override {
        whileCopyIsSynced = nullptr;
        syncsNothing = false;
    }

    [[nodiscard]] std::string content(const std::string &name) const {
        return readFile(folder.path() / name).value_or("(no file)");
    }
    /// From values and, every second time, as the front-end sends them.
    std::string restore(const Array &events, const Array &listed = {}) {
        const auto inPlace =
            std::exchange(isInPlace, !isInPlace) ? restoreInPlace(events, listed) : std::nullopt;
        return inPlace ? *inPlace
                       : EventRestoration(events, listed).run(store, stop).value_or("OK");
    }
    std::optional<std::string> restoreInPlace(const Array &events, const Array &listed) {
        Dictionary command{{"command", "restore"}};
        command.append("Events", events);
        command.append("Listed", listed);
        const std::string archive = writeKeyedArchive(command);
        auto lists = ArchivedLists::open(archive, "restore", {"Events", "Listed"});
        auto restoration =
            lists ? EventRestoration::of(*lists, [this] { ++givenBack; }) : std::nullopt;
        return restoration ? std::optional(restoration->run(store, stop).value_or("OK"))
                           : std::nullopt;
    }
    std::string remove(const std::vector<std::string> &events,
                       const std::string &format = "yyyy-MM-dd HH:mm:ss") {
        std::map<std::string, int> counts;
        for (const std::string &text : events) {
            ++counts[text];
        }
        Dictionary command;
        for (const auto &[text, count] : counts) {
            command.append(text, std::to_string(count));
        }
        EventRemoval removal({format});
        EXPECT_TRUE(removal.want(command));
        return removal.run(store, stop).value_or("OK");
    }

    TemporaryFolder folder;
    LogStore store{folder.path()};
    std::atomic<bool> stop = false;
    bool isInPlace = false;
    std::size_t givenBack = 0;
};

TEST_F(EventRestorationTest, EventsGoToTheirPlacesBySeconds) {
    folder.write(kTuesday, line(10, "b") + line(20, "d") + line(20, "e") + line(40, "g"));
    EXPECT_EQ(restore({event(0, "a"), event(20, "f"), event(15, "c"), event(50, "h")}), "OK");
    EXPECT_EQ(content(kTuesday), line(0, "a") + line(10, "b") + line(15, "c") + line(20, "d") +
                                     line(20, "e") + line(20, "f") + line(40, "g") + line(50, "h"));
    EXPECT_THAT(listFolder(folder.path()), ElementsAre(kTuesday));
}

TEST_F(EventRestorationTest, EventsGoToTheFilesOfTheirDays) {
    folder.write(kWednesday, line(kDay, "b"));
    EXPECT_EQ(restore({event(0, "a"), event(kDay - 1, "c"), event(2 * kDay, "d")}), "OK");
    EXPECT_EQ(content(kTuesday), line(0, "a"));
    EXPECT_EQ(content(kWednesday), line(kDay - 1, "c") + line(kDay, "b"));
    EXPECT_EQ(content("2023-11-16.log"), line(2 * kDay, "d"));
    struct stat status {};
    ASSERT_EQ(stat((folder.path() / kTuesday).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0644U);
}

TEST_F(EventRestorationTest, EqualEventsComeBackAsOftenAsTheyWent) {
    folder.write(kTuesday, line(0, "a") + line(0, "b") + line(0, "a"));
    ASSERT_EQ(remove({event(0, "a"), event(0, "b"), event(0, "a")}), "OK");
    EXPECT_EQ(restore({event(0, "a"), event(0, "b"), event(0, "a")}), "OK");
    EXPECT_EQ(content(kTuesday), line(0, "a") + line(0, "b") + line(0, "a"));
}

// A command may come twice, and a deletion may have failed or have got lost.
TEST_F(EventRestorationTest, WhatIsInTheLogIsNotPutThereAgain) {
    const std::string before = line(0, "a") + line(0, "a") + line(1, "b");
    folder.write(kTuesday, before);
    EXPECT_EQ(restore({event(0, "a"), event(1, "b")}, {event(0, "a")}), "OK");
    EXPECT_EQ(content(kTuesday), before);
    ASSERT_EQ(remove({event(0, "a")}), "OK");
    EXPECT_EQ(restore({event(0, "a"), event(1, "b")}, {event(0, "a")}), "OK");
    EXPECT_EQ(restore({event(0, "a"), event(1, "b")}, {event(0, "a")}), "OK");
    EXPECT_EQ(content(kTuesday), before);
}

// In whatever file: one may be somebody else's, or the clock was in another zone.
TEST_F(EventRestorationTest, WhatIsInAnotherFileIsThere) {
    folder.write("x.log", line(0, "a"));
    EXPECT_EQ(restore({event(0, "a")}), "OK");
    EXPECT_THAT(listFolder(folder.path()), ElementsAre("x.log"));
}

TEST_F(EventRestorationTest, NoMoreArePutBackThanAreAskedFor) {
    folder.write(kTuesday, line(5, "z"));
    EXPECT_EQ(restore({event(0, "a")}, {event(0, "a"), event(0, "a"), event(3, "other")}), "OK");
    EXPECT_EQ(content(kTuesday), line(0, "a") + line(5, "z"));
}

// Named by its minute, the first event of that minute was deleted in place of the one that was
// meant.
TEST_F(EventRestorationTest, TheEventThatWentComesBackThoughAnotherWasMeant) {
    const std::string before = line(-15, "a") + line(10, "a") + line(20, "b") + line(30, "a");
    folder.write(kTuesday, before);
    ASSERT_EQ(remove({event(-20, "a")}, "yyyy-MM-dd HH:mm"), "OK");
    ASSERT_EQ(content(kTuesday), line(10, "a") + line(20, "b") + line(30, "a"));
    EXPECT_EQ(restore({event(30, "a")}, {event(10, "a"), event(-15, "a")}), "OK");
    EXPECT_EQ(content(kTuesday), before);
}

// The window no longer knows the seconds.
TEST_F(EventRestorationTest, AnEventWithoutSecondsComesBackOnceAtItsMinute) {
    const std::string before = line(-15, "a") + line(10, "a") + line(30, "a");
    folder.write(kTuesday, before);
    EXPECT_EQ(restore({event(-20, "a")}, {event(-20, "a"), event(-20, "a")}), "OK");
    EXPECT_EQ(content(kTuesday), before);
    ASSERT_EQ(remove({event(-20, "a")}, "yyyy-MM-dd HH:mm"), "OK");
    EXPECT_EQ(restore({event(-20, "a")}, {event(-20, "a"), event(-20, "a")}), "OK");
    EXPECT_EQ(content(kTuesday), line(-20, "a") + line(10, "a") + line(30, "a"));
}

TEST_F(EventRestorationTest, OnlyLinesThatAReaderGetsBackAreTaken) {
    const std::string before = line(0, "a");
    folder.write(kTuesday, before);
    const std::string longest(kLogPieceSize - line(0, "").size(), 'm');
    const Array bad = {
        1,
        "",
        "\n",
        "x",
        "1700000000,User.Notice,h\n",
        "1700000000,User.Notice,h,\n",
        "1700000000,User.Notice,,m\n",
        ",1700000000,User.Notice,h,m\n",
        "1700000000,,User.Notice,h,m\n",
        "-1,User.Notice,h,m\n",
        "+1,User.Notice,h,m\n",
        "1.5,User.Notice,h,m\n",
        "01700000000,User.Notice,h,m\n",
        "1700000000 ,User.Notice,h,m\n",
        "253402300800,User.Notice,h,m\n",
        "99999999999999999999,User.Notice,h,m\n",
        "1700000000,User.Notice,h,m\n\n",
        "1700000000,User.Notice,h,m\r\n",
        "1700000000,User.Notice,h,m\n1700000000,User.Notice,h,n\n",
        "1700000000,User.Notice,h,m\r1700000000,User.Notice,h,n\n",
        "1700000000,User.\nNotice,h,m\n",
        "1700000000,User.Notice\rh,m\n",
        "1700000000\nUser.Notice,h,m\n",
        "1700000000,User.Notice,h,\xff\n",
        "1700000000,User.Notice,h,\xed\xa0\x80\n",
        "1700000000,User.Notice,h,\xef\xbf\xbf\n",
        std::string("1700000000,User.Notice,h,m\0m\n", 29),
        event(0, longest + "m"),
    };
    EXPECT_EQ(restore(bad), "28 of 28 events could not be put back: 28 cannot stand in a log file");
    EXPECT_EQ(content(kTuesday), before);
    EXPECT_THAT(listFolder(folder.path()), ElementsAre(kTuesday));
    // The others are put back.
    EXPECT_EQ(restore({"x", event(1, "a, b,"), event(2, longest), event(3, "\xc3\xa4 \t#012")}),
              "1 of 4 events could not be put back: 1 cannot stand in a log file");
    EXPECT_EQ(content(kTuesday),
              before + line(1, "a, b,") + line(2, longest) + line(3, "\xc3\xa4 \t#012"));
    EXPECT_EQ(restore({event(4, "last").substr(0, event(4, "last").size() - 1)}), "OK");
}

TEST_F(EventRestorationTest, NothingToPutBackChangesNothing) {
    EXPECT_EQ(restore({}), "OK");
    EXPECT_EQ(restore({}, {event(0, "a"), 7}), "OK");
    EXPECT_TRUE(listFolder(folder.path()).empty());
}

TEST_F(EventRestorationTest, SoManyDaysAreRefused) {
    syncsNothing = true;
    Array events;
    for (std::int64_t day = 0; day < 4100; ++day) {
        events.emplace_back(event(day * kDay, "a"));
    }
    EXPECT_EQ(restore(events), "4 of 4100 events could not be put back: they are of too many days");
    EXPECT_EQ(listFolder(folder.path()).size(), 4096U);
}

TEST_F(EventRestorationTest, LinesOutOfOrderAreNotMoved) {
    // The clock was set back; a line ends without its line feed, one has no time.
    folder.write(kTuesday, line(10, "a") + line(30, "b") + "no,line,at,all\r\n\r\n" + line(5, "c") +
                               "1700000012,U,h,torn");
    EXPECT_EQ(restore({event(20, "x"), event(40, "y")}), "OK");
    EXPECT_EQ(content(kTuesday), line(10, "a") + line(20, "x") + line(30, "b") +
                                     "no,line,at,all\r\n\r\n" + line(5, "c") +
                                     "1700000012,U,h,torn\r\n" + line(40, "y"));
}

TEST_F(EventRestorationTest, NoLineIsCutInTwo) {
    // A reader takes the rest of the long line for an event of its own.
    const std::string head = "1700000001,User.Notice,h,";
    const std::string longLine =
        head + std::string(kLogPieceSize - head.size(), 'm') + "1700000090,U,h,rest\r\n";
    folder.write(kTuesday, longLine + line(100, "z"));
    EXPECT_EQ(restore({event(50, "a")}), "OK");
    EXPECT_EQ(content(kTuesday), longLine + line(50, "a") + line(100, "z"));
}

TEST_F(EventRestorationTest, OnAFullDiskTheFilesStayAsTheyWere) {
    const std::string before = line(0, std::string(900, 'a')) + line(9, std::string(900, 'b'));
    folder.write(kTuesday, before);
    {
        const FileSizeLimit limit(before.size());
        EXPECT_EQ(restore({event(5, "a"), event(6, "a"), event(kDay, "b")}),
                  "2 of 3 events could not be put back: 2023-11-14.log could not be rewritten: "
                  "File too large");
    }
    EXPECT_EQ(content(kTuesday), before);
    EXPECT_EQ(content(kWednesday), line(kDay, "b"));
    {
        const FileSizeLimit limit(10);
        EXPECT_EQ(restore({event(2 * kDay, "c")}),
                  "1 of 1 events could not be put back: 2023-11-16.log could not be rewritten: "
                  "File too large");
    }
    EXPECT_THAT(listFolder(folder.path()), ElementsAre(kTuesday, kWednesday));
}

TEST_F(EventRestorationTest, WhatIsNoFileIsLeftAlone) {
    std::filesystem::create_directory(folder.path() / kTuesday);
    EXPECT_EQ(restore({event(0, "a"), event(kDay, "b")}),
              "1 of 2 events could not be put back: 2023-11-14.log could not be rewritten: Is a "
              "directory");
    EXPECT_EQ(content(kWednesday), line(kDay, "b"));
}

TEST_F(EventRestorationTest, NothingIsBegunOnceTheServiceStops) {
    folder.write(kTuesday, line(0, "a"));
    stop = true;
    EXPECT_EQ(restore({event(1, "b"), event(kDay, "c")}),
              "2 of 2 events could not be put back: the service is stopping");
    EXPECT_THAT(listFolder(folder.path()), ElementsAre(kTuesday));
    EXPECT_EQ(content(kTuesday), line(0, "a"));
}

TEST_F(EventRestorationTest, WhatArrivesMeanwhileIsKeptBehind) {
    store.append(line(0, "a") + line(9, "c"), kTime, false);
    int arrivals = 0;
    whileCopyIsSynced = [&] {
        // The last of them comes behind the last round, while nothing else arrives.
        if (arrivals < 5) {
            ++arrivals;
            EXPECT_EQ(store.append(line(10, std::to_string(arrivals)), kTime, false).stored, 1U);
        }
    };
    EXPECT_EQ(restore({event(5, "b"), event(20, "late")}), "OK");
    EXPECT_EQ(arrivals, 5);
    store.append(line(30, "after"), kTime, false);
    EXPECT_EQ(content(kTuesday), line(0, "a") + line(5, "b") + line(9, "c") + line(20, "late") +
                                     line(10, "1") + line(10, "2") + line(10, "3") + line(10, "4") +
                                     line(10, "5") + line(30, "after"));
}

// The first event of a day may arrive while its file is made.
TEST_F(EventRestorationTest, WhatArrivesInANewFileIsKept) {
    bool arrived = false;
    whileCopyIsSynced = [&] {
        if (!std::exchange(arrived, true)) {
            store.append(line(10, "new"), kTime, false);
        }
    };
    EXPECT_EQ(restore({event(5, "b")}), "OK");
    EXPECT_EQ(content(kTuesday), line(5, "b") + line(10, "new"));
    arrived = false;
    std::filesystem::remove(folder.path() / kTuesday);
    {
        const FileSizeLimit limit(line(10, "new").size());
        EXPECT_NE(restore({event(5, std::string(100, 'b'))}), "OK");
    }
}

/// As if the machine stopped while the `number`-th copy is synced.
bool crashesDuring(int number, const std::filesystem::path &folder, const Array &events) {
    const pid_t child = fork();
    if (child == 0) {
        LogStore store(folder);
        whileCopyIsSynced = [&number] {
            if (--number == 0) {
                _exit(7);
            }
        };
        const std::atomic<bool> stop = false;
        EventRestoration(events, {}).run(store, stop);
        _exit(0);
    }
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 7;
}

TEST(EventRestorationCrashTest, EachFileIsAsItWasOrWhole) {
    const TemporaryFolder folder;
    folder.write(kTuesday, line(0, "a"));
    folder.write(kWednesday, line(kDay, "b"));
    const Array events = {event(1, "x"), event(kDay + 1, "y")};
    ASSERT_TRUE(crashesDuring(1, folder.path(), events));
    EXPECT_EQ(readFile(folder.path() / kTuesday), line(0, "a"));
    EXPECT_EQ(readFile(folder.path() / kWednesday), line(kDay, "b"));
    ASSERT_TRUE(crashesDuring(2, folder.path(), events));
    EXPECT_EQ(readFile(folder.path() / kTuesday), line(0, "a") + line(1, "x"));
    EXPECT_EQ(readFile(folder.path() / kWednesday), line(kDay, "b"));

    LogStore store(folder.path());
    store.prepare();
    EXPECT_THAT(listFolder(folder.path()), ElementsAre(kTuesday, kWednesday));
    const std::atomic<bool> stop = false;
    EXPECT_EQ(EventRestoration(events, {}).run(store, stop), std::nullopt);
    EXPECT_EQ(readFile(folder.path() / kTuesday), line(0, "a") + line(1, "x"));
    EXPECT_EQ(readFile(folder.path() / kWednesday), line(kDay, "b") + line(kDay + 1, "y"));
}

// Whatever is deleted and put back, no event is lost or doubled, and where seconds differ, the file
// is as it was.
TEST_F(EventRestorationTest, RandomDeletionsAreUndone) {
    syncsNothing = true;
    std::mt19937 random(5);
    const auto pick = [&random](int count) {
        return std::uniform_int_distribution<int>(0, count - 1)(random);
    };
    for (int round = 0; round < 100; ++round) {
        const bool hasRepeats = round % 2 == 0;
        std::vector<std::string> lines;
        std::vector<std::string> named;
        std::int64_t later = 0;
        const int count = 1 + pick(60);
        for (int i = 0; i < count; ++i) {
            later += (hasRepeats ? 0 : 1) + pick(hasRepeats ? 3 : 7000);
            const std::string message =
                hasRepeats ? std::string(1, static_cast<char>('a' + pick(2))) : std::to_string(i);
            lines.push_back(line(later, message));
            named.push_back(event(later, message));
        }
        for (const std::string &name : listFolder(folder.path())) {
            std::filesystem::remove(folder.path() / name);
        }
        for (int i = 0; i < count; ++i) {
            store.append(lines[static_cast<std::size_t>(i)],
                         std::stoll(lines[static_cast<std::size_t>(i)]), false);
        }
        std::map<std::string, std::string> before;
        for (const std::string &name : listFolder(folder.path())) {
            before[name] = content(name);
        }
        std::vector<std::string> deleted;
        Array back;
        Array listed;
        for (const std::string &text : named) {
            if (pick(3) == 0) {
                deleted.push_back(text);
                back.emplace_back(text);
            } else {
                listed.emplace_back(text);
            }
        }
        ASSERT_EQ(remove(deleted), "OK");
        ASSERT_EQ(restore(back, listed), "OK");
        for (const auto &[name, text] : before) {
            const auto sorted = [](const std::string &content) {
                std::multiset<std::string> all;
                for (std::size_t at = 0; at < content.size();) {
                    const std::size_t end = content.find('\n', at) + 1;
                    all.insert(content.substr(at, end - at));
                    at = end;
                }
                return all;
            };
            if (hasRepeats) {
                ASSERT_EQ(sorted(content(name)), sorted(text)) << round;
            } else {
                ASSERT_EQ(content(name), text) << round;
            }
        }
    }
}

TEST_F(EventRestorationTest, WhatStandsInACommandIsPutBackAsWellAndItsMemoryGivenUp) {
    Array events;
    std::string all;
    for (int i = 0; i < 20'000; ++i) {
        const std::string message = std::string(900, 'x') + std::to_string(i) + "\xC3\xA4";
        events.emplace_back(event(i, message));
        all += line(i, message);
    }
    EXPECT_EQ(restoreInPlace(events, {}), "OK");
    EXPECT_EQ(content(kTuesday) +
                  (std::filesystem::exists(folder.path() / kWednesday) ? content(kWednesday) : ""),
              all);
    EXPECT_GE(givenBack, 3U);
    EXPECT_EQ(restoreInPlace(events, {}), "OK");
    EXPECT_EQ(
        content(kTuesday).size() +
            (std::filesystem::exists(folder.path() / kWednesday) ? content(kWednesday).size() : 0),
        all.size());
}

TEST_F(EventRestorationTest, WhatIsNoTextIsLeftToOthers) {
    EXPECT_EQ(restoreInPlace({event(0, "a"), 1}, {}), std::nullopt);
    EXPECT_EQ(restoreInPlace({event(0, "a")}, {1}), std::nullopt);
    EXPECT_TRUE(listFolder(folder.path()).empty());
}

TEST_F(EventRestorationTest, ManyEventsTakeNoLongerThanTheyAreLong) {
    constexpr int kMany = 100'000;
    Array events;
    Array alike;
    std::string all;
    for (int i = 0; i < kMany; ++i) {
        events.emplace_back(event(i % 50, "number " + std::to_string(i)));
        alike.emplace_back(event(0, "the same"));
    }
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(restore(events), "OK");
    EXPECT_EQ(restore(alike), "OK");
    EXPECT_EQ(restore(alike), "OK");
    // Not by their number squared.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
    const std::string after = content(kTuesday);
    EXPECT_EQ(std::ranges::count(after, '\n'), 2 * kMany);
}

}  // namespace
}  // namespace quorbel
