// Any bytes from the network, through everything that they pass on their way into the log files,
// and read back: no input forges, loses or merges an event.

#include "common/LogReader.h"
#include "platform/Files.h"
#include "platform/Text.h"
#include "service/collect/RealMessages.h"
#include "service/input/FrameSplitter.h"
#include "service/message/MessageParser.h"
#include "service/message/RecordWriter.h"
#include "service/message/WrittenText.h"
#include "service/store/LogStore.h"
#include "support/Seed.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {
namespace {

using testing::kRealMessages;

constexpr std::size_t kInputs = 120'000;

/// Random messages: real ones with changes, and bytes of which those that mean something to a
/// reader are more frequent than chance would have them.
class Input {
public:
    explicit Input(unsigned seed) : m_engine(seed) {}

    std::size_t number(std::size_t most) {
        return std::uniform_int_distribution<std::size_t>(0, most)(m_engine);
    }
    std::string message() {
        const std::size_t kind = number(999);
        if (kind == 0) {
            return noise(FrameSplitter::kMaxFrame);
        }
        if (kind < 20) {
            return noise(3000);
        }
        if (kind < 50) {
            return numbered();
        }
        return kind < 300 ? noise(80) : changed();
    }

private:
    std::string noise(std::size_t most) {
        std::string text(number(most), '\0');
        for (char &c : text) {
            c = byte();
        }
        return number(1) == 0 ? text : '<' + std::to_string(number(200)) + '>' + text;
    }
    /// Begins like a frame of octet counting, more or less.
    std::string numbered() {
        constexpr std::string_view kNext[] = {" <",      " <1>",        " <191>",
                                              " <1234>", " <unknown> ", " "};
        return std::to_string(number(99'999'999) >> number(27)) +
               std::string(kNext[number(std::size(kNext) - 1)]) + noise(30);
    }
    std::string changed() {
        std::string text(kRealMessages[number(std::size(kRealMessages) - 1)].sent);
        for (std::size_t changes = number(4); changes > 0; --changes) {
            const std::size_t at = number(text.size());
            switch (number(3)) {
                case 0:
                    text.insert(at, 1, byte());
                    break;
                case 1:
                    text.erase(at, number(5));
                    break;
                case 2:
                    text.insert(at, text.substr(number(at), number(20)));
                    break;
                default:
                    text.insert(at, kForged[number(std::size(kForged) - 1)]);
            }
        }
        return text;
    }
    char byte() {
        constexpr std::string_view kSpecial =
            testing::bytes("\r\n,\0#-<> 1\x1B\x7F\xC2\x80\xC3\xA9\xEF\xBF\xBE\xF0\x9F");
        return number(1) == 0 ? kSpecial[number(kSpecial.size() - 1)]
                              : static_cast<char>(number(255));
    }

    static constexpr std::string_view kForged[] = {
        "\r\n1700000000,Kern.Emergency,192.0.2.66,forged\r\n", "\r\n", ",,,", "\n<8>", "#012",
        "1700000000,Kern.Emergency,192.0.2.66,forged"};

    std::mt19937 m_engine;
};

struct Event {
    std::string date;
    std::string priority;
    std::string host;
    std::string message;
};

struct RecordPropertyTest : ::testing::Test {
    RecordPropertyTest() { store.prepare(); }

    /// Takes one message as the service does, and notes what has to be read back.
    void take(std::string_view message) {
        const auto parsed = parser.parse(message);
        if (!parsed) {
            EXPECT_EQ(message.find_first_not_of(testing::bytes("\r\n\0\xEF\xBB\xBF")),
                      std::string_view::npos);
            return;
        }
        // No two events share a host, so that none can be taken for a part of another one.
        const std::string host = "h" + std::to_string(expected.size());
        expected.push_back({std::to_string(seconds), std::string(parsed->priority.text()), host,
                            testing::writtenText(parsed->text)});
        count += writer.append({seconds, parsed->priority, host, parsed->text}, lines).lines;
        urgent = urgent || parsed->priority.isUrgent();
    }

