#include "service/base/QuotedText.h"

#include "platform/Text.h"

#include <algorithm>

namespace quorbel {

std::string quoted(std::string_view text) {
    constexpr std::size_t kMostBytes = 80;
    std::string shown(text.substr(0, kMostBytes));
    if (shown.size() < text.size()) {
        // Not within a character: its later bytes begin with the bits 10.
        const auto isLaterByte = [](char c) { return (static_cast<unsigned char>(c) >> 6U) == 2; };
        std::size_t end = kMostBytes;
        while (end > 0 && isLaterByte(text[end])) {
            --end;
        }
        shown = std::string(text.substr(0, end)) + "...";
    }
    const bool isText = isUtf8(shown);  // the bus takes nothing else
    std::ranges::replace_if(
        shown,
        [isText](char c) {
            const auto byte = static_cast<unsigned char>(c);
            return byte < 0x20 || byte == 0x7F || (byte >= 0x80 && !isText);
        },
        '?');
    return '"' + shown + '"';
}

}  // namespace quorbel
