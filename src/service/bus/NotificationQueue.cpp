#include "service/bus/NotificationQueue.h"

#include <algorithm>

namespace quorbel {

namespace {

std::size_t countLines(std::string_view lines) {
    return static_cast<std::size_t>(std::ranges::count(lines, '\n'));
}

}  // namespace

bool NotificationQueue::Piece::isFollowedBy(NotificationType other, std::size_t size,
                                            const std::optional<FilePlace> &otherBehind) const {
    const bool isSamePlace =
        behind && otherBehind
            ? behind->isInSameFile(*otherBehind) && behind->offset + size == otherBehind->offset
            : !behind && !otherBehind;
    return type == other && isSamePlace && bytes.size() + size <= kPieceSize;
}

void NotificationQueue::push(NotificationType type, std::string_view lines,
                             const std::optional<FilePlace> &behind) {
    while (!lines.empty()) {
        // All of them, but for the rare flood within one turn.
        const std::size_t size =
            lines.size() <= kPieceSize ? lines.size() : lines.substr(0, kPieceSize).rfind('\n') + 1;
        std::optional<FilePlace> place = behind;
        if (place) {
            place->offset -= lines.size() - size;
        }
        pushPiece(type, lines.substr(0, size), place);
        lines.remove_prefix(size);
    }
}

void NotificationQueue::pushPiece(NotificationType type, std::string_view lines,
                                  const std::optional<FilePlace> &behind) {
    const std::size_t count = countLines(lines);
    while (m_count > 0 &&
           (m_count + count > kMostNotifications || m_byteCount + lines.size() > kMostBytes)) {
        drop();
    }
    if (m_pieces.empty() || !m_pieces.back().isFollowedBy(type, lines.size(), behind)) {
        m_pieces.push_back({type, {}, 0, 0, {}});
    }
    Piece &piece = m_pieces.back();
    piece.bytes += lines;
    piece.count += count;
    piece.behind = behind;
    m_count += count;
    m_byteCount += lines.size();
    m_pushed[indexOf(type)] += count;
    m_waiting[indexOf(type)] += count;
}

Notification NotificationQueue::front() const {
    const Piece &piece = m_pieces.front();
    const std::string_view lines = piece.lines();
    return {piece.type, lines.substr(0, lines.find('\n') + 1)};
}

void NotificationQueue::pop() {
    takeOut(front().line.size(), 1);
}

void NotificationQueue::takeOut(std::size_t bytes, std::size_t count) {
    Piece &piece = m_pieces.front();
    piece.begin += bytes;
    piece.count -= count;
    m_count -= count;
    m_byteCount -= bytes;
    m_waiting[indexOf(piece.type)] -= count;
    if (piece.count == 0) {
        m_pieces.pop_front();
    }
}

void NotificationQueue::drop() {
    pop();
    ++m_dropped;
}

void NotificationQueue::dropAll() {
    dropRuns(frontRuns(SIZE_MAX));
}

std::vector<NotificationRun> NotificationQueue::frontRuns(std::size_t mostBytes) const {
    std::vector<NotificationRun> runs;
    std::size_t bytes = 0;
    for (const Piece &piece : m_pieces) {
        bytes += piece.lines().size();
        if (!runs.empty() && bytes > mostBytes) {
            break;
        }
        runs.push_back({piece.type, piece.lines()});
    }
    return runs;
}

void NotificationQueue::popRuns(const std::vector<NotificationRun> &runs) {
    for (const NotificationRun &run : runs) {
        takeOut(run.lines.size(), m_pieces.front().count);
    }
}

void NotificationQueue::dropRuns(const std::vector<NotificationRun> &runs) {
    const std::size_t before = m_count;
    popRuns(runs);
    m_dropped += before - m_count;
}

std::optional<FilePlace> NotificationQueue::toldPlace() const {
    const auto stored =
        std::ranges::find_if(m_pieces, [](const Piece &piece) { return piece.behind.has_value(); });
    if (stored == m_pieces.end()) {
        return std::nullopt;
    }
    FilePlace place = *stored->behind;
    place.offset -= std::min<std::uint64_t>(place.offset, stored->lines().size());
    return place;
}

}  // namespace quorbel
