#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// Replaces `folded` by the text in the form that is compared: without the difference between
/// capital and small letters. Each character stays one character; what is no UTF-8 stays as it is.
void foldCase(std::string_view text, std::string &folded);

/// A pattern for whole texts in which "*" stands for any characters and "?" for exactly one.
/// Capital and small letters are the same. There is no way to ask for a star itself.
///
/// Matching never goes back behind a star that was matched: its cost is at most the length of the
/// text times that of the longest part between two stars.
class WildcardPattern {
public:
    explicit WildcardPattern(std::string_view pattern);

    /// Whether every text matches.
    [[nodiscard]] bool matchesEverything() const { return m_parts.size() > 1 && m_bare; }
    /// `folded` is a text that went through foldCase().
    [[nodiscard]] bool matches(std::string_view folded) const;

private:
    /// What stands between two stars.
    struct Part {
        std::string text;
        bool literal = true;  ///< without "?"
    };

    static std::size_t lengthAt(const Part &part, std::string_view text);
    static bool matchesEnd(const Part &part, std::string_view text);
    static bool skipPast(const Part &part, std::string_view &text);

    std::vector<Part> m_parts;  ///< never empty; one more than there are stars
    bool m_bare = true;         ///< all parts are empty
};

}  // namespace quorbel
