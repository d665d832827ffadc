#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace quorbel {

/// Tells of bytes that a text cannot be among them, without them: a Bloom filter of each three that
/// follow one another. Small and capital letters of ASCII are alike, and so are all digits, which
/// would fill it and are everywhere. Any thread.
class TrigramFilter {
public:
    /// Of no bytes known: any text may be among them.
    TrigramFilter() = default;
    /// Takes `mostBytes` of memory at most, and none where that would tell next to nothing.
    TrigramFilter(std::string_view bytes, std::size_t mostBytes);

    /// False when it is certain that the text is not among the bytes, whatever of it is written in
    /// small or capital letters. Nothing is certain of less than three bytes, but for two that
    /// begin with one that leads others in UTF-8.
    [[nodiscard]] bool mayHave(std::string_view text) const;

    [[nodiscard]] std::size_t memory() const { return m_words.size() * sizeof(std::uint64_t); }

private:
    /// A power of two, or none.
    std::vector<std::uint64_t> m_words;
};

}  // namespace quorbel
