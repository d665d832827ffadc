#pragma once

#include "core/TextPattern.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace quorbel {

/// A message as a chunk's bytes hold it: after its length, seven bits a byte.
struct StoredMessage {
    std::string_view text;
    std::size_t storedSize;  ///< with its length

    /// The one that begins there.
    static StoredMessage at(const char *bytes);
};

/// Messages in a chunk's bytes, to be looked through as one text. Any thread.
class MessageRun {
public:
    using Answer = LiteralSearch::Answer;
    /// Where they begin, ascending.
    using Places = std::vector<std::uint32_t>;
    /// The place of a message that is not there, and reads as an empty one.
    static constexpr std::uint32_t kNowhere = UINT32_MAX;

    /// What is given outlives this.
    MessageRun(const char *bytes, const Places &places) : m_bytes(bytes), m_places(places) {}

    [[nodiscard]] std::string_view text(std::size_t number) const {
        return m_places[number] == kNowhere ? std::string_view()
                                            : StoredMessage::at(m_bytes + m_places[number]).text;
    }
    /// What can be said of each at a glance, see TextPattern::glanceAt().
    void glance(const TextPattern &pattern, std::vector<Answer> &answers) const;

    /// Where all messages begin that so many bytes hold.
    static Places allPlaces(std::string_view bytes);

private:
    [[nodiscard]] std::string_view region() const;
    [[nodiscard]] bool mark(std::string_view region, const TextPattern &pattern,
                            std::vector<Answer> &answers) const;

    const char *m_bytes;
    const Places &m_places;
};

}  // namespace quorbel
