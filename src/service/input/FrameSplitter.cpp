#include "service/input/FrameSplitter.h"

#include <algorithm>

namespace quorbel {

namespace {

bool isLineEnd(char c) {
    return c == '\n' || c == '\0';
}

bool hasPriority(std::string_view text) {
    return findPriority(text) == FrameHeader::Kind::kComplete;
}

/// The next line end, or "<" if that counts, too; else the end.
std::size_t findEndOf(std::string_view text, std::size_t from, bool orPriority) {
    // In pieces: one character may be at hand, while another is far.
    constexpr std::size_t kPiece = 512;
    for (; from < text.size(); from += std::min(kPiece, text.size() - from)) {
        const std::string_view piece = text.substr(from, kPiece);
        std::size_t end = std::min(piece.find('\n'), piece.size());
        end = std::min(piece.substr(0, end).find('\0'), end);
        if (orPriority) {
            end = std::min(piece.substr(0, end).find('<'), end);
        }
        if (end < piece.size()) {
            return from + end;
        }
    }
    return text.size();
}

}  // namespace

/// What is left of earlier bytes is joined with no more of the new ones than it needs; these are
/// then taken where they stand.
void FrameSplitter::feed(std::string_view bytes) {
    constexpr std::size_t kPiece = 2048;
    while (!m_buffer.empty() && !bytes.empty()) {
        const std::string_view piece = bytes.substr(0, kPiece);
        m_buffer += piece;
        std::string_view rest = m_buffer;
        takeFrames(rest);
        const bool isJoined = rest.size() <= piece.size();
        bytes.remove_prefix(piece.size() - (isJoined ? rest.size() : 0));
        m_buffer.erase(0, m_buffer.size() - (isJoined ? 0 : rest.size()));
    }
    if (m_buffer.empty()) {
        takeFrames(bytes);
        m_buffer = bytes;
    }
    // Connections are many and idle for long: none sits on what its largest message took.
    if (m_buffer.capacity() > 2 * m_buffer.size() + 2 * kPiece) {
        m_buffer.shrink_to_fit();
    }
}

void FrameSplitter::finish() {
    m_ended = true;
    std::string_view rest = m_buffer;
    takeFrames(rest);
    m_buffer.clear();
}

void FrameSplitter::takeFrames(std::string_view &rest) {
    while (!rest.empty() && takeFrame(rest)) {
    }
}

/// Takes one frame, or something that is none, off the front. False when more bytes are needed.
bool FrameSplitter::takeFrame(std::string_view &rest) {
    if (m_skipBytes > 0) {
        skipBytes(rest);
        return true;
    }
    if (m_skipText) {
        return skipText(rest);
    }
    if (isLineEnd(rest.front())) {
        consumeAlongCounts(rest, 1);
        return true;
    }
    const FrameHeader header = readHeader(rest);
    if (header.kind == FrameHeader::Kind::kComplete) {
        return takeCounted(rest, header);
    }
    if (header.kind == FrameHeader::Kind::kIncomplete && !m_ended) {
        return false;
    }
    switch (findBareCount(rest)) {
        case Answer::kYes:
            return takeBareCounted(rest);
        case Answer::kOpen:
            return false;
        case Answer::kNo:
            break;
    }
    return takeText(rest);
}

bool FrameSplitter::takeCounted(std::string_view &rest, const FrameHeader &header) {
    const std::size_t kept = std::min(header.messageLength, kMaxFrame);
    const bool complete = rest.size() >= header.length + kept;
    if (!complete && !m_ended) {
        return false;
    }
    std::size_t tail = 0;
    switch (findTail(rest, header, tail)) {
        case Answer::kYes:
            handOnStray(rest.substr(0, tail));
            consume(rest, tail);
            return true;
        case Answer::kOpen:
            return false;
        case Answer::kNo:
            break;
    }
    m_framing = Framing::kCounted;
    handOn(rest.substr(header.length, kept),
           complete && kept == header.messageLength ? Kind::kWhole : Kind::kCut);
    consume(rest, header.length + kept);
    m_skipBytes = header.messageLength - kept;
    return true;
}

/// Whether the count at the front begins with `length` digits that end another message: whoever
/// counts characters instead of bytes leaves the end of a message behind, and when that is digits,
/// "port 80" in front of "52 <13>" makes "8052 <13>". So it is when the rest of the digits leads to
/// the next header, while all of them lead to nothing.
FrameSplitter::Answer FrameSplitter::findTail(std::string_view rest, const FrameHeader &header,
                                              std::size_t &length) const {
    const std::string_view message =
        rest.substr(header.length, std::min(header.messageLength, kMaxFrame));
    // Nearly always there is nothing more to look at.
    if (m_framing != Framing::kCounted || message.find('<', 1) == std::string_view::npos) {
        return Answer::kNo;
    }
    const HeadersBefore shorter =
        headersBefore(rest, rest.find_first_of("123456789") + 1, header.length);
    constexpr int kEnough = 8;  // Nobody holds a megabyte to see what follows it.
    const bool tooLong = header.messageLength > kMaxFrame;
    const auto *const end = shorter.places.begin() + shorter.count;
    const auto *const found =
        std::find_if(shorter.places.begin(), end, [&](const HeadersBefore::Place &place) {
            return leadsOn(message, place.messageLength, tooLong ? kEnough : 1);
        });
    if (found == end) {
        return Answer::kNo;
    }
    length = found->at;
    switch (tooLong ? Answer::kNo : isBoundary(rest, header.length + header.messageLength)) {
        case Answer::kOpen:
            return Answer::kOpen;
        case Answer::kYes:
            return Answer::kNo;
        case Answer::kNo:
            break;
    }
    return Answer::kYes;
}

/// Whether a frame may end at a place.
FrameSplitter::Answer FrameSplitter::isBoundary(std::string_view rest, std::size_t at) const {
    if (at >= rest.size()) {
        return !m_ended ? Answer::kOpen : at == rest.size() ? Answer::kYes : Answer::kNo;
    }
    if (isLineEnd(rest[at])) {
        return Answer::kYes;
    }
    switch (readHeader(rest.substr(at)).kind) {
        case FrameHeader::Kind::kComplete:
            return Answer::kYes;
        case FrameHeader::Kind::kIncomplete:
            return m_ended ? Answer::kNo : Answer::kOpen;
        case FrameHeader::Kind::kAbsent:
            break;
    }
    return Answer::kNo;
}

/// Whether the text at the front is a count and a message without a priority.
FrameSplitter::Answer FrameSplitter::findBareCount(std::string_view rest) {
    if (m_framing == Framing::kLines || (m_resync && m_framing == Framing::kUnknown)) {
        return Answer::kNo;
    }
    if (m_counts == 0) {
        const FrameHeader count = readCount(rest);
        if (count.kind != FrameHeader::Kind::kComplete || count.messageLength > kMaxFrame) {
            return Answer::kNo;
        }
        m_counts = count.length + count.messageLength;
        m_links = 1;
    }
    return followCounts(rest);
}

/// Goes from count to count until there is a header. What nobody has counted before is a line when
/// its end comes first, which is looked for as far as a frame can reach.
FrameSplitter::Answer FrameSplitter::followCounts(std::string_view rest) {
    const bool known = m_framing == Framing::kCounted;
    while (true) {
        const bool far = m_counts > kMaxFrame;
        if (!known) {
            const std::string_view within = rest.substr(0, std::min(m_counts, kMaxFrame) + 1);
            m_searched = findEndOf(within, m_searched, false);
            if (m_searched < within.size()) {
                return Answer::kNo;
            }
            if (far && within.size() <= kMaxFrame && !m_ended) {
                return Answer::kOpen;
            }
        }
        if (far) {
            return m_links > 2 ? Answer::kYes : Answer::kNo;
        }
        while (known && m_counts < rest.size() && isLineEnd(rest[m_counts])) {
            ++m_counts;
        }
        if (m_counts >= rest.size()) {
            const bool whole = m_counts == rest.size() && m_links > (known ? 0U : 1U);
            return !m_ended ? Answer::kOpen : whole ? Answer::kYes : Answer::kNo;
        }
        const Answer boundary = isBoundary(rest, m_counts);
        const FrameHeader count = readCount(rest.substr(m_counts));
        if (boundary != Answer::kNo || count.kind != FrameHeader::Kind::kComplete) {
            return boundary;
        }
        m_counts += count.length + count.messageLength;
        ++m_links;
    }
}

bool FrameSplitter::takeBareCounted(std::string_view &rest) {
    m_framing = Framing::kCounted;
    const FrameHeader count = readCount(rest);
    handOn(rest.substr(count.length, count.messageLength), Kind::kWhole);
    --m_links;
    consumeAlongCounts(rest, count.length + count.messageLength);
    return true;
}

bool FrameSplitter::takeText(std::string_view &rest) {
    m_resync = m_resync || m_framing == Framing::kCounted;
    const TextEnd end = findTextEnd(rest);
    const std::string_view text = rest.substr(0, end.at);
    const bool isEndless = end.end == End::kStream || end.end == End::kTooLong;
    if (isEndless && !m_resync && m_framing == Framing::kUnknown && !hasPriority(text)) {
        m_resync = true;
        m_searched = 0;
        return true;
    }
    switch (end.end) {
        case End::kOpen:
            return false;
        case End::kHeader:
            m_framing = Framing::kCounted;
            handOnStray(text);
            break;
        case End::kLineEnd:
        case End::kStream:
            if (hasPriority(text)) {
                m_framing = Framing::kLines;
            }
            handOn(text, m_framing == Framing::kCounted ? Kind::kStray : Kind::kWhole);
            break;
        case End::kTooLong:
        case End::kNone:
            takeTooLong(rest);
            return true;
    }
    consume(rest, end.at);
    return true;
}

FrameSplitter::TextEnd FrameSplitter::findTextEnd(std::string_view rest) {
    const std::string_view within = rest.substr(0, kMaxFrame + 1);
    while (true) {
        m_searched = findEndOf(within, m_searched, m_resync);
        if (m_searched == within.size()) {
            return {within.size() > kMaxFrame ? End::kTooLong
                    : m_ended                 ? End::kStream
                                              : End::kOpen,
                    m_searched};
        }
        if (isLineEnd(within[m_searched])) {
            return {End::kLineEnd, m_searched};
        }
        const TextEnd header = findHeaderAt(rest, m_searched);
        if (header.end != End::kNone) {
            return header;
        }
        ++m_searched;
    }
}

/// The header of the "<" at `at`, where the text ends; kNone when it has none. Of digits that
/// may partly belong to the text, those are taken that do not count the next header in.
FrameSplitter::TextEnd FrameSplitter::findHeaderAt(std::string_view rest, std::size_t at) {
    const FrameHeader::Kind priority = findPriority(rest.substr(at));
    if (priority == FrameHeader::Kind::kIncomplete && !m_ended) {
        return {End::kOpen, at};
    }
    const HeadersBefore found =
        priority == FrameHeader::Kind::kComplete ? headersBefore(rest, 1, at) : HeadersBefore();
    if (found.count == 0) {
        return {End::kNone, at};
    }
    const auto *const last = found.places.begin() + (found.count - 1);
    if (found.count == 1) {
        return {End::kHeader, last->at};
    }
    const std::string_view after = rest.substr(found.messageBegin);
    const std::size_t longest = std::min(found.places[0].messageLength, kMaxFrame);
    const HeadersBefore next = firstHeaderWithin(after.substr(0, longest), m_inner);
    if (next.count == 0 && after.size() < longest && !m_ended) {
        m_inner = after.size() - std::min(after.size(), FrameHeader::kLongest);
        return {End::kOpen, at};
    }
    m_inner = 0;
    const auto *const place =
        std::find_if(found.places.begin(), last, [&next](const HeadersBefore::Place &candidate) {
            return next.count == 0 || candidate.messageLength <= next.places[next.count - 1].at;
        });
    return {End::kHeader, place->at};
}

void FrameSplitter::takeTooLong(std::string_view &rest) {
    m_skipText = true;
    m_skipToHeader = m_resync;
    // A header may begin where it ends.
    const std::size_t length = m_resync ? kMaxFrame - FrameHeader::kLongest : kMaxFrame;
    handOn(rest.substr(0, length), Kind::kCut);
    consume(rest, length);
}

void FrameSplitter::skipBytes(std::string_view &rest) {
    const std::size_t count = std::min(m_skipBytes, rest.size());
    m_skipBytes -= count;
    m_skipped += count;
    consume(rest, count);
}

/// Drops what the text's end is not in. False when more bytes are needed.
bool FrameSplitter::skipText(std::string_view &rest) {
    TextEnd found{End::kNone, 0};
    for (; found.end == End::kNone; ++m_searched) {
        m_searched = findEndOf(rest, m_searched, m_skipToHeader);
        if (m_searched == rest.size()) {
            found = {m_ended ? End::kStream : End::kOpen, m_searched};
        } else if (isLineEnd(rest[m_searched])) {
            found = {End::kLineEnd, m_searched};
        } else {
            found = findHeaderAt(rest, m_searched);
        }
    }
    const bool open = found.end == End::kOpen;
    // What may be the beginning of a header stays.
    const std::size_t kept = open && m_skipToHeader ? FrameHeader::kLongest : 0;
    const std::size_t dropped = found.at - std::min(found.at, kept);
    m_skipText = open;
    m_skipped += dropped;
    consume(rest, dropped);
    return !open;
}

/// What was known of the text at the front is not true of the next.
void FrameSplitter::consume(std::string_view &rest, std::size_t count) {
    count = std::min(count, rest.size());
    rest.remove_prefix(count);
    m_counts = 0;
    m_searched = 0;
    m_inner = 0;
    m_resync = false;
}

/// The counts that lead on from there need not be followed again.
void FrameSplitter::consumeAlongCounts(std::string_view &rest, std::size_t count) {
    const std::size_t counts = m_counts - std::min(m_counts, count);
    consume(rest, count);
    m_counts = counts;
}

void FrameSplitter::handOnStray(std::string_view text) {
    const bool isBlank = text.find_first_not_of(" \t\r") == std::string_view::npos;
    if (isBlank) {
        m_skipped += text.size();
    } else {
        handOn(text, Kind::kStray);
    }
}

void FrameSplitter::handOn(std::string_view frame, Kind kind) {
    if (frame.ends_with('\r')) {
        frame.remove_suffix(1);
    }
    if (!frame.empty()) {
        m_onFrame(frame, kind);
    }
}

}  // namespace quorbel
