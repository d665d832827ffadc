#include "service/base/QuotedText.h"

#include <gtest/gtest.h>

#include <string>

namespace quorbel {
namespace {

TEST(QuotedTextTest, ShowsWhatTheBusAndTheJournalTake) {
    struct Case {
        std::string text;
        std::string shown;
    };
    const Case cases[] = {
        {"", ""},
        {"plain, with \"marks\"", "plain, with \"marks\""},
        {"G\u00FCnther \u4E2D \U0001F600", "G\u00FCnther \u4E2D \U0001F600"},
        {"a\nb\x1B[2J\x7F" + std::string(1, '\0'), "a?b?[2J??"},
        {"M\xFCller \u00FC", "M?ller \u00FC"},
        {"\xED\xA0\x80", "???"},
        {"\xEF\xB7\x90|\xEF\xB7\xAF|\xEF\xBF\xBE|\xF4\x8F\xBF\xBF", "?|?|?|?"},
        {"\xEF\xB7\x8F\xEF\xBF\xBD", "\xEF\xB7\x8F\xEF\xBF\xBD"},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(legible(c.text, 80), c.shown);
        EXPECT_EQ(quorbel::quoted(c.text), '"' + c.shown + '"');
    }
}

TEST(QuotedTextTest, ShortensBetweenCharacters) {
    EXPECT_EQ(legible("abcde", 5), "abcde");
    EXPECT_EQ(legible("abcdef", 5), "abcde...");
    EXPECT_EQ(legible("abc\u4E2D", 5), "abc...");
    EXPECT_EQ(legible("abc\u4E2D", 6), "abc\u4E2D");
    EXPECT_EQ(quorbel::quoted(std::string(1000, 'x')), '"' + std::string(80, 'x') + "...\"");
}

}  // namespace
}  // namespace quorbel
