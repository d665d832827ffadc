#include "core/SavedFilterText.h"

#include "platform/Number.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>

namespace quorbel {

namespace {

struct Escape {
    char character;
    char letter;
};
constexpr Escape kEscapes[] = {{'"', '"'}, {'\\', '\\'}, {'\n', 'n'}, {'\r', 'r'}, {'\t', 't'}};

constexpr std::string_view kMomentForm = "0000-00-00T00:00:00Z";

bool isControl(char character) {
    const auto code = static_cast<unsigned char>(character);
    return code < 0x20U || code == 0x7FU;
}

bool needsQuotes(std::string_view value) {
    return value.empty() || value.front() == '"' || value.front() == ' ' || value.back() == ' ' ||
           std::ranges::any_of(value, isControl);
}

void appendEscaped(std::string &text, char character) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    const auto *known = std::ranges::find(kEscapes, character, &Escape::character);
    if (known != std::ranges::end(kEscapes)) {
        text += '\\';
        text += known->letter;
    } else if (isControl(character)) {
        const auto code = static_cast<unsigned char>(character);
        text += "\\x";
        text += kDigits[code >> 4U];
        text += kDigits[code & 15U];
    } else {
        text += character;
    }
}

std::optional<unsigned> hexadecimalDigit(char character) {
    if (isDigit(character)) {
        return static_cast<unsigned>(character - '0');
    }
    return character >= 'a' && character <= 'f'
               ? std::optional(static_cast<unsigned>(character - 'a') + 10)
               : std::nullopt;
}

/// Takes the escape that stands behind a backslash off the text's front. Those that are not needed
/// do not exist.
std::optional<char> takeEscape(std::string_view &rest) {
    if (rest.size() >= 3 && rest.front() == 'x') {
        const auto high = hexadecimalDigit(rest[1]);
        const auto low = hexadecimalDigit(rest[2]);
        rest.remove_prefix(3);
        if (!high || !low || !isControl(static_cast<char>(*high << 4U | *low))) {
            return std::nullopt;
        }
        return static_cast<char>(*high << 4U | *low);
    }
    const auto *known = rest.empty() ? std::ranges::end(kEscapes)
                                     : std::ranges::find(kEscapes, rest.front(), &Escape::letter);
    if (known == std::ranges::end(kEscapes)) {
        return std::nullopt;
    }
    rest.remove_prefix(1);
    return known->character;
}

bool hasMomentForm(std::string_view text) {
    return std::ranges::equal(text, kMomentForm, [](char character, char form) {
        return form == '0' ? isDigit(character) : character == form;
    });
}

}  // namespace

std::string quotedIfNeeded(std::string_view value) {
    if (!needsQuotes(value)) {
        return std::string(value);
    }
    std::string text = "\"";
    for (const char character : value) {
        appendEscaped(text, character);
    }
    return text + '"';
}

std::optional<std::string> unquoted(std::string_view value) {
    if (!value.starts_with('"')) {
        return std::string(value);
    }
    std::string text;
    value.remove_prefix(1);
    while (!value.empty() && value.front() != '"') {
        const char character = value.front();
        value.remove_prefix(1);
        const auto meant = character == '\\' ? takeEscape(value) : std::optional(character);
        if (!meant) {
            return std::nullopt;
        }
        text += *meant;
    }
    return value == "\"" ? std::optional(text) : std::nullopt;
}

std::string momentText(std::int64_t seconds) {
    using namespace std::chrono;
    constexpr sys_seconds kFirst = sys_days(year{0} / 1 / 1);
    constexpr sys_seconds kEnd = sys_days(year{10000} / 1 / 1);
    if (seconds < kFirst.time_since_epoch().count() || seconds >= kEnd.time_since_epoch().count()) {
        return std::to_string(seconds);
    }
    const sys_seconds moment{std::chrono::seconds(seconds)};
    const auto day = floor<days>(moment);
    const year_month_day date(day);
    const hh_mm_ss time(moment - day);
    std::array<char, 40> text{};
    const int length = std::snprintf(
        text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
        static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
        static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
        static_cast<int>(time.seconds().count()));
    return {text.data(), static_cast<std::size_t>(length)};
}

std::optional<std::int64_t> readMoment(std::string_view text) {
    using namespace std::chrono;
    if (!hasMomentForm(text)) {
        return readNumber<std::int64_t>(text);
    }
    const auto part = [text](std::size_t begin, std::size_t length) {
        return readNumber<unsigned>(text.substr(begin, length)).value_or(0);
    };
    const year_month_day date{year(static_cast<int>(part(0, 4))), month(part(5, 2)),
                              day(part(8, 2))};
    if (!date.ok() || part(11, 2) > 23 || part(14, 2) > 59 || part(17, 2) > 59) {
        return std::nullopt;
    }
    const sys_seconds moment =
        sys_days(date) + hours(part(11, 2)) + minutes(part(14, 2)) + seconds(part(17, 2));
    return moment.time_since_epoch().count();
}

}  // namespace quorbel
