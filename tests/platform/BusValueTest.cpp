#include "platform/bus/BusNames.h"
#include "platform/bus/BusValue.h"
#include "platform/bus/SdBus.h"
#include "support/PrivateBus.h"
#include "support/ServiceStandIn.h"

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace quorbel {
namespace {

using bus::BusPointer;
using bus::MessagePointer;
using testing::PrivateBus;
using testing::ServiceStandIn;

class BusValueTest : public ::testing::Test {
protected:
    // Messages are sealed and read in this process; the bus only lends its connection.
    PrivateBus m_bus;
    BusPointer m_connection = bus::openSystemBus();

    MessagePointer newMessage() {
        sd_bus_message *message = nullptr;
        EXPECT_GE(sd_bus_message_new_method_call(m_connection.get(), &message, bus::kServiceName,
                                                 bus::kServicePath, bus::kCommandInterface,
                                                 bus::kSetCommand),
                  0);
        return MessagePointer(message);
    }

    static sd_bus_message *readable(const MessagePointer &message) {
        EXPECT_GE(sd_bus_message_seal(message.get(), 1, 0), 0);
        EXPECT_GE(sd_bus_message_rewind(message.get(), 1), 0);
        return message.get();
    }

    std::optional<Dictionary> throughMessage(const Dictionary &dictionary) {
        const MessagePointer message = newMessage();
        EXPECT_GE(appendToMessage(message.get(), dictionary), 0);
        return readFromMessage(readable(message));
    }
};

ForeignObject foreignObject() {
    return {{"NSColor", "NSObject"}, {}};
}

Value nested(int levels, bool dictionaries) {
    Value value = "inmost";
    for (int level = 0; level < levels; ++level) {
        if (dictionaries) {
            Dictionary dictionary;
            dictionary.append("key", std::move(value));
            value = std::move(dictionary);
        } else {
            Array array;
            array.push_back(std::move(value));
            value = std::move(array);
        }
    }
    return value;
}

TEST_F(BusValueTest, CarriesEveryTypeWithItsSignature) {
    struct Case {
        Value value;
        const char *signature;
    };
    const std::vector<Case> cases = {
        {Null{}, "(ss)"},
        {true, "b"},
        {false, "b"},
        {0, "x"},
        {1, "x"},
        {std::numeric_limits<std::int64_t>::min(), "x"},
        {std::numeric_limits<std::int64_t>::max(), "x"},
        {std::uint64_t{1} << 63U, "t"},
        {std::numeric_limits<std::uint64_t>::max(), "t"},
        {1.0, "d"},
        {-0.1, "d"},
        {std::numeric_limits<double>::infinity(), "d"},
        {"", "s"},
        {"gr\xC3\xBC\xC3\x9F \xF0\x9F\x90\xBF \x01", "s"},
        {Data{}, "ay"},
        {Data{std::string("\0\xFF\0", 3)}, "ay"},
        {Date{0.1}, "(sd)"},
        {Date::fromSecondsSince1970(0), "(sd)"},
        {Array{}, "av"},
        {Array{1, "two", 3.0, false, Null{}, Array{}, Dictionary{}}, "av"},
        {Dictionary{}, "a{sv}"},
        {Dictionary{{"", ""}, {"inner", Dictionary{{"date", Date{5}}}}}, "a{sv}"},
    };
    for (const Case &each : cases) {
        SCOPED_TRACE(each.signature);
        const Dictionary dictionary{{"value", each.value}};
        EXPECT_TRUE(fitsOnBus(each.value));
        EXPECT_EQ(throughMessage(dictionary), dictionary);

        const MessagePointer message = newMessage();
        ASSERT_GE(appendToMessage(message.get(), dictionary), 0);
        sd_bus_message *reader = readable(message);
        EXPECT_STREQ(sd_bus_message_get_signature(reader, 1), "a{sv}");
        ASSERT_GT(sd_bus_message_enter_container(reader, 'a', "{sv}"), 0);
        ASSERT_GT(sd_bus_message_enter_container(reader, 'e', "sv"), 0);
        ASSERT_GE(sd_bus_message_skip(reader, "s"), 0);
        EXPECT_GT(sd_bus_message_verify_type(reader, 'v', each.signature), 0);
    }
}

TEST_F(BusValueTest, MarksNullWithAnEmptyTextBehindIt) {
    const MessagePointer message = newMessage();
    ASSERT_GE(appendToMessage(message.get(), {{"value", Null{}}}), 0);
    sd_bus_message *reader = readable(message);
    const char *key = "";
    const char *marker = "";
    const char *text = "unset";
    ASSERT_GT(sd_bus_message_read(reader, "a{sv}", 1, &key, "(ss)", &marker, &text), 0);
    EXPECT_STREQ(key, "value");
    EXPECT_STREQ(marker, "null");
    EXPECT_STREQ(text, "");
}

TEST_F(BusValueTest, KeepsTheBitsOfNumbers) {
    const auto read = throughMessage({{"nan", std::nan("")}, {"zero", -0.0}});
    ASSERT_TRUE(read);
    EXPECT_TRUE(std::isnan(*read->find("nan")->real()));
    EXPECT_TRUE(std::signbit(*read->find("zero")->real()));
}

TEST_F(BusValueTest, KeepsTheOrderOfKeys) {
    const auto read = throughMessage({{"z", 1}, {"a", 2}, {"m", 3}});
    ASSERT_TRUE(read);
    std::string keys;
    for (const auto &[key, value] : *read) {
        keys += key;
    }
    EXPECT_EQ(keys, "zam");
}

TEST_F(BusValueTest, KnowsWhatHasNoForm) {
    const std::string nul("a\0b", 3);
    const std::vector<Value> cases = {
        foreignObject(),
        Array{foreignObject()},
        Dictionary{{"colour", foreignObject()}},
        nul,
        Array{nul},
        Dictionary{{nul, 1}},
        "\xFF",
        "\xC0\x80",
        "\xED\xA0\x80",
        "cut \xE2\x82",
        Dictionary{{"\xFF", 1}},
        "noncharacter \xEF\xBF\xBF",
        "noncharacter \xEF\xBF\xBE",
        "noncharacter \xEF\xB7\x90",
        "noncharacter \xF0\x9F\xBF\xBF",
        nested(1000, true),
        nested(1000, false),
    };
    for (std::size_t number = 0; number < cases.size(); ++number) {
        EXPECT_FALSE(fitsOnBus(cases[number])) << "case " << number;
    }
    EXPECT_TRUE(fitsOnBus("\xEF\xBF\xBD \xEF\xB7\xB0"));
}

TEST_F(BusValueTest, WhatDoesNotFitIsRefusedInAMessage) {
    EXPECT_LT(appendToMessage(newMessage().get(), {{"value", foreignObject()}}), 0);
    EXPECT_LT(appendToMessage(newMessage().get(), {{"value", "\xFF"}}), 0);
}

// The bus disconnects whoever sends what nests too deep, so its own opinion is asked.
TEST_F(BusValueTest, TheDeepestValueThatFitsPassesTheBus) {
    ServiceStandIn service;
    for (const bool dictionaries : {true, false}) {
        int levels = 1;
        while (fitsOnBus(Dictionary{{"deep", nested(levels + 1, dictionaries)}})) {
            ++levels;
        }
        EXPECT_GE(levels, 20);
        const Dictionary deepest{{"deep", nested(levels, dictionaries)}};
        const MessagePointer message = newMessage();
        ASSERT_GE(appendToMessage(message.get(), deepest), 0);
        ASSERT_GE(sd_bus_call(m_connection.get(), message.get(), 0, nullptr, nullptr), 0);
        const auto commands = service.waitForCommands(1);
        ASSERT_EQ(commands.size(), 1U);
        EXPECT_EQ(commands.front(), deepest);
        service.clear();
    }
}

TEST_F(BusValueTest, ReadsOtherBasicTypesSensibly) {
    const MessagePointer message = newMessage();
    ASSERT_GE(sd_bus_message_append(message.get(), "a{sv}", 7, "i", "i", -5, "u", "u", 4000000000U,
                                    "n", "n", -3, "q", "q", 65535, "y", "y", 255, "o", "o", "/path",
                                    "g", "g", "a{sv}"),
              0);
    const Dictionary expected{{"i", -5},  {"u", 4000000000U}, {"n", -3},     {"q", 65535},
                              {"y", 255}, {"o", "/path"},     {"g", "a{sv}"}};
    EXPECT_EQ(readFromMessage(readable(message)), expected);
}

TEST_F(BusValueTest, TheFirstOfTwoEqualKeysCounts) {
    const MessagePointer message = newMessage();
    ASSERT_GE(sd_bus_message_append(message.get(), "a{sv}", 2, "key", "s", "1", "key", "s", "2"),
              0);
    EXPECT_EQ(readFromMessage(readable(message)), (Dictionary{{"key", "1"}}));
}

TEST_F(BusValueTest, ReadsNothingFromOtherTypes) {
    const auto read = [this](auto... arguments) {
        const MessagePointer message = newMessage();
        EXPECT_GE(sd_bus_message_append(message.get(), arguments...), 0);
        return readFromMessage(readable(message));
    };
    EXPECT_FALSE(readFromMessage(readable(newMessage())));
    EXPECT_FALSE(read("s", "text"));
    EXPECT_FALSE(read("a{ss}", 1, "key", "value"));
    EXPECT_FALSE(read("v", "a{sv}", 0));
    EXPECT_FALSE(read("a{sv}", 1, "key", "as", 1, "text"));
    EXPECT_FALSE(read("a{sv}", 1, "key", "v", "s", "text"));
    EXPECT_FALSE(read("a{sv}", 1, "key", "(sd)", "moment", 1.0));
    EXPECT_FALSE(read("a{sv}", 1, "key", "(ss)", "nil", ""));
    EXPECT_FALSE(read("a{sv}", 1, "key", "av", 1, "(sd)", "moment", 1.0));
    EXPECT_FALSE(read("a{sv}", 2, "key", "as", 0, "next", "s", "text"));
}

TEST_F(BusValueTest, ReadsNothingThatNestsTooDeep) {
    const MessagePointer message = newMessage();
    constexpr int kLevels = 40;
    for (int level = 0; level < kLevels; ++level) {
        ASSERT_GE(sd_bus_message_open_container(message.get(), 'a', "{sv}"), 0);
        ASSERT_GE(sd_bus_message_open_container(message.get(), 'e', "sv"), 0);
        ASSERT_GE(sd_bus_message_append(message.get(), "s", "key"), 0);
        ASSERT_GE(sd_bus_message_open_container(message.get(), 'v', "a{sv}"), 0);
    }
    ASSERT_GE(sd_bus_message_append(message.get(), "a{sv}", 0), 0);
    for (int closed = 0; closed < 3 * kLevels; ++closed) {
        ASSERT_GE(sd_bus_message_close_container(message.get()), 0);
    }
    EXPECT_FALSE(readFromMessage(readable(message)));
}

}  // namespace
}  // namespace quorbel
