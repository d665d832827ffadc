#include "platform/AllocationMeter.h"
#include "platform/KeyedArchive.h"
#include "platform/PropertyLists.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>
#include <vector>

namespace quorbel {
namespace {

using namespace quorbel::testing;  // NOLINT(google-build-using-namespace): names of nodes

using Nodes = std::vector<Node>;

/// A chain of arrays around a text.
std::string nested(std::uint64_t levels) {
    Nodes objects;
    for (std::uint64_t level = 1; level <= levels; ++level) {
        objects.push_back(instance(levels + 2, {{"NS.objects", uids({level + 1})}}));
    }
    objects.push_back(text("inside"));
    objects.push_back(classEntry({"NSArray", "NSObject"}));
    return archiveOf(objects);
}

TEST(KeyedArchiveLimitsTest, LimitsDepth) {
    EXPECT_TRUE(std::holds_alternative<Value>(readKeyedArchive(nested(512))));
    EXPECT_TRUE(std::holds_alternative<ArchiveError>(readKeyedArchive(nested(513))));
    EXPECT_TRUE(std::holds_alternative<ArchiveError>(readKeyedArchive(nested(20000))));
}

/// An object of many fields, through which one looks for its class, named as many times.
std::string slow() {
    constexpr int kMany = 20000;
    Node fields = plist_new_dict();
    Node names = plist_new_array();
    for (int number = 0; number < kMany; ++number) {
        plist_dict_set_item(fields, std::to_string(number).c_str(), boolean(true));
        plist_array_append_item(names, uid(2));
    }
    plist_dict_set_item(fields, "$class", uid(4));
    return archiveOf({instance(3, {{"NS.objects", names}}), fields,
                      classEntry({"NSArray", "NSObject"}), classEntry({"NSNull", "NSObject"})});
}

TEST(KeyedArchiveLimitsTest, LimitsWhatSharingUnfoldsTo) {
    // Forty levels of arrays, each of which names the next one ten times.
    Nodes wide;
    for (std::uint64_t level = 1; level <= 40; ++level) {
        const std::uint64_t next = level + 1;
        wide.push_back(instance(
            42,
            {{"NS.objects", uids({next, next, next, next, next, next, next, next, next, next})}}));
    }
    wide.push_back(text("leaf"));
    wide.push_back(classEntry({"NSArray", "NSObject"}));
    // A text of 100,000 bytes, named 10,000 times.
    const std::string big(100000, 'x');
    Node names = plist_new_array();
    for (int count = 0; count < 10000; ++count) {
        plist_array_append_item(names, uid(2));
    }
    const Nodes heavy{instance(3, {{"NS.objects", names}}), text(big.c_str()),
                      classEntry({"NSArray", "NSObject"})};
    for (const std::string &bytes : {archiveOf(wide), archiveOf(heavy), slow()}) {
        const std::clock_t start = std::clock();
        const AllocationMeter meter;
        EXPECT_TRUE(std::holds_alternative<ArchiveError>(readKeyedArchive(bytes)));
        EXPECT_LT(meter.peak(), std::size_t{40} << 20);
        EXPECT_LT(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC, 1.0);
    }
}

TEST(KeyedArchiveLimitsTest, AllowsTheSharingOfRealDocuments) {
    // A thousand records that share a template of 8,000 bytes and a list of ten names.
    const std::string text8000(8000, 't');
    Node records = plist_new_array();
    for (int count = 0; count < 1000; ++count) {
        plist_array_append_item(records, uid(2));
    }
    Nodes objects{instance(8, {{"NS.objects", records}}),
                  instance(7, {{"NS.keys", uids({3, 4})}, {"NS.objects", uids({5, 6})}}),
                  text("template"),
                  text("names"),
                  text(text8000.c_str()),
                  instance(8, {{"NS.objects", uids({3, 4, 3, 4, 3, 4, 3, 4, 3, 4})}}),
                  classEntry({"NSDictionary", "NSObject"}),
                  classEntry({"NSArray", "NSObject"})};
    const auto result = readKeyedArchive(archiveOf(objects));
    ASSERT_TRUE(std::holds_alternative<Value>(result)) << std::get<ArchiveError>(result).reason;
    EXPECT_EQ(std::get<Value>(result).array()->size(), 1000U);
}

}  // namespace
}  // namespace quorbel
