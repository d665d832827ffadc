#include "actions/StoredLines.h"

#include "platform/gui/QtText.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace quorbel {

namespace {

/// The line end that a text begins with; empty when it begins with none.
std::string_view lineEndAt(std::string_view text) {
    // The last two stand for line ends inside of Qt.
    constexpr std::array<std::string_view, 6> kEnds{"\r\n",         "\n",           "\r",
                                                    "\xE2\x80\xA9", "\xEF\xB7\x90", "\xEF\xB7\x91"};
    const auto found =
        std::ranges::find_if(kEnds, [text](std::string_view end) { return text.starts_with(end); });
    return found != kEnds.end() ? *found : std::string_view();
}

/// A part of both texts: `count` lines each from `begin` on.
struct Range {
    qsizetype begin = 0;
    qsizetype count = 0;
};

/// The sequence of lines with the most text that both parts have. It is the text that counts, not
/// the lines: empty ones are alike by chance.
class CommonLines {
public:
    /// `shared` tells of a stored and of an edited line, by their places, what it counts that they
    /// are alike; 0 when they are not.
    template <typename Shared>
    CommonLines(Range stored, Range edited, const Shared &shared)
        : m_width(edited.count + 1),
          m_counts(static_cast<std::size_t>((stored.count + 1) * m_width)) {
        for (qsizetype i = stored.count - 1; i >= 0; --i) {
            for (qsizetype j = edited.count - 1; j >= 0; --j) {
                const std::uint32_t count = shared(stored.begin + i, edited.begin + j);
                at(i, j) =
                    count > 0 ? at(i + 1, j + 1) + count : std::max(at(i + 1, j), at(i, j + 1));
            }
        }
    }

    /// How much the parts share from these places in them on.
    std::uint32_t &at(qsizetype stored, qsizetype edited) {
        return m_counts[static_cast<std::size_t>(stored * m_width + edited)];
    }

private:
    qsizetype m_width;
    std::vector<std::uint32_t> m_counts;
};

/// Says of each edited line of a part in which nothing is alike which stored one it was: line by
/// line from the end, or from the beginning when lines were added.
void pairUp(std::vector<qsizetype> &origins, Range stored, Range edited) {
    for (qsizetype i = 0; i < edited.count && stored.count > 0; ++i) {
        const qsizetype line = edited.count <= stored.count ? stored.count - edited.count + i
                                                            : std::min(i, stored.count - 1);
        origins[static_cast<std::size_t>(edited.begin + i)] = stored.begin + line;
    }
}

/// The same where lines may be alike. Very large parts are taken as if nothing in them were.
template <typename Shared>
void match(std::vector<qsizetype> &origins, Range stored, Range edited, const Shared &shared) {
    constexpr qsizetype kMostCompared = qsizetype{1} << 21U;
    if (stored.count * edited.count > kMostCompared) {
        pairUp(origins, stored, edited);
        return;
    }
    CommonLines common(stored, edited, shared);
    Range storedGap{stored.begin, 0};
    Range editedGap{edited.begin, 0};
    qsizetype i = 0;
    qsizetype j = 0;
    while (i < stored.count && j < edited.count) {
        if (shared(stored.begin + i, edited.begin + j) > 0) {
            pairUp(origins, {storedGap.begin, stored.begin + i - storedGap.begin},
                   {editedGap.begin, edited.begin + j - editedGap.begin});
            origins[static_cast<std::size_t>(edited.begin + j)] = stored.begin + i;
            storedGap.begin = stored.begin + ++i;
            editedGap.begin = edited.begin + ++j;
        } else if (common.at(i + 1, j) >= common.at(i, j + 1)) {
            ++i;
        } else {
            ++j;
        }
    }
    pairUp(origins, {storedGap.begin, stored.begin + stored.count - storedGap.begin},
           {editedGap.begin, edited.begin + edited.count - editedGap.begin});
}

}  // namespace

StoredLines::StoredLines(std::string_view stored, const QStringList &shown) {
    split(stored);
    if (std::ssize(m_lines) != shown.size()) {
        m_lines.clear();  // not as this class knows lines: all are new
        return;
    }
    for (qsizetype i = 0; i < shown.size(); ++i) {
        m_lines[static_cast<std::size_t>(i)].shown = shown[i];
    }
}

void StoredLines::split(std::string_view stored) {
    m_lines.emplace_back();
    while (!stored.empty()) {
        const std::string_view end = lineEndAt(stored);
        if (end.empty()) {
            m_lines.back().text += stored.front();
            stored.remove_prefix(1);
        } else {
            m_lines.back().end = end;
            m_lines.emplace_back();
            stored.remove_prefix(end.size());
        }
    }
}

std::vector<qsizetype> StoredLines::origins(const QStringList &edited) const {
    const auto shared = [&](qsizetype line, qsizetype place) {
        const bool areEqual = m_lines[static_cast<std::size_t>(line)].shown == edited[place];
        return areEqual ? static_cast<std::uint32_t>(edited[place].size()) + 1 : 0U;
    };
    const qsizetype stored = std::ssize(m_lines);
    std::vector<qsizetype> origins(static_cast<std::size_t>(edited.size()), kNone);
    const qsizetype shorter = std::min(stored, edited.size());
    qsizetype same = 0;
    for (; same < shorter && shared(same, same) > 0; ++same) {
        origins[static_cast<std::size_t>(same)] = same;
    }
    qsizetype sameAtEnd = 0;
    while (sameAtEnd < shorter - same &&
           shared(stored - 1 - sameAtEnd, edited.size() - 1 - sameAtEnd) > 0) {
        ++sameAtEnd;
        origins[static_cast<std::size_t>(edited.size() - sameAtEnd)] = stored - sameAtEnd;
    }
    match(origins, {same, stored - same - sameAtEnd}, {same, edited.size() - same - sameAtEnd},
          shared);
    return origins;
}

std::string StoredLines::restored(const QStringList &edited) const {
    const std::vector<qsizetype> lines = origins(edited);
    std::string end = m_lines.empty() || m_lines.front().end.empty() ? "\n" : m_lines.front().end;
    std::string text;
    for (qsizetype i = 0; i < edited.size(); ++i) {
        const qsizetype origin = lines[static_cast<std::size_t>(i)];
        const Line *line = origin != kNone ? &m_lines[static_cast<std::size_t>(origin)] : nullptr;
        const bool isUnchanged = line != nullptr && line->shown == edited[i];
        text += isUnchanged ? line->text : edited[i].toStdString();
        if (line != nullptr && !line->end.empty()) {
            end = line->end;
        }
        text += i + 1 < edited.size() ? end : "";
    }
    return text;
}

}  // namespace quorbel
