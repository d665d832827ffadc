#include "core/SearchAhead.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace quorbel {
namespace {

using Answer = TextSearch::Answer;

/// Messages as a chunk holds them; each is shorter than 128 bytes.
MessageBytes bytesOf(const std::vector<std::string> &messages) {
    MessageBytes bytes;
    for (const std::string &message : messages) {
        bytes.push_back(static_cast<char>(message.size()));
        bytes.insert(bytes.end(), message.begin(), message.end());
    }
    return bytes;
}

std::vector<std::string> messagesOf(unsigned number) {
    std::vector<std::string> messages;
    for (unsigned i = 0; i < 400; ++i) {
        messages.push_back("link " + std::to_string(number) + " is up, round " + std::to_string(i));
    }
    return messages;
}

std::shared_ptr<const PackedBytes> packed(const std::vector<std::string> &messages) {
    return std::make_shared<const PackedBytes>(*PackedBytes::pack(bytesOf(messages)));
}

TextCondition text(const std::string &pattern, bool isNegated = false) {
    return {{pattern, false, false}, isNegated};
}

/// The numbers of the messages with an answer.
std::vector<std::size_t> numbersOf(const std::vector<Answer> &answers, Answer wanted) {
    std::vector<std::size_t> numbers;
    for (std::size_t number = 0; number < answers.size(); ++number) {
        if (answers[number] == wanted) {
            numbers.push_back(number);
        }
    }
    return numbers;
}

using Numbers = std::vector<std::size_t>;

class TextSearchTest : public ::testing::Test {
protected:
    TextSearch::Found search(const std::vector<TextCondition> &texts,
                             const TextSearch::Request &request) {
        return TextSearch(texts).search(request, m_room, m_isUnwanted).value();
    }

    std::shared_ptr<const PackedBytes> m_packed = packed(messagesOf(7));
    MessageBytes m_room;
    std::atomic<bool> m_isUnwanted = false;
};

TEST_F(TextSearchTest, AnswersForEachMessage) {
    const auto found = search({text("ROUND 39")}, {m_packed, std::nullopt, {false}});
    EXPECT_EQ(found.places.size(), 400U);
    EXPECT_EQ(numbersOf(found.answers[0], Answer::kYes),
              (Numbers{39, 390, 391, 392, 393, 394, 395, 396, 397, 398, 399}));
    EXPECT_TRUE(numbersOf(found.answers[0], Answer::kUnsure).empty());
}

TEST_F(TextSearchTest, AnswersForAnExpressionAndForLettersAlike) {
    auto messages = messagesOf(7);
    messages[3] = "a di\u017Fk";
    m_packed = packed(messages);
    EXPECT_EQ(
        numbersOf(search({{{"round 1.$", false, true}, false}}, {m_packed, std::nullopt, {false}})
                      .answers[0],
                  Answer::kYes)
            .size(),
        10U);
    EXPECT_EQ(numbersOf(search({text("disk")}, {m_packed, std::nullopt, {false}}).answers[0],
                        Answer::kYes),
              Numbers{3});
}

TEST_F(TextSearchTest, LooksOnlyWhereItIsAskedTo) {
    const auto all = search({text("up")}, {m_packed, std::nullopt, {false}}).places;
    const MessageRun::Places some = {all[5], all[6], all[390]};
    const auto found = search({text("round 6")}, {m_packed, some, {false}});
    EXPECT_EQ(found.places, some);
    EXPECT_EQ(numbersOf(found.answers[0], Answer::kYes), Numbers{1});
}

TEST_F(TextSearchTest, LooksForTheNextTextWhereTheFirstOneLeavesItOpen) {
    const auto second = [this](bool isNegated, bool isElsewhere) {
        return search({text("round 39", isNegated), text("up")},
                      {m_packed, std::nullopt, {isElsewhere, false}})
            .answers[1];
    };
    EXPECT_EQ(numbersOf(second(false, false), Answer::kYes).size(), 11U);
    EXPECT_EQ(numbersOf(second(false, false), Answer::kUnsure).size(), 389U);
    EXPECT_EQ(numbersOf(second(false, true), Answer::kYes).size(), 400U);
    EXPECT_EQ(numbersOf(second(true, false), Answer::kYes).size(), 389U);
    EXPECT_EQ(numbersOf(second(true, true), Answer::kYes).size(), 389U);
}

TEST_F(TextSearchTest, AnswersForWhatCannotBeThere) {
    const auto found = search({text("xyzzy"), text("up")}, {m_packed, std::nullopt, {true, true}});
    EXPECT_EQ(numbersOf(found.answers[0], Answer::kNo).size(), 400U);
    EXPECT_EQ(numbersOf(found.answers[1], Answer::kYes).size(), 400U);
}

TEST_F(TextSearchTest, EndsWhenItIsNotWanted) {
    m_isUnwanted = true;
    EXPECT_FALSE(
        TextSearch({text("up")}).search({m_packed, std::nullopt, {false}}, m_room, m_isUnwanted));
}

class SearchAheadTest : public ::testing::TestWithParam<std::size_t> {
protected:
    static std::shared_ptr<TextSearch> searchFor(const std::string &pattern) {
        return std::make_shared<TextSearch>(std::vector{text(pattern)});
    }
    void begin(const std::shared_ptr<TextSearch> &search,
               const std::shared_ptr<const PackedBytes> &packed) {
        m_ahead.begin(search, {packed, std::nullopt, {false}});
    }
    /// Takes it when it is there; asks again where it was too early.
    TextSearch::Found takeWhenDone(const std::shared_ptr<TextSearch> &search,
                                   const std::shared_ptr<const PackedBytes> &packed) {
        for (;;) {
            std::this_thread::sleep_for(m_patience);
            if (auto found = m_ahead.take(*search, *packed)) {
                return std::move(*found);
            }
            begin(search, packed);
            m_patience *= 2;
        }
    }

