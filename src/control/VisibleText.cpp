#include "control/VisibleText.h"

#include "platform/Text.h"
#include "platform/Utf8.h"

#include <algorithm>
#include <array>

namespace quorbel {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

bool isPlain(char c) {
    return c >= ' ' && c <= '~';
}

/// The plain ASCII at the front of a text, which it leaves.
std::string_view takePlain(std::string_view &text) {
    const auto length =
        static_cast<std::size_t>(std::ranges::find_if_not(text, isPlain) - text.begin());
    const std::string_view plain = text.substr(0, length);
    text.remove_prefix(length);
    return plain;
}

void appendOctal(std::string &out, std::string_view bytes) {
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        out += '#';
        for (const unsigned shift : {6U, 3U, 0U}) {
            out += static_cast<char>('0' + (byte >> shift & 7U));
        }
    }
}

void appendUnicodeEscape(std::string &out, char32_t unit) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    out += "\\u";
    for (const unsigned shift : {12U, 8U, 4U, 0U}) {
        out += kDigits[unit >> shift & 15U];
    }
}

/// In the form of JSON, which has two units of 16 bits for what does not fit into one.
void appendEscaped(std::string &out, char32_t code) {
    constexpr char32_t kBase = 0x10000;
    if (code < kBase) {
        appendUnicodeEscape(out, code);
    } else {
        appendUnicodeEscape(out, 0xD800 + ((code - kBase) >> 10U));
        appendUnicodeEscape(out, 0xDC00 + ((code - kBase) & 0x3FFU));
    }
}

/// Calls `onPlain(bytes)` for runs of printable ASCII, and `onOther(character, bytes, isSeen)` for
/// each other character; its length is 0 for a byte that is part of none.
template <typename OnPlain, typename OnOther>
void visitText(std::string_view text, OnPlain onPlain, OnOther onOther) {
    char32_t before = 0;
    while (!text.empty()) {
        if (const std::string_view plain = takePlain(text); !plain.empty()) {
            onPlain(plain);
            before = static_cast<unsigned char>(plain.back());
            continue;
        }
        const Utf8Character character = firstUtf8Character(text);
        const std::string_view bytes = text.substr(0, std::max<std::size_t>(character.length, 1));
        text.remove_prefix(bytes.size());
        const char32_t after = text.empty() ? 0 : firstUtf8Character(text).code;
        onOther(character, bytes, character.length > 0 && !isUnseen(character.code, before, after));
        before = character.code;
    }
}

void appendPlainJson(std::string &out, std::string_view plain) {
    for (const char c : plain) {
        out += c == '"' || c == '\\' ? "\\" : "";
        out += c;
    }
}

}  // namespace

void appendVisible(std::string &out, std::string_view text) {
    visitText(
        text, [&out](std::string_view plain) { out += plain; },
        [&out](const Utf8Character & /*character*/, std::string_view bytes, bool isSeen) {
            if (isSeen) {
                out += bytes;
            } else {
                appendOctal(out, bytes);
            }
        });
}

std::string visible(std::string_view text) {
    std::string out;
    appendVisible(out, text);
    return out;
}

void appendJson(std::string &out, std::string_view text) {
    out += '"';
    visitText(
        text, [&out](std::string_view plain) { appendPlainJson(out, plain); },
        [&out](const Utf8Character &character, std::string_view bytes, bool isSeen) {
            if (character.length == 0) {
                out += kReplacement;
            } else if (isSeen) {
                out += bytes;
            } else {
                appendEscaped(out, character.code);
            }
        });
    out += '"';
}

}  // namespace quorbel
