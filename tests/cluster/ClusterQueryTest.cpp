#include "cluster/ClusterQuery.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quorbel {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

struct Read {
    std::vector<std::string> events;
    std::string problem;
};

/// In pieces of so many bytes.
Read readAnswer(std::string_view bytes, std::size_t piece) {
    Read read;
    ClusterAnswer answer([&read](const LogLine &event) {
        read.events.push_back(std::string(event.date) + '|' + std::string(event.priority) + '|' +
                              std::string(event.host) + '|' + std::string(event.message));
        return true;
    });
    while (!bytes.empty() && answer.add(bytes.substr(0, piece))) {
        bytes.remove_prefix(std::min(piece, bytes.size()));
    }
    read.problem = answer.problem();
    return read;
}

TEST(ClusterAnswerTest, RowsInWhateverPieces) {
    const std::string bytes =
        "1\tUser.Debug\th\tone\n-2\tp\th\\\\\\'\ta\\tb\\nc\\\\\\0d\n3\t\t\t\n";
    for (std::size_t piece = 1; piece <= bytes.size(); ++piece) {
        const Read read = readAnswer(bytes, piece);
        EXPECT_THAT(read.events, ElementsAre("1|User.Debug|h|one",
                                             std::string("-2|p|h\\'|a\tb\nc\\\0d", 17), "3|||"));
        EXPECT_EQ(read.problem, "");
    }
}

TEST(ClusterAnswerTest, WhatIsNoRowIsAProblem) {
    const std::string exception =
        "Code: 241, e.displayText() = DB::Exception: Memory limit exceeded, e.what() = x";
    struct {
        std::string bytes, problem;
    } const cases[] = {
        {"1\tp\th\tm\n" + exception + "\n", exception},
        {"1\tp\th\n", "1?p?h"},
        {"1\tp\th\tm\tx\n", "1?p?h?m?x"},
        {"x\tp\th\tm\n", "x?p?h?m"},
        {"\n", "an empty row"},
        {"1\tp\th\tm", "the answer has no end"},
        {std::string(3'000'000, 'x'), "a row without an end"},
        {std::string(3000, 'y') + '\n', std::string(500, 'y') + "..."},
    };
    for (const auto &[bytes, problem] : cases) {
        EXPECT_EQ(readAnswer(bytes, 1000).problem, problem);
    }
}

TEST(ClusterAnswerTest, EndsWhenTheHandlerHasHadEnough) {
    int seen = 0;
    ClusterAnswer answer([&seen](const LogLine & /*event*/) { return ++seen < 2; });
    EXPECT_FALSE(answer.add("1\tp\th\tm\n2\tp\th\tm\n3\tp\th\tm\n"));
    EXPECT_EQ(seen, 2);
    EXPECT_EQ(answer.problem(), "");
}

TEST(ClusterQueryTest, TextsCannotLeaveTheirQuotationMarks) {
    EXPECT_EQ(sqlText("a'b\\c"), "'a\\'b\\\\c'");
    EXPECT_EQ(sqlText(std::string_view("\0", 1)), "'\\0'");
}

TEST(ClusterQueryTest, MomentsThatNoRowHas) {
    EXPECT_THAT(selectEvents({}, {}), Not(HasSubstr("WHERE")));
    EXPECT_THAT(selectEvents({}, {.from = INT64_MIN}), HasSubstr("WHERE time >= 0 "));
    EXPECT_THAT(selectEvents({}, {.from = INT64_MAX}), HasSubstr("WHERE 0 "));
    EXPECT_THAT(selectEvents({}, {.until = INT64_MIN}), HasSubstr("WHERE time < 0 "));
    EXPECT_THAT(selectEvents({}, {.until = INT64_MAX}), Not(HasSubstr("WHERE")));
}

}  // namespace
}  // namespace quorbel
