#include "service/export/ExportFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <thread>

namespace {

/// The room on the disk, in bytes; nothing: what there is.
std::optional<std::uint64_t> freeBytes;

}  // namespace

/// In place of the system's.
extern "C" int fstatvfs(int fd, struct statvfs *status) noexcept {
    const int result = ::statvfs(("/proc/self/fd/" + std::to_string(fd)).c_str(), status);
    if (result == 0 && freeBytes) {
        status->f_bavail = *freeBytes / status->f_frsize;
    }
    return result;
}

namespace quorbel {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Optional;

TEST_F(ExportTest, DatabaseHoldsTheEvents) {
    append("2023-11-15.log", line(kNoon, "it's \"quoted\"") + line(kNoon + 1, "Gr\u00FC\u00DFe"));
    append("2023-11-14.log", line(kNoon - 86400, "earlier"));
    EXPECT_EQ(runDatabase("yyyy-MM-dd HH:mm"), std::nullopt);
    EXPECT_EQ(rows(),
              "1699963200|2023-11-14 12:00|User.Notice|alpha|earlier\n"
              "1700049600|2023-11-15 12:00|User.Notice|alpha|it's \"quoted\"\n"
              "1700049601|2023-11-15 12:00|User.Notice|alpha|Gr\u00FC\u00DFe\n");
    EXPECT_EQ(query(database(), "PRAGMA integrity_check"), "ok\n");
    EXPECT_EQ(query(database(), "SELECT name FROM pragma_table_info('events')"),
              "id\ntime\ndate\npriority\nhost\nmessage\n");
    EXPECT_THAT(query(database(), "EXPLAIN QUERY PLAN SELECT * FROM events WHERE time > 5"),
                HasSubstr("USING INDEX events_time"));
    EXPECT_THAT(listFolder(targets.path()), ElementsAre("out.db"));
}

TEST_F(ExportTest, DatabaseExchangesOnlyWhatChanged) {
    append("2023-11-14.log", line(kNoon - 86400, "a") + line(kNoon - 86399, "b"));
    append("2023-11-15.log", line(kNoon, "c"));
    ASSERT_EQ(runDatabase(), std::nullopt);
    // Rows that are not touched keep what somebody else wrote into them.
    const auto mark = [&] {
        std::system(("sqlite3 '" + database().string() +  // NOLINT(cert-env33-c)
                     "' \"UPDATE events SET host = 'kept'\"")
                        .c_str());
    };
    const auto messages = [&] {
        return query(database(), "SELECT host || ':' || message FROM events ORDER BY id");
    };
    mark();
    ASSERT_EQ(runDatabase(), std::nullopt);
    EXPECT_EQ(messages(), "kept:a\nkept:b\nkept:c\n");
    append("2023-11-15.log", line(kNoon + 1, "d"));
    append("2023-11-16.log", line(kNoon + 86400, "e"));
    ASSERT_EQ(runDatabase(), std::nullopt);
    EXPECT_EQ(messages(), "kept:a\nkept:b\nkept:c\nalpha:d\nalpha:e\n");
    mark();
    cut("2023-11-14.log", line(kNoon - 86400, "a"));
    append("2023-11-16.log", line(kNoon + 86401, "f"));
    ASSERT_EQ(runDatabase(), std::nullopt);
    EXPECT_EQ(messages(), "alpha:b\nkept:c\nkept:d\nkept:e\nalpha:f\n");
    std::filesystem::remove(folder.path() / "2023-11-15.log");
    ASSERT_EQ(runDatabase(), std::nullopt);
    EXPECT_EQ(messages(), "alpha:b\nkept:e\nalpha:f\n");
    ASSERT_EQ(runDatabase("HH"), std::nullopt);
    EXPECT_EQ(query(database(), "SELECT date || host || message FROM events ORDER BY id"),
              "12alphab\n12alphae\n12alphaf\n");
}

TEST_F(ExportTest, DatabaseLeavesOtherPeoplesFilesAlone) {
    struct Case {
        const char *sql;  ///< makes the file; null: `bytes` do
        std::string bytes;
        const char *problem;
    };
    const std::string notOurs = "out.db is not a database of events and was left as it is";
    const Case cases[] = {
        {"CREATE TABLE events (x); INSERT INTO events VALUES (1)", "", notOurs.c_str()},
        {"PRAGMA application_id = 7; PRAGMA user_version = 1", "", notOurs.c_str()},
        {"PRAGMA application_id = 0x5172626C; PRAGMA user_version = 99", "", notOurs.c_str()},
        {nullptr, "Date\tPriority\tHost\tMessage\n" + std::string(1000, 'x'), notOurs.c_str()},
        {nullptr, std::string(5000, '\xFF'), notOurs.c_str()},
    };
    append("2023-11-15.log", line(kNoon, "a"));
    for (const Case &c : cases) {
        std::filesystem::remove(database());
        if (c.sql != nullptr) {
            // NOLINTNEXTLINE(cert-env33-c)
            std::system(("sqlite3 '" + database().string() + "' '" + c.sql + '\'').c_str());
        } else {
            targets.write("out.db", c.bytes);
        }
        const auto before = readFile(database());
        EXPECT_THAT(runDatabase().value_or(""), EndsWith(c.problem));
        EXPECT_EQ(readFile(database()), before);
    }
    targets.write("out.db", "");
    EXPECT_EQ(runDatabase(), std::nullopt);
    EXPECT_EQ(query(database(), "SELECT count(*) FROM events"), "1\n");
}

TEST_F(ExportTest, DatabaseThatIsDamagedIsSaid) {
    for (int i = 0; i < 2000; ++i) {
        append("2023-11-15.log", line(kNoon + i, "a"));
    }
    ASSERT_EQ(runDatabase(), std::nullopt);
    std::string bytes = readFile(database()).value();
    std::fill(bytes.begin() + 4096, bytes.end(), 'x');
    targets.write("out.db", bytes);
    cut("2023-11-15.log", line(kNoon, "a"));
    EXPECT_THAT(runDatabase().value_or(""),
                EndsWith("could not be written: database disk image is malformed"));
    EXPECT_EQ(readFile(database()), bytes);
}

TEST_F(ExportTest, DatabaseWaitsForOthersAndLeavesNoHalfOfARun) {
    append("2023-11-15.log", line(kNoon, "a"));
    ASSERT_EQ(runDatabase(), std::nullopt);
    append("2023-11-15.log", line(kNoon + 1, "b"));
    stop = true;
    EXPECT_EQ(runDatabase(), std::nullopt);
    EXPECT_EQ(query(database(), "SELECT count(*) FROM events"), "1\n");
    stop = false;
    EXPECT_EQ(runDatabase(), std::nullopt);
    EXPECT_EQ(query(database(), "SELECT count(*) FROM events"), "2\n");
    EXPECT_THAT(
        DatabaseExport::run({targets.path() / "missing" / "x.db", ""}, LogSources(store), stop)
            .value_or(""),
        HasSubstr("x.db could not be written: "));
}

// A run that fills the disk before it is taken back would cost new events their place.
TEST_F(ExportTest, DatabaseBeginsNothingForWhichThereIsNoRoom) {
    constexpr std::uint64_t kMebibyte = std::uint64_t{1} << 20U;
    constexpr std::uint64_t kReserve = 4 * kMebibyte;
    const auto runWithRoom = [this](std::uint64_t bytes) {
        freeBytes = bytes;
        auto problem = runDatabase();
        freeBytes.reset();
        return problem;
    };
    const auto count = [this] { return query(database(), "SELECT count(*) FROM events"); };
    const auto saysThatThereIsNoRoom =
        Optional(EndsWith("out.db could not be written: No space left on device"));
    std::string many;
    for (int i = 0; i < 20'000; ++i) {
        many += line(kNoon, std::string(100, 'm'));
    }
    append("2023-11-14.log", many);
    EXPECT_THAT(runWithRoom(kReserve + 3 * kMebibyte), saysThatThereIsNoRoom);
    EXPECT_EQ(query(database(), "SELECT count(*) FROM sqlite_master"), "0\n");
    ASSERT_EQ(runWithRoom(kReserve + 6 * kMebibyte), std::nullopt);
    EXPECT_EQ(count(), "20000\n");

    // Only what is new needs room.
    append("2023-11-14.log", line(kNoon, "more"));
    append("2023-11-15.log", line(kNoon, "a new file"));
    EXPECT_THAT(runWithRoom(kReserve), saysThatThereIsNoRoom);
    EXPECT_EQ(count(), "20000\n");
    EXPECT_EQ(runWithRoom(kReserve + kMebibyte), std::nullopt);
    EXPECT_EQ(count(), "20002\n");
    EXPECT_EQ(runWithRoom(0), std::nullopt);

    // Rows that go need it for the journal, until the end of the run.
    cut("2023-11-14.log", line(kNoon, "more"));
    EXPECT_THAT(runWithRoom(kReserve + 3 * kMebibyte), saysThatThereIsNoRoom);
    EXPECT_EQ(count(), "20002\n");
    EXPECT_EQ(runWithRoom(kReserve + 6 * kMebibyte), std::nullopt);
    EXPECT_EQ(count(), "20001\n");
    std::filesystem::remove(folder.path() / "2023-11-14.log");
    EXPECT_THAT(runWithRoom(kReserve + 3 * kMebibyte), saysThatThereIsNoRoom);
    EXPECT_EQ(runWithRoom(kReserve + 6 * kMebibyte), std::nullopt);
    EXPECT_EQ(count(), "1\n");

    // What they leave in the database is used again.
    append("2023-11-14.log", many);
    EXPECT_EQ(runWithRoom(kReserve + 3 * kMebibyte), std::nullopt);
    EXPECT_EQ(count(), "20001\n");
}

// However far it got, nothing may count as exported that is not.
TEST_F(ExportTest, DatabaseThatEndsEarlyMissesNothingLater) {
    std::string lines;
    for (int i = 0; i < 30'000; ++i) {
        lines += line(kNoon + i, "x");
    }
    append("2023-11-15.log", lines);
    for (int i = 1; i <= 10; ++i) {
        std::filesystem::remove(database());
        std::thread ending([this, i] {
            ::usleep(static_cast<useconds_t>(i * 4000));
            stop = true;
        });
        EXPECT_EQ(runDatabase(), std::nullopt);
        ending.join();
        stop = false;
        ASSERT_EQ(runDatabase(), std::nullopt);
        EXPECT_EQ(query(database(), "SELECT count(*) FROM events"), "30000\n") << i;
    }
}

TEST_F(ExportTest, DatabaseDoesNotRemoveManyRowsBeforeItEnds) {
    std::string lines;
    for (int i = 0; i < 20'000; ++i) {
        lines += line(kNoon + i, "x");
    }
    append("2023-11-15.log", lines);
    ASSERT_EQ(runDatabase(), std::nullopt);
    std::filesystem::remove(folder.path() / "2023-11-15.log");
    stop = true;
    EXPECT_EQ(runDatabase(), std::nullopt);
    EXPECT_EQ(query(database(), "SELECT count(*) FROM events"), "20000\n");
    stop = false;
    EXPECT_EQ(runDatabase(), std::nullopt);
    EXPECT_EQ(query(database(), "SELECT count(*) FROM events"), "0\n");
}

/// Runs an export in a child process that is killed in the middle of it.
template <typename Run>
void killDuring(const Run &run, int afterMicroseconds) {
    const pid_t child = ::fork();
    if (child == 0) {
        run();
        ::_exit(0);
    }
    ::usleep(static_cast<useconds_t>(afterMicroseconds));
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
}

TEST_F(ExportTest, AKilledRunLeavesWholeFiles) {
    std::string lines;
    for (int i = 0; i < 100'000; ++i) {
        lines += line(kNoon + i, "message number " + std::to_string(i));
    }
    append("2023-11-15.log", line(kNoon, "first"));
    ASSERT_EQ(runText(), std::nullopt);
    ASSERT_EQ(runDatabase(), std::nullopt);
    const std::string before = text();
    append("2023-11-14.log", lines);
    for (int i = 1; i <= 10; ++i) {
        killDuring(
            [this] {
                TextExport fresh;
                fresh.run({targets.path() / "out.txt", "HH:mm:ss"}, LogSources(store), stop);
            },
            i * 10'000);
        const std::string after = text();
        EXPECT_TRUE(after == before || std::ranges::count(after, '\n') == 100'002) << after.size();
        killDuring([this] { runDatabase(); }, i * 20'000);
        const std::string count = query(database(), "SELECT count(*) FROM events");
        EXPECT_TRUE(count == "1\n" || count == "100001\n") << count;
    }
    EXPECT_EQ(runText(), std::nullopt);
    EXPECT_EQ(runDatabase(), std::nullopt);
    EXPECT_EQ(query(database(), "SELECT count(*) FROM events; PRAGMA integrity_check"),
              "100001\nok\n");
    EXPECT_THAT(listFolder(targets.path()), ElementsAre("out.db", "out.txt"));
}

}  // namespace
}  // namespace quorbel
