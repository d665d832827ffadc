#include "platform/Files.h"
#include "service/store/FileSizeLimit.h"
#include "service/store/LogStore.h"
#include "service/store/SyncHook.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <fstream>
#include <future>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace quorbel {
namespace {

using ::testing::ElementsAre;
using testing::FileSizeLimit;
using ::testing::IsEmpty;
using ::testing::Optional;
using testing::TemporaryFolder;
using testing::whileCopyIsSynced;

bool cutOut(LogStore &store, const std::string &name, const UniqueFd &file,
            const std::vector<ByteRange> &ranges, const std::atomic<bool> &stop = false) {
    const MutexLock lock(store.editLock());
    return store.cutOut(name, file, ranges, stop);
}

constexpr std::int64_t kMonday = 1700000000;   // 2023-11-14, in UTC
constexpr std::int64_t kTuesday = 1700092800;  // 2023-11-16

std::string line(std::int64_t number) {
    return "1700000000,User.Notice,h,number " + std::to_string(number) + "\r\n";
}

struct LogStoreTest : ::testing::Test {
    ~LogStoreTest() override { whileCopyIsSynced = nullptr; }
    [[nodiscard]] std::string content(const std::string &name) const {
        return readFile(folder.path() / name).value_or("(no file)");
    }
    [[nodiscard]] UniqueFd open(const std::string &name) const {
        return UniqueFd(::open((folder.path() / name).c_str(), O_RDONLY | O_CLOEXEC));
    }
    [[nodiscard]] mode_t modeOf(const std::filesystem::path &path) const {
        struct stat status {};
        return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
    }

    TemporaryFolder folder;
    LogStore store{folder.path()};
};

TEST_F(LogStoreTest, AppendsToTheFileOfTheDay) {
    const auto first = store.append(line(1) + line(2), kMonday, false);
    EXPECT_EQ(first.stored, 2U);
    EXPECT_EQ(first.notStored, 0U);
    store.append(line(3), kTuesday, true);
    store.append(line(4), kMonday, false);
    EXPECT_THAT(listFolder(folder.path()), ElementsAre("2023-11-14.log", "2023-11-16.log"));
    EXPECT_EQ(content("2023-11-14.log"), line(1) + line(2) + line(4));
    EXPECT_EQ(content("2023-11-16.log"), line(3));
    EXPECT_EQ(modeOf(folder.path() / "2023-11-14.log"), 0644U);
}

TEST_F(LogStoreTest, PreparesItsFolder) {
    const std::filesystem::path made = folder.path() / "a" / "b";
    LogStore other(made);
    other.prepare();
    EXPECT_EQ(modeOf(made), 0750U);

    folder.write("2023-11-14.log", line(1) + "1700000000,User.No");
    folder.write("2023-11-15.log", line(1) + "1700000000,User.Notice,h,torn");
    folder.write("2023-11-16.log.new", "left over");
    folder.write("x.log", "somebody else's");
    store.prepare();
    EXPECT_EQ(content("2023-11-14.log"), line(1));
    EXPECT_EQ(content("2023-11-15.log"), line(1) + "1700000000,User.Notice,h,torn\r\n");
    EXPECT_THAT(store.fileNames(),
                Optional(ElementsAre("2023-11-14.log", "2023-11-15.log", "x.log")));
    EXPECT_EQ(content("x.log"), "somebody else's");
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "2023-11-16.log.new"));
}

TEST_F(LogStoreTest, NeverAppendsToATornLine) {
    folder.write("2023-11-14.log", line(1) + "1700000000,User.No");
    store.append(line(2), kMonday, false);
    EXPECT_EQ(content("2023-11-14.log"), line(1) + line(2));
}

TEST_F(LogStoreTest, NoticesThatItsFileIsGone) {
    store.append(line(1), kMonday, false);
    std::filesystem::rename(folder.path() / "2023-11-14.log", folder.path() / "moved");
    EXPECT_EQ(store.append(line(2), kMonday, false).stored, 1U);
    EXPECT_EQ(content("moved"), line(1));
    EXPECT_EQ(content("2023-11-14.log"), line(2));
    std::filesystem::remove_all(folder.path());
    EXPECT_EQ(store.append(line(3), kMonday, false).stored, 1U);
    EXPECT_EQ(content("2023-11-14.log"), line(3));
}

