#include "platform/ArchivedCounts.h"
#include "platform/KeyedArchive.h"
#include "platform/Value.h"
#include "support/Seed.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace quorbel {
namespace {

Value update(Dictionary events) {
    Dictionary command{{"command", "update"}};
    command.append("Events", std::move(events));
    return command;
}

/// What is read of an archive where it stands; nothing when that is left to others.
std::optional<Dictionary> readInPlace(const std::string &archive) {
    auto counts = ArchivedCounts::open(archive, "update", "Events");
    std::vector<std::pair<std::string_view, std::string>> entries;
    const auto note = [&](std::string_view line, std::string_view count) {
        entries.emplace_back(line, count);
        return true;
    };
    if (!counts || !counts->forEach(note)) {
        return std::nullopt;
    }
    EXPECT_EQ(entries.size(), counts->count());
    Dictionary read;
    for (const auto &[line, count] : entries) {  // the lines are still there
        read.append(std::string(line), count);
    }
    return read;
}

TEST(ArchivedCountsTest, ReadsWhatIsWritten) {
    std::mt19937 random(testing::seed());
    const std::vector<std::string> pieces{"a", ",", "\xC3\xA4", "\xF0\x9F\x98\x80", "message"};
    for (int round = 0; round < 100; ++round) {
        Dictionary events;
        for (auto number = random() % 300; number > 0; --number) {
            std::string line = std::to_string(number);
            for (auto left = random() % 5; left > 0; --left) {
                line += pieces[random() % pieces.size()];
            }
            events.append(line + "\n", std::to_string(random() % 3));
        }
        EXPECT_EQ(readInPlace(writeKeyedArchive(update(events))), events);
    }
}

TEST(ArchivedCountsTest, LeavesOtherArchivesToOthers) {
    const std::vector<Value> others{
        "text",
        Array{"update"},
        Dictionary(),
        Dictionary{{"command", "update"}},
        Dictionary{{"command", "restore"}, {"Events", Dictionary()}},
        Dictionary{{"Events", Dictionary()}, {"command", "update"}},
        Dictionary{{"command", 1}, {"Events", Dictionary()}},
        Dictionary{{"command", "update"}, {"Others", Dictionary()}},
        Dictionary{{"command", "update"}, {"Events", Array{"a\n"}}},
        Dictionary{{"command", "update"}, {"Events", "a\n"}},
        Dictionary{{"command", "update"}, {"Events", Dictionary()}, {"More", 1}},
        update({{"a\n", 1}}),
        update({{"a\n", Null()}}),
        update({{"a\n", "1"}, {"b\n", Array()}}),
        update({{"$null", "1"}}),
        update({{"a\n", "$null"}}),
        update({{"a\n", "\xC3\xA4"}}),
    };
    for (const Value &other : others) {
        EXPECT_EQ(readInPlace(writeKeyedArchive(other)), std::nullopt);
    }
    EXPECT_EQ(readInPlace(""), std::nullopt);
    EXPECT_EQ(readInPlace("no archive"), std::nullopt);
}

/// Whatever is damaged: what is read in place is what anyone reads.
TEST(ArchivedCountsTest, DamagedArchivesAreReadAsByOthersOrNotAtAll) {
    std::mt19937 random(testing::seed());
    const std::string whole = writeKeyedArchive(update(
        {{"1,a,b,c\n", "1"}, {"2,a,b,\xC3\xA4\n", "2"}, {"3,a,b,c\n", "1"}, {"4,a\n", "12"}}));
    int read = 0;
    for (int round = 0; round < 20'000; ++round) {
        std::string damaged = whole;
        for (auto left = 1 + random() % 3; left > 0; --left) {
            damaged[random() % damaged.size()] = static_cast<char>(random());
        }
        const auto inPlace = readInPlace(damaged);
        const auto value = readKeyedArchive(damaged);
        const auto *known = std::get_if<Value>(&value);
        if (inPlace) {
            ASSERT_TRUE(known != nullptr && known->dictionary() != nullptr)
                << "round " << round << ": "
                << (known == nullptr ? std::get<ArchiveError>(value).reason : "");
            const Value *events = known->dictionary()->find("Events");
            const bool hasEqualLines =
                events != nullptr && events->dictionary()->size() < inPlace->size();
            EXPECT_TRUE(hasEqualLines || Value(*inPlace) == *events) << "round " << round;
            ++read;
        }
    }
    EXPECT_GT(read, 1000);
}

}  // namespace
}  // namespace quorbel
