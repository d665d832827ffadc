#include "platform/PackedLines.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstddef>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace quorbel {
namespace {

std::size_t residentBytes() {
    std::size_t total = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

std::string lineOf(std::size_t number) {
    return std::to_string(number) + std::string(number % 300, 'x') + "\n";
}

TEST(PackedLinesTest, LinesStayWhatTheyAreHoweverManyFollow) {
    constexpr std::size_t kLines = 30'000;  // some megabytes: the memory grows, and may move
    PackedLines lines;
    std::vector<PackedLines::Place> places;
    std::size_t bytes = 0;
    for (std::size_t number = 0; number < kLines; ++number) {
        places.push_back(lines.append(lineOf(number), static_cast<std::uint32_t>(number)));
        bytes += lineOf(number).size();
    }
    lines.setNote(places[7], 70);
    const PackedLines moved = std::move(lines);
    EXPECT_EQ(moved.count(), kLines);
    EXPECT_EQ(moved.textSize(), bytes);
    PackedLines::Reader reader(moved);
    for (std::size_t number = 0; number < kLines; ++number) {
        ASSERT_EQ(reader.next(), places[number]);
        ASSERT_EQ(moved.line(places[number]), lineOf(number));
        ASSERT_EQ(moved.note(places[number]), number == 7 ? 70 : number);
    }
}

TEST(PackedLinesTest, AnEmptyLineAndOneLargerThanWhatIsTakenAtATimeAreLines) {
    PackedLines lines;
    const std::string large(5'000'000, 'x');
    const auto empty = lines.append("", 1);
    const auto first = lines.append(large, 2);
    const auto last = lines.append("end", 3);
    EXPECT_EQ(lines.line(empty), "");
    EXPECT_EQ(lines.line(first), large);
    EXPECT_EQ(lines.line(last), "end");
}

TEST(PackedLinesTest, WhatIsForgottenGoesBackToTheSystem) {
    constexpr std::size_t kLines = 64'000;
    const std::string line(1000, 'x');
    PackedLines lines;
    std::vector<PackedLines::Place> places;
    places.reserve(kLines);
    const std::size_t before = residentBytes();
    for (std::size_t number = 0; number < kLines; ++number) {
        places.push_back(lines.append(line, 0));
    }
    const std::size_t full = residentBytes();
    EXPECT_LT(full - before, kLines * 1200);
    for (std::size_t number = 0; number < kLines; ++number) {
        lines.forgetBefore(places[number]);
        ASSERT_EQ(lines.line(places[number]), line);
    }
    EXPECT_GT(full - residentBytes(), kLines * 800);
}

}  // namespace
}  // namespace quorbel
