#include "core/LiteralSearch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using Answer = LiteralSearch::Answer;
using namespace std::string_literals;

struct Place {
    std::size_t end;
    std::size_t begin;
    Answer answer;
    auto operator<=>(const Place &) const = default;
};
using Places = std::vector<Place>;

std::string lowered(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char letter) {
        return letter < 0x80U ? static_cast<char>(std::tolower(letter)) : static_cast<char>(letter);
    });
    return text;
}

void addPlaces(Places &places, const std::string &bytes, const std::string &text, Answer answer) {
    for (std::size_t begin = 0; (begin = bytes.find(text, begin)) != std::string::npos; ++begin) {
        places.push_back({begin + text.size(), begin, answer});
    }
}

Places plainPlaces(const std::vector<std::string> &texts, bool isCaseSensitive,
                   const std::string &bytes) {
    Places places;
    bool hasS = false;
    bool hasK = false;
    for (const std::string &text : texts) {
        const std::string small = lowered(text);
        addPlaces(places, isCaseSensitive ? bytes : lowered(bytes), isCaseSensitive ? text : small,
                  Answer::kYes);
        hasS = hasS || (!isCaseSensitive && small.find('s') != std::string::npos);
        hasK = hasK || (!isCaseSensitive && small.find('k') != std::string::npos);
    }
    if (hasS) {
        addPlaces(places, bytes, "\u017F", Answer::kUnsure);
    }
    if (hasK) {
        addPlaces(places, bytes, "\u212A", Answer::kUnsure);
    }
    std::ranges::sort(places);
    places.erase(std::unique(places.begin(), places.end()), places.end());
    return places;
}

/// Nothing when the search failed.
std::optional<Places> placesOf(const LiteralSearch &search, std::string_view bytes) {
    Places places;
    std::size_t last = 0;
    const bool isDone =
        search.search(bytes, [&](Answer answer, std::size_t begin, std::size_t end) {
            EXPECT_GE(end, last);
            last = end;
            places.push_back({end, begin, answer});
            return true;
        });
    std::ranges::sort(places);
    places.erase(std::unique(places.begin(), places.end()), places.end());
    return isDone ? std::optional(places) : std::nullopt;
}

class LiteralSearchModelTest : public ::testing::TestWithParam<unsigned> {
protected:
    std::string randomText(const std::string &characters, std::size_t length) {
        std::string text;
        for (; length > 0; --length) {
            text += characters[m_random() % characters.size()];
        }
        return text;
    }
    std::size_t randomLength() {
        return m_random() % 8 == 0 ? 1 + m_random() % LiteralSearch::kMostBytes
                                   : 1 + m_random() % 6;
    }

    std::mt19937 m_random{GetParam()};
};

