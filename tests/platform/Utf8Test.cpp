#include "platform/Utf8.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

namespace quorbel {
namespace {

TEST(Utf8Test, DecodesWhatItEncodes) {
    for (char32_t code = 0; code <= 0x10FFFF; code += code < 0x900 ? 1 : 0x3F) {
        if (code >= 0xD800 && code <= 0xDFFF) {
            continue;
        }
        std::string text;
        appendUtf8(text, code);
        const Utf8Character character = firstUtf8Character(text + "x");
        ASSERT_EQ(character.code, code);
        ASSERT_EQ(character.length, text.size());
    }
}

TEST(Utf8Test, MeasuresTheAsciiPrefix) {
    for (std::size_t length = 0; length < 40; ++length) {
        const std::string text(length, 'a');
        EXPECT_EQ(asciiPrefixLength(text), length);
        EXPECT_EQ(asciiPrefixLength(text + "\xC3\xA9" + "bbbbbbbbb"), length);
    }
}

}  // namespace
}  // namespace quorbel
