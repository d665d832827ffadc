#include "core/TextPattern.h"

#include <re2/filtered_re2.h>
#include <re2/re2.h>

#include <algorithm>
#include <cctype>
#include <vector>

namespace quorbel {

namespace {

constexpr std::int64_t kMostMemory = std::int64_t{8} << 20U;
/// At worst, each step is looked at for each byte of a text.
constexpr int kMostSteps = 2000;
/// Of needed texts, where some are single letters: these are found nearly everywhere.
constexpr std::size_t kMostLetters = 4;
/// So long a text is rare enough to be looked for alone.
constexpr std::size_t kRareBytes = 4;
constexpr std::size_t kMostWork = std::size_t{8} << 20U;

re2::RE2::Options optionsFor(const TextPattern::Spec &spec) {
    re2::RE2::Options options;
    options.set_literal(!spec.isExpression);
    options.set_case_sensitive(spec.isCaseSensitive);
    options.set_max_mem(kMostMemory);
    options.set_log_errors(false);
    return options;
}

std::string errorIn(const re2::RE2 &expression) {
    if (!expression.ok()) {
        return expression.error();
    }
    return expression.ProgramSize() > kMostSteps ? "expression too large" : std::string();
}

bool isSameLetter(char one, char other) {
    return std::tolower(static_cast<unsigned char>(one)) ==
           std::tolower(static_cast<unsigned char>(other));
}

bool mayConsistOf(std::string_view text, std::string_view characters) {
    return std::ranges::all_of(text, [&](char wanted) {
        return static_cast<unsigned char>(wanted) >= 0x80U ||
               std::ranges::any_of(characters,
                                   [&](char there) { return isSameLetter(wanted, there); });
    });
}

/// The texts that RE2 knows an expression to need, in small letters.
class NeededTexts {
public:
    NeededTexts(const std::string &expression, const re2::RE2::Options &options) : m_filter(1) {
        int number = 0;
        m_filter.Add(expression, options, &number);
        m_filter.Compile(&m_texts);
    }
    [[nodiscard]] const std::vector<std::string> &texts() const { return m_texts; }
    /// Whether there can be a match where of the texts only those are for which `isThere(text)`.
    template <typename IsThere>
    [[nodiscard]] bool mayMatch(IsThere isThere) const {
        std::vector<int> there;
        for (std::size_t i = 0; i < m_texts.size(); ++i) {
            if (isThere(m_texts[i])) {
                there.push_back(static_cast<int>(i));
            }
        }
        std::vector<int> matching;
        m_filter.AllPotentials(there, &matching);
        return !matching.empty();
    }

private:
    re2::FilteredRE2 m_filter;
    std::vector<std::string> m_texts;
};

/// So few of the texts, the longest ones as far as can be, that each match needs one at least.
/// Empty when it can do without any.
std::vector<std::string> fewestOf(const NeededTexts &needed) {
    std::vector<std::string> shortestFirst = needed.texts();
    std::ranges::stable_sort(shortestFirst, {}, &std::string::size);
    std::vector<std::string> chosen = shortestFirst;
    const auto canDoWithout = [&] {
        return needed.mayMatch([&](const std::string &text) {
            return std::ranges::find(chosen, text) == chosen.end();
        });
    };
    if (canDoWithout()) {
        return {};
    }
    for (const std::string &text : shortestFirst) {
        std::erase(chosen, text);
        if (canDoWithout()) {
            chosen.push_back(text);
        }
    }
    return chosen;
}

/// The longest text that each match needs; empty for none.
std::string longestOf(const NeededTexts &needed) {
    std::string longest;
    for (const std::string &text : needed.texts()) {
        const bool isEnough =
            text.size() > longest.size() &&
            !needed.mayMatch([&](const std::string &there) { return there != text; });
        longest = isEnough ? text : longest;
    }
    return longest;
}

/// The texts to look for before the expression: one that each match needs, or some of which it
/// needs any.
std::vector<std::string> textsFor(const NeededTexts &needed) {
    const auto canFind = [](const std::string &text) {
        return LiteralSearch::canFind(text, false);
    };
    if (const std::string longest = longestOf(needed);
        longest.size() >= kRareBytes && canFind(longest)) {
        return {longest};
    }
    const std::vector<std::string> texts = fewestOf(needed);
    const bool haveLetters =
        std::ranges::any_of(texts, [](const std::string &text) { return text.size() == 1; });
    const bool canFindAll =
        texts.size() <= (haveLetters ? kMostLetters : LiteralSearch::kMostTexts) &&
        std::ranges::all_of(texts, canFind);
    return canFindAll ? texts : std::vector<std::string>();
}

}  // namespace

TextPattern::TextPattern(const Spec &spec)
    : m_spec(spec), m_expression(std::make_unique<re2::RE2>(spec.text, optionsFor(spec))) {
    if (!error().empty()) {
        return;
    }
    if (spec.isExpression) {
        const auto texts = textsFor(NeededTexts(spec.text, m_expression->options()));
        if (!texts.empty()) {
            m_needed.emplace(texts, false);
        }
    } else if (LiteralSearch::canFind(spec.text, spec.isCaseSensitive)) {
        m_needed.emplace(std::vector<std::string>{spec.text}, spec.isCaseSensitive);
    }
}

TextPattern::~TextPattern() = default;
TextPattern::TextPattern(TextPattern &&) noexcept = default;
TextPattern &TextPattern::operator=(TextPattern &&) noexcept = default;

std::string TextPattern::error() const {
    return quorbel::errorIn(*m_expression);
}

std::string TextPattern::errorIn(const Spec &spec) {
    return quorbel::errorIn(re2::RE2(spec.text, optionsFor(spec)));
}

std::size_t TextPattern::seenOf(std::size_t bytes) const {
    const auto steps = static_cast<std::size_t>(std::max(m_expression->ProgramSize(), 1));
    return isPlain() ? bytes : std::min(bytes, kMostWork / steps);
}

LiteralSearch::Answer TextPattern::glanceAt(std::string_view text) const {
    return m_needed ? answerFor(m_needed->isAnyIn(text)) : LiteralSearch::Answer::kUnsure;
}

bool TextPattern::isIn(std::string_view text) const {
    const LiteralSearch::Answer answer = glanceAt(text);
    return answer == LiteralSearch::Answer::kUnsure ? matches(text)
                                                    : answer == LiteralSearch::Answer::kYes;
}

bool TextPattern::matches(std::string_view text) const {
    return m_expression->Match({text.data(), text.size()}, 0, seenOf(text.size()),
                               re2::RE2::UNANCHORED, nullptr, 0);
}

std::optional<TextPattern::Span> TextPattern::find(std::string_view text, std::size_t from) const {
    re2::StringPiece match;
    const std::size_t end = std::max(seenOf(text.size()), from);
    if (!m_expression->Match({text.data(), text.size()}, from, end, re2::RE2::UNANCHORED, &match,
                             1)) {
        return std::nullopt;
    }
    const auto begin = static_cast<std::size_t>(match.data() - text.data());
    return Span{begin, begin + match.size()};
}

bool TextPattern::mayBeInTextOf(std::string_view characters) const {
    if (!m_spec.isExpression) {
        return mayConsistOf(m_spec.text, characters);
    }
    return NeededTexts(m_spec.text, m_expression->options()).mayMatch([&](const std::string &text) {
        return mayConsistOf(text, characters);
    });
}

}  // namespace quorbel
