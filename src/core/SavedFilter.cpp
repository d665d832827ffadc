#include "core/SavedFilter.h"

#include "common/Severity.h"
#include "core/SavedFilterText.h"

namespace quorbel {

namespace {

std::string_view keywordFor(const TextCondition &text) {
    for (const TextKeyword &candidate : kTextKeywords) {
        if (candidate.isNegated == text.isNegated &&
            candidate.isExpression == text.pattern.isExpression &&
            candidate.isCaseSensitive == text.pattern.isCaseSensitive) {
            return candidate.keyword;
        }
    }
    return {};
}

void appendLine(std::string &text, std::string_view keyword, std::string_view value) {
    text.append(keyword).append(" ").append(quotedIfNeeded(value)).append("\n");
}

void appendIfAny(std::string &text, std::string_view keyword, std::string_view value) {
    if (!value.empty()) {
        appendLine(text, keyword, value);
    }
}

void appendMoment(std::string &text, std::string_view keyword,
                  const std::optional<std::int64_t> &moment) {
    if (moment) {
        appendLine(text, keyword, momentText(*moment));
    }
}

void appendRatings(std::string &text, const std::bitset<kRatingCount> &ratings) {
    for (std::size_t rating = 0; rating < kRatingCount; ++rating) {
        if (ratings[rating]) {
            appendLine(text, "rating", ratingName(static_cast<EventRating>(rating)));
        }
    }
}

void appendClasses(std::string &text, const std::bitset<kSeverityClassCount> &classes) {
    for (std::uint8_t number = 0; number < kSeverityClassCount; ++number) {
        if (classes[number]) {
            appendLine(text, "class", severityName(number));
        }
    }
}

void appendSpans(std::string &text, const std::bitset<kMovingSpanCount> &spans) {
    for (std::size_t span = 0; span < kMovingSpanCount; ++span) {
        if (spans[span]) {
            appendLine(text, "time", kSpanNames.at(span));
        }
    }
}

void appendQuery(std::string &text, const EventQuery &query) {
    for (const TextCondition &condition : query.texts) {
        appendLine(text, keywordFor(condition), condition.pattern.text);
    }
    appendRatings(text, query.ratings);
    if (query.leastSeverity) {
        appendLine(text, "severity", severityName(*query.leastSeverity));
    }
    appendClasses(text, query.classes);
    appendIfAny(text, "facility", query.facility);
    appendIfAny(text, "host", query.host);
    appendMoment(text, "from", query.from);
    appendMoment(text, "until", query.until);
    appendSpans(text, query.spans);
}

}  // namespace

std::string writeFilters(const std::vector<SavedFilter> &filters) {
    std::string text(kFilterFileHead);
    text += '\n';
    std::string_view group;
    for (const SavedFilter &filter : filters) {
        text += '\n';
        if (filter.group != group) {
            group = filter.group;
            appendLine(text, "group", group);
        }
        appendLine(text, "filter", filter.name);
        appendIfAny(text, "about", filter.about);
        if (filter.mark) {
            appendLine(text, "mark", kMarkColourNames.at(static_cast<std::size_t>(*filter.mark)));
        }
        appendQuery(text, filter.query);
    }
    return text;
}

}  // namespace quorbel
