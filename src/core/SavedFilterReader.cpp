#include "common/Severity.h"
#include "core/HostPattern.h"
#include "core/SavedFilter.h"
#include "core/SavedFilterText.h"
#include "platform/Text.h"
#include "platform/Utf8.h"

#include <algorithm>
#include <set>
#include <utility>

namespace quorbel {

namespace {

using Limits = SavedFilterLimits;

constexpr std::string_view kTwice = "is given twice";
constexpr std::string_view kTooLong = "is too long";
constexpr std::string_view kNoSeverity = "is no severity that there is";
/// Some editors begin a file of UTF-8 with it.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool hasUnseen(std::string_view text) {
    char32_t before = 0;
    while (!text.empty()) {
        const Utf8Character character = firstUtf8Character(text);
        text.remove_prefix(character.length);
        const char32_t after = text.empty() ? 0 : firstUtf8Character(text).code;
        if (isUnseen(character.code, before, after)) {
            return true;
        }
        before = character.code;
    }
    return false;
}

std::optional<std::uint8_t> severityNamed(std::string_view name) {
    for (std::uint8_t severity = 0; severity < kSeverityClassCount; ++severity) {
        if (name == severityName(severity)) {
            return severity;
        }
    }
    return std::nullopt;
}

/// Reads line after line. What takes a line returns what is wrong with it; empty when nothing is.
class Reader {
public:
    ReadFilters read(std::string_view text);

private:
    using Problem = std::string;
    using Take = Problem (Reader::*)(std::string_view value);
    struct Keyword {
        std::string_view name;
        Take take;
    };
    static const Keyword kKeywords[];

    Problem takeLine(std::string_view line);
    Problem takeKeyword(std::string_view keyword, std::string_view value);
    Problem startGroup(std::string_view value);
    Problem startFilter(std::string_view value);
    Problem takeAbout(std::string_view value);
    Problem takeMark(std::string_view value);
    Problem takeRating(std::string_view value);
    Problem takeSeverity(std::string_view value);
    Problem takeClass(std::string_view value);
    Problem takeFacility(std::string_view value);
    Problem takeHost(std::string_view value);
    Problem takeFrom(std::string_view value);
    Problem takeUntil(std::string_view value);
    Problem takeSpan(std::string_view value);
    Problem takeAlternative(std::string_view value);
    Problem takeText(const TextKeyword &keyword, std::string_view value);
    Problem checkExpression(const TextPattern::Spec &spec);
    Problem endExpression();
    static Problem takeMoment(std::optional<std::int64_t> &moment, std::string_view value);
    static Problem takeOnce(std::string &field, std::string_view value);
    static Problem wrongName(std::string_view name);
    Problem endFilter();

    SavedFilter &filter() { return m_filters.back(); }
    EventQuery &query() { return m_filters.back().query; }

