#include "platform/AllocationMeter.h"
#include "platform/KeyedArchive.h"
#include "platform/PropertyLists.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <ctime>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using testing::AllocationMeter;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using namespace std::string_literals;

Value readAgain(const Value &value) {
    auto result = readKeyedArchive(writeKeyedArchive(value));
    if (const auto *error = std::get_if<ArchiveError>(&result)) {
        ADD_FAILURE() << error->reason;
        return {};
    }
    return std::get<Value>(std::move(result));
}

/// What libplist makes of an archive.
class ParsedArchive {
public:
    explicit ParsedArchive(const std::string &bytes) {
        plist_from_bin(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &m_top);
    }
    ~ParsedArchive() { plist_free(m_top); }
    ParsedArchive(const ParsedArchive &) = delete;
    ParsedArchive &operator=(const ParsedArchive &) = delete;

    [[nodiscard]] plist_t field(const char *name) const { return plist_dict_get_item(m_top, name); }
    [[nodiscard]] std::uint32_t objectCount() const {
        return plist_array_get_size(field("$objects"));
    }
    [[nodiscard]] plist_t root() const {
        return target(plist_dict_get_item(field("$top"), "root"));
    }
    [[nodiscard]] plist_t target(plist_t reference) const {
        std::uint64_t number = 0;
        plist_get_uid_val(reference, &number);
        return plist_array_get_item(field("$objects"), static_cast<std::uint32_t>(number));
    }
    [[nodiscard]] std::vector<plist_t> targets(plist_t object, const char *name) const {
        plist_t references = plist_dict_get_item(object, name);
        std::vector<plist_t> all;
        for (std::uint32_t index = 0; index < plist_array_get_size(references); ++index) {
            all.push_back(target(plist_array_get_item(references, index)));
        }
        return all;
    }
    [[nodiscard]] std::vector<std::string> classNames(plist_t object) const {
        plist_t names =
            plist_dict_get_item(target(plist_dict_get_item(object, "$class")), "$classes");
        std::vector<std::string> all;
        for (std::uint32_t index = 0; index < plist_array_get_size(names); ++index) {
            all.push_back(textOf(plist_array_get_item(names, index)));
        }
        return all;
    }
    static std::string textOf(plist_t node) {
        const char *content = plist_get_string_ptr(node, nullptr);
        return content == nullptr ? "no text" : content;
    }

private:
    plist_t m_top = nullptr;
};

TEST(KeyedArchiveWriterTest, WritesTheLayoutThatOthersRead) {
    const ParsedArchive archive(writeKeyedArchive(Dictionary{
        {"list", Array{"é", Null{}}}, {"when", Date{1.5}}, {"data", Data{"ab"}}, {"yes", true}}));
    EXPECT_EQ(ParsedArchive::textOf(archive.field("$archiver")), "NSKeyedArchiver");
    std::uint64_t version = 0;
    plist_get_uint_val(archive.field("$version"), &version);
    EXPECT_EQ(version, 100000U);
    EXPECT_EQ(ParsedArchive::textOf(plist_array_get_item(archive.field("$objects"), 0)), "$null");
    EXPECT_EQ(plist_dict_get_size(archive.field("$top")), 1U);

    EXPECT_THAT(archive.classNames(archive.root()), ElementsAre("NSDictionary", "NSObject"));
    std::vector<std::string> keys;
    for (plist_t key : archive.targets(archive.root(), "NS.keys")) {
        keys.push_back(ParsedArchive::textOf(key));
    }
    EXPECT_THAT(keys, ElementsAre("list", "when", "data", "yes"));

    const std::vector<plist_t> values = archive.targets(archive.root(), "NS.objects");
    ASSERT_EQ(values.size(), 4U);
    EXPECT_THAT(archive.classNames(values[0]), ElementsAre("NSArray", "NSObject"));
    const std::vector<plist_t> elements = archive.targets(values[0], "NS.objects");
    ASSERT_EQ(elements.size(), 2U);
    EXPECT_EQ(ParsedArchive::textOf(elements[0]), "é");
    EXPECT_THAT(archive.classNames(elements[1]), ElementsAre("NSNull", "NSObject"));
    EXPECT_THAT(archive.classNames(values[1]), ElementsAre("NSDate", "NSObject"));
    double time = 0.0;
    plist_get_real_val(plist_dict_get_item(values[1], "NS.time"), &time);
    EXPECT_EQ(time, 1.5);
    EXPECT_EQ(plist_get_node_type(values[2]), PLIST_DATA);
    EXPECT_EQ(plist_get_node_type(values[3]), PLIST_BOOLEAN);
}

