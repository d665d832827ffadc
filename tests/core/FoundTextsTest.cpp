// Which messages a text is found in, against a plain look at each, where messages and texts are of
// any bytes and what stands between the messages looks like text.

#include "EventListSamples.h"
#include "core/ArrangedEvents.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <random>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using namespace std::string_literals;

void replaceAll(std::string &text, std::string_view what, std::string_view by) {
    for (std::size_t place = 0; (place = text.find(what, place)) != std::string::npos;) {
        text.replace(place, what.size(), by);
    }
}

/// Letters that are alike become the same.
std::string folded(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char letter) {
        return letter < 0x80U ? static_cast<char>(std::tolower(letter)) : static_cast<char>(letter);
    });
    replaceAll(text, "\u017F", "s");
    replaceAll(text, "\u212A", "k");
    return text;
}

class FoundTextsTest : public ::testing::TestWithParam<unsigned> {
protected:
    std::size_t pick(std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(m_random);
    }
    std::string pieces(const std::vector<std::string> &from, std::size_t size) {
        std::string text;
        while (text.size() < size) {
            text += from[pick(from.size())];
        }
        return text;
    }

    /// Lengths stand between the messages: 97 is "a", 115 "s", 107 "k", 32 a blank.
    void fill(std::size_t count, bool hasLongOnes) {
        static const std::vector<std::string> parts = {
            "a", "A", "s", "K", " ", "\0"s, "\x80", "\xFF", "\xC5", "\xBF", "\u017F", "\u212A"};
        static constexpr std::array<std::size_t, 10> sizes = {0, 1, 2, 3, 5, 32, 65, 97, 107, 115};
        for (; count > 0; --count) {
            const std::size_t size =
                hasLongOnes && pick(4) == 0 ? 3000 + pick(200) : sizes[pick(sizes.size())];
            const std::vector<std::string> some = {parts[pick(parts.size())],
                                                   parts[pick(parts.size())]};
            const std::string message = pieces(some, size);
            EventFields event = testing::fields("1", "", pick(2) == 0 ? "1" : "2", message);
            if (pick(10) == 0) {
                event.message.reset();
            }
            m_list.insertRaw(event);
        }
        for (std::size_t i = pick(10); i > 0; --i) {
            m_list.removeRows({{pick(m_list.size()), 1}});
        }
    }
    EventQuery randomFilter() {
        static const std::vector<std::string> parts = {"a", "A", "s", "k",   "K",
                                                       " ", "a", "s", "\0"s, "\u017F"};
        const std::vector<std::string> some = {parts[pick(parts.size())],
                                               parts[pick(parts.size())]};
        EventQuery filter;
        const std::size_t size = pick(10) == 0 ? 60 + pick(10) : 1 + pick(4);
        filter.texts.push_back({{pieces(some, size), pick(2) == 0, false}, false});
        static const std::vector<std::string> hosts = {"", "", "1", "2"};
        filter.host = hosts[pick(hosts.size())];
        return filter;
    }
    /// Neither ratings, dates nor hosts hold any of the texts.
    bool isMeant(std::size_t row, const EventQuery &filter) {
        const auto &pattern = filter.texts.front().pattern;
        const std::string message(m_list.message(row).value_or(""));
        const bool isIn = pattern.isCaseSensitive
                              ? message.find(pattern.text) != std::string::npos
                              : folded(message).find(folded(pattern.text)) != std::string::npos;
        return isIn && (filter.host.empty() || m_list.host(row) == filter.host);
    }

    std::mt19937 m_random{GetParam()};
    EventList m_list;
    ArrangedEvents m_events{m_list};
};

TEST_P(FoundTextsTest, AreThoseOfAPlainLook) {
    fill(300, GetParam() % 2 == 0);
    std::size_t found = 0;
    for (int round = 0; round < 300; ++round) {
        const EventQuery filter = randomFilter();
        ASSERT_EQ(m_events.setFilter({}), "");
        ASSERT_EQ(m_events.setFilter(filter), "");
        m_events.search([] { return false; });
        std::vector<EventId> expected;
        for (std::size_t row = 0; row < m_list.size(); ++row) {
            if (isMeant(row, filter)) {
                expected.push_back(m_list.idAt(row));
            }
        }
        std::vector<EventId> arranged;
        for (std::size_t row = 0; row < m_events.size(); ++row) {
            arranged.push_back(m_events.idAt(row));
        }
        ASSERT_EQ(arranged, expected) << ::testing::PrintToString(filter.texts.front().pattern.text)
                                      << " " << filter.texts.front().pattern.isCaseSensitive;
        found += expected.size();
    }
    EXPECT_GT(found, 1000U);
}

TEST_P(FoundTextsTest, AreThoseOfAPlainLookWhileEventsArrive) {
    for (int round = 0; round < 50; ++round) {
        const EventQuery filter = randomFilter();
        ASSERT_EQ(m_events.setFilter(filter), "");
        m_events.search([] { return false; });
        fill(20, true);
        std::size_t expected = 0;
        for (std::size_t row = 0; row < m_list.size(); ++row) {
            expected += isMeant(row, filter) ? 1U : 0U;
        }
        ASSERT_EQ(m_events.size(), expected)
            << ::testing::PrintToString(filter.texts.front().pattern.text);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, FoundTextsTest, ::testing::Values(1U, 2U, 3U, 4U));

}  // namespace
}  // namespace quorbel