TEST_F(LogStoreTest, SaysOnceThatItCannotStoreAndOnceThatItCanAgain) {
    std::filesystem::remove_all(folder.path());
    std::ofstream(folder.path()) << "a file";
    ::testing::internal::CaptureStderr();
    for (int i = 0; i < 3; ++i) {
        const auto result = store.append(line(1) + line(2), kMonday, false);
        EXPECT_EQ(result.stored, 0U);
        EXPECT_EQ(result.notStored, 2U);
    }
    std::filesystem::remove(folder.path());
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(store.append(line(i), kMonday + i, false).stored, 1U);
    }
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "<3>Events cannot be stored in " + folder.path().string() +
                  ": Not a directory\n"
                  "<5>Events are stored again; 6 could not be stored meanwhile\n");
    EXPECT_EQ(content("2023-11-14.log"), line(0) + line(1) + line(2) + line(3) + line(4));
}

TEST_F(LogStoreTest, LeavesNoPartOfALineOnAFullDisk) {
    std::string lines;
    for (int i = 0; i < 10; ++i) {
        lines += line(i);
    }
    const std::size_t length = line(0).size();
    for (std::size_t extra = 0; extra < length; ++extra) {
        const FileSizeLimit limit(3 * length + extra);
        const auto result = store.append(lines, kMonday, false);
        EXPECT_EQ(result.stored, 3U);
        EXPECT_EQ(result.notStored, 7U);
        EXPECT_EQ(content("2023-11-14.log"), line(0) + line(1) + line(2));
        std::filesystem::resize_file(folder.path() / "2023-11-14.log", 0);
    }
    EXPECT_EQ(store.append(line(11), kMonday, false).stored, 1U);
    EXPECT_EQ(content("2023-11-14.log"), line(11));
}

/// Whether this process holds a file open that has no name any more.
bool holdsRemovedFile(const std::filesystem::path &folder) {
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        const std::string target = std::filesystem::read_symlink(entry.path(), gone).string();
        if (target.starts_with(folder.string()) && target.ends_with(" (deleted)")) {
            return true;
        }
    }
    return false;
}

// Whoever removes a file to make room gets that room only when nobody holds the file open.
TEST_F(LogStoreTest, GivesBackTheRoomOfARemovedFileOnAFullDisk) {
    store.append(line(1), kMonday, false);
    const FileSizeLimit limit(0);
    std::filesystem::remove(folder.path() / store.fileNames().value().at(0));
    ASSERT_TRUE(holdsRemovedFile(folder.path()));
    EXPECT_EQ(store.append(line(2), kMonday, false).notStored, 1U);
    EXPECT_TRUE(testing::waitUntil([&] { return !holdsRemovedFile(folder.path()); },
                                   std::chrono::seconds(5)));
}

// The clock may be set back over midnight.
TEST_F(LogStoreTest, FollowsAClockThatIsSetBack) {
    for (const std::int64_t seconds : {kMonday, kTuesday, kMonday, kTuesday - 1, kMonday}) {
        EXPECT_EQ(store.append(line(seconds), seconds, false).stored, 1U);
    }
    EXPECT_THAT(store.fileNames(),
                Optional(ElementsAre("2023-11-14.log", "2023-11-15.log", "2023-11-16.log")));
    EXPECT_EQ(content("2023-11-14.log"), line(kMonday) + line(kMonday) + line(kMonday));
    EXPECT_EQ(content("2023-11-15.log"), line(kTuesday - 1));
    EXPECT_EQ(content("2023-11-16.log"), line(kTuesday));
}

TEST_F(LogStoreTest, CutsRangesOutOfAFile) {
    const std::size_t length = line(0).size();
    folder.write("2023-11-14.log", line(0) + line(1) + line(2) + line(3));
    ASSERT_TRUE(cutOut(store, "2023-11-14.log", open("2023-11-14.log"),
                       {{0, length}, {2 * length, 3 * length}}));
    EXPECT_EQ(content("2023-11-14.log"), line(1) + line(3));
    EXPECT_THAT(listFolder(folder.path()), ElementsAre("2023-11-14.log"));
    EXPECT_EQ(modeOf(folder.path() / "2023-11-14.log"), 0644U);
}

