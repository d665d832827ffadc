#include "core/EventQuery.h"

#include <algorithm>

namespace quorbel {

namespace {

bool isNarrower(const TextCondition &narrow, const TextCondition &wide) {
    if (narrow == wide) {
        return true;
    }
    const bool arePlain = !narrow.isNegated && !wide.isNegated && !narrow.pattern.isExpression &&
                          !wide.pattern.isExpression;
    return arePlain && (narrow.pattern.isCaseSensitive || !wide.pattern.isCaseSensitive) &&
           narrow.pattern.text.find(wide.pattern.text) != std::string::npos;
}

}  // namespace

bool EventQuery::isInUse() const {
    static const EventQuery kNone;
    return *this != kNone;
}

bool isNarrowerThan(const EventQuery &narrow, const EventQuery &wide) {
    EventQuery others = narrow;
    others.texts = wide.texts;
    return others == wide && std::ranges::all_of(wide.texts, [&](const TextCondition &text) {
               return std::ranges::any_of(narrow.texts, [&](const TextCondition &candidate) {
                   return isNarrower(candidate, text);
               });
           });
}

}  // namespace quorbel
