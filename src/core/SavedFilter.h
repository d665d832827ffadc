#pragma once

#include "core/EventQuery.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// In what colour a saved filter marks the rows that it means.
enum class MarkColour : std::uint8_t { kViolet, kTeal, kPink, kBrown, kOlive, kGrey };

/// The colours' names in a file, by MarkColour.
inline constexpr std::array<std::string_view, 6> kMarkColourNames{"violet", "teal",  "pink",
                                                                  "brown",  "olive", "grey"};

/// A filter under a name.
struct SavedFilter {
    std::string name;   ///< of printable characters, not empty
    std::string group;  ///< what it is listed with; may be empty
    std::string about;  ///< what it finds, in a sentence; may be empty
    EventQuery query;
    std::optional<MarkColour> mark;  ///< nothing when it marks no rows
    bool operator==(const SavedFilter &) const = default;
};

/// What files of filters may hold. Whatever is longer is refused.
struct SavedFilterLimits {
    static constexpr std::size_t kBytes = std::size_t{1} << 20U;
    static constexpr std::size_t kFilters = 500;
    static constexpr std::size_t kTexts = 16;          ///< of one filter
    static constexpr std::size_t kExpressions = 2000;  ///< of all of them, alternatives included
    static constexpr std::size_t kNameBytes = 200;     ///< of a name or a group
    static constexpr std::size_t kValueBytes = 8192;   ///< of anything else
};

/// Filters as they were read from a file's text, or the first thing that is wrong with it.
struct ReadFilters {
    std::vector<SavedFilter> filters;  ///< empty when something is wrong
    std::size_t line = 0;              ///< counted from 1
    std::string problem;               ///< in English, for the end of a sentence; else empty
    [[nodiscard]] bool isGood() const { return problem.empty(); }
};

/// Reads the text form of filters, described in docs/protocol.md. Takes it whole or not at all:
/// what this version does not know is wrong. Names are unique, and every expression compiles.
ReadFilters readFilters(std::string_view text);

/// Why no file can hold a filter of these conditions, in English, for the end of a sentence; empty
/// when one can.
std::string whyNotKept(const EventQuery &query);

/// The text form of filters, from which readFilters() makes the same ones again, if they are within
/// the limits and their names are unique.
std::string writeFilters(const std::vector<SavedFilter> &filters);

}  // namespace quorbel
