#include "platform/UniqueFd.h"
#include "service/base/Journal.h"
#include "support/WaitUntil.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <future>
#include <string>

namespace quorbel {
namespace {

using ::testing::EndsWith;
using ::testing::StartsWith;

/// A pipe in place of the standard error stream.
struct JournalTest : ::testing::Test {
    JournalTest() {
        std::array<int, 2> ends{};
        EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
        reader = UniqueFd(ends[0]);
        fcntl(reader.get(), F_SETFL, O_NONBLOCK);
        dup2(ends[1], STDERR_FILENO);
        close(ends[1]);
    }
    ~JournalTest() override { dup2(before.get(), STDERR_FILENO); }

    [[nodiscard]] std::string read() const {
        std::string text;
        std::array<char, 65536> bytes{};
        ssize_t count = 0;
        while ((count = ::read(reader.get(), bytes.data(), bytes.size())) > 0) {
            text.append(bytes.data(), static_cast<std::size_t>(count));
        }
        return text;
    }

    UniqueFd before{dup(STDERR_FILENO)};
    UniqueFd reader;
};

std::ptrdiff_t linesIn(const std::string &text) {
    return std::ranges::count(text, '\n');
}

TEST_F(JournalTest, AJournalThatNobodyReadsKeepsNobodyWaiting) {
    constexpr std::ptrdiff_t kLines = 5'000;
    const std::uint64_t droppedBefore = journalLinesDropped();
    auto saying = std::async(std::launch::async, [] {
        for (std::ptrdiff_t i = 0; i < kLines; ++i) {
            say(JournalLevel::kInformation, "line " + std::to_string(i));
        }
    });
    EXPECT_EQ(saying.wait_for(testing::kPatience), std::future_status::ready);
    // Also lets go of whoever waits nevertheless.
    std::string first = read();
    while (saying.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
        first += read();
    }
    ASSERT_THAT(first, StartsWith("<6>line 0\n<6>line 1\n"));
    const std::uint64_t dropped = journalLinesDropped() - droppedBefore;
    EXPECT_GT(dropped, 0U);
    EXPECT_EQ(linesIn(first) + static_cast<std::ptrdiff_t>(dropped), kLines);
    EXPECT_THAT(first, EndsWith("\n<6>line " + std::to_string(linesIn(first) - 1) + "\n"));
    // Said once, when somebody reads again.
    say(JournalLevel::kError, "after");
    say(JournalLevel::kError, "last");
    EXPECT_EQ(read(), "<4>Journal lines that were dropped because nobody read them: " +
                          std::to_string(dropped) + "\n<3>after\n<3>last\n");
}

TEST_F(JournalTest, AStreamThatIsClosedHurtsNobody) {
    const std::uint64_t droppedBefore = journalLinesDropped();
    const UniqueFd pipe(dup(STDERR_FILENO));
    close(STDERR_FILENO);
    say(JournalLevel::kError, "lost");
    dup2(pipe.get(), STDERR_FILENO);
    EXPECT_EQ(journalLinesDropped(), droppedBefore + 1);
    say(JournalLevel::kError, "after");
    EXPECT_EQ(read(), "<4>Journal lines that were dropped because nobody read them: 1\n<3>after\n");
}

// What does not fit into a pipe at once could wait for it.
TEST_F(JournalTest, VeryLongLinesBecomeSeveral) {
    std::string text;
    for (int i = 0; i < 6'000; ++i) {
        text += "\xC3\xA4";
    }
    say(JournalLevel::kWarning, text);
    std::string joined;
    std::string rest = read();
    while (!rest.empty()) {
        const std::size_t length = rest.find('\n') + 1;
        EXPECT_LE(length, 4096U);
        ASSERT_THAT(rest, StartsWith("<4>\xC3\xA4"));
        joined += rest.substr(3, length - 4);
        rest.erase(0, length);
    }
    EXPECT_EQ(joined, text);
}

TEST_F(JournalTest, EachTextIsALine) {
    say(JournalLevel::kNotice, "two\nlines");
    say(JournalLevel::kError, "");
    EXPECT_EQ(read(), "<5>two lines\n<3>\n");
}

}  // namespace
}  // namespace quorbel
