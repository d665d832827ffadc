#pragma once

#include "common/Severity.h"
#include "core/EventQuery.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorbel {

/// What the reader and the writer of saved filters have in common: how values stand in a line.

inline constexpr std::string_view kFilterFileHead = "Quorbel filters 1";

/// The keywords of a text condition, by what it asks for.
struct TextKeyword {
    std::string_view keyword;
    bool isNegated;
    bool isExpression;
    bool isCaseSensitive;
};
inline constexpr TextKeyword kTextKeywords[] = {
    {"contains", false, false, false},  {"contains-case", false, false, true},
    {"lacks", true, false, false},      {"lacks-case", true, false, true},
    {"matches", false, true, false},    {"matches-case", false, true, true},
    {"matches-not", true, true, false}, {"matches-not-case", true, true, true},
};

/// By MovingSpan.
inline constexpr std::array<std::string_view, kMovingSpanCount> kSpanNames{
    "last hour", "today", "yesterday", "last 24 hours"};

/// "Unrated" for an event without an image.
inline std::string_view ratingName(EventRating rating) {
    return rating == 0 ? "Unrated" : severityLevelName(rating - 1);
}
inline std::string_view severityName(std::uint8_t severity) {
    return severity == kUnknownClass ? "Unknown" : kSeverityClasses.at(severity).name;
}

/// As it is, or in quotation marks with escapes where a line could not hold it otherwise.
std::string quotedIfNeeded(std::string_view value);
/// Nothing when it begins with a quotation mark and is not what quotedIfNeeded() makes.
std::optional<std::string> unquoted(std::string_view value);

/// "2026-11-21T02:00:00Z"; a moment of no year of four digits as a number of seconds since 1970.
std::string momentText(std::int64_t seconds);
std::optional<std::int64_t> readMoment(std::string_view text);

}  // namespace quorbel
