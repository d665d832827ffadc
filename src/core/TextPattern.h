#pragma once

#include "core/LiteralSearch.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace re2 {
class RE2;
}

namespace quorbel {

/// A text to look for, compiled: as it stands, or as a regular expression.
///
/// All texts are UTF-8. Capital and small letters are alike, beyond ASCII too, unless asked
/// otherwise. Time and memory of a search grow with the text searched and are bounded by the
/// pattern's length, whatever the expression says; bytes that are no UTF-8 match nothing. Nothing
/// can interrupt a search, so an expression sees only so much of a text as it is through with in a
/// few hundredths of a second at worst: 8 MB divided by its steps (RE2's program size), which for
/// most expressions is some hundred kilobytes.
class TextPattern {
public:
    struct Spec {
        std::string text;
        bool isCaseSensitive = false;
        bool isExpression = false;
        bool operator==(const Spec &) const = default;
    };
    struct Span {
        std::size_t begin;
        std::size_t end;
    };

    explicit TextPattern(const Spec &spec);
    ~TextPattern();
    TextPattern(TextPattern &&) noexcept;
    TextPattern &operator=(TextPattern &&) noexcept;

    /// What is wrong with the expression, in English; empty when nothing is. Nothing else may be
    /// called then.
    [[nodiscard]] std::string error() const;
    /// The same of a pattern that is not to be looked for, in a fraction of the time.
    [[nodiscard]] static std::string errorIn(const Spec &spec);
    [[nodiscard]] bool isIn(std::string_view text) const;
    /// The same in two steps: what can be said at a glance, and what to do where that is kUnsure.
    [[nodiscard]] LiteralSearch::Answer glanceAt(std::string_view text) const;
    [[nodiscard]] bool matches(std::string_view text) const;
    /// The first match that begins at `from` or later; "^" and "\b" see what stands before.
    [[nodiscard]] std::optional<Span> find(std::string_view text, std::size_t from = 0) const;
    /// Looks for texts of which one at least is in whatever has a match; nothing when no such are
    /// known.
    [[nodiscard]] const std::optional<LiteralSearch> &needed() const { return m_needed; }
    /// False when it is certain that no text among a filter's bytes has a match.
    [[nodiscard]] bool mayBeIn(const TrigramFilter &filter) const {
        return !m_needed || m_needed->mayBeIn(filter);
    }
    /// What it means for a match that a search for the needed texts gave an answer.
    [[nodiscard]] LiteralSearch::Answer answerFor(LiteralSearch::Answer needed) const {
        return isPlain() ? needed : std::min(needed, LiteralSearch::Answer::kUnsure);
    }
    /// False when it is certain that no text made of these characters alone, capital or small, has
    /// a match. They are ASCII.
    [[nodiscard]] bool mayBeInTextOf(std::string_view characters) const;

private:
    [[nodiscard]] bool isPlain() const { return !m_spec.isExpression; }
    /// How many of so many bytes an expression sees.
    [[nodiscard]] std::size_t seenOf(std::size_t bytes) const;

    Spec m_spec;
    std::unique_ptr<re2::RE2> m_expression;
    std::optional<LiteralSearch> m_needed;
};

}  // namespace quorbel
