#pragma once

#include "platform/Text.h"

#include <array>
#include <cstdio>
#include <string>
#include <string_view>

namespace quorbel::testing {

/// A message's text as the log files have to hold it, worked out in another way than RecordWriter
/// does.
inline std::string writtenText(std::string_view message) {
    std::string expected;
    while (!message.empty()) {
        std::size_t length = 1;
        while (length <= 4 && !isUtf8(message.substr(0, length))) {
            ++length;
        }
        const bool valid = length <= 4 && length <= message.size();
        const std::string_view unit = message.substr(0, valid ? length : 1);
        const auto byte = static_cast<unsigned char>(unit.back());
        const bool control = unit.size() == 1
                                 ? byte < 0x20 || byte == 0x7F
                                 : unit[0] == '\xC2' && unit.size() == 2 && byte < 0xA0;
        const bool noncharacter =
            (unit.size() >= 3 && unit.substr(unit.size() - 2) >= "\xBF\xBE" &&
             (unit[0] == '\xEF' || (unit.size() == 4 && (unit[1] & 0x0F) == 0x0F))) ||
            (unit.size() == 3 && unit >= "\xEF\xB7\x90" && unit <= "\xEF\xB7\xAF");
        if (!valid || noncharacter) {
            expected += "\xEF\xBF\xBD";
        } else if (control) {
            std::array<char, 8> escape{};
            std::snprintf(escape.data(), escape.size(), "#%03o", byte);
            expected += escape.data();
        } else {
            expected += unit;
        }
        message.remove_prefix(unit.size());
    }
    return expected.empty() ? "-" : expected;
}

}  // namespace quorbel::testing
