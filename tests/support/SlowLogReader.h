#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace quorbel::testing {

/// Date, priority, host and message.
using LogFieldTexts = std::array<std::string, 4>;

/// The lines of a log file by the rules of its format, slowly and to the letter.
inline std::vector<LogFieldTexts> readSlowly(const std::string &bytes) {
    const auto isOneOf = [](char c, const std::string &set) {
        return set.find(c) != std::string::npos;
    };
    std::vector<LogFieldTexts> lines;
    std::size_t at = 0;
    while (at < bytes.size()) {
        std::string piece;
        while (at < bytes.size() && piece.size() < 1023) {
            piece += bytes[at++];
            if (piece.back() == '\n') {
                break;
            }
        }
        LogFieldTexts fields;
        std::size_t p = 0;
        std::size_t found = 0;
        for (; found < 4; ++found) {
            const std::string separators = found < 3 ? ",\r\n" : "\r\n";
            while (p < piece.size() && isOneOf(piece[p], separators)) {
                ++p;
            }
            if (p == piece.size()) {
                break;
            }
            while (p < piece.size() && !isOneOf(piece[p], separators)) {
                fields[found] += piece[p++];
            }
            if (p < piece.size()) {
                ++p;
            }
        }
        if (found == 4) {
            lines.push_back(fields);
        }
    }
    return lines;
}

}  // namespace quorbel::testing