// Others take each object that is this text for nil, whatever its number.
TEST(KeyedArchiveWriterTest, NoObjectButTheFirstIsTheTextOfNil) {
    const Value value = Dictionary{
        {"$null", "$null"},
        {"list", Array{"$null", "x", "$null"}},
        {"foreign", ForeignObject{{"NSFoo", "NSObject"},
                                  {{"f", true, std::make_shared<const Value>("$null")}}}}};
    const ParsedArchive archive(writeKeyedArchive(value));
    plist_t objects = archive.field("$objects");
    ASSERT_EQ(ParsedArchive::textOf(plist_array_get_item(objects, 0)), "$null");
    for (std::uint32_t number = 1; number < archive.objectCount(); ++number) {
        EXPECT_NE(ParsedArchive::textOf(plist_array_get_item(objects, number)), "$null");
    }
    for (const char *field : {"NS.keys", "NS.objects"}) {
        plist_t text = archive.targets(archive.root(), field).at(0);
        EXPECT_EQ(ParsedArchive::textOf(plist_dict_get_item(text, "NS.string")), "$null");
        EXPECT_THAT(archive.classNames(text),
                    ElementsAre("NSMutableString", "NSString", "NSObject"));
    }
    EXPECT_TRUE(readAgain(value) == value);
}

TEST(KeyedArchiveWriterTest, EqualValuesAreOneObject) {
    const Value value =
        Array{"x",       "x",       1,      1,      true,      true,      1.0, 1.0, "1",
              Data{"x"}, Data{"x"}, Null{}, Null{}, Date{1.0}, Date{1.0}, 0.0, -0.0};
    const ParsedArchive archive(writeKeyedArchive(value));
    // nil, the array, ten values, and the classes of array, null and date
    EXPECT_EQ(archive.objectCount(), 2U + 10U + 3U);
    EXPECT_EQ(readAgain(value), value);
}

TEST(KeyedArchiveWriterTest, KeepsTypesAndSignsApart) {
    const Value value = readAgain(Array{true, 1, 1.0, false, 0, 0.0, -0.0, "1", "0", "", Data{""}});
    const Array &array = *value.array();
    EXPECT_EQ(array[0], Value(true));
    EXPECT_EQ(array[1], Value(1));
    EXPECT_EQ(array[2], Value(1.0));
    EXPECT_EQ(array[3], Value(false));
    EXPECT_EQ(array[4], Value(0));
    EXPECT_FALSE(std::signbit(*array[5].real()));
    EXPECT_TRUE(std::signbit(*array[6].real()));
    EXPECT_EQ(array[10], Value(Data{""}));
}

TEST(KeyedArchiveWriterTest, KeepsEveryBitOfRealNumbersAndDates) {
    const std::uint64_t cases[] = {0x7FF8000000000000, 0x7FF8000000000001, 0xFFF8000000000000,
                                   0x7FF0000000000000, 0xFFF0000000000000, 0x0000000000000001,
                                   0x3FB999999999999A};
    for (const std::uint64_t bits : cases) {
        const auto number = std::bit_cast<double>(bits);
        const Value value = readAgain(Array{number, Date{number}});
        EXPECT_EQ(std::bit_cast<std::uint64_t>(*(*value.array())[0].real()), bits);
        EXPECT_EQ(std::bit_cast<std::uint64_t>((*value.array())[1].date()->secondsSince2001), bits);
    }
}

struct IntegerCase {
    Value value;
    std::string bytes;
};

