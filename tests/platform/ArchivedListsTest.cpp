#include "platform/ArchivedLists.h"
#include "platform/BinaryPropertyListWriter.h"
#include "platform/KeyedArchive.h"
#include "platform/Value.h"
#include "support/Seed.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>
#include <vector>

namespace quorbel {
namespace {

Value restore(Array events, Array listed = {}) {
    Dictionary command{{"command", "restore"}};
    command.append("Events", std::move(events));
    command.append("Listed", std::move(listed));
    return command;
}

/// What is read of an archive where it stands; nothing when that is left to others.
std::optional<Value> readInPlace(const std::string &archive) {
    auto lists = ArchivedLists::open(archive, "restore", {"Events", "Listed"});
    std::vector<std::vector<std::string_view>> lines(2);
    for (std::size_t key = 0; lists && key < lines.size(); ++key) {
        if (!lists->forEach(key, [&](std::string_view line) { lines[key].push_back(line); })) {
            return std::nullopt;
        }
        EXPECT_EQ(lines[key].size(), lists->count(key));
    }
    const auto arrayOf = [](const std::vector<std::string_view> &texts) {
        Array array;  // the lines are still there
        for (const std::string_view text : texts) {
            array.emplace_back(std::string(text));
        }
        return array;
    };
    return lists ? std::optional(restore(arrayOf(lines[0]), arrayOf(lines[1]))) : std::nullopt;
}

TEST(ArchivedListsTest, ReadsWhatIsWritten) {
    std::mt19937 random(testing::seed());
    const std::vector<std::string> pieces{"a", ",", "\xC3\xA4", "\xF0\x9F\x98\x80", "message"};
    const auto lines = [&] {
        Array array;
        for (auto number = random() % 300; number > 0; --number) {
            std::string line = std::to_string(number / 2);
            for (auto left = random() % 3; left > 0; --left) {
                line += pieces[random() % pieces.size()];
            }
            array.emplace_back(line + "\n");
        }
        return array;
    };
    for (int round = 0; round < 100; ++round) {
        const Value command = restore(lines(), lines());
        EXPECT_EQ(readInPlace(writeKeyedArchive(command)), command);
    }
}

TEST(ArchivedListsTest, LeavesOtherArchivesToOthers) {
    const std::vector<Value> others{
        "text",
        Array{"restore"},
        Dictionary(),
        Dictionary{{"command", "restore"}, {"Events", Array()}},
        Dictionary{{"command", "update"}, {"Events", Array()}, {"Listed", Array()}},
        Dictionary{{"command", "restore"}, {"Listed", Array()}, {"Events", Array()}},
        Dictionary{{"command", "restore"}, {"Events", Array()}, {"Listed", Dictionary()}},
        Dictionary{{"command", "restore"}, {"Events", "a\n"}, {"Listed", Array()}},
        restore({"a\n", 1}),
        restore({"a\n"}, {Null()}),
        restore({"a\n", Array{"b\n"}}),
        restore({"$null"}),
    };
    for (const Value &other : others) {
        EXPECT_EQ(readInPlace(writeKeyedArchive(other)), std::nullopt);
    }
    EXPECT_EQ(readInPlace(""), std::nullopt);
    EXPECT_EQ(readInPlace("no archive"), std::nullopt);
}

/// A "restore" whose events are one text, named so many times. A writer would repeat it.
std::string overAndOver(const std::string &text, std::size_t times) {
    using Number = BinaryPropertyListWriter::Number;
    BinaryPropertyListWriter list;
    std::vector<Number> objects{list.addText("$null")};
    const auto add = [&](Number object) {
        objects.push_back(object);
        return list.addReference(static_cast<Number>(objects.size() - 1));
    };
    const auto dictionary = [&](const std::vector<std::string_view> &names,
                                const std::vector<Number> &values) {
        std::vector<Number> keys;
        for (const std::string_view name : names) {
            keys.push_back(list.addText(name));
        }
        return list.addDictionary(keys, values);
    };
    const auto classOf = [&](std::string_view name) {
        const std::vector<Number> names{list.addText(name), list.addText("NSObject")};
        return add(dictionary({"$classname", "$classes"}, {names[0], list.addArray(names)}));
    };
    const Number arrays = classOf("NSArray");
    const Number line = add(list.addText(text));
    const auto arrayOf = [&](std::size_t count) {
        const std::vector<Number> elements(count, line);
        return add(dictionary({"NS.objects", "$class"}, {list.addArray(elements), arrays}));
    };
    const std::vector<Number> keys{add(list.addText("command")), add(list.addText("Events")),
                                   add(list.addText("Listed"))};
    const std::vector<Number> values{add(list.addText("restore")), arrayOf(times), arrayOf(0)};
    const Number root =
        add(dictionary({"NS.keys", "NS.objects", "$class"},
                       {list.addArray(keys), list.addArray(values), classOf("NSDictionary")}));
    const Number top = dictionary({"root"}, {root});
    return list.write(dictionary(
        {"$version", "$archiver", "$top", "$objects"},
        {list.addInteger(100'000), list.addText("NSKeyedArchiver"), top, list.addArray(objects)}));
}

TEST(ArchivedListsTest, DoesNotDecodeOneTextOverAndOver) {
    const std::string text(10'000, 'x');
    const std::string wide = text + "\xC3\xA4";
    EXPECT_TRUE(readInPlace(overAndOver(text, 10)));
    EXPECT_TRUE(readInPlace(overAndOver(wide, 10)));
    EXPECT_FALSE(readInPlace(overAndOver(wide, 10'000)));
}

/// Whatever is damaged: what is read in place is what anyone reads.
TEST(ArchivedListsTest, DamagedArchivesAreReadAsByOthersOrNotAtAll) {
    std::mt19937 random(testing::seed());
    const std::string whole = writeKeyedArchive(
        restore({"1,a,b,c\n", "2,a,b,\xC3\xA4\n", "1,a,b,c\n"}, {"4,a\n", "2,a,b,\xC3\xA4\n"}));
    int read = 0;
    for (int round = 0; round < 20'000; ++round) {
        std::string damaged = whole;
        for (auto left = 1 + random() % 3; left > 0; --left) {
            damaged[random() % damaged.size()] = static_cast<char>(random());
        }
        if (const auto inPlace = readInPlace(damaged)) {
            const auto value = readKeyedArchive(damaged);
            const auto *known = std::get_if<Value>(&value);
            ASSERT_NE(known, nullptr)
                << "round " << round << ": " << std::get<ArchiveError>(value).reason;
            EXPECT_EQ(*inPlace, *known) << "round " << round;
            ++read;
        }
    }
    EXPECT_GT(read, 1000);
}

}  // namespace
}  // namespace quorbel
