#include "core/GapReader.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Start = GapReader::Start;

const std::string kFirst = "2026-11-20.log";
const std::string kSecond = "2026-11-21.log";
const std::string kThird = "2026-11-22.log";

std::string line(const std::string &message) {
    return "1,Local7.Error,h," + message + "\r\n";
}

/// How many bytes are loaded at a time; 0 for line by line.
struct GapReaderTest : ::testing::TestWithParam<std::uint64_t> {
    [[nodiscard]] FilePlace at(const std::string &name, std::uint64_t offset) const {
        return {name, markOf(folder.path() / name).value_or(FileMark{}), offset};
    }
    /// The messages, read with so many looks at the clock in between, or on some threads.
    std::vector<std::string> read() {
        std::vector<std::string> messages;
        if (GetParam() > 0) {
            LogLoad load(reader.takeRest(), 0, {.threads = 2, .bytes = GetParam()});
            EXPECT_TRUE(reader.isDone());
            while (auto batch = load.next([](std::uint64_t) {})) {
                batch->loaded.events.visitFields([&](const EventFields &read) {
                    messages.emplace_back(read.message.value_or("(absent)"));
                });
            }
        }
        while (!reader.isDone()) {
            reader.run(
                [&](const LogLine &read) {
                    messages.emplace_back(read.message);
                    return true;
                },
                [] { return true; });
        }
        return messages;
    }

    testing::TemporaryFolder folder;
    GapReader reader{folder.path()};
};

TEST_P(GapReaderTest, ReadsBetweenTwoPlacesOfAFile) {
    folder.write(kFirst, line("a") + line("b") + line("c") + line("d"));
    const std::uint64_t size = line("a").size();
    ASSERT_EQ(reader.begin(at(kFirst, size), at(kFirst, 3 * size)), Start::kReady);
    EXPECT_THAT(read(), ElementsAre("b", "c"));
    ASSERT_EQ(reader.begin(at(kFirst, size), at(kFirst, size)), Start::kReady);
    EXPECT_THAT(read(), IsEmpty());
}

TEST_P(GapReaderTest, ReadsOverTheDaysInTheirOrder) {
    folder.write(kFirst, line("a") + line("b"));
    folder.write(kSecond, line("c"));
    folder.write(kThird, line("d") + line("e"));
    folder.write("2026-11-19.log", line("earlier"));
    folder.write("2026-11-23.log", line("later"));
    folder.write("2026-11-21b.log", line("other"));
    const std::uint64_t size = line("a").size();
    ASSERT_EQ(reader.begin(at(kFirst, size), at(kThird, size)), Start::kReady);
    EXPECT_THAT(read(), ElementsAre("b", "c", "d"));
    ASSERT_EQ(reader.begin({}, at(kFirst, size)), Start::kReady);
    EXPECT_THAT(read(), ElementsAre("earlier", "a"));
}

TEST_P(GapReaderTest, ReadsManyLinesPieceByPiece) {
    std::string bytes;
    for (int number = 0; number < 5000; ++number) {
        bytes += line(std::to_string(number) + std::string(300, 'x'));
    }
    folder.write(kFirst, bytes);
    ASSERT_EQ(reader.begin({}, at(kFirst, bytes.size())), Start::kReady);
    const auto messages = read();
    ASSERT_EQ(messages.size(), 5000U);
    for (std::size_t number = 0; number < messages.size(); ++number) {
        ASSERT_TRUE(messages[number].starts_with(std::to_string(number) + "x"));
    }
}

TEST_P(GapReaderTest, WhatIsAppendedMeanwhileIsNotRead) {
    folder.write(kFirst, line("a"));
    const FilePlace end = at(kFirst, line("a").size());
    ASSERT_EQ(reader.begin({}, end), Start::kReady);
    std::ofstream(folder.path() / kFirst, std::ios::app) << line("b");
    EXPECT_THAT(read(), ElementsAre("a"));
}

TEST_P(GapReaderTest, AFileThatWasReplacedIsNotReadOn) {
    folder.write(kFirst, line("a") + line("b"));
    folder.write(kSecond, line("c"));
    const FilePlace from = at(kFirst, line("a").size());
    const FilePlace to = at(kSecond, line("c").size());
    folder.write("new", line("b") + line("a"));
    std::filesystem::rename(folder.path() / "new", folder.path() / kFirst);
    EXPECT_EQ(reader.begin(from, to), Start::kLost);
    EXPECT_TRUE(reader.isDone());
    folder.write("new", line("c"));
    std::filesystem::rename(folder.path() / "new", folder.path() / kSecond);
    EXPECT_EQ(reader.begin(at(kFirst, 0), to), Start::kOutdated);
    EXPECT_EQ(reader.beginAnew(to, kSecond), Start::kOutdated);
    EXPECT_TRUE(reader.isDone());
    std::filesystem::remove(folder.path() / kSecond);
    EXPECT_EQ(reader.begin(at(kFirst, 0), to), Start::kOutdated);
    EXPECT_EQ(reader.beginAnew(to, kSecond), Start::kOutdated);
    std::filesystem::remove(folder.path() / kFirst);
    EXPECT_EQ(reader.begin(from, at(kFirst, 0)), Start::kLost);
    // Of one that was empty or not there, nothing is lost.
    folder.write(kFirst, line("d"));
    ASSERT_EQ(reader.begin({kFirst, {}, 0}, at(kFirst, line("d").size())), Start::kReady);
    EXPECT_THAT(read(), ElementsAre("d"));
}

TEST_P(GapReaderTest, NeverReadsFromTheMiddleOfALine) {
    folder.write(kFirst, line("a") + line("b"));
    EXPECT_EQ(reader.begin(at(kFirst, 3), at(kFirst, 2 * line("a").size())), Start::kLost);
    EXPECT_EQ(reader.begin(at(kFirst, 2 * line("a").size()), at(kFirst, line("a").size())),
              Start::kLost);
    EXPECT_EQ(reader.begin(at(kSecond, 0), at(kFirst, line("a").size())), Start::kLost);
}

TEST_P(GapReaderTest, ReadsAnewWhatTheStartWouldRead) {
    folder.write(kFirst, line("a"));
    folder.write(kSecond, line("b") + line("c"));
    folder.write(kThird, line("later"));
    folder.write("old.log", line("foreign"));
    folder.write("old.txt", line("no log"));
    ASSERT_EQ(reader.beginAnew(at(kSecond, line("b").size()), kSecond), Start::kReady);
    EXPECT_THAT(read(), ElementsAre("a", "b", "foreign"));
    // After a clock that was set back.
    ASSERT_EQ(reader.beginAnew(at(kSecond, line("b").size()), kThird), Start::kReady);
    EXPECT_THAT(read(), ElementsAre("a", "b", "later", "foreign"));
    ASSERT_EQ(reader.beginAnew({}, ""), Start::kReady);
    EXPECT_THAT(read(), ElementsAre("foreign"));
}

TEST_P(GapReaderTest, ATornLineIsNoLine) {
    folder.write(kFirst, line("a") + "1,Local7.Error,h,to");
    folder.write(kSecond, line("b"));
    ASSERT_EQ(reader.begin({}, at(kSecond, line("b").size())), Start::kReady);
    EXPECT_THAT(read(), ElementsAre("a", "b"));
}

INSTANTIATE_TEST_SUITE_P(Ways, GapReaderTest, ::testing::Values(0U, 100U, 5000U, 100'000U));

}  // namespace
}  // namespace quorbel