TEST_F(LogStoreTest, KeepsAppendingToAFileThatWasReplaced) {
    store.append(line(0) + line(1), kMonday, false);
    ASSERT_TRUE(cutOut(store, "2023-11-14.log", open("2023-11-14.log"), {{0, line(0).size()}}));
    store.append(line(2), kMonday, false);
    EXPECT_EQ(content("2023-11-14.log"), line(1) + line(2));
}

TEST_F(LogStoreTest, RemovesAFileOfWhichNothingIsLeftEvenOnAFullDisk) {
    store.append(line(0) + line(1), kMonday, false);
    const std::size_t length = line(0).size();
    {
        const FileSizeLimit limit(0);
        ASSERT_TRUE(cutOut(store, "2023-11-14.log", open("2023-11-14.log"),
                           {{0, length}, {length, 2 * length}}));
    }
    EXPECT_THAT(listFolder(folder.path()), IsEmpty());
    store.append(line(2), kMonday, false);
    EXPECT_EQ(content("2023-11-14.log"), line(2));
}

TEST_F(LogStoreTest, LeavesTheFileAloneWhenItCannotBeReplaced) {
    store.append(line(0) + line(1), kMonday, false);
    {
        const FileSizeLimit limit(1);
        EXPECT_FALSE(
            cutOut(store, "2023-11-14.log", open("2023-11-14.log"), {{0, line(0).size()}}));
        EXPECT_EQ(errno, EFBIG);
    }
    EXPECT_EQ(content("2023-11-14.log"), line(0) + line(1));
    // Somebody else has put another file in its place.
    const UniqueFd before = open("2023-11-14.log");
    std::filesystem::remove(folder.path() / "2023-11-14.log");
    folder.write("2023-11-14.log", "another");
    EXPECT_FALSE(cutOut(store, "2023-11-14.log", before, {{0, line(0).size()}}));
    EXPECT_EQ(content("2023-11-14.log"), "another");
    EXPECT_THAT(listFolder(folder.path()), ElementsAre("2023-11-14.log"));
}

TEST_F(LogStoreTest, GivesUpACutWhenAskedTo) {
    const std::string before = line(0) + line(1);
    folder.write("2023-11-14.log", before);
    const std::atomic<bool> stop = true;
    EXPECT_FALSE(
        cutOut(store, "2023-11-14.log", open("2023-11-14.log"), {{0, line(0).size()}}, stop));
    EXPECT_EQ(errno, ECANCELED);
    EXPECT_EQ(content("2023-11-14.log"), before);
    EXPECT_THAT(listFolder(folder.path()), ElementsAre("2023-11-14.log"));
}

// A copy that only fails once the disk is full would take their room from events that arrive.
TEST_F(LogStoreTest, DoesNotBeginACopyForWhichThereIsNoRoom) {
    struct statvfs status {};
    ASSERT_EQ(statvfs(folder.path().c_str(), &status), 0);
    const auto path = folder.write("2023-11-14.log", line(0) + line(1));
    // A file with a hole takes no room itself. However much others free, there is never more than
    // the whole disk.
    std::filesystem::resize_file(path, status.f_blocks * status.f_frsize);
    {
        // Without the look at the room, this is what goes wrong.
        const FileSizeLimit limit(1 << 20);
        EXPECT_FALSE(cutOut(store, "2023-11-14.log", open("2023-11-14.log"), {{0, 1}}));
        EXPECT_EQ(errno, ENOSPC);
    }
    EXPECT_THAT(listFolder(folder.path()), ElementsAre("2023-11-14.log"));
    std::filesystem::remove(path);
}

TEST_F(LogStoreTest, SaysThatItCanAgainAlthoughTheClockWasSetBack) {
    ::testing::internal::CaptureStderr();
    {
        const FileSizeLimit limit(0);
        EXPECT_EQ(store.append(line(1), kTuesday, false).notStored, 1U);
    }
    EXPECT_EQ(store.append(line(2), kMonday, false).stored, 1U);
    EXPECT_THAT(::testing::internal::GetCapturedStderr(),
                ::testing::EndsWith("<5>Events are stored again; 1 could not be stored "
                                    "meanwhile\n"));
}

TEST_F(LogStoreTest, TellsAnEmptyFolderFromNone) {
    EXPECT_THAT(store.fileNames(), Optional(IsEmpty()));
    std::filesystem::remove_all(folder.path());
    EXPECT_EQ(store.fileNames(), std::nullopt);
    EXPECT_EQ(errno, ENOENT);
}

