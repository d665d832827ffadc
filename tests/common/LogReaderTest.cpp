#include "common/LogReader.h"
#include "support/SlowLogReader.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using testing::readSlowly;
using testing::TemporaryFolder;

using Fields = testing::LogFieldTexts;

// Not the reader's own constant: files written by others were cut there.
constexpr std::size_t kPiece = 1023;

Fields copy(const LogLine &line) {
    return {std::string(line.date), std::string(line.priority), std::string(line.host),
            std::string(line.message)};
}

std::vector<Fields> readBack(const std::filesystem::path &file) {
    std::vector<Fields> lines;
    LogReader::readFile(file, [&lines](const LogLine &line) {
        lines.push_back(copy(line));
        return true;
    });
    return lines;
}

struct SplitCase {
    const char *piece;
    std::optional<Fields> fields;
};

TEST(LogReaderTest, SplitsLines) {
    const SplitCase cases[] = {
        {"1700000000,Local7.Error,10.0.0.5,disk full, retrying\r\n",
         Fields{"1700000000", "Local7.Error", "10.0.0.5", "disk full, retrying"}},
        // Empty fields do not exist: later ones move forward.
        {"1700000000,Local7.Error,,hello, world\r\n",
         Fields{"1700000000", "Local7.Error", "hello", " world"}},
        {",,1,2,3,4\n", Fields{"1", "2", "3", "4"}},
        {"1,,host,one,two\r\n", Fields{"1", "host", "one", "two"}},
        {"1,,host,message\r\n", std::nullopt},
        // Commas belong to the message from its first byte on.
        {"1,2,3,,leading\r\n", Fields{"1", "2", "3", ",leading"}},
        {"1,2,3,,\r\n", Fields{"1", "2", "3", ","}},
        // Too few fields.
        {"1700000000,Local7.Error,10.0.0.5\r\n", std::nullopt},
        {"1700000000,Local7.Error,10.0.0.5,\r\n", std::nullopt},
        {"\r\n", std::nullopt},
        {"\n", std::nullopt},
        {"", std::nullopt},
        {",,,,,\r\n", std::nullopt},
        // Line ends: LF alone, none, and CR as a separator of every field.
        {"1,2,3,4\n", Fields{"1", "2", "3", "4"}},
        {"1,2,3,4", Fields{"1", "2", "3", "4"}},
        {"1,2,3,4\r5,6\r\n", Fields{"1", "2", "3", "4"}},
        {"1\r2\r3\r4\r\n", Fields{"1", "2", "3", "4"}},
        {"1,2,3,\r4\r\n", Fields{"1", "2", "3", "4"}},
        {"\r\r1,2,3,4\r\n", Fields{"1", "2", "3", "4"}},
    };
    for (const SplitCase &c : cases) {
        const auto line = splitLogLine(c.piece);
        EXPECT_EQ(line.has_value(), c.fields.has_value()) << c.piece;
        if (line && c.fields) {
            EXPECT_EQ(copy(*line), *c.fields) << c.piece;
        }
    }
}

TEST(LogReaderTest, AnyByteButTheSeparatorsBelongsToAField) {
    const std::string piece("1\0\x01,\xff\xfe,h\te,m\0sg\x7f\r\n", 18);
    const auto line = splitLogLine(piece);
    ASSERT_TRUE(line);
    EXPECT_EQ(copy(*line),
              (Fields{std::string("1\0\x01", 3), "\xff\xfe", "h\te", std::string("m\0sg\x7f", 5)}));
}

TEST(LogReaderTest, TakesALongLineInPiecesOfAtMost1023Bytes) {
    const TemporaryFolder folder;
    // The pieces end in the middle of a field list, so that each is accepted or not by itself.
    std::string line = "1,A,h," + std::string(3000 - 6, 'x');
    line.replace(kPiece, 8, "2,B,i,yy");
    const auto file = folder.write("x.log", line + "\r\n");
    EXPECT_EQ(readBack(file), (std::vector<Fields>{
                                  {"1", "A", "h", std::string(kPiece - 6, 'x')},
                                  {"2", "B", "i", "yy" + std::string(kPiece - 8, 'x')},
                              }));
}

TEST(LogReaderTest, APieceEndsExactlyAtItsLimit) {
    const TemporaryFolder folder;
    // 1,023 bytes with the line end are one piece; one byte more leaves the line feed to the next.
    const std::string fits = "1,A,h," + std::string(kPiece - 8, 'x') + "\r\n";
    const std::string over = "2,B,i," + std::string(kPiece - 7, 'y') + "\r\n";
    const auto lines = readBack(folder.write("x.log", fits + over + "3,C,j,z\r\n"));
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0][3].size(), kPiece - 8);
    EXPECT_EQ(lines[1][3].size(), kPiece - 7);
    EXPECT_EQ(lines[2][0], "3");
}

