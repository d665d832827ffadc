#include "control/QueryOptions.h"

#include "common/Facility.h"
#include "common/Severity.h"
#include "control/Output.h"
#include "core/SavedFilter.h"
#include "core/SavedFilterText.h"
#include "platform/DateFormat.h"

#include <strings.h>

#include <algorithm>
#include <utility>

namespace quorbel {

namespace {

constexpr std::string_view kFilterName = "these options";

bool isAlike(std::string_view one, std::string_view other) {
    return one.size() == other.size() && ::strncasecmp(one.data(), other.data(), one.size()) == 0;
}

std::vector<std::string_view> ratingNames() {
    return {ratingName(0), ratingName(1), ratingName(2), ratingName(3)};
}

std::vector<std::string_view> severityNames() {
    std::vector<std::string_view> names;
    for (std::uint8_t i = 0; i < kSeverityClassCount; ++i) {
        names.push_back(severityName(i));
    }
    return names;
}

std::string listOf(const std::vector<std::string_view> &names) {
    std::string list;
    for (const std::string_view name : names) {
        list += list.empty() ? "" : ", ";
        list += name;
    }
    return list;
}

/// The reader names lines and the one filter, of which whoever gives options knows nothing.
std::string problemOf(const std::string &problem) {
    return problem.empty() ? problem : "The filter cannot be used: " + problem;
}

}  // namespace

std::optional<std::int64_t> momentOf(std::string_view text) {
    if (const auto moment = readMoment(text)) {
        return moment;
    }
    for (const char *pattern : {"yyyy-MM-dd HH:mm:ss", "yyyy-MM-dd HH:mm", "yyyy-MM-dd"}) {
        if (const auto moment = DateFormat(pattern).parse(text)) {
            return static_cast<std::int64_t>(*moment);
        }
    }
    return std::nullopt;
}

void QueryOptions::add(std::string_view keyword, std::string_view value) {
    m_lines += keyword;
    m_lines += ' ';
    m_lines += quotedIfNeeded(value);
    m_lines += '\n';
}

Option QueryOptions::textOption(const char *keyword, char letter) {
    return {keyword, letter, true, [this, keyword](std::string_view value) {
                add(keyword, value);
                return std::string();
            }};
}

/// A name, however its letters are written.
Option QueryOptions::nameOption(const char *keyword, std::vector<std::string_view> names) {
    return {keyword, '\0', true,
            [this, keyword, names = std::move(names)](std::string_view value) -> std::string {
                const auto known = std::ranges::find_if(
                    names, [value](std::string_view name) { return isAlike(name, value); });
                if (known == names.end()) {
                    return "there is no " + std::string(keyword) + " \"" + std::string(value) +
                           "\" (" + listOf(names) + ")";
                }
                add(keyword, *known);
                return "";
            }};
}

Option QueryOptions::momentOption(const char *keyword) {
    return {keyword, '\0', true, [this, keyword](std::string_view value) -> std::string {
                const auto moment = momentOf(value);
                if (!moment) {
                    return "\"" + std::string(value) +
                           "\" is no moment (2026-11-21, \"2026-11-21 02:00\", "
                           "2026-11-21T02:00:00Z, or seconds since 1970)";
                }
                add(keyword, momentText(*moment));
                return "";
            }};
}

std::vector<Option> QueryOptions::options() {
    std::vector<Option> options;
    for (const TextKeyword &text : kTextKeywords) {
        const char letter = text.keyword == "contains"  ? 'c'
                            : text.keyword == "lacks"   ? 'v'
                            : text.keyword == "matches" ? 'e'
                                                        : '\0';
        options.push_back(textOption(text.keyword.data(), letter));
    }
    options.push_back(nameOption("rating", ratingNames()));
    options.push_back(nameOption("severity", severityNames()));
    options.push_back(nameOption("class", severityNames()));
    options.push_back(nameOption("facility", {kFacilityNames.begin(), kFacilityNames.end()}));
    options.push_back(textOption("host"));
    options.push_back(momentOption("from"));
    options.push_back(momentOption("until"));
    options.push_back(nameOption("time", {kSpanNames.begin(), kSpanNames.end()}));
    return options;
}

std::optional<EventQuery> QueryOptions::query() const {
    if (m_lines.empty()) {
        return EventQuery();
    }
    const ReadFilters read = readFilters(std::string(kFilterFileHead) + "\nfilter " +
                                         std::string(kFilterName) + "\n" + m_lines);
    if (!read.isGood()) {
        complain(problemOf(read.problem));
        return std::nullopt;
    }
    return read.filters.front().query;
}

}  // namespace quorbel
