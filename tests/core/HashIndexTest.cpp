#include "core/HashIndex.h"
#include "core/StringTable.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <string>

namespace quorbel {
namespace {

std::set<std::uint32_t> numbersUnder(const HashIndex &index, std::size_t hash) {
    std::set<std::uint32_t> numbers;
    EXPECT_EQ(index.find(hash,
                         [&numbers](std::uint32_t number) {
                             EXPECT_TRUE(numbers.insert(number).second) << number;
                             return false;
                         }),
              std::nullopt);
    return numbers;
}

TEST(HashIndexTest, HoldsWhatAPlainMapHolds) {
    std::mt19937 random(3);
    HashIndex index;
    std::map<std::size_t, std::set<std::uint32_t>> expected;
    // Few hashes, which lie close together, so that runs of used places form and break up.
    const auto randomHash = [&random] { return std::size_t{random() % 64}; };
    for (std::uint32_t number = 0; number < 20'000; ++number) {
        const std::size_t hash = randomHash();
        index.insert(hash, number);
        expected[hash].insert(number);
        const std::size_t other = randomHash();
        if (random() % 10 != 0 && !expected[other].empty()) {
            const std::uint32_t gone = *expected[other].begin();
            index.erase(other, gone);
            expected[other].erase(gone);
        }
        if (number % 500 == 0) {
            for (std::size_t each = 0; each < 64; ++each) {
                ASSERT_EQ(numbersUnder(index, each), expected[each]) << number;
            }
        }
    }
    for (const auto &[hash, numbers] : expected) {
        for (const std::uint32_t number : numbers) {
            index.erase(hash, number);
        }
    }
    EXPECT_TRUE(index.isEmpty());
}

TEST(HashIndexTest, FindsTheOneThatMatches) {
    HashIndex index;
    EXPECT_EQ(index.find(5, [](std::uint32_t) { return true; }), std::nullopt);
    index.insert(5, 1);
    index.insert(5, 2);
    EXPECT_EQ(index.find(5, [](std::uint32_t number) { return number == 2; }), 2U);
    index.clear();
    EXPECT_EQ(index.find(5, [](std::uint32_t) { return true; }), std::nullopt);
}

TEST(HashIndexTest, ATextsHashDependsOnAllItsBytes) {
    std::set<std::size_t> hashes;
    std::size_t texts = 0;
    for (std::size_t length = 0; length <= 40; ++length) {
        std::string text(length, 'a');
        hashes.insert(hashBytes(text));
        ++texts;
        for (std::size_t at = 0; at < length; ++at) {
            text[at] = 'b';
            hashes.insert(hashBytes(text));
            ++texts;
            text[at] = 'a';
        }
    }
    EXPECT_EQ(hashes.size(), texts);
}

// Of so many texts some have the same place and key in the table.
TEST(StringTableTest, TellsTextsApartThatShareAKey) {
    constexpr int kTexts = 300'000;
    const auto isNumbered = [](const std::string &before, const std::string &after) {
        StringTable table;
        std::set<std::uint32_t> keys;
        for (int i = 0; i < kTexts; ++i) {
            const std::string text = before + std::to_string(1'000'000 + i) + after;
            const std::size_t hash = hashBytes(text);
            keys.insert(static_cast<std::uint32_t>(hash ^ (hash >> 32U)));
            if (table.acquire(text) != static_cast<StringTable::Id>(i + 1)) {
                return false;
            }
        }
        EXPECT_LT(keys.size(), std::size_t{kTexts});
        return true;
    };
    EXPECT_TRUE(isNumbered("", ""));                  // shorter than a word
    EXPECT_TRUE(isNumbered("10.", ""));               // one and a bit
    EXPECT_TRUE(isNumbered("the same", "!"));         // two, which differ in the second
    EXPECT_TRUE(isNumbered("", "_the same"));         // in the first
    EXPECT_TRUE(isNumbered("longer than ", " two"));  // and longer
}

}  // namespace
}  // namespace quorbel
