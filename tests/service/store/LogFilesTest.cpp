#include "common/LogReader.h"
#include "platform/Files.h"
#include "platform/UniqueFd.h"
#include "service/store/LogFiles.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <ctime>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorbel {
namespace {

using testing::TemporaryFolder;

UniqueFd openFile(const std::filesystem::path &path) {
    return UniqueFd(open(path.c_str(), O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC, 0600));
}

struct TailCase {
    std::string before;
    TailState state;
    std::string after;
};

TEST(LogFilesTest, RepairTailLeavesWholeLinesOnly) {
    const std::string whole = "1700000000,User.Notice,h,first\r\n";
    const std::string longLine = "1,User.Notice,h," + std::string(3000, 'x');
    const std::vector<TailCase> cases{
        {"", TailState::kWhole, ""},
        {whole, TailState::kWhole, whole},
        {"old\n", TailState::kWhole, "old\n"},
        // All four fields are there.
        {whole + "1700000001,User.Notice,h,m", TailState::kCompleted,
         whole + "1700000001,User.Notice,h,m\r\n"},
        {whole + "1700000001,User.Notice,h,m\r", TailState::kCompleted,
         whole + "1700000001,User.Notice,h,m\r\n"},
        {"1700000001,User.Notice,h,m", TailState::kCompleted, "1700000001,User.Notice,h,m\r\n"},
        {whole + "2,User.Notice,h,m\xE2\x82", TailState::kCompleted,
         whole + "2,User.Notice,h,m\r\n"},
        {whole + "2,User.Notice,h,m" + std::string(5000, '\0'), TailState::kCompleted,
         whole + "2,User.Notice,h,m\r\n"},
        {longLine, TailState::kCompleted, longLine + "\r\n"},
        // They are not.
        {whole + "1", TailState::kCutOff, whole},
        {whole + "1700000001,User.Notice,h", TailState::kCutOff, whole},
        {whole + "1700000001,User.Notice,h,", TailState::kCutOff, whole},
        {whole + "1700000001,User.Notice,h,\xE2\x82", TailState::kCutOff, whole},
        {whole + "1,User.Notice,h\xFF,m", TailState::kCutOff, whole},
        {whole + std::string(10'000, '\0'), TailState::kCutOff, whole},
        {"1700000001,User", TailState::kCutOff, ""},
    };
    for (const TailCase &c : cases) {
        SCOPED_TRACE(c.before.substr(0, 100));
        const TemporaryFolder folder;
        const UniqueFd file = openFile(folder.write("x.log", c.before));
        EXPECT_EQ(repairTail(file.get()), c.state);
        EXPECT_EQ(readFile(folder.path() / "x.log"), c.after);
        EXPECT_EQ(repairTail(file.get()), TailState::kWhole);
    }
}

TEST(LogFilesTest, CopyPartTakesRangesOut) {
    std::mt19937_64 engine(7);
    const auto number = [&](std::size_t least, std::size_t most) {
        return std::uniform_int_distribution<std::size_t>(least, most)(engine);
    };
    for (int round = 0; round < 20; ++round) {
        // Some rounds go over several blocks.
        std::string bytes(number(0, round < 15 ? 300 : 3'000'000), '\0');
        for (char &c : bytes) {
            c = static_cast<char>(number(0, 255));
        }
        std::vector<ByteRange> ranges;
        std::string expected;
        const std::size_t begin = number(0, bytes.size());
        std::size_t at = begin;
        while (at < bytes.size()) {
            const std::size_t keep = std::min(number(0, bytes.size() / 9), bytes.size() - at);
            expected += bytes.substr(at, keep);
            at += keep;
            const std::size_t out = std::min(number(1, bytes.size() / 3 + 1), bytes.size() - at);
            ranges.push_back({at, at + out});
            at += out;
        }
        const TemporaryFolder folder;
        const UniqueFd from = openFile(folder.write("from", bytes));
        const UniqueFd to = openFile(folder.path() / "to");
        ASSERT_TRUE(copyPart(from.get(), {begin, bytes.size()}, ranges, to.get()));
        ASSERT_EQ(readFile(folder.path() / "to"), expected);
    }
}

TEST(LogFilesTest, CopyPartFailsBehindTheEnd) {
    const TemporaryFolder folder;
    const UniqueFd from = openFile(folder.write("from", "abc"));
    const UniqueFd to = openFile(folder.path() / "to");
    EXPECT_FALSE(copyPart(from.get(), {0, 4}, {}, to.get()));
}

TEST(LogFilesTest, PiecesAreThoseOfTheReader) {
    std::mt19937_64 engine(11);
    const auto number = [&](std::size_t least, std::size_t most) {
        return std::uniform_int_distribution<std::size_t>(least, most)(engine);
    };
    for (const std::size_t size : {0U, 1U, 1022U, 1023U, 1024U, 5000U, 2500000U}) {
        std::string bytes(size, 'a');
        for (char &c : bytes) {
            c = number(0, 400) == 0 ? '\n' : "abc,\r"[number(0, 4)];
        }
        const TemporaryFolder folder;
        const UniqueFd file = openFile(folder.write("x.log", bytes));
        for (const std::size_t length : {size, size / 2}) {
            std::vector<std::string> lines;
            std::uint64_t next = 0;
            ASSERT_TRUE(
                forEachPiece(file.get(), length, [&](std::uint64_t offset, std::string_view piece) {
                    EXPECT_EQ(offset, next);
                    EXPECT_EQ(piece, std::string_view(bytes).substr(offset, piece.size()));
                    next += piece.size();
                    if (const auto line = splitLogLine(piece)) {
                        lines.emplace_back(line->message);
                    }
                    return true;
                }));
            EXPECT_EQ(next, length);
            std::vector<std::string> expected;
            LogReader::readBytes(std::string_view(bytes).substr(0, length),
                                 [&](const LogLine &line) {
                                     expected.emplace_back(line.message);
                                     return true;
                                 });
            EXPECT_EQ(lines, expected);
        }
    }
}

TEST(LogFilesTest, PiecesEndWhenNoMoreAreWanted) {
    const TemporaryFolder folder;
    const UniqueFd file = openFile(folder.write("x.log", "a\nb\nc\n"));
    std::string seen;
    EXPECT_TRUE(forEachPiece(file.get(), 6, [&](std::uint64_t /*offset*/, std::string_view piece) {
        seen += piece;
        return piece != "b\n";
    }));
    EXPECT_EQ(seen, "a\nb\n");
}

TEST(LogFilesTest, NamesFilesByTheLocalDay) {
    // The test runs in UTC.
    EXPECT_EQ(logFileName(1700006399), "2023-11-14.log");
    EXPECT_EQ(logFileName(1700006400), "2023-11-15.log");
    EXPECT_EQ(logFileName(0), "1970-01-01.log");
}

// Days of 23 and 25 hours, and the turn of the year, where it is not midnight in UTC.
TEST(LogFilesTest, NamesFilesByTheLocalDayWhereClocksChange) {
    std::optional<testing::ScopedVariable> zone;
    zone.emplace("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
    tzset();
    const std::pair<std::int64_t, const char *> cases[] = {
        {1774738799, "2026-03-28.log"}, {1774738800, "2026-03-29.log"},
        {1774821599, "2026-03-29.log"}, {1774821600, "2026-03-30.log"},
        {1792879199, "2026-10-24.log"}, {1792879200, "2026-10-25.log"},
        {1792969199, "2026-10-25.log"}, {1792969200, "2026-10-26.log"},
        {1798757999, "2026-12-31.log"}, {1798758000, "2027-01-01.log"},
    };
    for (const auto &[seconds, name] : cases) {
        EXPECT_EQ(logFileName(seconds), name) << seconds;
    }
    zone.reset();
    tzset();
}

mode_t modeOf(const UniqueFd &file) {
    struct stat status {};
    fstat(file.get(), &status);
    return status.st_mode & 07777;
}

TEST(LogFilesTest, WhoeverMayEnterTheFolderMayReadTheFiles) {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "2026-11-22.log";
    // Anybody may: only the group reads.
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
    EXPECT_EQ(modeOf(openForAppending(file, O_CREAT)), 0640U);
    EXPECT_EQ(modeOf(openForAppending(file, 0)) & S_IRWXO, 0U);
    // The folder says who may; a file that is there already follows.
    ASSERT_EQ(chmod(folder.path().c_str(), 0750), 0);
    EXPECT_EQ(modeOf(openForAppending(file, 0)), 0644U);
    EXPECT_EQ(modeOf(openForAppending(folder.path() / "2026-11-23.log", O_CREAT)), 0644U);
}

}  // namespace
}  // namespace quorbel