TEST_P(LiteralSearchModelTest, FindsWhatAPlainLookFinds) {
    // Signs that differ from letters, or from each other, in the bit of the case alone; bytes that
    // are no text; and what the letters beyond ASCII are made of.
    const std::vector<std::string> alphabets = {
        "aA", "aAzZ@`[{\x01!1\xC1\xE1", "\0\x20\x80\xFF"s + "aA", "sSkKx\xC5\xBF\xE2\x84\xAA"};
    std::size_t found = 0;
    for (int round = 0; round < 5000; ++round) {
        const std::string &characters = alphabets[m_random() % alphabets.size()];
        const bool isCaseSensitive = m_random() % 2 == 0;
        std::string bytes = randomText(characters, m_random() % 200);
        std::vector<std::string> texts;
        for (std::size_t i = 1 + m_random() % LiteralSearch::kMostTexts; i > 0; --i) {
            texts.push_back(randomText(characters, randomLength()));
            if (m_random() % 2 == 0) {
                bytes.insert(m_random() % (bytes.size() + 1), texts.back());
            }
        }
        if (!std::ranges::all_of(texts, [&](const std::string &text) {
                return LiteralSearch::canFind(text, isCaseSensitive);
            })) {
            continue;
        }
        // What goes on behind the end is no part of it.
        const std::string goingOn = bytes + randomText(characters, 100);
        const LiteralSearch search(texts, isCaseSensitive);
        const auto places = placesOf(search, {goingOn.data(), bytes.size()});
        ASSERT_TRUE(places) << ::testing::PrintToString(texts);
        const Places expected = plainPlaces(texts, isCaseSensitive, bytes);
        ASSERT_EQ(*places, expected)
            << ::testing::PrintToString(texts) << " in " << ::testing::PrintToString(bytes);
        const auto best = std::ranges::max_element(expected, {}, &Place::answer);
        ASSERT_EQ(search.isAnyIn(bytes), expected.empty() ? Answer::kNo : best->answer);
        found += expected.size();
    }
    EXPECT_GT(found, 10'000U);
}

INSTANTIATE_TEST_SUITE_P(Seeds, LiteralSearchModelTest, ::testing::Values(1U, 2U, 3U));

TEST(LiteralSearchTest, FindsAllOfManyInALongText) {
    const std::string bytes = std::string(1000, 'a') + "xab" + std::string(500, 'b') + "XAB";
    const Places both = {{1003, 1000, Answer::kYes}, {1506, 1503, Answer::kYes}};
    EXPECT_EQ(placesOf(LiteralSearch({"xab"}, false), bytes), both);
    EXPECT_EQ(placesOf(LiteralSearch({"xab"}, true), bytes), Places(both.begin(), both.end() - 1));
    EXPECT_EQ(placesOf(LiteralSearch({"xac"}, false), bytes), Places());
}

TEST(LiteralSearchTest, EndsWhenItIsTold) {
    std::size_t visits = 0;
    EXPECT_TRUE(LiteralSearch({"a"}, false).search(std::string(1000, 'a'), [&](auto...) {
        return ++visits < 3;
    }));
    EXPECT_EQ(visits, 3U);
}

TEST(LiteralSearchTest, FindsNothingThatGoesOnBehindTheEnd) {
    const std::string needle = "needle";
    const LiteralSearch search({needle}, false);
    for (std::size_t before = 0; before < 200; ++before) {
        const std::string bytes =
            std::string(before, '.') + needle + " and more" + std::string(64, '.');
        for (std::size_t there = 0; there < needle.size(); ++there) {
            ASSERT_EQ(search.isAnyIn({bytes.data(), before + there}), Answer::kNo);
        }
        ASSERT_EQ(search.isAnyIn({bytes.data(), before + needle.size()}), Answer::kYes);
    }
}

TEST(LiteralSearchTest, IsUnsureOfLettersBeyondAscii) {
    const std::string plain(100, 's');
    EXPECT_EQ(LiteralSearch({"disk"}, false).isAnyIn(plain), Answer::kNo);
    EXPECT_EQ(LiteralSearch({"disk"}, false).isAnyIn(plain + "größe диск"), Answer::kNo);
    EXPECT_EQ(LiteralSearch({"diSK"}, false).isAnyIn(plain + "di\u017Fk"), Answer::kUnsure);
    EXPECT_EQ(LiteralSearch({"disk"}, false).isAnyIn(plain + "dis\u212A"), Answer::kUnsure);
    EXPECT_EQ(LiteralSearch({"disk"}, false).isAnyIn("dis\u212A disk"), Answer::kYes);
    EXPECT_EQ(LiteralSearch({"disk"}, true).isAnyIn(plain + "dis\u212A"), Answer::kNo);
    EXPECT_EQ(LiteralSearch({"tar"}, false).isAnyIn(plain + "dis\u212A"), Answer::kNo);
    EXPECT_EQ(LiteralSearch({"tar", "disk"}, false).isAnyIn(plain + "dis\u212A"), Answer::kUnsure);
}

TEST(LiteralSearchTest, LeavesLettersBeyondAsciiAndLongTextsToOthers) {
    EXPECT_FALSE(LiteralSearch::canFind("größe", false));
    EXPECT_TRUE(LiteralSearch::canFind("größe", true));
    EXPECT_EQ(LiteralSearch({"ß"}, true).isAnyIn("größe"), Answer::kYes);
    EXPECT_FALSE(LiteralSearch::canFind("", true));
    EXPECT_TRUE(LiteralSearch::canFind(std::string(LiteralSearch::kMostBytes, 'a'), false));
    EXPECT_FALSE(LiteralSearch::canFind(std::string(LiteralSearch::kMostBytes + 1, 'a'), true));
}

TEST(LiteralSearchTest, IsUnsureWhereTheLibraryFails) {
    EXPECT_FALSE(LiteralSearch::canFind("\0a"s, true));
    EXPECT_TRUE(LiteralSearch::canFind("a\0"s, true));
    const LiteralSearch search({"\0a"s}, true);
    EXPECT_EQ(search.isAnyIn("none"), Answer::kUnsure);
    EXPECT_FALSE(search.search("none", [](auto...) { return true; }));
    EXPECT_EQ(LiteralSearch({"a\0b"s}, true).isAnyIn("a\0a\0b"s), Answer::kYes);
}

TEST(LiteralSearchTest, FindsNothingInNothing) {
    EXPECT_EQ(LiteralSearch({"a"}, false).isAnyIn({}), Answer::kNo);
    EXPECT_EQ(LiteralSearch({"a"}, false).isAnyIn(""), Answer::kNo);
}

}  // namespace
}  // namespace quorbel