    SearchAhead m_ahead{GetParam()};
    std::chrono::milliseconds m_patience{1};
};

TEST_P(SearchAheadTest, GivesToEachSearchWhatIsIts) {
    const auto first = packed(messagesOf(1));
    const auto second = packed(messagesOf(2));
    const auto one = searchFor("link 1");
    const auto round = searchFor("round 12");
    for (const auto &bytes : {first, second}) {
        begin(one, bytes);
        begin(round, bytes);
    }
    const auto count = [this](const auto &search, const auto &bytes) {
        return numbersOf(takeWhenDone(search, bytes).answers[0], Answer::kYes).size();
    };
    EXPECT_EQ(count(one, first), 400U);
    EXPECT_EQ(count(one, second), 0U);
    EXPECT_EQ(count(round, first), 11U);
    EXPECT_EQ(count(round, second), 11U);
}

TEST_P(SearchAheadTest, GivesNothingElseAndNothingTwice) {
    const auto bytes = packed(messagesOf(1));
    const auto search = searchFor("up");
    begin(search, bytes);
    EXPECT_FALSE(m_ahead.take(*search, *packed(messagesOf(1))));
    EXPECT_FALSE(m_ahead.take(*searchFor("up"), *bytes));
    takeWhenDone(search, bytes);
    EXPECT_FALSE(m_ahead.take(*search, *bytes));
}

TEST_P(SearchAheadTest, ForgetsTheFirstOfTooManyAndThoseOfNoOther) {
    const auto search = searchFor("up");
    const auto other = searchFor("round");
    const auto others = packed(messagesOf(1000));
    begin(other, others);
    std::vector<std::shared_ptr<const PackedBytes>> all;
    for (unsigned number = 0; number <= SearchAhead::kMost; ++number) {
        all.push_back(packed(messagesOf(number)));
        begin(search, all.back());
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(m_ahead.take(*search, *all.front()));
    takeWhenDone(search, all.back());
    takeWhenDone(other, others);
}

TEST_P(SearchAheadTest, ForgetsASearchInTheMiddleOfIt) {
    const auto search = searchFor("up");
    std::vector<std::shared_ptr<const PackedBytes>> all;
    for (unsigned number = 0; number < SearchAhead::kMost; ++number) {
        all.push_back(packed(messagesOf(number)));
        begin(search, all.back());
    }
    m_ahead.forget(*search);
    EXPECT_FALSE(m_ahead.take(*search, *all.back()));
    takeWhenDone(search, all.front());
}

TEST_P(SearchAheadTest, EndsWithWorkUnderWay) {
    SearchAhead ahead(GetParam());
    for (unsigned number = 0; number < SearchAhead::kMost; ++number) {
        ahead.begin(searchFor("up"), {packed(messagesOf(number)), std::nullopt, {false}});
    }
}

INSTANTIATE_TEST_SUITE_P(Threads, SearchAheadTest, ::testing::Values(1U, 3U));

TEST(SearchAheadAloneTest, NothingIsDoneWhereNobodyIs) {
    SearchAhead ahead(0);
    EXPECT_FALSE(ahead.isOfUse());
}

TEST(TextsAheadTest, KeepsWhatItTookUntilItIsAskedForOthers) {
    SearchAhead ahead(1);
    TextsAhead texts(ahead, {text("up")});
    const auto bytes = packed(messagesOf(1));
    const TextSearch::Found *found = nullptr;
    for (std::chrono::milliseconds patience{1}; found == nullptr; patience *= 2) {
        EXPECT_EQ(texts.found(nullptr), nullptr);
        texts.begin({bytes, std::nullopt, {false}});
        std::this_thread::sleep_for(patience);
        found = texts.found(bytes);
    }
    EXPECT_EQ(texts.found(bytes), found);
    EXPECT_EQ(found->places.size(), 400U);
    EXPECT_EQ(texts.found(packed(messagesOf(1))), nullptr);
    EXPECT_EQ(texts.found(bytes), nullptr);
}

}  // namespace
}  // namespace quorbel
