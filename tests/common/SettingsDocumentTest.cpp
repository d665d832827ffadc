#include "common/SettingsDocument.h"
#include "platform/KeyedArchive.h"

#include <gtest/gtest.h>

#include <limits>

namespace quorbel {
namespace {

TEST(SettingsDocumentTest, DecodesADictionary) {
    const Dictionary settings{{"textInterval", 5}, {"unknown", Array{1, "two", true}}};
    EXPECT_EQ(decodeSettings(writeKeyedArchive(settings)), settings);
}

TEST(SettingsDocumentTest, WhatIsNoDictionaryIsNoDocument) {
    EXPECT_EQ(decodeSettings(std::nullopt), std::nullopt);
    EXPECT_EQ(decodeSettings(""), std::nullopt);
    EXPECT_EQ(decodeSettings("[settings]\nport=25\n"), std::nullopt);
    EXPECT_EQ(decodeSettings(writeKeyedArchive(Array{1, 2})), std::nullopt);
    std::string cut = writeKeyedArchive(Dictionary{{"textInterval", 5}});
    cut.resize(cut.size() / 2);
    EXPECT_EQ(decodeSettings(cut), std::nullopt);
}

struct NumberCase {
    Value value;
    std::int64_t integer;
};

TEST(SettingsDocumentTest, NumbersOfAnyKindReadAsIntegers) {
    constexpr auto kMax = std::numeric_limits<std::int64_t>::max();
    constexpr auto kMin = std::numeric_limits<std::int64_t>::min();
    const NumberCase cases[] = {
        {5, 5},
        {-1, -1},
        {true, 1},
        {false, 0},
        {2.9, 2},
        {-2.9, -2},
        {1e300, kMax},
        {-1e300, kMin},
        {std::numeric_limits<double>::quiet_NaN(), 0},
        {std::numeric_limits<std::uint64_t>::max(), kMax},
        {"5", 0},
        {Array{5}, 0},
        {Null{}, 0},
        {Dictionary{}, 0},
        {Data{"5"}, 0},
    };
    for (const NumberCase &c : cases) {
        const Dictionary settings{{"key", c.value}};
        EXPECT_EQ(settingInteger(settings, "key"), c.integer);
        EXPECT_EQ(settingFlag(settings, "key"), c.integer != 0);
    }
    EXPECT_EQ(settingInteger({}, "key"), 0);
    EXPECT_FALSE(settingFlag({}, "key"));
}

TEST(SettingsDocumentTest, OtherKindsReadAsEmpty) {
    const Dictionary settings{{"text", "x"},
                              {"list", Array{"a", 5, "b", Null{}}},
                              {"number", 5},
                              {"dictionary", Dictionary{{"key", 1}}}};
    EXPECT_EQ(settingText(settings, "text"), "x");
    EXPECT_EQ(settingText(settings, "number"), std::nullopt);
    EXPECT_EQ(settingText(settings, "missing"), std::nullopt);
    EXPECT_EQ(settingTexts(settings, "list"), (std::vector<std::string>{"a", "b"}));
    EXPECT_TRUE(settingTexts(settings, "text").empty());
    EXPECT_TRUE(settingTexts(settings, "missing").empty());
    EXPECT_EQ(settingArray(settings, "list").size(), 4U);
    EXPECT_TRUE(settingArray(settings, "text").empty());
    EXPECT_EQ(settingDictionary(settings, "dictionary"), (Dictionary{{"key", 1}}));
    EXPECT_TRUE(settingDictionary(settings, "list").empty());
    EXPECT_TRUE(settingDictionary(settings, "missing").empty());
}

}  // namespace
}  // namespace quorbel
