#include "EventListSamples.h"
#include "core/ArrangedEvents.h"
#include "core/SavedFilter.h"
#include "platform/Files.h"

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using testing::fields;

const std::filesystem::path kData(QUORBEL_TEST_DATA);

std::vector<SavedFilter> questions() {
    const auto text = readFile(kData / "../../src/layout/questions.txt");
    const ReadFilters read = readFilters(text.value_or(""));
    EXPECT_TRUE(read.isGood()) << "line " << read.line << ": " << read.problem;
    return read.filters;
}

struct Cases {
    std::vector<std::string> matching;
    std::vector<std::string> others;
};

std::map<std::string, Cases> cases() {
    std::map<std::string, Cases> all;
    std::istringstream lines(readFile(kData / "questions.txt").value_or(""));
    Cases *current = nullptr;
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || line.starts_with('#')) {
            continue;
        }
        const std::string text = line.substr(2);
        if (line.starts_with("= ")) {
            EXPECT_FALSE(all.contains(text)) << text;
            current = &all[text];
        } else if (line.starts_with("+ ") && current != nullptr) {
            current->matching.push_back(text);
        } else if (line.starts_with("- ") && current != nullptr) {
            current->others.push_back(text);
        } else {
            ADD_FAILURE() << line;
        }
    }
    return all;
}

/// Whether the events page would show the message.
bool isMatched(const SavedFilter &question, const std::string &message) {
    EventList list;
    list.insertRaw(fields("1795226400", "Local5.Notice", "10.3.2.1", message));
    ArrangedEvents events(list);
    EXPECT_EQ(events.setFilter(question.query), "") << question.name;
    events.search([] { return false; });
    return events.size() == 1;
}

TEST(QuestionsTest, AreManyInGroups) {
    std::map<std::string, int> groups;
    for (const SavedFilter &question : questions()) {
        ++groups[question.group];
        EXPECT_FALSE(question.about.empty()) << question.name;
        EXPECT_FALSE(question.mark) << question.name;
    }
    EXPECT_GE(questions().size(), 40U);
    EXPECT_GE(groups.size(), 10U);
    EXPECT_FALSE(groups.contains(""));
}

/// A question that asks for something else as well would depend on how a device is set up.
TEST(QuestionsTest, LookAtTextsAlone) {
    for (const SavedFilter &question : questions()) {
        EventQuery texts;
        texts.texts = question.query.texts;
        EXPECT_EQ(question.query, texts) << question.name;
    }
}

TEST(QuestionsTest, HaveMessagesThatTheyMustAndMustNotMatch) {
    const auto all = cases();
    std::set<std::string> names;
    for (const SavedFilter &question : questions()) {
        names.insert(question.name);
        ASSERT_TRUE(all.contains(question.name)) << question.name;
        EXPECT_GE(all.at(question.name).matching.size(), 3U) << question.name;
        EXPECT_GE(all.at(question.name).others.size(), 3U) << question.name;
    }
    for (const auto &[name, messages] : all) {
        EXPECT_TRUE(names.contains(name)) << name;
    }
}

TEST(QuestionsTest, MatchWhatTheyMustAndNothingThatTheyMustNot) {
    const auto all = cases();
    for (const SavedFilter &question : questions()) {
        ASSERT_TRUE(all.contains(question.name)) << question.name;
        for (const std::string &message : all.at(question.name).matching) {
            EXPECT_TRUE(isMatched(question, message)) << question.name << "\n" << message;
        }
        for (const std::string &message : all.at(question.name).others) {
            EXPECT_FALSE(isMatched(question, message)) << question.name << "\n" << message;
        }
    }
}

/// The parts of an expression that stand between its outermost "|".
std::vector<std::string> alternativesOf(const std::string &expression) {
    std::vector<std::string> parts(1);
    int depth = 0;
    bool isInClass = false;
    for (std::size_t i = 0; i < expression.size(); ++i) {
        const char character = expression[i];
        if (character == '|' && depth == 0 && !isInClass) {
            parts.emplace_back();
            continue;
        }
        parts.back() += character;
        if (character == '\\') {
            parts.back() += expression[++i];
        } else if (isInClass) {
            isInClass = character != ']';
        } else {
            isInClass = character == '[';
            depth += character == '(' ? 1 : character == ')' ? -1 : 0;
        }
    }
    return parts;
}

/// What a question asks for without need makes it slow and hides what is wrong with it.
TEST(QuestionsTest, MatchNoEmptyTextNorMostMessages) {
    const auto all = cases();
    std::vector<std::string> messages;
    for (const auto &[name, some] : all) {
        messages.insert(messages.end(), some.matching.begin(), some.matching.end());
        messages.insert(messages.end(), some.others.begin(), some.others.end());
    }
    for (const SavedFilter &question : questions()) {
        const TextPattern pattern(question.query.texts.front().pattern);
        EXPECT_FALSE(pattern.isIn("")) << question.name;
        std::size_t matched = 0;
        for (const std::string &message : messages) {
            matched += pattern.isIn(message) ? 1U : 0U;
        }
        EXPECT_LT(matched, messages.size() / 12) << question.name;
        for (const std::string &part : alternativesOf(question.query.texts.front().pattern.text)) {
            EXPECT_EQ(TextPattern({part, false, true}).error(), "") << question.name;
            EXPECT_FALSE(TextPattern({part, false, true}).isIn("")) << question.name;
        }
    }
}

TEST(QuestionsTest, TakeBoundedTimeForHugeMessages) {
    const auto start = std::chrono::steady_clock::now();
    std::string hostile = "error ";
    while (hostile.size() < 1U << 20U) {
        hostile +=
            "NIC link port interface usb disk failed user 1-1.2: (( neighbor VPN tunnel IN= ";
    }
    for (const SavedFilter &question : questions()) {
        isMatched(question, hostile);
    }
    // A second each, on a machine that does other things: backtracking would not come back.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::minutes(2));
}

}  // namespace
}  // namespace quorbel
