#include "platform/KeyedArchive.h"
#include "platform/PropertyLists.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using namespace quorbel::testing;  // NOLINT(google-build-using-namespace): names of nodes

using Nodes = std::vector<Node>;

// The classes that the tables below refer to stand behind the objects of a case, so that every
// entry comes after its use.
constexpr std::uint64_t kDictionary = 11;
constexpr std::uint64_t kArray = 12;
constexpr std::uint64_t kString = 13;
constexpr std::uint64_t kNumber = 14;
constexpr std::uint64_t kData = 15;
constexpr std::uint64_t kDate = 16;
constexpr std::uint64_t kNull = 17;
constexpr std::uint64_t kGadget = 18;
constexpr std::uint64_t kDecimal = 19;
constexpr std::uint64_t kOwnDictionary = 20;
constexpr std::uint64_t kOtherLayout = 21;

std::string archiveWithClasses(Nodes objects, Node top) {
    while (objects.size() + 1 < kDictionary) {
        objects.push_back(text("unused"));
    }
    const Nodes classes{
        classEntry({"NSMutableDictionary", "NSDictionary", "NSObject"}),
        classEntry({"NSArray", "NSObject"}),
        classEntry({"NSMutableString", "NSString", "NSObject"}),
        classEntry({"NSNumber", "NSValue", "NSObject"}),
        classEntry({"NSMutableData", "NSData", "NSObject"}),
        classEntry({"NSDate", "NSObject"}),
        classEntry({"NSNull", "NSObject"}),
        classEntry({"Gadget", "Device", "NSObject"}),
        classEntry({"NSDecimalNumber", "NSNumber", "NSValue", "NSObject"}),
        classEntry({"SettingsDictionary", "NSMutableDictionary", "NSDictionary", "NSObject"}),
        classEntry({"GSMutableArray"}),
    };
    objects.insert(objects.end(), classes.begin(), classes.end());
    return archiveOf(objects, top);
}

std::variant<Value, ArchiveError> read(const Nodes &objects) {
    return readKeyedArchive(archiveWithClasses(objects, map({{"root", uid(1)}})));
}

Node arrayOf(std::initializer_list<std::uint64_t> elements) {
    return instance(kArray, {{"NS.objects", uids(elements)}});
}

Node dictionaryOf(std::initializer_list<std::uint64_t> keys,
                  std::initializer_list<std::uint64_t> values, std::uint64_t type = kDictionary) {
    return instance(type, {{"NS.keys", uids(keys)}, {"NS.objects", uids(values)}});
}

struct ValueCase {
    const char *name;
    std::function<Nodes()> objects;
    Value expected;
};

