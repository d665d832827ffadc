#pragma once

#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace quorbel {

/// One of the ten of ASCII, whatever the locale.
constexpr bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

/// The number that the whole of a text is; nothing when it is none, or too large.
template <typename Number>
std::optional<Number> readNumber(std::string_view text) {
    Number number = 0;
    const char *end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || rest != end) {
        return std::nullopt;
    }
    return number;
}

}  // namespace quorbel