// A slow disk takes seconds for a sync.
TEST_F(LogStoreTest, StoresWhatArrivesWhileACopyIsSynced) {
    store.append(line(0) + line(1), kMonday, false);
    constexpr std::size_t kArriving = 3;
    std::vector<std::future<std::size_t>> arrivals;
    bool hadToWait = false;
    whileCopyIsSynced = [&] {
        if (arrivals.size() < kArriving && !hadToWait) {
            const auto next = static_cast<std::int64_t>(arrivals.size()) + 2;
            arrivals.push_back(std::async(std::launch::async, [this, next] {
                return store.append(line(next), kMonday, false).stored;
            }));
            hadToWait = arrivals.back().wait_for(testing::kPatience) != std::future_status::ready;
        }
    };
    EXPECT_TRUE(cutOut(store, "2023-11-14.log", open("2023-11-14.log"), {{0, line(0).size()}}));
    EXPECT_FALSE(hadToWait);
    EXPECT_EQ(arrivals.size(), kArriving);
    for (auto &arrival : arrivals) {
        EXPECT_EQ(arrival.get(), 1U);
    }
    EXPECT_EQ(content("2023-11-14.log"), line(1) + line(2) + line(3) + line(4));
}

// Each round takes all lines with an even number out while a flood of lines arrives; no line with
// an odd number may be lost, moved or doubled by that.
TEST_F(LogStoreTest, LosesNothingThatArrivesDuringACut) {
    constexpr int kRounds = 15;
    constexpr std::int64_t kLinesAtOnce = 20;
    // However long the disk takes for a round, no more than this arrives during it: most of it at
    // once, and the rest so slowly that it lasts.
    constexpr std::int64_t kLinesARound = 10'000;
    constexpr std::int64_t kSlowLines = 4'000;
    std::atomic<std::int64_t> allowed = 0;
    std::atomic<std::int64_t> appended = 0;
    const auto append = [&] {
        const std::int64_t first = appended;
        std::string lines;
        for (std::int64_t i = 0; i < kLinesAtOnce; ++i) {
            lines += line(first + i);
        }
        EXPECT_EQ(store.append(lines, kMonday, first % 1000 == 0).notStored, 0U);
        appended = first + kLinesAtOnce;
    };
    append();
    std::jthread flood([&](const std::stop_token &stop) {
        while (!stop.stop_requested()) {
            const std::int64_t left = allowed - appended;
            if (left > 0) {
                append();
            }
            if (left < kSlowLines) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        }
    });
    const auto isEven = [](std::string_view text) {
        return (text.substr(0, text.find_last_not_of("\r\n") + 1).back() - '0') % 2 == 0;
    };
    bool isFlooded = false;
    whileCopyIsSynced = [&] {
        if (!std::exchange(isFlooded, true)) {
            const std::int64_t before = appended;
            allowed = before + kLinesARound;
            EXPECT_TRUE(testing::waitUntil([&] { return appended > before; }));
        }
    };
    for (int round = 0; round < kRounds; ++round) {
        isFlooded = false;
        const UniqueFd file = open("2023-11-14.log");
        std::vector<ByteRange> ranges;
        ASSERT_TRUE(forEachPiece(file.get(), store.settledSize(file),
                                 [&](std::uint64_t offset, std::string_view piece) {
                                     if (isEven(piece)) {
                                         ranges.push_back({offset, offset + piece.size()});
                                     }
                                     return true;
                                 }));
        ASSERT_TRUE(cutOut(store, "2023-11-14.log", file, ranges));
    }
    flood.request_stop();
    flood.join();
    std::int64_t next = 1;
    const UniqueFd file = open("2023-11-14.log");
    forEachPiece(file.get(), store.settledSize(file), [&](std::uint64_t, std::string_view piece) {
        if (!isEven(piece)) {
            EXPECT_EQ(piece, line(next));
            next += 2;
        }
        return !::testing::Test::HasFailure();
    });
    EXPECT_EQ(next, appended + 1);
}

TEST_F(LogStoreTest, ReportsNothingWhenNothingIsWrong) {
    ::testing::internal::CaptureStderr();
    {
        const TemporaryFolder ownFolder;
        LogStore ownStore(ownFolder.path());
        ownStore.prepare();
        ownStore.append(line(1), kMonday, true);
        ownStore.append(line(1), kTuesday, false);
    }
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace quorbel
