#include "service/actions/CommandLine.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {
namespace {

using Words = std::vector<std::string>;

TEST(SplitArgumentsTest, DoesWhatAShellDoes) {
    struct Case {
        std::string_view text;
        std::optional<Words> words;
    };
    const Case cases[] = {
        {"", Words{}},
        {" \t\r\n ", Words{}},
        {"a", Words{"a"}},
        {"  a  bc\td\ne ", Words{"a", "bc", "d", "e"}},
        {"'a b' c", Words{"a b", "c"}},
        {"\"a b\" c", Words{"a b", "c"}},
        {"a'b c'd", Words{"ab cd"}},
        {"a\"b c\"'d e'f", Words{"ab cd ef"}},
        {"''", Words{""}},
        {"a '' \"\" b", Words{"a", "", "", "b"}},
        {"'it'\\''s'", Words{"it's"}},
        {"a\\ b", Words{"a b"}},
        {R"(\'a\")", Words{"'a\""}},
        {"\\\\", Words{"\\"}},
        {"a\\", Words{"a\\"}},
        {"a\\\nb", Words{"ab"}},
        {"'a\\b'", Words{"a\\b"}},
        {"'\"'", Words{"\""}},
        {"\"'\"", Words{"'"}},
        {R"("a\"b")", Words{"a\"b"}},
        {R"("a\\b")", Words{"a\\b"}},
        {R"("\$x \`y\` \n")", Words{"$x `y` \\n"}},
        {"\"a\\\nb\"", Words{"ab"}},
        {"\"a\nb\"", Words{"a\nb"}},
        // Nothing is expanded, and nothing ends the command.
        {"$HOME *.log ~ `id` $(id); # x & | > y",
         Words{"$HOME", "*.log", "~", "`id`", "$(id);", "#", "x", "&", "|", ">", "y"}},
        {"\xC3\xA4\xC2\xA0"
         "b",
         Words{"\xC3\xA4\xC2\xA0"
               "b"}},
        {"'a", std::nullopt},
        {"a \"b", std::nullopt},
        {R"("a\")", std::nullopt},
        {"a'", std::nullopt},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(splitArguments(c.text), c.words) << c.text;
    }
}

TEST(AddVariablesTest, TakesEachLine) {
    struct Case {
        std::string_view lines;
        Environment added;
        std::optional<std::string> unusable;
    };
    const Case cases[] = {
        {"", {}, {}},
        {"A=1", {"A=1"}, {}},
        {"A=1\nB=2\r\nC=3\r", {"A=1", "B=2", "C=3"}, {}},
        {"\n\n  \nA=1\n", {"A=1"}, {}},
        {"  A=1", {"A=1"}, {}},
        {"A=", {"A="}, {}},
        {"A= x 'y' \\z $B=C ", {"A= x 'y' \\z $B=C "}, {}},
        {"A=1\nA=2", {"A=2"}, {}},
        {"AB=1\nA=2", {"AB=1", "A=2"}, {}},
        {"no assignment\nA=1\n=2", {"A=1"}, "no assignment"},
        {"=2", {}, "=2"},
        {"a b=2", {}, "a b=2"},
    };
    for (const Case &c : cases) {
        Environment environment;
        EXPECT_EQ(addVariables(environment, c.lines), c.unusable) << c.lines;
        EXPECT_EQ(environment, c.added) << c.lines;
    }
}

TEST(SetVariableTest, ReplacesOneOfThatName) {
    Environment environment{"PATH=/bin", "A=1"};
    setVariable(environment, "PATH", "/usr/bin");
    setVariable(environment, "B", std::string_view("x\0y", 3));
    EXPECT_EQ(environment, (Environment{"A=1", "PATH=/usr/bin", "B=x"}));
}

}  // namespace
}  // namespace quorbel
