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

CountHeader readCountHeader(std::string_view text) {
    constexpr std::size_t kMostDigits = 9;
    std::size_t digits = 0;
    std::size_t length = 0;
    while (digits < text.size() && digits < kMostDigits && text[digits] >= '0' &&
           text[digits] <= '9') {
        length = 10 * length + static_cast<std::size_t>(text[digits] - '0');
        ++digits;
    }
    if (digits == 0 || text[0] == '0') {
        return {};
    }
    constexpr std::string_view kAfterCount = " <";
    const std::string_view after = text.substr(digits, kAfterCount.size());
    if (!kAfterCount.starts_with(after)) {
        return {};
    }
    const bool complete = after.size() == kAfterCount.size();
    return {complete ? CountHeader::Kind::kComplete : CountHeader::Kind::kIncomplete, digits + 1,
            length};
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
