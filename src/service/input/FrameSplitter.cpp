#include "service/input/FrameSplitter.h"

#include <algorithm>

namespace quorbel {

namespace {

bool isLineEnd(char c) {
    return c == '\n' || c == '\0';
}

struct CountHeader {
    enum class Kind { kAbsent, kIncomplete, kComplete };
    Kind kind = Kind::kAbsent;
    std::size_t headerLength = 0;
    std::size_t messageLength = 0;
};

std::size_t countDigits(std::string_view text, std::size_t most) {
    text = text.substr(0, most);
    return std::min(text.find_first_not_of("0123456789"), text.size());
}

/// Whether the message begins with a priority, as far as its bytes are there.
CountHeader::Kind findPriority(std::string_view message) {
    constexpr std::size_t kMostDigits = 3;
    if (message.empty()) {
        return CountHeader::Kind::kIncomplete;
    }
    if (message.front() != '<') {
        return CountHeader::Kind::kAbsent;
    }
    const std::size_t digits = countDigits(message.substr(1), kMostDigits);
    const std::string_view after = message.substr(1 + digits);
    if (after.empty()) {
        return CountHeader::Kind::kIncomplete;
    }
    return digits > 0 && after.front() == '>' ? CountHeader::Kind::kComplete
                                              : CountHeader::Kind::kAbsent;
}

/// Bytes that follow can only decide what is incomplete.
CountHeader readCountHeader(std::string_view text) {
    constexpr std::size_t kMostDigits = 7;
    const std::size_t digits = countDigits(text, kMostDigits);
    if (digits == 0 || text.front() == '0') {
        return {};
    }
    if (digits == text.size()) {
        return {CountHeader::Kind::kIncomplete};
    }
    std::size_t length = 0;
    for (const char digit : text.substr(0, digits)) {
        length = 10 * length + static_cast<std::size_t>(digit - '0');
    }
    if (text[digits] != ' ' || length > FrameSplitter::kMostCounted) {
        return {};
    }
    // A priority that the count does not cover is none.
    const std::string_view message = text.substr(digits + 1, length);
    const CountHeader::Kind kind = findPriority(message);
    if (kind == CountHeader::Kind::kIncomplete && message.size() == length) {
        return {};
    }
    return {kind, digits + 1, length};
}

}  // namespace

void FrameSplitter::feed(std::string_view bytes) {
    m_buffer += bytes;
    std::string_view rest = m_buffer;
    while (!rest.empty() && takeFrame(rest)) {
    }
    m_buffer.erase(0, m_buffer.size() - rest.size());
}

void FrameSplitter::finish() {
    if (!m_skipLine && m_skipBytes == 0) {
        const CountHeader header = readCountHeader(m_buffer);
        const bool counted = header.kind == CountHeader::Kind::kComplete;
        handOn(std::string_view(m_buffer).substr(counted ? header.headerLength : 0), counted);
    }
    m_buffer.clear();
}

/// Takes one frame, or something that is none, off the front. False when more bytes are needed.
bool FrameSplitter::takeFrame(std::string_view &rest) {
    if (m_skipLine || m_skipBytes > 0) {
        skip(rest);
        return true;
    }
    if (isLineEnd(rest.front())) {
        rest.remove_prefix(1);
        m_searched = 0;
        return true;
    }
    const CountHeader header = readCountHeader(rest);
    switch (header.kind) {
        case CountHeader::Kind::kIncomplete:
            return false;
        case CountHeader::Kind::kComplete:
            return takeCounted(rest, header.headerLength, header.messageLength);
        case CountHeader::Kind::kAbsent:
            break;
    }
    return takeLine(rest);
}

bool FrameSplitter::takeCounted(std::string_view &rest, std::size_t header, std::size_t length) {
    const std::size_t kept = std::min(length, kMaxFrame);
    if (rest.size() < header + kept) {
        return false;
    }
    handOn(rest.substr(header, kept), kept < length);
    rest.remove_prefix(header + kept);
    m_skipBytes = length - kept;
    return true;
}

bool FrameSplitter::takeLine(std::string_view &rest) {
    const std::string_view within = rest.substr(0, kMaxFrame + 1);
    const auto *end = std::find_if(within.begin() + m_searched, within.end(), isLineEnd);
    if (end == within.end() && within.size() <= kMaxFrame) {
        m_searched = within.size();
        return false;
    }
    m_searched = 0;
    const bool cut = end == within.end();
    const std::size_t length = cut ? kMaxFrame : static_cast<std::size_t>(end - within.begin());
    handOn(within.substr(0, length), cut);
    rest.remove_prefix(cut ? length : length + 1);
    m_skipLine = cut;
    return true;
}

void FrameSplitter::skip(std::string_view &rest) {
    if (m_skipBytes > 0) {
        const std::size_t count = std::min(m_skipBytes, rest.size());
        m_skipBytes -= count;
        rest.remove_prefix(count);
        return;
    }
    const auto *end = std::ranges::find_if(rest, isLineEnd);
    m_skipLine = end == rest.end();
    rest.remove_prefix(m_skipLine ? rest.size() : static_cast<std::size_t>(end - rest.begin()) + 1);
}

void FrameSplitter::handOn(std::string_view frame, bool cut) {
    if (frame.ends_with('\r')) {
        frame.remove_suffix(1);
    }
    if (!frame.empty()) {
        m_onFrame(frame, cut);
    }
}

}  // namespace quorbel
