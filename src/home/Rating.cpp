#include "home/Rating.h"

#include <QtGlobal>

#include <algorithm>

namespace quorbel {

const std::array<Rating, 3> kRatings{{
    {.title = QT_TRANSLATE_NOOP("quorbel::HomeView", "No unwanted or harmful events detected."),
     .image = "Normal",
     .outerBorder = {0.57F, 0.89F, 0.46F},
     .innerBorder = {0.78F, 0.95F, 0.73F},
     .barStart = {0.70F, 0.92F, 0.70F}},
    {.title = QT_TRANSLATE_NOOP("quorbel::HomeView", "Review potentialy unwanted events."),
     .image = "Moderate",
     .outerBorder = {0.99F, 0.89F, 0.67F},
     .innerBorder = {0.99F, 0.94F, 0.83F},
     .barStart = {0.99F, 0.93F, 0.41F}},
    {.title =
         QT_TRANSLATE_NOOP("quorbel::HomeView", "Review harmful or potentialy unwanted events."),
     .image = "Severe",
     .outerBorder = {0.98F, 0.73F, 0.76F},
     .innerBorder = {0.98F, 0.84F, 0.83F},
     .barStart = {0.96F, 0.62F, 0.60F}},
}};

std::int64_t rateEvents(const AppState &state) {
    std::int64_t rating = kNormal;
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        if (state.*kSeverityCounters[i] > 0) {
            rating = std::max(rating, state.*kSeverityLevels[i]);
        }
    }
    return rating;
}

bool isRating(std::int64_t rating) {
    return rating >= kNormal && rating <= kSevere;
}

}  // namespace quorbel
