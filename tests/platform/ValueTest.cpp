#include "platform/Value.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace quorbel {
namespace {

TEST(ValueTest, TypesStayApart) {
    const Value values[] = {Null{},    true,      1,        1.0,         "1",
                            Data{"1"}, Date{1.0}, Array{1}, Dictionary{}};
    for (const Value &left : values) {
        for (const Value &right : values) {
            EXPECT_EQ(left == right, &left == &right);
        }
    }
}

TEST(ValueTest, IntegersAreSignedWhereTheyCanBe) {
    EXPECT_EQ(Value(7U), Value(7));
    EXPECT_EQ(Value(std::uint64_t{1} << 62).type(), Value::Type::kInteger);
    EXPECT_EQ(Value(std::numeric_limits<std::uint64_t>::max()).type(), Value::Type::kUnsigned);
    EXPECT_EQ(*Value(std::numeric_limits<std::uint64_t>::max()).unsignedInteger(),
              std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(Value(7).unsignedInteger(), nullptr);
}

TEST(ValueTest, DictionariesKeepTheirOrder) {
    Dictionary dictionary{{"b", 1}, {"a", 2}};
    dictionary.set("c", 3);
    dictionary.set("b", 4);
    std::string keys;
    for (const auto &[key, value] : dictionary) {
        keys += key;
    }
    EXPECT_EQ(keys, "bac");
    EXPECT_EQ(*dictionary.find("b"), Value(4));
    EXPECT_TRUE(dictionary.remove("a"));
    EXPECT_FALSE(dictionary.remove("a"));
    EXPECT_EQ(dictionary.find("a"), nullptr);
    EXPECT_EQ(dictionary.size(), 2U);
}

TEST(ValueTest, DictionariesAreEqualInAnyOrder) {
    const Dictionary one{{"a", 1}, {"b", Array{true, "x"}}};
    const Dictionary other{{"b", Array{true, "x"}}, {"a", 1}};
    EXPECT_EQ(one, other);
    EXPECT_NE(one, (Dictionary{{"a", 1}, {"c", Array{true, "x"}}}));
    EXPECT_NE(one, (Dictionary{{"a", 1}}));
    EXPECT_NE(one, (Dictionary{{"a", 1}, {"b", Array{1, "x"}}}));
}

TEST(ValueTest, CopiesAreDeep) {
    Dictionary original{{"a", Array{1}}};
    Dictionary copy = original;
    copy.set("a", 2);
    EXPECT_EQ(*original.find("a"), Value(Array{1}));
}

TEST(ValueTest, DatesCountFromEitherEpoch) {
    EXPECT_EQ(Date{0.0}.secondsSince1970(), 978307200.0);
    EXPECT_EQ(Date::fromSecondsSince1970(978307200.25), Date{0.25});
}

}  // namespace
}  // namespace quorbel