TEST(KeyedArchiveReaderTest, ReadsEveryForm) {
    const ValueCase cases[] = {
        {"text", [] { return Nodes{text("é")}; }, "é"},
        {"text of nil's name", [] { return Nodes{text("$null")}; }, "$null"},
        {"integer", [] { return Nodes{integer(7)}; }, 7},
        {"real", [] { return Nodes{real(0.1)}; }, 0.1},
        {"boolean", [] { return Nodes{boolean(true)}; }, true},
        {"data", [] { return Nodes{data("ab")}; }, Data{"ab"}},
        {"date in place", [] { return Nodes{date(5)}; }, Date{5.0}},
        {"wrapped text",
         [] {
             return Nodes{instance(kString, {{"NS.string", text("x")}})};
         },
         "x"},
        {"empty wrapped text",
         [] {
             return Nodes{instance(kString, {{"NS.string", text("")}})};
         },
         ""},
        {"text wrapped by reference",
         [] {
             return Nodes{instance(kString, {{"NS.string", uid(2)}}), text("x")};
         },
         "x"},
        {"wrapped data",
         [] {
             return Nodes{instance(kData, {{"NS.data", data("ab")}})};
         },
         Data{"ab"}},
        {"wrapped data, other field",
         [] {
             return Nodes{instance(kData, {{"NS.bytes", data("ab")}})};
         },
         Data{"ab"}},
        {"date",
         [] {
             return Nodes{instance(kDate, {{"NS.time", real(1.25)}})};
         },
         Date{1.25}},
        {"date as an integer",
         [] {
             return Nodes{instance(kDate, {{"NS.time", integer(2)}})};
         },
         Date{2.0}},
        {"wrapped integer",
         [] {
             return Nodes{instance(kNumber, {{"NS.intval", integer(9)}})};
         },
         9},
        {"wrapped real",
         [] {
             return Nodes{instance(kNumber, {{"NS.dblval", real(9.0)}})};
         },
         9.0},
        {"wrapped real as an integer",
         [] {
             return Nodes{instance(kNumber, {{"NS.dblval", integer(9)}})};
         },
         9.0},
        {"wrapped boolean",
         [] {
             return Nodes{instance(kNumber, {{"NS.boolval", boolean(false)}})};
         },
         false},
        {"wrapped boolean as an integer",
         [] {
             return Nodes{instance(kNumber, {{"NS.boolval", integer(1)}})};
         },
         true},
        {"null", [] { return Nodes{instance(kNull, {})}; }, Null{}},
        {"array",
         [] {
             return Nodes{arrayOf({2, 3}), integer(1), text("b")};
         },
         Array{1, "b"}},
        {"array, other class name",
         [] {
             return Nodes{instance(kOtherLayout, {{"NS.objects", uids({2})}}), integer(1)};
         },
         Array{1}},
        {"null in an array",
         [] {
             return Nodes{arrayOf({2}), instance(kNull, {})};
         },
         Array{Null{}}},
        {"nil in an array is nothing",
         [] {
             return Nodes{arrayOf({0, 2, 0}), integer(1)};
         },
         Array{1}},
        {"dictionary",
         [] {
             return Nodes{dictionaryOf({2}, {3}), text("k"), integer(1)};
         },
         Dictionary{{"k", 1}}},
        {"dictionary of a class of its own",
         [] {
             return Nodes{dictionaryOf({2}, {3}, kOwnDictionary), text("k"), integer(1)};
         },
         Dictionary{{"k", 1}}},
        {"nil in a dictionary is nothing",
         [] {
             return Nodes{dictionaryOf({2, 3}, {0, 4}), text("a"), text("b"), integer(1)};
         },
         Dictionary{{"b", 1}}},
        {"wrapped key",
         [] {
             return Nodes{dictionaryOf({2}, {3}), instance(kString, {{"NS.string", text("k")}}),
                          integer(1)};
         },
         Dictionary{{"k", 1}}},
        {"the first of equal keys stays",
         [] {
             return Nodes{dictionaryOf({2, 3, 2}, {4, 5, 5}), text("k"), text("l"), integer(1),
                          integer(2)};
         },
         Dictionary{{"k", 1}, {"l", 2}}},
        {"empty containers",
         [] {
             return Nodes{arrayOf({2, 3}), arrayOf({}), dictionaryOf({}, {})};
         },
         Array{Array{}, Dictionary{}}},
        {"shared containers",
         [] {
             return Nodes{arrayOf({2, 2, 2}), arrayOf({3, 3}), text("x")};
         },
         Array{Array{"x", "x"}, Array{"x", "x"}, Array{"x", "x"}}},
    };
    for (const ValueCase &entry : cases) {
        const auto result = read(entry.objects());
        ASSERT_TRUE(std::holds_alternative<Value>(result))
            << entry.name << ": " << std::get<ArchiveError>(result).reason;
        EXPECT_EQ(std::get<Value>(result), entry.expected) << entry.name;
    }
}

TEST(KeyedArchiveReaderTest, KeepsTheOrderOfKeys) {
    const auto result = read({dictionaryOf({2, 3, 4}, {2, 2, 2}), text("z"), text("a"), text("m")});
    std::string keys;
    for (const auto &[key, value] : *std::get<Value>(result).dictionary()) {
        keys += key;
    }
    EXPECT_EQ(keys, "zam");
}

struct ErrorCase {
    const char *name;
    std::function<Nodes()> objects;
};

TEST(KeyedArchiveReaderTest, RejectsDamage) {
    const ErrorCase cases[] = {
        {"a key that is an integer",
         [] {
             return Nodes{dictionaryOf({2}, {2}), integer(1)};
         }},
        {"a key that is nil",
         [] {
             return Nodes{dictionaryOf({0}, {2}), integer(1)};
         }},
        {"fewer values than keys",
         [] {
             return Nodes{dictionaryOf({2, 3}, {2}), text("a"), text("b")};
         }},
        {"more values than keys",
         [] {
             return Nodes{dictionaryOf({2}, {2, 2}), text("a")};
         }},
        {"no keys",
         [] {
             return Nodes{instance(kDictionary, {{"NS.objects", uids({2})}})};
         }},
        {"values that are no array",
         [] {
             return Nodes{
                 instance(kDictionary, {{"NS.keys", uids({})}, {"NS.objects", text("x")}})};
         }},
        {"an element that is no reference",
         [] {
             return Nodes{instance(kArray, {{"NS.objects", list({integer(1)})}})};
         }},
        {"an element that is not there", [] { return Nodes{arrayOf({99})}; }},
        {"a text that is a number",
         [] {
             return Nodes{instance(kString, {{"NS.string", integer(1)}})};
         }},
        {"a date that is a text",
         [] {
             return Nodes{instance(kDate, {{"NS.time", text("now")}})};
         }},
        {"a number that is a text",
         [] {
             return Nodes{instance(kNumber, {{"NS.intval", text("1")}})};
         }},
        {"an object without a class",
         [] {
             return Nodes{map({{"NS.objects", uids({})}})};
         }},
        {"a class that is nil", [] { return Nodes{instance(0, {})}; }},
        {"a class that is not there", [] { return Nodes{instance(99, {})}; }},
        {"a class that is a text",
         [] {
             return Nodes{instance(2, {}), text("NSArray")};
         }},
        {"a class without names",
         [] {
             return Nodes{instance(2, {}), map({})};
         }},
        {"a reference among the objects",
         [] {
             return Nodes{uid(2), text("x")};
         }},
        {"an array among the objects", [] { return Nodes{list({text("x")})}; }},
        {"an array in itself", [] { return Nodes{arrayOf({1})}; }},
        {"a dictionary in its value's value",
         [] {
             return Nodes{dictionaryOf({2}, {3}), text("k"), arrayOf({1})};
         }},
        {"a text that wraps itself",
         [] {
             return Nodes{instance(kString, {{"NS.string", uid(1)}})};
         }},
        {"a foreign object in itself",
         [] {
             return Nodes{instance(kGadget, {{"parent", uid(1)}})};
         }},
    };
    for (const ErrorCase &entry : cases) {
        EXPECT_TRUE(std::holds_alternative<ArchiveError>(read(entry.objects()))) << entry.name;
    }
}

