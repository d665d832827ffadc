#include "platform/AllocationMeter.h"
#include "platform/KeyedArchive.h"
#include "platform/RawList.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using testing::AllocationMeter;
using testing::bigEndian;
using testing::head;
using testing::rawList;

constexpr std::size_t kMany = 20'000'000;
constexpr std::size_t kMostTimes = 10;

std::string ascii(const std::string &text) {
    return head(0x5, text.size()) + text;
}

std::string reference(std::uint64_t number) {
    return "\x80" + bigEndian(number, 1);
}

/// References of one byte each to the objects of a list.
std::string numbers(std::initializer_list<unsigned> objects) {
    std::string bytes;
    for (const unsigned object : objects) {
        bytes += static_cast<char>(object);
    }
    return bytes;
}

// What the lists below share: the objects up to this number.
enum Shared : unsigned {
    kTopKey,
    kObjectsKey,
    kRootKey,
    kClassKey,
    kClassesKey,
    kValuesKey,
    kKeysKey,
    kNilText,
    kRootReference,
    kTrueReference,
    kClassReference,
    kTextReference,
    kTrue,
    kSharedCount
};

std::vector<std::string> sharedObjects() {
    return {ascii("$top"),         ascii("$objects"),   ascii("root"),    ascii("$class"),
            ascii("$classes"),     ascii("NS.objects"), ascii("NS.keys"), ascii("$null"),
            reference(1),          reference(2),        reference(3),     reference(4),
            std::string(1, '\x09')};
}

/// An archive whose root is an instance of a class and has these fields: their names' and contents'
/// numbers. Object 2 of the archive is true, 4 a text. `more` are numbered from kSharedCount on.
std::string archiveOf(const std::string &className, const std::string &fieldNames,
                      const std::string &fieldContents, const std::vector<std::string> &more) {
    std::vector<std::string> list = sharedObjects();
    list.insert(list.end(), more.begin(), more.end());
    const auto next = static_cast<unsigned>(list.size());
    list.push_back(head(0xD, fieldNames.size() + 1) + numbers({kClassKey}) + fieldNames +
                   numbers({kClassReference}) + fieldContents);
    list.push_back(ascii(className));
    list.push_back(head(0xA, 1) + numbers({next + 1}));
    list.push_back(head(0xD, 1) + numbers({kClassesKey}) + numbers({next + 2}));
    list.push_back(head(0xA, 5) + numbers({kNilText, next, kTrue, next + 3, kRootKey}));
    list.push_back(head(0xD, 1) + numbers({kRootKey}) + numbers({kRootReference}));
    list.push_back(head(0xD, 2) + numbers({kTopKey, kObjectsKey}) + numbers({next + 5, next + 4}));
    return rawList(list, next + 6, 1);
}

std::string same(unsigned object, std::size_t count) {
    return std::string(count, static_cast<char>(object));
}

/// What makes an archive that has less of something as large as the others.
std::string padding(std::size_t count) {
    return head(0x4, kMany - count) + std::string(kMany - count, '\0');
}

struct Case {
    const char *name;
    /// An archive of about kMany bytes with so many bytes of references.
    std::function<std::string(std::size_t)> make;
};

std::string inPlace(const std::string &content, std::size_t count) {
    return archiveOf("Foreign", numbers({kValuesKey}), numbers({kSharedCount + 2}),
                     {padding(count), ascii("twenty-four bytes: 12345"), content});
}

const Case kHostile[] = {
    {"an array of one value",
     [](std::size_t count) {
         return archiveOf("NSArray", numbers({kValuesKey}), numbers({kSharedCount}),
                          {head(0xA, count) + same(kTrueReference, count), padding(count)});
     }},
    {"a dictionary of one key",
     [](std::size_t count) {
         return archiveOf("NSDictionary", numbers({kKeysKey, kValuesKey}),
                          numbers({kSharedCount, kSharedCount}),
                          {head(0xA, count) + same(kTextReference, count), padding(count)});
     }},
    {"an object of many fields",
     [](std::size_t count) {
         return archiveOf("Foreign", same(kNilText, count / 2), same(kTrue, count / 2),
                          {padding(count)});
     }},
    {"an object of many fields that are references",
     [](std::size_t count) {
         return archiveOf("Foreign", same(kNilText, count / 2), same(kTrueReference, count / 2),
                          {padding(count)});
     }},
    {"an array in place",
     [](std::size_t count) { return inPlace(head(0xA, count) + same(kTrue, count), count); }},
    {"references in place",
     [](std::size_t count) {
         return inPlace(head(0xA, count) + same(kTrueReference, count), count);
     }},
    {"a dictionary in place",
     [](std::size_t count) {
         return inPlace(head(0xD, count / 2) + same(kNilText, count / 2) + same(kTrue, count / 2),
                        count);
     }},
    {"texts of a few bytes",
     [](std::size_t count) {
         return inPlace(head(0xA, count) + same(kSharedCount + 1, count), count);
     }},
    {"wide text",
     [](std::size_t count) {
         return inPlace(head(0x6, count / 2) + std::string(count, '\x6F'), count);
     }},
};

TEST(KeyedArchiveMemoryTest, NoArchiveTakesManyTimesItsSize) {
    for (const Case &hostile : kHostile) {
        // Those that are refused at once, and those that nearly fit.
        for (const std::size_t count : {kMany, kMany / 10, kMany / 15}) {
            const std::string bytes = hostile.make(count);
            SCOPED_TRACE(hostile.name + (' ' + std::to_string(count)));
            const AllocationMeter meter;
            const auto result = readKeyedArchive(bytes);
            EXPECT_LT(meter.peak(), kMostTimes * bytes.size());
            if (const auto *error = std::get_if<ArchiveError>(&result)) {
                EXPECT_EQ(error->reason, "objects that take many times the memory of the archive");
            }
        }
    }
}

std::string numbered(int number) {
    return std::to_string(1'700'000'000 + number);
}

/// Documents of which nothing is repeated but what real ones repeat.
Value largeDocument(int kind) {
    Array values;
    Dictionary pairs;
    for (int number = 0; number < 300'000; ++number) {
        switch (kind) {
            case 0:
                pairs.append(numbered(number) + ",Local7.Debug,10.0.0.1,some message\n", "1");
                break;
            case 1:
                values.emplace_back(number);
                break;
            case 2:
                values.emplace_back(number % 2 == 0);
                break;
            case 3:
                pairs.append(std::to_string(number), number);
                break;
            case 4:
                values.emplace_back("\xC3\xBC" + numbered(number));
                break;
            default:
                values.emplace_back(Dictionary{{"IP", numbered(number)},
                                               {"Mask", "24"},
                                               {"Facility", "Any"},
                                               {"Severity", "Any"},
                                               {"Message", "*"}});
                break;
        }
    }
    return pairs.empty() ? Value(std::move(values)) : Value(std::move(pairs));
}

TEST(KeyedArchiveMemoryTest, LargeDocumentsAreReadWhole) {
    for (int kind = 0; kind <= 5; ++kind) {
        SCOPED_TRACE(kind);
        const Value document = largeDocument(kind);
        const std::string bytes = writeKeyedArchive(document);
        const AllocationMeter meter;
        const auto result = readKeyedArchive(bytes);
        EXPECT_LT(meter.peak(), (std::size_t{48} << 20U) + 6 * bytes.size());
        ASSERT_TRUE(std::holds_alternative<Value>(result)) << std::get<ArchiveError>(result).reason;
        EXPECT_TRUE(std::get<Value>(result) == document);
    }
}

}  // namespace
}  // namespace quorbel
