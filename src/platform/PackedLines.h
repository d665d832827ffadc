#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace quorbel {

/// Lines, one behind the other in memory of their own, each with a number that means something to
/// the owner. A line costs no allocation, growing copies nothing, and what was read can go back to
/// the system before the rest.
class PackedLines {
public:
    /// Where a line stands.
    using Place = std::uint32_t;

    PackedLines() = default;
    PackedLines(PackedLines &&other) noexcept;
    PackedLines &operator=(PackedLines &&other) noexcept;
    PackedLines(const PackedLines &) = delete;
    PackedLines &operator=(const PackedLines &) = delete;
    ~PackedLines();

    /// Throws std::bad_alloc when there is no memory, or when 32 GiB are full.
    Place append(std::string_view line, std::uint32_t note);
    /// Valid until a line is appended.
    [[nodiscard]] std::string_view line(Place place) const;
    [[nodiscard]] std::uint32_t note(Place place) const;
    void setNote(Place place, std::uint32_t note);

    /// How many lines there are, and how many bytes they have.
    [[nodiscard]] std::size_t count() const { return m_count; }
    [[nodiscard]] std::size_t textSize() const { return m_textSize; }

    /// The lines in their order.
    class Reader {
    public:
        /// `lines` outlive it, and nothing is appended meanwhile.
        explicit Reader(const PackedLines &lines) : m_lines(lines) {}
        /// The next line; there must be one.
        Place next();

    private:
        const PackedLines &m_lines;
        std::size_t m_next = 0;
    };

    /// Gives the memory of all lines before this one back to the system, but for some: they hold
    /// nothing any more. To be called with growing places.
    void forgetBefore(Place place);

private:
    struct Head;

    void grow(std::size_t needed);
    [[nodiscard]] Head *head(Place place) const;

    char *m_memory = nullptr;
    std::size_t m_room = 0;
    std::size_t m_used = 0;
    std::size_t m_forgotten = 0;
    std::size_t m_count = 0;
    std::size_t m_textSize = 0;
};

}  // namespace quorbel
