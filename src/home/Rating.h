#pragma once

#include "common/Severity.h"
#include "core/AppState.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace quorbel {

/// Red, green and blue, each 0 to 1; opaque.
struct RatingColour {
    float red;
    float green;
    float blue;
};

/// How the home page shows one overall rating.
struct Rating {
    std::string_view title;  ///< in English
    std::string_view image;
    RatingColour outerBorder;
    RatingColour innerBorder;
    RatingColour barStart;  ///< the bar ends in white
};

/// By SeverityLevel.
extern const std::array<Rating, 3> kRatings;

/// The highest level among the classes that have events; kNormal when there is none. A damaged
/// settings document can make it larger than any level that kRatings knows.
std::int64_t rateEvents(const AppState &state);

/// Whether `rating` is a SeverityLevel, and so an index into kRatings.
bool isRating(std::int64_t rating);

}  // namespace quorbel
