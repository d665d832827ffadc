#include "service/input/FrameSplitter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace quorbel {
namespace {

using ::testing::ElementsAre;
using namespace std::string_view_literals;

struct Frames {
    std::vector<std::string> whole;
    std::vector<std::string> cut;
    std::vector<std::string> all;  ///< stray ones with a "~" in front
    FrameSplitter splitter{[this](std::string_view frame, FrameSplitter::Kind kind) {
        (kind == FrameSplitter::Kind::kCut ? cut : whole).emplace_back(frame);
        all.push_back((kind == FrameSplitter::Kind::kStray ? "~" : "") + std::string(frame));
    }};
};

struct Case {
    std::string_view stream;
    std::vector<std::string> frames;
    std::vector<std::string> cut = {};
};

const std::vector<Case> &cases() {
    static const std::vector<Case> table{
        {"", {}},
        {"<1>a\n<2>b\n", {"<1>a", "<2>b"}},
        {"<1>a\r\n<2>b\r\n", {"<1>a", "<2>b"}},
        {"<1>a\0<2>b\0"sv, {"<1>a", "<2>b"}},
        {"<1>a\n<2>unfinished", {"<1>a", "<2>unfinished"}},
        {"4 <1>a4 <2>b", {"<1>a", "<2>b"}},
        {"7 <1>a\nbc4 <2>b", {"<1>a\nbc", "<2>b"}},
        // One framing after the other.
        {"4 <1>a<2>b\n4 <3>c<4>d\n", {"<1>a", "<2>b", "<3>c", "<4>d"}},
        // Senders that end a counted frame with a line feed nevertheless, within or behind it.
        {"4 <1>a\n4 <2>b\n", {"<1>a", "<2>b"}},
        {"5 <1>a\n5 <2>b\n", {"<1>a\n", "<2>b\n"}},
        {"5 <1>a\r4 <2>b", {"<1>a", "<2>b"}},
        // Empty frames.
        {"\n\n\r\n<1>a\n\n\0\0<2>b\n"sv, {"<1>a", "<2>b"}},
        {"0 <1>a\n", {"0 <1>a"}},
        {"04 <1>a\n", {"04 <1>a"}},
        // Lines that begin with a number.
        {"12 errors found\n", {"12 errors found"}},
        {"12\n13 \n", {"12", "13 "}},
        {"2023-10-11 text\n", {"2023-10-11 text"}},
        {"1234567890 <1>a\n", {"1234567890 <1>a"}},
        {"4  <1>a\n", {"4  <1>a"}},
        {"12", {"12"}},
        {"12 ", {"12 "}},
        {"12 <unknown> errors\n<1>a\n", {"12 <unknown> errors", "<1>a"}},
        {"90000000 <x>\n<1>a\n", {"90000000 <x>", "<1>a"}},
        {"5 <>abc\n<1>a\n", {"5 <>abc", "<1>a"}},
        {"9 <1a>abc\n<1>a\n", {"9 <1a>abc", "<1>a"}},
        {"9 <1234>abc\n<1>a\n", {"9 <1234>abc", "<1>a"}},
        {"9 <12\n<1>a\n", {"9 <12", "<1>a"}},
        {"9 <123\0<1>a\n"sv, {"9 <123", "<1>a"}},
        // Counts that do not even cover the priority, or more than anybody sends.
        {"3 <12>abc\n<1>a\n", {"3 <12>abc", "<1>a"}},
        {"1 <1>abc\n<1>a\n", {"1 <1>abc", "<1>a"}},
        {"1048577 <1>abc\n<1>a\n", {"1048577 <1>abc", "<1>a"}},
        {"12345678 <1>abc\n<1>a\n", {"12345678 <1>abc", "<1>a"}},
        {"5 <123><1>a\n", {"<123>", "<1>a"}},
        // The stream ends within a counted frame, or before it is known for one.
        {"10 <1>abc", {}, {"<1>abc"}},
        {"10 <1>", {}, {"<1>"}},
        {"1048576 <1>abc", {}, {"<1>abc"}},
        {"10 <", {"10 <"}},
        {"10 <123", {"10 <123"}},
    };
    return table;
}

TEST(FrameSplitterTest, TellsFramingsApartWhateverThePieces) {
    for (const Case &c : cases()) {
        for (std::size_t step = 1; step <= c.stream.size() + 1; ++step) {
            SCOPED_TRACE(std::string(c.stream) + " in steps of " + std::to_string(step));
            Frames frames;
            for (std::size_t at = 0; at < c.stream.size(); at += step) {
                frames.splitter.feed(c.stream.substr(at, step));
            }
            frames.splitter.finish();
            EXPECT_EQ(frames.whole, c.frames);
            EXPECT_EQ(frames.cut, c.cut);
        }
    }
}

/// The frames of a stream that another splitter goes on with from `cut` on.
std::vector<std::string> framesInTwoParts(std::string_view stream, std::size_t cut) {
    Frames first;
    first.splitter.feed(stream.substr(0, cut));
    Frames second;
    EXPECT_TRUE(second.splitter.resume(first.splitter.state()));
    second.splitter.feed(stream.substr(cut));
    second.splitter.finish();
    std::vector<std::string> all = first.all;
    all.insert(all.end(), second.all.begin(), second.all.end());
    return all;
}

std::vector<std::string> framesOf(std::string_view stream) {
    Frames frames;
    frames.splitter.feed(stream);
    frames.splitter.finish();
    return frames.all;
}

TEST(FrameSplitterTest, GoesOnInAnotherOneWhereverTheStreamIsCut) {
    for (const Case &c : cases()) {
        for (std::size_t cut = 0; cut <= c.stream.size(); ++cut) {
            SCOPED_TRACE(std::string(c.stream) + " cut at " + std::to_string(cut));
            EXPECT_EQ(framesInTwoParts(c.stream, cut), framesOf(c.stream));
        }
    }
    // Within what is skipped, counted or not.
    const std::string large = "<1>" + std::string(FrameSplitter::kMaxFrame + 9000, 'x');
    const std::string stream = large + "\n<2>b\n" + std::to_string(large.size()) + ' ' + large +
                               "<3>c\n" + "4 <1>a" + large + "4 <1>b";
    for (std::size_t cut = 0; cut < stream.size(); cut += 1500) {
        SCOPED_TRACE(cut);
        EXPECT_EQ(framesInTwoParts(stream, cut), framesOf(stream));
    }
}

TEST(FrameSplitterTest, BeginsAnewWithWhatIsNoStateOfItsVersion) {
    Frames before;
    before.splitter.feed("<1>a");
    const std::string good = before.splitter.state();
    ASSERT_EQ(good, "splitter1 0 0 0 0 0 4 0 0 0\n<1>a");
    ASSERT_TRUE(Frames().splitter.resume(good));
    for (const std::string &state :
         {std::string(), std::string("splitter"), std::string("splitter1"),
          std::string("splitter1 0 0 0 0 0 4 0 0 0"), std::string("another9 1 2 3\n<1>a"),
          std::string("splitter1\n<1>a"), std::string("splitter10 1 0 0 0 0 4 0 0 0\n<1>a"),
          std::string("splitter1 0 0 0 0 0 4 0 0\n<1>a"),
          std::string("splitter1 0 0 0 0 0 4 0 0 0 0\n<1>a"),
          std::string("splitter1 0 0 0 0 0 4 0 0 0 \n<1>a"),
          std::string("splitter1 0 0 0 0 0 4 0 0 -1\n<1>a"),
          std::string("splitter1 0 0 0 0 0 4 0 0 x\n<1>a"),
          std::string("splitter1 3 0 0 0 0 4 0 0 0\n<1>a"),
          std::string("splitter1 0 2 0 0 0 4 0 0 0\n<1>a"),
          std::string("splitter1 0 0 0 0 0 5 0 0 0\n<1>a"),
          std::string("splitter1 0 0 0 0 0 4 5 0 0\n<1>a"),
          good + std::string(2 * FrameSplitter::kMaxFrame, 'x')}) {
        Frames frames;
        EXPECT_FALSE(frames.splitter.resume(state)) << state.substr(0, 40);
        frames.splitter.feed("<2>b\n");
        EXPECT_THAT(frames.all, ElementsAre("<2>b")) << state.substr(0, 40);
    }
}

TEST(FrameSplitterTest, HandsFramesOnAsSoonAsTheyAreComplete) {
    Frames frames;
    frames.splitter.feed("<1>a\n4 <2>b<3>");
    EXPECT_THAT(frames.whole, ElementsAre("<1>a", "<2>b"));
}

TEST(FrameSplitterTest, KeepsTheLargestFrameWhole) {
    const std::string large = "<1>" + std::string(FrameSplitter::kMaxFrame - 3, 'x');
    Frames frames;
    frames.splitter.feed(large + '\n' + std::to_string(large.size()) + ' ' + large + "<2>b\n");
    EXPECT_THAT(frames.whole, ElementsAre(large, large, "<2>b"));
    EXPECT_TRUE(frames.cut.empty());
}

TEST(FrameSplitterTest, CutsLongerFramesAndGoesOnBehindThem) {
    const std::string kept = "<1>" + std::string(FrameSplitter::kMaxFrame - 3, 'x');
    const std::string large = kept + std::string(200'000, 'y');
    const std::string stream =
        large + "\n<2>b\n" + std::to_string(large.size()) + ' ' + large + "<3>c\n";
    for (const std::size_t step : {1000U, 65536U, 1000000U}) {
        Frames frames;
        for (std::size_t at = 0; at < stream.size(); at += step) {
            frames.splitter.feed(std::string_view(stream).substr(at, step));
        }
        EXPECT_THAT(frames.cut, ElementsAre(kept, kept));
        EXPECT_THAT(frames.whole, ElementsAre("<2>b", "<3>c"));
    }
}

TEST(FrameSplitterTest, ForgetsTheRestOfACutFrameAtTheEnd) {
    Frames frames;
    frames.splitter.feed("<1>" + std::string(100'000, 'x'));
    frames.splitter.finish();
    EXPECT_EQ(frames.cut.size(), 1U);
    EXPECT_TRUE(frames.whole.empty());
}

}  // namespace
}  // namespace quorbel