    std::vector<SavedFilter> m_filters;
    std::set<std::string, std::less<>> m_names;
    std::string m_group;
    bool m_isInFilter = false;
    std::size_t m_expressions = 0;
    bool m_hasHead = false;
    std::size_t m_line = 0;
    std::size_t m_expressionLine = 0;  // where the last condition began, if "or" may follow; else 0
};

const Reader::Keyword Reader::kKeywords[] = {
    {"about", &Reader::takeAbout},       {"mark", &Reader::takeMark},
    {"rating", &Reader::takeRating},     {"severity", &Reader::takeSeverity},
    {"facility", &Reader::takeFacility}, {"host", &Reader::takeHost},
    {"from", &Reader::takeFrom},         {"until", &Reader::takeUntil},
    {"time", &Reader::takeSpan},         {"or", &Reader::takeAlternative},
    {"class", &Reader::takeClass},
};

ReadFilters Reader::read(std::string_view text) {
    if (text.size() > Limits::kBytes) {
        return {{}, 1, "the file is too large"};
    }
    text.remove_prefix(text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        line.remove_suffix(line.ends_with('\r') ? 1 : 0);
        ++m_line;
        if (Problem problem = takeLine(line); !problem.empty()) {
            return {{}, m_line, std::move(problem)};
        }
    }
    Problem problem = m_hasHead ? endFilter() : "this is no file of filters";
    if (!problem.empty()) {
        return {{}, std::max<std::size_t>(m_line, 1), std::move(problem)};
    }
    return {std::move(m_filters), 0, {}};
}

Reader::Problem Reader::takeLine(std::string_view line) {
    if (!std::exchange(m_hasHead, true)) {
        if (line == kFilterFileHead) {
            return {};
        }
        m_hasHead = false;
        return line.starts_with("Quorbel filters ") ? "the file was written by a newer version"
                                                    : "this is no file of filters";
    }
    if (line.empty() || line.starts_with('#')) {
        return {};
    }
    if (!isUtf8(line)) {
        return "there are bytes that are no UTF-8";
    }
    if (line.size() > Limits::kValueBytes) {
        return "the line " + std::string(kTooLong);
    }
    const std::size_t blank = line.find(' ');
    if (blank == std::string_view::npos) {
        return "\"" + std::string(line) + "\" needs a value";
    }
    const std::string_view keyword = line.substr(0, blank);
    const auto value = unquoted(line.substr(blank + 1));
    if (!value || (value->empty() && keyword != "group")) {
        return "the value of \"" + std::string(keyword) + "\" cannot be read";
    }
    return takeKeyword(keyword, *value);
}

Reader::Problem Reader::takeKeyword(std::string_view keyword, std::string_view value) {
    if (keyword == "group") {
        return startGroup(value);
    }
    if (keyword == "filter") {
        return startFilter(value);
    }
    const auto *known = std::ranges::find(kKeywords, keyword, &Keyword::name);
    const auto *text = std::ranges::find(kTextKeywords, keyword, &TextKeyword::keyword);
    if (known == std::ranges::end(kKeywords) && text == std::ranges::end(kTextKeywords)) {
        return "\"" + std::string(keyword) + "\" is not known";
    }
    if (!m_isInFilter) {
        return "\"" + std::string(keyword) + "\" stands before any filter";
    }
    if (keyword != "or") {
        if (Problem problem = endExpression(); !problem.empty()) {
            return problem;
        }
    }
    const Problem problem = text != std::ranges::end(kTextKeywords) ? takeText(*text, value)
                                                                    : (this->*known->take)(value);
    return problem.empty() ? problem : "\"" + std::string(keyword) + "\" " + problem;
}

Reader::Problem Reader::wrongName(std::string_view name) {
    if (name.size() > Limits::kNameBytes) {
        return "the name " + std::string(kTooLong);
    }
    return trimmed(name) != name || hasUnseen(name) ? "the name has characters that are not seen"
                                                    : Problem();
}

Reader::Problem Reader::startGroup(std::string_view value) {
    Problem problem = endFilter();
    if (problem.empty()) {
        problem = wrongName(value);
    }
    m_group = value;
    m_isInFilter = false;
    return problem;
}

Reader::Problem Reader::startFilter(std::string_view value) {
    Problem problem = endFilter();
    if (problem.empty()) {
        problem = wrongName(value);
    }
    if (!problem.empty()) {
        return problem;
    }
    if (!m_names.emplace(value).second) {
        return "there are two filters \"" + std::string(value) + "\"";
    }
    if (m_filters.size() == Limits::kFilters) {
        return "there are too many filters";
    }
    m_filters.push_back({std::string(value), m_group, {}, {}, {}});
    m_isInFilter = true;
    return {};
}

Reader::Problem Reader::endFilter() {
    if (Problem problem = endExpression(); !problem.empty()) {
        return problem;
    }
    return !m_filters.empty() && !query().isInUse()
               ? "the filter \"" + filter().name + "\" has no condition"
               : Problem();
}

Reader::Problem Reader::takeOnce(std::string &field, std::string_view value) {
    if (!field.empty()) {
        return std::string(kTwice);
    }
    field = value;
    return {};
}

Reader::Problem Reader::takeAbout(std::string_view value) {
    return takeOnce(filter().about, value);
}

Reader::Problem Reader::takeMark(std::string_view value) {
    const auto *known = std::ranges::find(kMarkColourNames, value);
    if (known == kMarkColourNames.end()) {
        return "is no colour that there is";
    }
    if (filter().mark) {
        return std::string(kTwice);
    }
    filter().mark = static_cast<MarkColour>(known - kMarkColourNames.begin());
    return {};
}

Reader::Problem Reader::takeRating(std::string_view value) {
    for (std::size_t rating = 0; rating < kRatingCount; ++rating) {
        if (value == ratingName(static_cast<EventRating>(rating))) {
            const bool isTwice = query().ratings[rating];
            query().ratings.set(rating);
            return isTwice ? std::string(kTwice) : Problem();
        }
    }
    return "is no rating that there is";
}

Reader::Problem Reader::takeSeverity(std::string_view value) {
    const auto severity = severityNamed(value);
    if (!severity) {
        return std::string(kNoSeverity);
    }
    return std::exchange(query().leastSeverity, severity) ? std::string(kTwice) : Problem();
}

Reader::Problem Reader::takeClass(std::string_view value) {
    const auto number = severityNamed(value);
    if (!number) {
        return std::string(kNoSeverity);
    }
    const bool isTwice = query().classes[*number];
    query().classes.set(*number);
    return isTwice ? std::string(kTwice) : Problem();
}

Reader::Problem Reader::takeFacility(std::string_view value) {
    return takeOnce(query().facility, value);
}

Reader::Problem Reader::takeHost(std::string_view value) {
    if (const auto wrong = HostPattern::wrongNetworkIn(value)) {
        return "names \"" + *wrong + "\", which is no network";
    }
    return takeOnce(query().host, value);
}

Reader::Problem Reader::takeFrom(std::string_view value) {
    return takeMoment(query().from, value);
}

Reader::Problem Reader::takeUntil(std::string_view value) {
    return takeMoment(query().until, value);
}

Reader::Problem Reader::takeSpan(std::string_view value) {
    const auto *known = std::ranges::find(kSpanNames, value);
    if (known == kSpanNames.end()) {
        return "is no span of time that there is";
    }
    const auto span = static_cast<std::size_t>(known - kSpanNames.begin());
    const bool isTwice = query().spans[span];
    query().spans.set(span);
    return isTwice ? std::string(kTwice) : Problem();
}

Reader::Problem Reader::takeMoment(std::optional<std::int64_t> &moment, std::string_view value) {
    const auto read = readMoment(value);
    if (!read) {
        return "is no moment like 2026-11-21T02:00:00Z";
    }
    return std::exchange(moment, read) ? std::string(kTwice) : Problem();
}

Reader::Problem Reader::takeText(const TextKeyword &keyword, std::string_view value) {
    if (query().texts.size() == Limits::kTexts) {
        return "is one condition too many";
    }
    const TextPattern::Spec spec{std::string(value), keyword.isCaseSensitive, keyword.isExpression};
    query().texts.push_back({spec, keyword.isNegated});
    m_expressionLine = keyword.isExpression ? m_line : 0;
    return keyword.isExpression ? checkExpression(spec) : Problem();
}

Reader::Problem Reader::checkExpression(const TextPattern::Spec &spec) {
    if (++m_expressions > Limits::kExpressions) {
        return "is one expression too many";
    }
    const Problem error = TextPattern::errorIn(spec);
    return error.empty() ? error : "is no regular expression: " + error;
}

/// What follows "or" is another expression that may match instead of the last one.
Reader::Problem Reader::takeAlternative(std::string_view value) {
    if (m_expressionLine == 0) {
        return "does not follow an expression";
    }
    TextPattern::Spec &all = query().texts.back().pattern;
    all.text.append("|").append(value);
    return checkExpression({std::string(value), all.isCaseSensitive, /*isExpression=*/true});
}

/// Compiles all alternatives together, once: with each line of them, a file could take minutes.
Reader::Problem Reader::endExpression() {
    const std::size_t line = std::exchange(m_expressionLine, 0);
    if (line == 0) {
        return {};
    }
    const TextPattern::Spec &all = query().texts.back().pattern;
    const Problem error =
        all.text.size() > Limits::kValueBytes ? std::string(kTooLong) : TextPattern::errorIn(all);
    m_line = error.empty() ? m_line : line;
    return error.empty() ? error : "the expression cannot be used: " + error;
}

}  // namespace

ReadFilters readFilters(std::string_view text) {
    return Reader().read(text);
}

std::string whyNotKept(const EventQuery &query) {
    return readFilters(
               writeFilters(
                   {{.name = "name", .group = {}, .about = {}, .query = query, .mark = {}}}))
        .problem;
}

}  // namespace quorbel