TEST(LogReaderTest, WhatCannotBeReadHasNoLines) {
    const TemporaryFolder folder;
    EXPECT_TRUE(readBack(folder.path() / "missing.log").empty());
    EXPECT_TRUE(readBack(folder.path()).empty());
    const auto pipe = folder.path() / "pipe.log";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_TRUE(readBack(pipe).empty());
}

TEST(LogReaderTest, AHandlerCanEndTheReading) {
    const TemporaryFolder folder;
    const auto file = folder.write("x.log", "1,2,3,4\n5,6,7,8\n");
    int lines = 0;
    EXPECT_FALSE(LogReader::readFile(file, [&lines](const LogLine &) {
        ++lines;
        return false;
    }));
    EXPECT_EQ(lines, 1);
    EXPECT_FALSE(LogReader::readFile(
        file, [](const LogLine &) { return true; }, [](std::size_t) { return false; }));
}

TEST(LogReaderTest, SaysHowFarItRead) {
    const TemporaryFolder folder;
    const auto file = folder.write("x.log", "1,2,3,4\r\n\n" + std::string(1500, 'x') + "\n5,6,7,8");
    LogExtent extent;
    EXPECT_TRUE(LogReader::readFile(
        file, [](const LogLine &) { return true; }, {}, &extent));
    EXPECT_EQ(extent.file, file);
    EXPECT_NE(extent.inode, 0U);
    EXPECT_EQ(extent.bytes, 1518U);
    EXPECT_EQ(extent.lines, 1511U);
    EXPECT_EQ(extent.pieces, 5U);
    LogReader::readFile(
        folder.path() / "missing.log", [](const LogLine &) { return true; }, {}, &extent);
    EXPECT_EQ(extent.inode, 0U);
    EXPECT_EQ(extent.bytes, 0U);
}

TEST(LogReaderTest, ReadsRandomBytesAsTheRulesSay) {
    const TemporaryFolder folder;
    std::mt19937 random(20261121);
    const std::string alphabet("ab1,,,,\r\n\n\0\xc3\xa9\xff ", 15);
    std::uniform_int_distribution<std::size_t> letter(0, alphabet.size() - 1);
    std::uniform_int_distribution<int> stretch(0, 400);
    std::string bytes;
    while (bytes.size() < 3'000'000) {
        bytes += alphabet[letter(random)];
        if (stretch(random) == 0) {
            bytes.append(static_cast<std::size_t>(stretch(random)) * 5, 'x');
        }
    }
    const auto lines = readBack(folder.write("x.log", bytes));
    EXPECT_GT(lines.size(), 1000U);
    EXPECT_EQ(lines, readSlowly(bytes));

    std::vector<Fields> fromMemory;
    LogReader::readBytes(bytes, [&fromMemory](const LogLine &line) {
        fromMemory.push_back(copy(line));
        return true;
    });
    EXPECT_EQ(fromMemory, lines);
}

// Where parts are cut must not matter: within line ends, fields and pieces, behind the end.
TEST(LogReaderTest, PartsThatTouchOneAnotherMakeTheWholeFile) {
    const TemporaryFolder folder;
    std::mt19937 random(20261122);
    const auto below = [&random](std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
    };
    const std::string alphabet("ab1,,,,\r\n\n\0\xff ", 12);
    for (int round = 0; round < 300; ++round) {
        std::string bytes;
        const std::size_t lineFeedsAreRare = below(3);
        while (bytes.size() < 20'000 && below(20'000) > 1) {
            const char letter = alphabet[below(alphabet.size())];
            bytes += letter == '\n' && below(40) < 20 * lineFeedsAreRare ? ',' : letter;
            if (below(300) == 0) {
                bytes.append(below(2500), 'x');
            }
        }
        const LogFile file(folder.write("x.log", bytes));
        std::vector<Fields> lines;
        LogExtent whole;
        std::uint64_t told = 0;
        for (std::uint64_t begin = 0, end = 0; end != LogSpan::kNoEnd; begin = end) {
            end = begin + 1 + below(round % 2 == 0 ? 3000 : 30);
            end = end > bytes.size() ? LogSpan::kNoEnd : end;
            LogExtent part;
            ASSERT_TRUE(LogReader::readPart(
                file, {begin, end},
                [&lines](const LogLine &line) {
                    lines.push_back(copy(line));
                    return true;
                },
                [&told](std::size_t count) {
                    told += count;
                    return true;
                },
                part));
            whole.bytes = std::max(whole.bytes, part.bytes);
            whole.lines = std::max(whole.lines, part.lines);
            whole.pieces += part.pieces;
        }
        ASSERT_EQ(lines, readSlowly(bytes)) << round;
        LogExtent extent;
        LogReader::readFile(
            folder.path() / "x.log", [](const LogLine &) { return true; }, {}, &extent);
        ASSERT_EQ(whole.bytes, bytes.size());
        ASSERT_EQ(whole.lines, extent.lines);
        ASSERT_EQ(whole.pieces, extent.pieces);
        ASSERT_EQ(told, bytes.size());
    }
}

}  // namespace
}  // namespace quorbel
