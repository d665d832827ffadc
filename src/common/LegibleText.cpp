#include "common/LegibleText.h"

#include "platform/Utf8.h"

namespace quorbel {

namespace {

bool isShown(const Utf8Character &character) {
    const char32_t code = character.code;
    // The bus takes neither bytes that are no UTF-8 nor these.
    const bool isNoncharacter = (code >= 0xFDD0 && code <= 0xFDEF) || (code & 0xFFFE) == 0xFFFE;
    return character.length > 0 && code >= 0x20 && code != 0x7F && !isNoncharacter;
}

}  // namespace

std::string legible(std::string_view text, std::size_t mostBytes) {
    std::string shown;
    while (!text.empty()) {
        const Utf8Character character = firstUtf8Character(text);
        const std::size_t length = character.length > 0 ? character.length : 1;
        if (shown.size() + length > mostBytes) {
            return shown + "...";
        }
        shown += isShown(character) ? text.substr(0, length) : "?";
        text.remove_prefix(length);
    }
    return shown;
}

}  // namespace quorbel
