// Streams that are out of step: what their senders do, and what nobody can make of a text.

#include "service/input/FrameSplitter.h"
#include "support/Seed.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {
namespace {

using ::testing::ElementsAre;
using namespace std::string_view_literals;

std::string counted(std::string_view message) {
    return std::to_string(message.size()) + ' ' + std::string(message);
}

/// What a stream becomes, in pieces whose length `next` tells; "~" stands in front of stray texts
/// and "%" in front of those that were cut.
std::vector<std::string> framesOf(std::string_view stream, const std::function<std::size_t()> &next,
                                  std::uint64_t *skipped = nullptr) {
    std::vector<std::string> frames;
    FrameSplitter splitter([&](std::string_view frame, FrameSplitter::Kind kind) {
        constexpr const char *kMarks[] = {"", "%", "~"};
        frames.push_back(kMarks[static_cast<int>(kind)] + std::string(frame));
        EXPECT_LE(frame.size(), FrameSplitter::kMaxFrame);
    });
    while (!stream.empty()) {
        const std::string_view piece = stream.substr(0, next());
        splitter.feed(piece);
        stream.remove_prefix(piece.size());
    }
    splitter.finish();
    if (skipped != nullptr) {
        *skipped = splitter.skipped();
    }
    return frames;
}

std::vector<std::string> framesOf(std::string_view stream, std::uint64_t *skipped = nullptr) {
    return framesOf(
        stream, [&] { return stream.size(); }, skipped);
}

struct Case {
    std::string_view stream;
    std::vector<std::string> frames;
};

const std::vector<Case> &cases() {
    static const std::vector<Case> table{
        // A counted message without a priority: first, in between, several, last.
        {"5 hello6 <13>ab6 <13>cd", {"hello", "<13>ab", "<13>cd"}},
        {"6 <13>ab5 hello6 <13>cd", {"<13>ab", "hello", "<13>cd"}},
        {"6 <13>ab5 hello5 world6 <13>cd", {"<13>ab", "hello", "world", "<13>cd"}},
        {"5 hello5 world6 <13>cd", {"hello", "world", "<13>cd"}},
        {"6 <13>ab5 hello", {"<13>ab", "hello"}},
        {"5 hello5 world", {"hello", "world"}},
        {"6 <13>ab5 he\nlo6 <13>cd", {"<13>ab", "he\nlo", "<13>cd"}},
        {"6 <13>ab\n5 hello\n6 <13>cd\n", {"<13>ab", "hello", "<13>cd"}},
        // Its text looks like frames.
        {"6 <13>ab12 see 9 <1>you6 <13>cd", {"<13>ab", "see 9 <1>you", "<13>cd"}},
        // No number is a count for certain.
        {"6 <13>ab5 he6 <13>cd", {"<13>ab", "~5 he", "<13>cd"}},
        {"6 <13>ab500 errors6 <13>cd", {"<13>ab", "~500 errors", "<13>cd"}},
        {"5 apples", {"5 apples"}},
        {"5 hello", {"5 hello"}},
        {"5 hello\n6 <13>ab", {"5 hello", "<13>ab"}},
        {"3 of 5 items\n<13>x\n", {"3 of 5 items", "<13>x"}},
        {"12 errors found\n", {"12 errors found"}},
        {"1 12 <180805 x\n6 <13>ab", {"1 12 <180805 x", "<13>ab"}},
        // A count that is too small, by bytes of characters or otherwise.
        {"6 <13>\xC3\xA4x6 <13>cd", {"<13>\xC3\xA4", "~x", "<13>cd"}},
        {"6 <13>abc def6 <13>cd", {"<13>ab", "~c def", "<13>cd"}},
        {"6 <13>abc\ndef6 <13>cd", {"<13>ab", "~c", "~def", "<13>cd"}},
        {"6 <13>ab  6 <13>cd", {"<13>ab", "<13>cd"}},
        {"6 <13>ab<6 <13>cd", {"<13>ab", "~<", "<13>cd"}},
        {"6 <13>ab<14>6 <13>cd", {"<13>ab", "~<14>", "<13>cd"}},
        // The end that is left is digits.
        {"7 <13>\xC3\xA4:87 <13>cde7 <13>fgh", {"<13>\xC3\xA4:", "~8", "<13>cde", "<13>fgh"}},
        {"8 <13>\xC3\xA4\xC3\xA4:807 <13>cde8 <13>fghi",
         {"<13>\xC3\xA4\xC3\xA4", "~:80", "<13>cde", "<13>fghi"}},
        {"8 <13>\xC3\xA4:a17 <13>\xC3\xA4:a8 <13>fghi",
         {"<13>\xC3\xA4:a", "~1", "<13>\xC3\xA4:", "~a", "<13>fghi"}},
        {"7 <13>\xC3\xA4:97 <13>cde", {"<13>\xC3\xA4:", "%<13>cde"}},
        {"6 <13>abx 17 <13>cdefghijklmno6 <13>cd",
         {"<13>ab", "~x ", "<13>cdefghijklmno", "<13>cd"}},
        {"6 <13>abx16 <13>cd6 <13>ef6 <13>gh", {"<13>ab", "~x1", "<13>cd", "<13>ef", "<13>gh"}},
        {"6 <13>abx0006 <13>cd6 <13>ef", {"<13>ab", "~x000", "<13>cd", "<13>ef"}},
        // One that is too large takes what it says, and no more.
        {"8 <13>ab6 <13>cd6 <13>ef", {"<13>ab6 ", "~<13>cd", "<13>ef"}},
        {"7 <13>ab6 <13>cd6 <13>ef", {"<13>ab6", "~ <13>cd", "<13>ef"}},
        // Byte order marks: of the stream, of a frame, of a counted message.
        {"\xEF\xBB\xBF"
         "6 <13>ab6 <13>cd",
         {"<13>ab", "<13>cd"}},
        {"6 <13>ab\xEF\xBB\xBF"
         "6 <13>cd",
         {"<13>ab", "<13>cd"}},
        {"9 \xEF\xBB\xBF<13>ab6 <13>cd", {"\xEF\xBB\xBF<13>ab", "<13>cd"}},
        {"6 <13>abx9 \xEF\xBB\xBF<13>ab6 <13>cd", {"<13>ab", "~x", "\xEF\xBB\xBF<13>ab", "<13>cd"}},
        {"\xEF\xBB\xBF<13>ab\n<13>cd\n", {"\xEF\xBB\xBF<13>ab", "<13>cd"}},
        {"\xEF\xBB\xBF"
         "5 hello6 <13>ab",
         {"hello", "<13>ab"}},
        {"\xEF\xBB\xBFtext\n", {"\xEF\xBB\xBFtext"}},
        {"\xEF\xBB", {"\xEF\xBB"}},
        // What stands in a counted message is its own business.
        {"30 <13>see 9 <0>forged 6 <0>ab12 6 <13>cd", {"<13>see 9 <0>forged 6 <0>ab12 ", "<13>cd"}},
        {"25 <13>6 <0>ab6 <0>cd6 <0>ef6 <13>cd", {"<13>6 <0>ab6 <0>cd6 <0>ef", "<13>cd"}},
        // Its count could be shorter, and the rest would fit: but so does the whole.
        {"6 <13>ab17 <13>cde6 <0>forg.6 <13>cd", {"<13>ab", "<13>cde6 <0>forg.", "<13>cd"}},
        {"6 <13>ab17 <13>cde6 <0>forg.\n", {"<13>ab", "<13>cde6 <0>forg."}},
        {"6 <13>ab17 <13>cde6 <0>forg.", {"<13>ab", "<13>cde6 <0>forg."}},
        // Lines of senders that have not counted end at line ends only.
        {"<13>see 6 <0>ab6 <0>cd\n<13>x\n", {"<13>see 6 <0>ab6 <0>cd", "<13>x"}},
        {"<13>x\nsee 6 <0>ab6 <0>cd\n", {"<13>x", "see 6 <0>ab6 <0>cd"}},
        {"see 6 <0>ab6 <0>cd\n<13>x\n", {"see 6 <0>ab6 <0>cd", "<13>x"}},
        {"<13>x\n5 hello6 <0>ab\n", {"<13>x", "5 hello6 <0>ab"}},
        {"<13>see 6 <0>ab6 <0>cd", {"<13>see 6 <0>ab6 <0>cd"}},
        // One who did, and changed to lines, has changed with the first.
        {"6 <13>ab<13>x\n<13>see 6 <0>ab6 <0>cd\n", {"<13>ab", "<13>x", "<13>see 6 <0>ab6 <0>cd"}},
    };
    return table;
}

TEST(StreamStepTest, FindsTheNextFrameWhateverThePieces) {
    for (const Case &c : cases()) {
        for (std::size_t step = 1; step <= c.stream.size(); ++step) {
            EXPECT_EQ(framesOf(c.stream, [&] { return step; }), c.frames)
                << c.stream << " in steps of " << step;
        }
    }
}

/// A stream of counted messages with something odd among them, and what it becomes. No two
/// messages are the same.
struct OddStream {
    std::string bytes;
    std::vector<std::string> frames;

