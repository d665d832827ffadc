#include "core/SavedFilter.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace quorbel {
namespace {

const std::string kHead = "Quorbel filters 1\n";

SavedFilter withText(const std::string &name, const std::string &text) {
    SavedFilter filter;
    filter.name = name;
    filter.query.texts.push_back({{text, false, false}, false});
    return filter;
}

/// What is wrong with a file of these lines, after its head, and where.
std::string problemOf(const std::string &lines) {
    const ReadFilters read = readFilters(kHead + lines);
    EXPECT_TRUE(read.isGood() || read.filters.empty());
    return read.isGood() ? "" : std::to_string(read.line) + ": " + read.problem;
}

TEST(SavedFilterTest, IsReadFromLines) {
    const ReadFilters read = readFilters(
        kHead +
        "# a comment\n\ngroup Disks\nfilter Bad disks\nabout Disks that fail\nmark violet\n"
        "contains sd b\nlacks-case OK\nmatches I/O error\nor sense: \\d+\r\nmatches-not-case x|y\n"
        "rating Severe\nrating Unrated\nseverity Warning\nclass Alert\nclass Unknown\nfacility "
        "Kern\nhost fs*, !fs02\n"
        "from 2026-11-21T02:00:00Z\nuntil 1000\ntime yesterday\ntime last 24 hours\n\nfilter "
        "Next\ncontains \"\\\"\\\\ \\n\\x01\"\n");
    ASSERT_TRUE(read.isGood()) << read.line << read.problem;
    ASSERT_EQ(read.filters.size(), 2U);
    SavedFilter wanted{"Bad disks", "Disks", "Disks that fail", {}, MarkColour::kViolet};
    wanted.query.texts = {{{"sd b", false, false}, false},
                          {{"OK", true, false}, true},
                          {{"I/O error|sense: \\d+", false, true}, false},
                          {{"x|y", true, true}, true}};
    wanted.query.ratings = 0b1001;
    wanted.query.leastSeverity = 4;
    wanted.query.classes = 0b1'0000'0010;
    wanted.query.facility = "Kern";
    wanted.query.host = "fs*, !fs02";
    wanted.query.from = 1795226400;
    wanted.query.until = 1000;
    wanted.query.spans = 0b1100;
    EXPECT_EQ(read.filters[0], wanted);
    SavedFilter next = withText("Next", "\"\\ \n\x01");
    next.group = "Disks";
    EXPECT_EQ(read.filters[1], next);
}

TEST(SavedFilterTest, SaysWhatIsWrongInWhichLine) {
    EXPECT_EQ(problemOf("filter A\ncontains x\nsound loud\n"), "4: \"sound\" is not known");
    EXPECT_EQ(problemOf("filter A\ncontains\n"), "3: \"contains\" needs a value");
    EXPECT_EQ(problemOf("filter A\ncontains \n"), "3: the value of \"contains\" cannot be read");
    EXPECT_EQ(problemOf("filter A\ncontains \"x\n"), "3: the value of \"contains\" cannot be read");
    EXPECT_EQ(problemOf("filter A\ncontains \"x\"y\n"),
              "3: the value of \"contains\" cannot be read");
    EXPECT_EQ(problemOf("filter A\ncontains \"\\q\"\n"),
              "3: the value of \"contains\" cannot be read");
    EXPECT_EQ(problemOf("filter A\ncontains \"\\x4\"\n"),
              "3: the value of \"contains\" cannot be read");
    EXPECT_EQ(problemOf("contains x\n"), "2: \"contains\" stands before any filter");
    EXPECT_EQ(problemOf("filter A\ncontains x\ngroup B\nhost y\n"),
              "5: \"host\" stands before any filter");
    EXPECT_EQ(problemOf("filter A\nfilter B\n"), "3: the filter \"A\" has no condition");
    EXPECT_EQ(problemOf("filter A\nabout nothing\n"), "3: the filter \"A\" has no condition");
    EXPECT_EQ(problemOf("filter A\nhost a\nfilter A\n"), "4: there are two filters \"A\"");
    EXPECT_EQ(problemOf("filter A \nhost a\n"), "2: the name has characters that are not seen");
    EXPECT_EQ(problemOf("filter A\u202EB\nhost a\n"),
              "2: the name has characters that are not seen");
    EXPECT_EQ(problemOf("filter \"A\\n\"\nhost a\n"),
              "2: the name has characters that are not seen");
    EXPECT_EQ(problemOf("filter A\nhost \xff\n"), "3: there are bytes that are no UTF-8");
}

TEST(SavedFilterTest, RefusesValuesThatThereAreNot) {
    EXPECT_EQ(problemOf("filter A\nhost a\nhost b\n"), "4: \"host\" is given twice");
    EXPECT_EQ(problemOf("filter A\nfrom 1\nfrom 1\n"), "4: \"from\" is given twice");
    EXPECT_EQ(problemOf("filter A\nseverity Error\nseverity Error\n"),
              "4: \"severity\" is given twice");
    EXPECT_EQ(problemOf("filter A\nrating Severe\nrating Severe\n"),
              "4: \"rating\" is given twice");
    EXPECT_EQ(problemOf("filter A\nrating Bad\n"), "3: \"rating\" is no rating that there is");
    EXPECT_EQ(problemOf("filter A\nseverity error\n"),
              "3: \"severity\" is no severity that there is");
    EXPECT_EQ(problemOf("filter A\nclass Bad\n"), "3: \"class\" is no severity that there is");
    EXPECT_EQ(problemOf("filter A\nclass Error\nclass Error\n"), "4: \"class\" is given twice");
    EXPECT_EQ(problemOf("filter A\ntime Today\n"), "3: \"time\" is no span of time that there is");
    EXPECT_EQ(problemOf("filter A\ntime today\ntime today\n"), "4: \"time\" is given twice");
    EXPECT_EQ(problemOf("filter A\nmark red\n"), "3: \"mark\" is no colour that there is");
    for (const char *moment : {"2026-02-30T00:00:00Z", "2026-01-01T24:00:00Z", "2026-01-01",
                               "2026-01-01T00:00:00", "99999999999999999999", "1.5", "now"}) {
        EXPECT_EQ(problemOf("filter A\nfrom " + std::string(moment) + "\n"),
                  "3: \"from\" is no moment like 2026-11-21T02:00:00Z")
            << moment;
    }
}

TEST(SavedFilterTest, SaysWhichExpressionIsWrong) {
    EXPECT_EQ(problemOf("filter A\nmatches a(b\n"),
              "3: \"matches\" is no regular expression: missing ): a(b");
    EXPECT_EQ(problemOf("filter A\nmatches a\nor b\nor c)\nhost x\n"),
              "5: \"or\" is no regular expression: unexpected ): c)");
    EXPECT_EQ(problemOf("filter A\ncontains a\nor b\n"), "4: \"or\" does not follow an expression");
    EXPECT_EQ(problemOf("filter A\nmatches a\nabout x\nor b\n"),
              "5: \"or\" does not follow an expression");
    // Each by itself is small enough.
    EXPECT_EQ(problemOf("filter A\nmatches x\nhost y\nmatches (a?){350}\nor (b?){350}\nfrom 1\n"),
              "5: the expression cannot be used: expression too large");
    EXPECT_EQ(problemOf("filter A\ncontains a(b\nmatches \\(\n"), "");
}

TEST(SavedFilterTest, SaysWhichNetworkIsNone) {
    const ReadFilters read = readFilters("Quorbel filters 1\nfilter A\nhost fs01, 10.0.0.0/99\n");
    EXPECT_EQ(read.line, 3U);
    EXPECT_EQ(read.problem, "\"host\" names \"10.0.0.0/99\", which is no network");
}

TEST(SavedFilterTest, MayBeginWithAByteOrderMark) {
    EXPECT_EQ(readFilters("\xEF\xBB\xBFQuorbel filters 1\r\nfilter A\r\nhost a\r\n").filters.size(),
              1U);
    EXPECT_FALSE(readFilters("Quorbel filters 1\n\xEF\xBB\xBF"
                             "filter A\nhost a\n")
                     .isGood());
}

TEST(SavedFilterTest, TellsWhyConditionsCannotBeKept) {
    EventQuery query;
    query.texts.assign(SavedFilterLimits::kTexts, {{"a", false, false}, false});
    EXPECT_EQ(whyNotKept(query), "");
    query.texts.push_back({{"a", false, false}, false});
    EXPECT_EQ(whyNotKept(query), "\"contains\" is one condition too many");
    query.texts = {{{"(", false, true}, false}};
    EXPECT_NE(whyNotKept(query).find("is no regular expression"), std::string::npos);
}

TEST(SavedFilterTest, RefusesWhatIsNoFileOfIts) {
    const auto problem = [](const std::string &text) { return readFilters(text).problem; };
    EXPECT_EQ(problem(""), "this is no file of filters");
    EXPECT_EQ(problem("filter A\nhost a\n"), "this is no file of filters");
    EXPECT_EQ(problem(std::string("\0\0", 2)), "this is no file of filters");
    EXPECT_EQ(problem("Quorbel filters 2\n"), "the file was written by a newer version");
    EXPECT_EQ(problem(kHead), "");
}

TEST(SavedFilterTest, RefusesWhatIsTooMuch) {
    const std::string filter = "filter A\nhost a\n";
    EXPECT_EQ(problemOf(std::string(SavedFilterLimits::kBytes, '#')), "1: the file is too large");
    EXPECT_EQ(problemOf(filter + "contains " + std::string(SavedFilterLimits::kValueBytes, 'x')),
              "4: the line is too long");
    EXPECT_EQ(problemOf("filter " + std::string(SavedFilterLimits::kNameBytes + 1, 'x') + "\n"),
              "2: the name is too long");
    std::string texts;
    for (std::size_t i = 0; i <= SavedFilterLimits::kTexts; ++i) {
        texts += "lacks x\n";
    }
    EXPECT_EQ(problemOf(filter + texts), "20: \"lacks\" is one condition too many");
    std::string filters;
    for (std::size_t i = 0; i <= SavedFilterLimits::kFilters; ++i) {
        filters += "filter " + std::to_string(i) + "\nhost a\n";
    }
    EXPECT_EQ(problemOf(filters), "1002: there are too many filters");
    std::string alternatives = filter + "matches x\n";
    for (std::size_t i = 0; i < SavedFilterLimits::kExpressions; ++i) {
        alternatives += "or x\n";
    }
    EXPECT_EQ(problemOf(alternatives), "2004: \"or\" is one expression too many");
}

class Random {
public:
    std::size_t below(std::size_t limit) { return m_engine() % limit; }
    bool flip() { return below(2) == 0; }
    std::string text() {
        static const std::string kParts[] = {"a", " ",    "\"", "\\",   "\n", "\r", "\t",
                                             "#", "\x7f", "é",  "disk", "|",  "x4"};
        std::string text;
        for (std::size_t i = below(6) + 1; i > 0; --i) {
            text += kParts[below(std::size(kParts))];
        }
        return text;
    }

private:
    std::mt19937 m_engine{7};
};

SavedFilter randomFilter(Random &random, int number) {
    SavedFilter filter;
    filter.name = "Filter " + std::to_string(number);
    filter.group = random.flip() ? "Group" : "";
    filter.about = random.flip() ? random.text() : "";
    for (std::size_t i = random.below(4); i > 0; --i) {
        const bool isExpression = random.flip();
        filter.query.texts.push_back(
            {{isExpression ? "a|b" : random.text(), random.flip(), isExpression}, random.flip()});
    }
    filter.query.ratings = random.below(16);
    filter.query.host = random.text();
    filter.query.spans = random.below(16);
    filter.query.classes = random.below(512);
    filter.query.facility = random.flip() ? random.text() : "";
    if (random.flip()) {
        filter.query.leastSeverity = static_cast<std::uint8_t>(random.below(9));
        filter.query.from = -static_cast<std::int64_t>(random.below(100'000'000'000));
        filter.query.until = static_cast<std::int64_t>(random.below(500'000'000'000));
        filter.mark = static_cast<MarkColour>(random.below(kMarkColourNames.size()));
    }
    return filter;
}

TEST(SavedFilterTest, IsReadAsItWasWritten) {
    Random random;
    for (int round = 0; round < 300; ++round) {
        std::vector<SavedFilter> filters;
        for (int i = 0; i < 4; ++i) {
            filters.push_back(randomFilter(random, i));
        }
        const std::string text = writeFilters(filters);
        const ReadFilters read = readFilters(text);
        ASSERT_TRUE(read.isGood()) << read.line << read.problem << "\n" << text;
        ASSERT_EQ(read.filters, filters) << text;
    }
    for (const std::int64_t moment : {INT64_MIN, INT64_MAX, std::int64_t{-62167219201},
                                      std::int64_t{253402300799}, std::int64_t{253402300800}}) {
        SavedFilter filter = withText("A", "a");
        filter.query.from = moment;
        EXPECT_EQ(readFilters(writeFilters({filter})).filters, std::vector{filter}) << moment;
    }
}

TEST(SavedFilterTest, SurvivesFilesThatAreDamaged) {
    Random random;
    std::vector<SavedFilter> filters;
    for (int i = 0; i < 8; ++i) {
        filters.push_back(randomFilter(random, i));
    }
    const std::string whole = writeFilters(filters);
    for (int round = 0; round < 3000; ++round) {
        std::string text = whole;
        for (std::size_t i = random.below(4) + 1; i > 0; --i) {
            const std::size_t place = random.below(text.size());
            if (random.flip()) {
                text[place] = static_cast<char>(random.below(256));
            } else {
                text.erase(place, random.below(20));
            }
        }
        const ReadFilters read = readFilters(text);
        if (read.isGood()) {
            // What was taken can be kept.
            EXPECT_EQ(readFilters(writeFilters(read.filters)).filters, read.filters) << text;
        } else {
            EXPECT_GE(read.line, 1U);
            EXPECT_TRUE(read.filters.empty());
        }
    }
}

}  // namespace
}  // namespace quorbel
