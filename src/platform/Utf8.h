#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quorbel {

/// One character of a UTF-8 text and the number of bytes it takes; length 0 when the text does not
/// begin with a well-formed character (RFC 3629).
struct Utf8Character {
    char32_t code = 0;
    std::size_t length = 0;
};

/// Decodes the first character of a text that is not empty.
inline Utf8Character firstUtf8Character(std::string_view text) {
    const auto byte = [text](std::size_t at) {
        return static_cast<char32_t>(static_cast<unsigned char>(text[at]));
    };
    const char32_t lead = byte(0);
    if (lead < 0x80) {
        return {lead, 1};
    }
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length) {
        return {};
    }
    char32_t code = lead & (0x7FU >> length);
    for (std::size_t at = 1; at < length; ++at) {
        if ((byte(at) & 0xC0) != 0x80) {
            return {};
        }
        code = code << 6 | (byte(at) & 0x3F);
    }
    constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (code < kSmallest[length] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
        return {};
    }
    return {code, length};
}

/// Appends a character that is no surrogate and at most U+10FFFF.
inline void appendUtf8(std::string &text, char32_t code) {
    const auto continuation = [code](unsigned shift) {
        return static_cast<char>(0x80 | (code >> shift & 0x3F));
    };
    if (code < 0x80) {
        text += static_cast<char>(code);
    } else if (code < 0x800) {
        text += static_cast<char>(0xC0 | code >> 6);
        text += continuation(0);
    } else if (code < 0x10000) {
        text += static_cast<char>(0xE0 | code >> 12);
        text += continuation(6);
        text += continuation(0);
    } else {
        text += static_cast<char>(0xF0 | code >> 18);
        text += continuation(12);
        text += continuation(6);
        text += continuation(0);
    }
}

/// How many bytes at the start of a text are ASCII; looks at eight at a time.
std::size_t asciiPrefixLength(std::string_view text);

}  // namespace quorbel