TEST(KeyedArchiveReaderTest, FindsTheRoot) {
    const auto root = [](Node top) {
        const auto result = readKeyedArchive(archiveWithClasses({text("one"), text("two")}, top));
        const auto *value = std::get_if<Value>(&result);
        return value == nullptr ? Value() : *value;
    };
    EXPECT_EQ(root(map({{"root", uid(2)}})), Value("two"));
    EXPECT_EQ(root(map({{"settings", uid(2)}})), Value("two"));
    EXPECT_EQ(root(map({{"a", uid(1)}, {"root", uid(2)}})), Value("two"));
    EXPECT_EQ(root(map({{"a", uid(1)}, {"b", uid(2)}})), Value());
    EXPECT_EQ(root(map({{"root", uid(0)}})), Value());
    EXPECT_EQ(root(map({})), Value());
    EXPECT_EQ(root(list({uid(1)})), Value());
}

TEST(KeyedArchiveReaderTest, CarriesForeignObjects) {
    const auto result =
        read({dictionaryOf({2}, {3}), text("gadget"),
              instance(kGadget, {{"count", integer(3)},
                                 {"label", uid(4)},
                                 {"parent", uid(0)},
                                 {"parts", uids({4, 5, 0})},
                                 {"plain", map({{"x", list({real(0.5), boolean(true)})}})}}),
              text("name"), instance(kDecimal, {{"NS.mantissa", data("12")}})});
    ASSERT_TRUE(std::holds_alternative<Value>(result)) << std::get<ArchiveError>(result).reason;
    const Value *found = std::get<Value>(result).dictionary()->find("gadget");
    ASSERT_TRUE(found != nullptr && found->foreign() != nullptr);
    const ForeignObject &gadget = *found->foreign();
    EXPECT_THAT(gadget.classes, ::testing::ElementsAre("Gadget", "Device", "NSObject"));

    const auto value = [](Value content) {
        return std::make_shared<const Value>(std::move(content));
    };
    const auto reference = [&value](Value content) {
        return ForeignObject{{}, {{"", true, value(std::move(content))}}};
    };
    const ForeignObject decimal{{"NSDecimalNumber", "NSNumber", "NSValue", "NSObject"},
                                {{"NS.mantissa", false, value(Data{"12"})}}};
    const std::vector<ForeignObject::Field> expected{
        {"count", false, value(3)},
        {"label", true, value("name")},
        {"parent", true, nullptr},
        {"parts", false,
         value(Array{reference("name"), reference(decimal),
                     ForeignObject{{}, {{"", true, nullptr}}}})},
        {"plain", false, value(Dictionary{{"x", Array{0.5, true}}})},
    };
    EXPECT_EQ(gadget.fields, expected);

    const auto again = readKeyedArchive(writeKeyedArchive(std::get<Value>(result)));
    EXPECT_EQ(std::get<Value>(again), std::get<Value>(result));
}

struct UnitsCase {
    const char *units;
    const char *text;
};

TEST(KeyedArchiveReaderTest, ReplacesUnpairedSurrogates) {
    const std::string archive = archiveOf({text("<\U0001F6A8>")});
    const std::size_t place = archive.find("\xD8\x3D\xDE\xA8");
    ASSERT_NE(place, std::string::npos);
    const UnitsCase cases[] = {
        {"\xD8\x3D\xDE\xA8", "<\U0001F6A8>"},   {"\xDE\xA8\xD8\x3D", "<\uFFFD\uFFFD>"},
        {"\xD8\x3D\xD8\x3D", "<\uFFFD\uFFFD>"}, {"\xDE\xA8\xDE\xA8", "<\uFFFD\uFFFD>"},
        {"\xD8\x3DzA", "<\uFFFD\u7A41>"},       {"zA\xDB\xFF", "<\u7A41\uFFFD>"},
    };
    for (const UnitsCase &entry : cases) {
        const auto result = readKeyedArchive(std::string(archive).replace(place, 4, entry.units));
        EXPECT_EQ(std::get<Value>(result), Value(entry.text));
    }
}

}  // namespace
}  // namespace quorbel
