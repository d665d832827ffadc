#include "common/LogReader.h"
#include "service/collect/RealMessages.h"
#include "service/input/FrameSplitter.h"
#include "service/message/MessageParser.h"
#include "service/message/RecordWriter.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace quorbel {
namespace {

using testing::bytes;
using testing::kRealMessages;
using testing::RealMessage;

constexpr std::string_view kBegin = "1792569600,";
constexpr std::string_view kHost = ",192.0.2.1,";

/// The lines that a message becomes.
std::string linesOf(std::string_view message) {
    MessageParser parser;
    std::string lines;
    if (const auto parsed = parser.parse(message)) {
        RecordWriter().append({1792569600, parsed->priority, "192.0.2.1", parsed->text}, lines);
    }
    return lines;
}

std::string lineOf(std::string_view priority, std::string_view message) {
    std::string line(kBegin);
    line += priority;
    line += kHost;
    line += message;
    line += "\r\n";
    return line;
}

TEST(MessageTableTest, HoldsTheLinesOfRealMessages) {
    for (const RealMessage &c : kRealMessages) {
        EXPECT_EQ(linesOf(c.sent), lineOf(c.priority, c.message)) << c.sent;
    }
}

TEST(MessageTableTest, GivesReadersTheSameEvents) {
    for (const RealMessage &c : kRealMessages) {
        std::vector<std::string> read;
        LogReader::readBytes(linesOf(c.sent), [&](const LogLine &line) {
            read.push_back(lineOf(line.priority, line.message));
            return line.host == "192.0.2.1" && line.date == "1792569600";
        });
        EXPECT_EQ(read, std::vector<std::string>{lineOf(c.priority, c.message)}) << c.sent;
    }
}

// The same messages give the same events over every transport that can carry them.
TEST(MessageTableTest, HoldsWhateverCarriesTheMessage) {
    for (const RealMessage &c : kRealMessages) {
        std::vector<std::string> lines;
        FrameSplitter splitter([&](std::string_view frame, FrameSplitter::Kind /*kind*/) {
            lines.push_back(linesOf(frame));
        });
        std::size_t expected = 0;
        // Whoever counts sends a priority.
        const std::size_t digits = c.sent.find_first_not_of("0123456789", 1);
        if (c.sent.starts_with('<') && digits >= 2 && digits <= 4 && c.sent[digits] == '>') {
            splitter.feed(std::to_string(c.sent.size()) + ' ');
            splitter.feed(c.sent);
            ++expected;
        }
        constexpr std::string_view kEnds("\r\n\0", 3);
        const std::string_view text = c.sent.substr(0, c.sent.find_last_not_of(kEnds) + 1);
        const bool looksCounted = c.sent.starts_with("15 <");
        if (text.find_first_of(bytes("\n\0")) == std::string_view::npos && !looksCounted) {
            splitter.feed(std::string(text) + '\n');
            splitter.feed(std::string(text) + "\r\n");
            expected += 2;
        }
        EXPECT_EQ(lines, std::vector<std::string>(expected, lineOf(c.priority, c.message)))
            << c.sent;
    }
}

TEST(MessageTableTest, CutsTheLargestMessageIntoWholeEvents) {
    // 64 KiB with their priority; the words have two bytes a letter, so that cuts may hurt.
    std::string text;
    while (text.size() < FrameSplitter::kMaxFrame - 8) {
        text += "\xC3\xA4\xC3\xB6";
    }
    const std::string lines = linesOf("<8>" + text);
    std::string whole;
    std::size_t begin = 0;
    std::size_t count = 0;
    const std::string prefix = lineOf("User.Emergency", "");
    const std::string_view start = std::string_view(prefix).substr(0, prefix.size() - 2);
    while (begin < lines.size()) {
        const std::size_t end = lines.find("\r\n", begin) + 2;
        ASSERT_LE(end - begin, kLogPieceSize);
        ASSERT_TRUE(std::string_view(lines).substr(begin).starts_with(start));
        whole += lines.substr(begin + start.size(), end - 2 - begin - start.size());
        begin = end;
        ++count;
    }
    EXPECT_EQ(whole, text);
    // None but the last is shorter than it has to be: the letters fill each line in pairs of bytes.
    const std::size_t room = (kLogPieceSize - prefix.size()) / 2 * 2;
    EXPECT_EQ(count, (text.size() + room - 1) / room);
}

}  // namespace
}  // namespace quorbel
