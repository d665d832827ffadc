#include "events/find/MatchMarks.h"

#include <algorithm>
#include <string>

namespace quorbel {

namespace {

/// Turns places in UTF-8 into places in the text, which ask one after the other.
class Places {
public:
    explicit Places(std::string_view bytes) : m_bytes(bytes) {}

    qsizetype at(std::size_t place) {
        const std::string_view passed = m_bytes.substr(m_byte, place - m_byte);
        m_character +=
            QString::fromUtf8(passed.data(), static_cast<qsizetype>(passed.size())).size();
        m_byte = place;
        return m_character;
    }

private:
    std::string_view m_bytes;
    std::size_t m_byte = 0;
    qsizetype m_character = 0;
};

void findAll(const TextPattern &pattern, std::string_view text, std::vector<TextRange> &marks) {
    Places places(text);
    std::size_t from = 0;
    for (std::size_t count = 0; count < MatchMarks::kMost && from <= text.size(); ++count) {
        const auto found = pattern.find(text, from);
        if (!found) {
            return;
        }
        if (found->end > found->begin) {
            const qsizetype begin = places.at(found->begin);
            marks.push_back({begin, places.at(found->end)});
        }
        from = std::max(found->end, found->begin + 1);
    }
}

}  // namespace

void MatchMarks::use(const EventQuery &filter) {
    m_patterns.clear();
    for (const TextCondition &text : filter.texts) {
        if (!text.isNegated) {
            m_patterns.emplace_back(text.pattern);
        }
    }
}

std::vector<TextRange> MatchMarks::in(const QString &text) const {
    std::vector<TextRange> marks;
    const std::string bytes = text.toStdString();
    for (const TextPattern &pattern : m_patterns) {
        findAll(pattern, bytes, marks);
    }
    return marks;
}

bool MatchMarks::isAnyIn(const QString &text) const {
    const std::string bytes = text.toStdString();
    return std::ranges::any_of(m_patterns,
                               [&](const TextPattern &pattern) { return pattern.isIn(bytes); });
}

}  // namespace quorbel
