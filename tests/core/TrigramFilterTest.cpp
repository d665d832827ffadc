#include "core/LiteralSearch.h"
#include "core/PackedBytes.h"
#include "core/TrigramFilter.h"
#include "support/Seed.h"

#include <gtest/gtest.h>

#include <cctype>
#include <random>
#include <string>
#include <vector>

namespace quorbel {
namespace {

constexpr std::size_t kPlenty = 4096;

struct TextCase {
    std::string_view text;
    bool may;
};

TEST(TrigramFilterTest, KnowsWhatCannotBeAmongTheBytes) {
    const TrigramFilter filter("sshd[71]: Accepted Publickey f\u00fcr 10.2.0.7 \u212Aelvin \u017Fo",
                               kPlenty);
    const TextCase cases[] = {
        {"publickey", true}, {"PUBLICKEY", true},  {"accepted p", true}, {"sshd[71]", true},
        {"xyzzy", false},    {"publickez", false}, {"7 \u212A", true},   {"\u212A", true},
        {"\u017F", true},    {"f\u00fcr", true},   {"\u00fc", true},     {"\u00f6", false},
        {"f\u00f6r", false}, {"10.2.1.7", true},   {"", true},           {"q", true},
        {"qq", true},        {"qqq", false},       {"\u212B", false},    {"sshd[71]:x", false},
    };
    for (const TextCase &c : cases) {
        EXPECT_EQ(filter.mayHave(c.text), c.may) << c.text;
    }
    EXPECT_TRUE(TrigramFilter().mayHave("xyzzy"));
    const TrigramFilter ascii("sk", kPlenty);
    EXPECT_FALSE(ascii.mayHave("\u212A"));
    EXPECT_FALSE(ascii.mayHave("\u017F"));
}

TEST(TrigramFilterTest, NeverDeniesWhatIsThere) {
    std::mt19937 random(testing::seed());
    const auto below = [&random](std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
    };
    std::size_t denied = 0;
    for (int round = 0; round < 300; ++round) {
        std::string bytes(1 + below(round % 3 == 0 ? 60'000 : 300), ' ');
        const std::size_t letters = 2 + below(255);
        for (char &byte : bytes) {
            byte = static_cast<char>(below(letters) + (round % 2 == 0 ? 0 : 'A'));
        }
        const std::size_t most = std::size_t{8} << below(12);
        const TrigramFilter filter(bytes, most);
        ASSERT_LE(filter.memory(), most);
        for (int look = 0; look < 50; ++look) {
            const std::size_t begin = below(bytes.size());
            std::string text = bytes.substr(begin, 1 + below(12));
            for (char &letter : text) {
                const auto code = static_cast<unsigned char>(letter);
                if (code < 0x80 && below(2) == 0) {
                    letter = static_cast<char>(std::isupper(code) != 0 ? std::tolower(code)
                                                                       : std::toupper(code));
                }
            }
            ASSERT_TRUE(filter.mayHave(text)) << round;
            denied += filter.mayHave("~" + text + "~") ? 0U : 1U;
        }
    }
    EXPECT_GT(denied, 3000U);
}

/// What a thousand messages say that differ in their numbers.
std::string messages() {
    std::string bytes;
    for (int i = 0; i < 4096; ++i) {
        bytes += "sshd[" + std::to_string(i * 37 % 1000) + "]: Accepted publickey from 10.20." +
                 std::to_string(i % 250) + ".7 port 52144 ssh2";
    }
    return bytes;
}

TEST(TrigramFilterTest, TakesLittleMemoryAndLetsFewTextsPass) {
    const std::string bytes = messages();
    const TrigramFilter filter(bytes, bytes.size() / 800);
    EXPECT_GT(filter.memory(), 0U);
    EXPECT_LE(filter.memory(), bytes.size() / 800);
    std::mt19937 random(testing::seed());
    int passed = 0;
    for (int look = 0; look < 1000; ++look) {
        std::string text;
        for (int i = 0; i < 6; ++i) {
            text += static_cast<char>('a' + random() % 26);
        }
        passed += filter.mayHave(text) ? 1 : 0;
    }
    EXPECT_LT(passed, 50);
    // Of bytes that have everything, nothing can be told, and nothing is kept.
    std::string noise(200'000, ' ');
    for (char &byte : noise) {
        byte = static_cast<char>(random());
    }
    EXPECT_EQ(TrigramFilter(noise, kPlenty).memory(), 0U);
    EXPECT_TRUE(TrigramFilter(noise, kPlenty).mayHave("xyzzy"));
}

TEST(TrigramFilterTest, PackedMessagesSayWhichSearchCannotFindAnything) {
    const std::string text = messages();
    const auto packed = PackedBytes::pack({text.begin(), text.end()});
    ASSERT_TRUE(packed);
    struct {
        std::vector<std::string> texts;
        bool isCaseSensitive;
        bool may;
    } const cases[] = {
        {{"publickey"}, false, true},
        {{"PublicKEY"}, false, true},
        {{"xyzzy"}, false, false},
        {{"xyzzy"}, true, false},
        {{"sk"}, false, true},
        {{"sxyzzyk"}, false, false},
        {{"xyzzy", "ssh2"}, false, true},
        {{"xyzzy", "zzyxx"}, true, false},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(LiteralSearch(c.texts, c.isCaseSensitive).mayBeIn(packed->filter()), c.may)
            << c.texts.front();
    }
}

}  // namespace
}  // namespace quorbel
