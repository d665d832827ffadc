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

re2::RE2::Options optionsFor(const TextPattern::Spec &spec) {
    re2::RE2::Options options;
    options.set_literal(!spec.isExpression);
    options.set_case_sensitive(spec.isCaseSensitive);
    options.set_max_mem(kMostMemory);
    options.set_log_errors(false);
    return options;
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

}  // namespace

TextPattern::TextPattern(const Spec &spec)
    : m_spec(spec), m_expression(std::make_unique<re2::RE2>(spec.text, optionsFor(spec))) {}

TextPattern::~TextPattern() = default;
TextPattern::TextPattern(TextPattern &&) noexcept = default;
TextPattern &TextPattern::operator=(TextPattern &&) noexcept = default;

std::string TextPattern::error() const {
    if (!m_expression->ok()) {
        return m_expression->error();
    }
    return m_expression->ProgramSize() > kMostSteps ? "expression too large" : std::string();
}

bool TextPattern::isIn(std::string_view text) const {
    return m_expression->Match({text.data(), text.size()}, 0, text.size(), re2::RE2::UNANCHORED,
                               nullptr, 0);
}

std::optional<TextPattern::Span> TextPattern::find(std::string_view text, std::size_t from) const {
    re2::StringPiece match;
    if (!m_expression->Match({text.data(), text.size()}, from, text.size(), re2::RE2::UNANCHORED,
                             &match, 1)) {
        return std::nullopt;
    }
    const auto begin = static_cast<std::size_t>(match.data() - text.data());
    return Span{begin, begin + match.size()};
}

bool TextPattern::mayBeInTextOf(std::string_view characters) const {
    if (!m_spec.isExpression) {
        return mayConsistOf(m_spec.text, characters);
    }
    // The texts without which the expression does not match.
    re2::FilteredRE2 filtered(1);
    int number = 0;
    filtered.Add(m_spec.text, m_expression->options(), &number);
    std::vector<std::string> needed;
    filtered.Compile(&needed);
    std::vector<int> possible;
    for (std::size_t i = 0; i < needed.size(); ++i) {
        if (mayConsistOf(needed[i], characters)) {
            possible.push_back(static_cast<int>(i));
        }
    }
    std::vector<int> matching;
    filtered.AllPotentials(possible, &matching);
    return !matching.empty();
}

}  // namespace quorbel
