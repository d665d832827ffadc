#include "service/message/FilterProblems.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace quorbel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

Dictionary filter(const char *name, const char *ip, Value mask, const char *facility = "Any",
                  const char *severity = "Any") {
    return {{"Name", name},         {"IP", ip},
            {"Message", "*"},       {"Mask", std::move(mask)},
            {"Facility", facility}, {"Severity", severity}};
}

std::vector<std::string> problemsOf(const Dictionary &record) {
    return filterProblems({{"excludeFiltersArray", Array{record}}});
}

TEST(FilterProblemsTest, AreSaidOfWhatCanMatchNothing) {
    struct Case {
        Dictionary filter;
        const char *problem;
    };
    const Case cases[] = {
        {filter("a", "router", "32"),
         R"(The exclude filter "a" can never match: "router" is not an address)"},
        {filter("", "", "8"), R"(The exclude filter "" can never match: "" is not an address)"},
        {filter("a", "10.0.0.0", "8", "Kernel"),
         R"(The exclude filter "a" can never match: there is no facility "Kernel")"},
        {filter("a", "10.0.0.0", "8", "Any", "Alerting!"),
         R"(The exclude filter "a" can never match: there is no severity "Alerting!")"},
        {filter("a", "10.0.0.1", "33"),
         "The exclude filter \"a\" has the mask 33, which is treated as 32"},
        {filter("a", "2001:db8::", 129),
         "The exclude filter \"a\" has the mask 129, which is treated as 128"},
        {filter("a", "10.0.0.1", "0"),
         R"(The exclude filter "a" matches any host: its mask is 0, so the address "10.0.0.1" is ignored)"},
        {filter("a", "router", "all"),
         R"(The exclude filter "a" matches any host: its mask is 0, so the address "router" is ignored)"},
    };
    for (const Case &c : cases) {
        EXPECT_THAT(problemsOf(c.filter), ElementsAre(c.problem));
    }
}

TEST(FilterProblemsTest, AreNoneOfUsualFilters) {
    for (const Dictionary &usual :
         {filter("a", "0.0.0.0", "0"), filter("a", "::", "0"), filter("a", "", ""),
          filter("a", "10.0.0.1", "32"), filter("a", "2001:db8::", "128", "Local7", "Error"),
          filter("a", " 10.0.0.0 ", 1, "", ""), Dictionary{}}) {
        EXPECT_THAT(problemsOf(usual), IsEmpty());
    }
    EXPECT_THAT(filterProblems({}), IsEmpty());
    EXPECT_THAT(filterProblems({{"actionsArray", Array{5, "text"}}, {"includeFiltersArray", 5}}),
                IsEmpty());
}

TEST(FilterProblemsTest, AreNamedByTheirListsAndLimited) {
    Array many;
    for (int i = 0; i < 11; ++i) {
        many.emplace_back(filter("a", "x", "8"));
    }
    const auto problems = filterProblems({{"includeFiltersArray", Array{filter("i", "x", "8")}},
                                          {"excludeFiltersArray", many},
                                          {"actionsArray", Array{filter("c", "x", "8")}}});
    ASSERT_THAT(problems, SizeIs(kMostFilterProblems + 1));
    EXPECT_EQ(problems[0], R"(The include filter "i" can never match: "x" is not an address)");
    EXPECT_EQ(problems[1], R"(The exclude filter "a" can never match: "x" is not an address)");
    EXPECT_EQ(problems.back(), "Other filters with problems: 3");
    EXPECT_THAT(
        filterProblems({{"actionsArray", Array{filter("c", "x", "8")}}}),
        ElementsAre(R"(The filter of the action "c" can never match: "x" is not an address)"));
}

TEST(FilterProblemsTest, AreOneLineEachHoweverTheFieldsAre) {
    const auto nameOf = [](const std::string &name) {
        const std::string line = problemsOf(filter(name.c_str(), "x", "8")).at(0);
        const std::string before = "The exclude filter \"";
        return line.substr(before.size(), line.find("\" can") - before.size());
    };
    EXPECT_EQ(nameOf("a\nb\x7F"), "a?b?");
    EXPECT_EQ(nameOf("\u00E4\u4E2D"), "\u00E4\u4E2D");
    EXPECT_EQ(nameOf("\xE4"), "?");
    EXPECT_EQ(nameOf(std::string(80, 'x')), std::string(80, 'x'));
    EXPECT_EQ(nameOf(std::string(81, 'x')), std::string(80, 'x') + "...");
    EXPECT_EQ(nameOf(std::string(79, 'x') + "\u4E2D"), std::string(79, 'x') + "...");
}

TEST(FilterProblemsTest, AreSaidOfThresholdsThatMeanNothing) {
    const auto withThreshold = [](const char *name, Value threshold) {
        Dictionary action = filter(name, "0.0.0.0", "0");
        action.set("threshold", std::move(threshold));
        return action;
    };
    const Array actions{
        withThreshold("good", Dictionary{{"Matches", 5}, {"Minutes", 10}, {"PerHost", true}}),
        withThreshold("none", Dictionary{}),
        withThreshold("zero", Dictionary{{"Matches", 0}, {"Minutes", 10}}),
        withThreshold("text", "5 in 10"),
        "no record",
    };
    EXPECT_THAT(filterProblems({{"actionsArray", actions}}),
                ElementsAre(R"(The threshold of the action "zero" is ignored: )"
                            R"("Matches" is no whole number from 1 to 1000)",
                            R"(The threshold of the action "text" is ignored: it is no record)"));
    // A filter has none, so there is nothing to be wrong.
    EXPECT_THAT(filterProblems({{"excludeFiltersArray", actions}}), IsEmpty());
}

}  // namespace
}  // namespace quorbel