    /// Ends a turn, and moves the clock on.
    void append() {
        if (!lines.empty()) {
            EXPECT_EQ(store.append(lines, seconds, urgent).notStored, 0U);
        }
        lines.clear();
        urgent = false;
        seconds += static_cast<std::int64_t>(input.number(500) == 0 ? 86'400 : input.number(3));
    }

    /// Feeds a stream in pieces of any length.
    void feed(FrameSplitter &splitter, std::string_view stream) {
        while (!stream.empty()) {
            const std::size_t piece = 1 + input.number(stream.size() - 1);
            splitter.feed(stream.substr(0, piece));
            stream.remove_prefix(piece);
        }
    }

    /// Expects the log files to hold exactly what was noted, in its order.
    void compare() {
        append();
        std::vector<Event> read;
        for (const std::string &name : store.fileNames().value_or(std::vector<std::string>())) {
            LogReader::readFile(store.path(name), [&](const LogLine &line) {
                read.push_back({std::string(line.date), std::string(line.priority),
                                std::string(line.host), std::string(line.message)});
                return true;
            });
            const std::string content = readFile(store.path(name)).value_or("");
            EXPECT_TRUE(content.ends_with("\r\n"));
            EXPECT_TRUE(isUtf8(content));
            for (std::string_view rest = content; !rest.empty();) {
                const std::size_t length = std::min(rest.find('\n'), rest.size() - 1) + 1;
                EXPECT_LE(length, kLogPieceSize);
                rest.remove_prefix(length);
            }
        }
        EXPECT_EQ(read.size(), count);
        std::size_t next = 0;
        for (const Event &event : expected) {
            std::string message;
            for (; next < read.size() && read[next].host == event.host; ++next) {
                ASSERT_EQ(read[next].date, event.date);
                ASSERT_EQ(read[next].priority, event.priority);
                message += read[next].message;
            }
            ASSERT_EQ(message, event.message);
        }
        EXPECT_EQ(next, read.size());
    }

    const unsigned seed = testing::seed();
    Input input{seed};
    testing::TemporaryFolder folder;
    LogStore store{folder.path()};
    MessageParser parser;
    RecordWriter writer;
    std::int64_t seconds = 1'700'000'000;
    std::string lines;
    bool urgent = false;
    std::size_t count = 0;
    std::vector<Event> expected;
};

bool isDigits(const std::string &text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

/// The length of the priority that a text begins with; 0 when it begins with none.
std::size_t priorityLength(const std::string &text) {
    const std::size_t end = text.find('>');
    return text.starts_with('<') && end <= 4 && isDigits(text.substr(1, end - 1)) ? end + 1 : 0;
}

/// Whether a line reads as the beginning of a counted frame.
bool looksCounted(const std::string &line) {
    const std::string count = line.substr(0, line.find(' '));
    if (!isDigits(count) || count.size() > 7 || count.front() == '0' || count == line) {
        return false;
    }
    const std::size_t length = priorityLength(line.substr(count.size() + 1));
    return length > 0 && std::stoul(count) <= FrameSplitter::kMostCounted &&
           std::stoul(count) >= length;
}

/// A message as a frame of a stream; nothing when no framing can carry it as it is.
std::string frameOf(const std::string &message, bool counted) {
    if (message.empty() || message.size() > FrameSplitter::kMaxFrame) {
        return {};
    }
    if (counted) {
        // What stands behind a frame decides whether it is one where it could be two.
        return priorityLength(message) > 0 ? std::to_string(message.size()) + ' ' + message + '\n'
                                           : "";
    }
    return looksCounted(message) ||
                   message.find_first_of(testing::bytes("\n\0")) != std::string::npos
               ? ""
               : message + '\n';
}

TEST_F(RecordPropertyTest, NoMessageForgesLosesOrMergesAnEvent) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::string owed;
    const auto expectOwed = [&](std::string_view frame, FrameSplitter::Kind kind) {
        EXPECT_EQ(kind, FrameSplitter::Kind::kWhole);
        EXPECT_EQ(frame, owed);
        owed.clear();
        take(frame);
    };
    // A sender counts, or it does not.
    FrameSplitter linesSplitter(expectOwed);
    FrameSplitter countedSplitter(expectOwed);
    for (std::size_t i = 0; i < kInputs && !HasFailure(); ++i) {
        const std::string message = input.message();
        const bool counted = input.number(1) == 0;
        const std::string frame = frameOf(message, counted);
        if (frame.empty()) {
            // As a datagram.
            take(message);
        } else {
            // A CR at the end counts as part of the line end.
            owed = message.substr(0, message.size() - (message.ends_with('\r') ? 1 : 0));
            feed(counted ? countedSplitter : linesSplitter, frame);
            EXPECT_EQ(owed, "") << "no frame was handed on";
        }
        if (input.number(30) == 0) {
            append();
        }
    }
    compare();
}

TEST_F(RecordPropertyTest, NoStreamForgesLosesOrMergesAnEvent) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    for (int i = 0; i < 3'000 && !HasFailure(); ++i) {
        std::string stream;
        for (std::size_t parts = input.number(8); parts > 0; --parts) {
            stream += input.message();
            stream += input.number(2) == 0 ? "\n"
                                           : std::to_string(input.number(70'000)) +
                                                 (input.number(1) == 0 ? " <" : " <13>");
        }
        std::vector<std::string> atOnce;
        FrameSplitter whole([&](std::string_view frame, FrameSplitter::Kind /*kind*/) {
            atOnce.emplace_back(frame);
        });
        whole.feed(stream);
        whole.finish();
        std::vector<std::string> inPieces;
        FrameSplitter pieces([&](std::string_view frame, FrameSplitter::Kind /*kind*/) {
            EXPECT_LE(frame.size(), FrameSplitter::kMaxFrame);
            inPieces.emplace_back(frame);
            take(frame);
        });
        feed(pieces, stream);
        pieces.finish();
        EXPECT_EQ(inPieces, atOnce);
        append();
    }
    compare();
}

}  // namespace
}  // namespace quorbel