TEST(KeyedArchiveWriterTest, WritesIntegersAsNarrowAsReadersTakeThem) {
    const IntegerCase cases[] = {
        {0, "\x10\x00"s},
        {127, "\x10\x7F"},
        {128, "\x10\x80"},
        {255, "\x10\xFF"},
        {256, "\x11\x01\x00"s},
        {65535, "\x11\xFF\xFF"},
        {65536, "\x12\x00\x01\x00\x00"s},
        {4294967295, "\x12\xFF\xFF\xFF\xFF"},
        {4294967296, "\x13\x00\x00\x00\x01\x00\x00\x00\x00"s},
        {-1, "\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"},
        {std::numeric_limits<std::int64_t>::max(), "\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"},
        {std::numeric_limits<std::int64_t>::min(), "\x13\x80\x00\x00\x00\x00\x00\x00\x00"s},
        {std::uint64_t{1} << 63,
         "\x14\x00\x00\x00\x00\x00\x00\x00\x00\x80\x00\x00\x00\x00\x00\x00\x00"s},
        {std::numeric_limits<std::uint64_t>::max(),
         "\x14\x00\x00\x00\x00\x00\x00\x00\x00\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s},
    };
    for (const IntegerCase &entry : cases) {
        EXPECT_THAT(writeKeyedArchive(entry.value), HasSubstr(entry.bytes));
        EXPECT_EQ(readAgain(entry.value), entry.value);
    }
}

TEST(KeyedArchiveWriterTest, WritesTextsAsAsciiOrUtf16) {
    EXPECT_THAT(writeKeyedArchive("abc"), HasSubstr("\x53"
                                                    "abc"));
    EXPECT_THAT(writeKeyedArchive("aé"), HasSubstr("\x62\x00"
                                                   "a\x00\xE9"s));
    EXPECT_THAT(writeKeyedArchive("🚨"), HasSubstr("\x62\xD8\x3D\xDE\xA8"));
    EXPECT_THAT(writeKeyedArchive("fifteen letters"), HasSubstr("\x5F\x10\x0F"
                                                                "fifteen letters"));
    for (const std::string &text :
         {""s, "$null"s, "a\0b"s, "\0"s, "漢字"s, "\uFEFFx"s, "\uFFFE\uFFFF"s, "🚨🚨"s,
          std::string(14, 'a'), std::string(255, 'b'), std::string(70000, 'c')}) {
        EXPECT_EQ(readAgain(text), Value(text));
        EXPECT_EQ(readAgain(text + "é"), Value(text + "é"));
    }
    EXPECT_EQ(readAgain("a\xFF\xC3z"), Value("a\uFFFD\uFFFDz"));
}

struct TrailerCase {
    int texts;
    int numberSize;
    int offsetSize;
};

TEST(KeyedArchiveWriterTest, WritesNumbersAndOffsetsAsNarrowAsTheyFit) {
    // Two objects of the list for each text, and some others.
    for (const TrailerCase &entry :
         {TrailerCase{1, 1, 1}, TrailerCase{100, 1, 2}, TrailerCase{150, 2, 2},
          TrailerCase{20000, 2, 4}, TrailerCase{40000, 4, 4}}) {
        Array array;
        for (int number = 0; number < entry.texts; ++number) {
            array.emplace_back(std::to_string(number));
        }
        const std::string bytes = writeKeyedArchive(array);
        const std::size_t trailer = bytes.size() - 32;
        EXPECT_EQ(bytes[trailer + 6], static_cast<char>(entry.offsetSize)) << entry.texts;
        EXPECT_EQ(bytes[trailer + 7], static_cast<char>(entry.numberSize)) << entry.texts;
        EXPECT_EQ(readAgain(array), Value(array));
    }
}

/// Makes values of every kind that an archive can hold.
class RandomValues {
public:
    explicit RandomValues(std::uint64_t seed) : m_random(seed) {}

    Value value(int depth) {
        switch (below(depth > 0 ? 12 : 9)) {
            case 0:
                return Null{};
            case 1:
                return below(2) == 0;
            case 2:
                return static_cast<std::int64_t>(below(4)) - 2;
            case 3:
                return static_cast<std::int64_t>(m_random() >> below(64));
            case 4:
                return m_random() >> below(64);
            case 5:
                return std::ldexp(static_cast<double>(below(2000)) - 1000.0,
                                  static_cast<int>(below(100)) - 50);
            case 6:
                return Data{text()};
            case 7:
                return Date{static_cast<double>(below(1000000)) / 64.0};
            case 8:
                return text();
            case 9:
                return array(depth - 1);
            case 10:
                return dictionary(depth - 1);
            default:
                return foreign(depth - 1);
        }
    }

    Dictionary dictionary(int depth) {
        Dictionary pairs;
        for (std::uint64_t count = below(8); count > 0; --count) {
            pairs.set(text(), value(depth));
        }
        return pairs;
    }

    std::uint64_t below(std::uint64_t limit) { return m_random() % limit; }

private:
    std::string text() {
        static const std::vector<std::string> kPieces{"",  "a", "$null", "NS.keys", "é", "漢",
                                                      "🚨", " ", "\0x"s,  "root",    "1", "\uFEFF"};
        std::string all;
        for (std::uint64_t count = below(5); count > 0; --count) {
            all += kPieces[below(kPieces.size())];
        }
        return all;
    }

    Array array(int depth) {
        Array elements;
        for (std::uint64_t count = below(8); count > 0; --count) {
            elements.push_back(value(depth));
        }
        return elements;
    }

    ForeignObject foreign(int depth) {
        ForeignObject object{{"Gadget" + text(), "NSObject"}, {}};
        for (std::uint64_t count = below(4); count > 0; --count) {
            Value content = value(depth);
            // Nil, and what can only be referred to, cannot stand in place.
            const bool isReference = content.type() == Value::Type::kNull ||
                                     content.type() == Value::Type::kForeign || below(2) == 0;
            auto shared = std::make_shared<const Value>(std::move(content));
            const bool isPlain =
                shared->type() != Value::Type::kArray && shared->type() != Value::Type::kDictionary;
            object.fields.push_back({"f" + std::to_string(count), isReference || !isPlain,
                                     below(5) == 0 ? nullptr : shared});
            object.fields.back().isReference |= object.fields.back().value == nullptr;
        }
        return object;
    }

    std::mt19937_64 m_random;
};

TEST(KeyedArchiveWriterTest, WhatIsWrittenIsReadBack) {
    RandomValues random(7);
    for (int round = 0; round < 3000; ++round) {
        const Value value = random.value(static_cast<int>(random.below(6)));
        ASSERT_EQ(readAgain(value), value) << round;
        // A reader that changed the order, a sign or a type would write something else.
        const std::string bytes = writeKeyedArchive(value);
        ASSERT_TRUE(writeKeyedArchive(readAgain(value)) == bytes) << round;
    }
}

TEST(KeyedArchiveWriterTest, OthersFindTheSameKeys) {
    RandomValues random(8);
    for (int round = 0; round < 300; ++round) {
        const Dictionary dictionary = random.dictionary(3);
        const ParsedArchive archive(writeKeyedArchive(dictionary));
        const std::vector<plist_t> keys = archive.targets(archive.root(), "NS.keys");
        ASSERT_EQ(keys.size(), dictionary.size());
        std::size_t index = 0;
        for (const auto &[key, value] : dictionary) {
            // libplist ends its texts at a NUL.
            plist_t wrapped = plist_dict_get_item(keys[index], "NS.string");
            EXPECT_EQ(wrapped != nullptr, key == "$null");
            EXPECT_EQ(ParsedArchive::textOf(wrapped != nullptr ? wrapped : keys[index]),
                      key.substr(0, key.find('\0')));
            ++index;
        }
    }
}

TEST(KeyedArchiveWriterTest, RepeatedTextIsStillReadable) {
    // A reader refuses an archive that unfolds to many times its size.
    const std::string megabyte(std::size_t{1} << 20, 'x');
    const Value value = Array(60, megabyte);
    const std::string bytes = writeKeyedArchive(value);
    EXPECT_LT(bytes.size(), 60 * megabyte.size());
    EXPECT_TRUE(readAgain(value) == value);
}

TEST(KeyedArchiveWriterTest, LargeCommandsTakeLittleTimeAndMemory) {
    constexpr int kCount = 200000;
    const std::string message(80, 'm');
    Dictionary dictionary;
    dictionary.reserve(kCount);
    for (int number = 0; number < kCount; ++number) {
        dictionary.append(std::to_string(number) + message, "value " + std::to_string(number));
    }
    const Value value(std::move(dictionary));
    const std::clock_t start = std::clock();
    const AllocationMeter writing;
    const std::string bytes = writeKeyedArchive(value);
    const std::size_t written = writing.peak();
    const AllocationMeter reading;
    const auto result = readKeyedArchive(bytes);
    // Some tenths of a second; with a look-up that walks it would be minutes.
    EXPECT_LT(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC, 10.0);
    EXPECT_LT(written, 6 * bytes.size());
    EXPECT_LT(reading.peak(), 4 * bytes.size());
    EXPECT_TRUE(std::get<Value>(result) == value);
}

}  // namespace
}  // namespace quorbel
