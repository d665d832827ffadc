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

template <typename Value>
std::optional<Value> lesserOf(std::optional<Value> one, std::optional<Value> other) {
    return one && other ? std::min(one, other) : one ? one : other;
}

}  // namespace

bool EventQuery::isInUse() const {
    static const EventQuery kNone;
    return *this != kNone;
}

EventQuery bothOf(const EventQuery &first, const EventQuery &second) {
    EventQuery both = first;
    both.texts.insert(both.texts.end(), second.texts.begin(), second.texts.end());
    both.ratings = first.ratings.any() ? first.ratings : second.ratings;
    both.classes = first.classes.any() ? first.classes : second.classes;
    both.facility = first.facility.empty() ? second.facility : first.facility;
    both.host = first.host.empty() ? second.host : first.host;
    both.from = std::max(first.from, second.from);  // nothing is less than any moment
    both.leastSeverity = lesserOf(first.leastSeverity, second.leastSeverity);
    both.until = lesserOf(first.until, second.until);
    both.spans |= second.spans;
    return both;
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