    void add(int number) {
        const std::string message = "<13>message number " + std::to_string(number) + '.';
        bytes += counted(message);
        frames.push_back(message);
    }
};

// Each of them once made one message of 64 KiB of everything behind it.
TEST(StreamStepTest, StoresEachOf5000MessagesBehindAnOddFrame) {
    struct Odd {
        std::string_view bytes;
        std::vector<std::string> frames;
    };
    const std::vector<Odd> odds{
        {"11 hello world", {"hello world"}},
        {"\xEF\xBB\xBF", {}},
        {"8 <13>h\xC3\xA4llo", {"<13>h\xC3\xA4l", "~lo"}},
        {"12 <13>Z\xC3\xBCrich 80", {"<13>Z\xC3\xBCrich ", "~80"}},
        {"6 <13>ab\nc\nd", {"<13>ab", "~c", "~d"}},
        {"900 <13>too large", {}},
        {"\xFF\xFE\xFD", {"~\xFF\xFE\xFD"}},
        {"junk", {"~junk"}},
        {"1048577 <13>x", {"~1048577 <13>x"}},
    };
    for (const Odd &odd : odds) {
        for (const bool first : {true, false}) {
            OddStream stream;
            if (!first) {
                stream.add(0);
            }
            stream.bytes += odd.bytes;
            const std::size_t before = stream.frames.size();
            stream.frames.insert(stream.frames.end(), odd.frames.begin(), odd.frames.end());
            for (int i = 1; i <= 5'000; ++i) {
                stream.add(i);
            }
            SCOPED_TRACE(std::string(odd.bytes) + (first ? " first" : " second"));
            const auto frames = framesOf(stream.bytes);
            if (odd.frames.empty() && !odd.bytes.starts_with('\xEF')) {
                // It takes some with it, as it says.
                EXPECT_GT(frames.size(), 4'960U);
                EXPECT_EQ(frames.back(), stream.frames.back());
            } else if (odd.bytes.starts_with("1048577")) {
                // Eight bytes of it could have been a text in front of a count.
                EXPECT_EQ(frames.back(), stream.frames.back());
            } else {
                EXPECT_EQ(frames, stream.frames) << before;
            }
        }
    }
}

// Too few for a message of 64 KiB: what they are is known when the stream ends.
TEST(StreamStepTest, StoresEachOfAFewMessagesBehindAnOddBeginning) {
    for (const std::string beginning : {"junk", "0 ", "\xFF\xFE\xFD", "3 <13>x", "  <", "13>x "}) {
        OddStream stream;
        stream.bytes = beginning;
        stream.frames.push_back('~' + beginning);
        for (int i = 0; i < 20; ++i) {
            stream.add(i);
        }
        EXPECT_EQ(framesOf(stream.bytes), stream.frames);
        EXPECT_EQ(framesOf(stream.bytes, [] { return 1; }), stream.frames);
    }
    EXPECT_THAT(framesOf("junk 80 <13"), ElementsAre("junk 80 <13"));
}

TEST(StreamStepTest, HandsOnWhatTheNextFrameTellsAtOnce) {
    std::vector<std::string> frames;
    FrameSplitter splitter(
        [&](std::string_view frame, FrameSplitter::Kind /*kind*/) { frames.emplace_back(frame); });
    splitter.feed("6 <13>ab11 hello world");
    EXPECT_THAT(frames, ElementsAre("<13>ab"));
    splitter.feed("6 <13>cd");
    EXPECT_THAT(frames, ElementsAre("<13>ab", "hello world", "<13>cd"));
    // A message that holds what looks like a frame does not wait for the next.
    splitter.feed("20 <13>see 9 <13>inner.");
    EXPECT_EQ(frames.back(), "<13>see 9 <13>inner.");
}

TEST(StreamStepTest, CountsWhatATextThatIsTooLongLoses) {
    constexpr std::size_t kLong = 200'000;
    for (const std::string_view begin : {"6 <13>ab"sv, ""sv}) {
        std::uint64_t skipped = 0;
        const std::string text(kLong, 'x');
        const std::string stream = std::string(begin) + text + "6 <13>cd6 <13>ef";
        const auto frames = framesOf(stream, &skipped);
        ASSERT_EQ(frames.size(), begin.empty() ? 3U : 4U);
        EXPECT_EQ(frames[frames.size() - 1], "<13>ef");
        EXPECT_EQ(frames[frames.size() - 2], "<13>cd");
        EXPECT_EQ(frames[frames.size() - 3].size() - 1 + skipped, kLong);
        for (const std::size_t step : {7U, 1000U, 65536U}) {
            EXPECT_EQ(framesOf(stream, [&] { return step; }), frames);
        }
    }
    std::uint64_t skipped = 0;
    EXPECT_EQ(
        framesOf("<13>" + std::string(kLong, 'x') + " 6 <0>ab6 <0>cd\n<13>b\n", &skipped).back(),
        "<13>b");
    EXPECT_EQ(skipped, kLong + 4 + 15 - FrameSplitter::kMaxFrame);
    EXPECT_EQ(framesOf("100000 <13>" + std::string(100'000 - 4, 'x') + "6 <13>ab", &skipped).back(),
              "<13>ab");
    EXPECT_EQ(skipped, 100'000 - FrameSplitter::kMaxFrame);
}

// Streams of what confuses: whatever their pieces, the same frames, and every byte in one of them
// or known to belong to none.
class StreamMaker {
public:
    explicit StreamMaker(unsigned seed) : m_engine(seed) {}

    std::size_t number(std::size_t most) {
        return std::uniform_int_distribution<std::size_t>(0, most)(m_engine);
    }
    std::string stream() {
        std::string bytes = number(4) == 0 ? "\xEF\xBB\xBF" : "";
        for (std::size_t parts = 1 + number(12); parts > 0; --parts) {
            bytes += part();
        }
        return bytes;
    }

private:
    std::string text(std::size_t most) {
        constexpr std::string_view kPieces[] = {"a",
                                                "some text ",
                                                "\xC3\xA4",
                                                "\xE2\x82\xAC",
                                                "\xF0\x9F\x98\x80",
                                                " ",
                                                "8080",
                                                "1",
                                                "0",
                                                "\n",
                                                "\r\n",
                                                "6 <0>ab",
                                                "12 <",
                                                "<13>",
                                                "\xEF\xBB\xBF",
                                                "\xEF\xBB",
                                                "5 x",
                                                ">"};
        std::string made;
        for (std::size_t pieces = number(most); pieces > 0; --pieces) {
            made += kPieces[number(std::size(kPieces) - 1)];
        }
        return made;
    }
    std::string part() {
        const std::string message =
            (number(4) == 0 ? "" : "<13>") + text(number(60) == 0 ? 30'000 : 8);
        const auto characters = static_cast<std::size_t>(std::ranges::count_if(
            message, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
        switch (number(5)) {
            case 0:
                return message + '\n';
            case 1:
                return message;
            case 2:
                return std::to_string(characters) + ' ' + message;
            case 3:
                return std::to_string(number(70'000) >> number(16)) + ' ' + message;
            default:
                return counted(message);
        }
    }

    std::mt19937 m_engine;
};

TEST(StreamStepTest, GivesTheSameFramesHoweverTheStreamIsCut) {
    const unsigned seed = testing::seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    StreamMaker make(seed);
    for (int i = 0; i < 4'000 && !::testing::Test::HasFailure(); ++i) {
        const std::string stream = make.stream();
        std::uint64_t skipped = 0;
        const auto atOnce = framesOf(stream, &skipped);
        std::uint64_t skippedInPieces = 0;
        const std::size_t most = std::size_t{1} << make.number(17);
        EXPECT_EQ(framesOf(
                      stream, [&] { return 1 + make.number(most); }, &skippedInPieces),
                  atOnce)
            << ::testing::PrintToString(stream.substr(0, 2000));
        EXPECT_EQ(skippedInPieces, skipped);
        if (stream.size() < 2'000) {
            EXPECT_EQ(framesOf(stream, [] { return 1; }), atOnce)
                << ::testing::PrintToString(stream);
        }
        // What is in no frame are counts, line ends and marks.
        std::size_t from = 0;
        for (const std::string &frame : atOnce) {
            const std::string_view bytes =
                std::string_view(frame).substr(frame[0] == '~' || frame[0] == '%' ? 1 : 0);
            const std::size_t at = stream.find(bytes, from);
            ASSERT_NE(at, std::string::npos);
            if (skipped == 0) {
                EXPECT_EQ(stream.substr(from, at - from)
                              .find_first_not_of("0123456789 \t\r\n\xEF\xBB\xBF"),
                          std::string::npos)
                    << ::testing::PrintToString(stream);
            }
            from = at + bytes.size();
        }
    }
}

// However a sender is wrong in some messages, those that it counts right and that do not follow a
// wrong one are stored as they are, whatever stands in them.
TEST(StreamStepTest, KeepsWhatIsCountedRight) {
    const unsigned seed = testing::seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    StreamMaker make(seed);
    for (int i = 0; i < 2'000 && !::testing::Test::HasFailure(); ++i) {
        std::string stream;
        std::vector<std::string> expected;
        for (std::size_t count = 1 + make.number(20); count > 0; --count) {
            std::string message = "<13>" + std::to_string(make.number(1000));
            for (std::size_t parts = make.number(3); parts > 0; --parts) {
                message += make.stream();
            }
            message += '.';
            stream += counted(message);
            expected.push_back(message);
            if (message.size() > FrameSplitter::kMaxFrame) {
                message.resize(FrameSplitter::kMaxFrame);
                // A CR at the end counts as part of the line end.
                expected.back() =
                    "%" + message.substr(0, message.size() - (message.ends_with('\r') ? 1 : 0));
            }
        }
        const auto frames = framesOf(stream, [&] { return 1 + make.number(3000); });
        ASSERT_EQ(frames.size(), expected.size());
        for (std::size_t at = 0; at < frames.size(); ++at) {
            EXPECT_TRUE(frames[at] == expected[at])
                << frames[at].size() << ' ' << expected[at].size() << ' '
                << frames[at].substr(0, 100) << " ... "
                << ::testing::PrintToString(frames[at].substr(frames[at].size() - 3));
        }
    }
}

}  // namespace
}  // namespace quorbel
