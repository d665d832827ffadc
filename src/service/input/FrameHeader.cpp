#include "service/input/FrameHeader.h"

#include "platform/Number.h"

#include <algorithm>

namespace quorbel {

namespace {

using Kind = FrameHeader::Kind;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::size_t kMostCountDigits = 7;

/// How much of a byte order mark a text begins with.
Kind findMark(std::string_view text) {
    if (!text.empty() && text.front() != kByteOrderMark.front()) {
        return Kind::kAbsent;
    }
    if (text.starts_with(kByteOrderMark)) {
        return Kind::kComplete;
    }
    return kByteOrderMark.starts_with(text) ? Kind::kIncomplete : Kind::kAbsent;
}

/// The length of a priority, with a mark in front, that is known to be there.
std::size_t priorityLength(std::string_view text) {
    return text.find('>') + 1;
}

/// Whether a text has so many bytes, or so many characters: of Unicode, or of UTF-16.
bool measures(std::string_view text, std::size_t count) {
    if (text.size() < count) {
        return false;
    }
    const auto continuing = static_cast<std::size_t>(std::ranges::count_if(
        text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }));
    const auto pairs = static_cast<std::size_t>(
        std::ranges::count_if(text, [](char c) { return static_cast<unsigned char>(c) >= 0xF0U; }));
    const std::size_t characters = text.size() - continuing;
    return count == text.size() || count == characters || count == characters + pairs;
}

}  // namespace

FrameHeader readCount(std::string_view text) {
    const Kind mark = findMark(text);
    if (mark == Kind::kIncomplete) {
        return {mark};
    }
    const std::size_t begin = mark == Kind::kComplete ? kByteOrderMark.size() : 0;
    std::size_t at = begin;
    std::size_t length = 0;
    const std::size_t most = std::min(text.size(), begin + kMostCountDigits);
    for (; at < most && isDigit(text[at]); ++at) {
        length = 10 * length + static_cast<std::size_t>(text[at] - '0');
        if (length == 0) {
            return {};
        }
    }
    if (at == text.size()) {
        return {Kind::kIncomplete};
    }
    if (length == 0 || length > FrameHeader::kMostCounted || text[at] != ' ') {
        return {};
    }
    return {Kind::kComplete, at + 1, length};
}

FrameHeader readHeader(std::string_view text) {
    FrameHeader header = readCount(text);
    if (header.kind != Kind::kComplete) {
        return header;
    }
    // A priority that the count does not cover is none.
    const std::string_view message = text.substr(header.length, header.messageLength);
    header.kind = findPriority(message);
    if (header.kind == Kind::kIncomplete && message.size() == header.messageLength) {
        return {};
    }
    return header;
}

FrameHeader::Kind findPriority(std::string_view text) {
    constexpr std::size_t kMostDigits = 3;
    const Kind mark = findMark(text);
    if (mark == Kind::kIncomplete) {
        return mark;
    }
    std::size_t at = mark == Kind::kComplete ? kByteOrderMark.size() : 0;
    if (at < text.size() && text[at] != '<') {
        return Kind::kAbsent;
    }
    const std::size_t digits = ++at;
    while (at < text.size() && at < digits + kMostDigits && isDigit(text[at])) {
        ++at;
    }
    if (at >= text.size()) {
        return Kind::kIncomplete;
    }
    return at > digits && text[at] == '>' ? Kind::kComplete : Kind::kAbsent;
}

HeadersBefore headersBefore(std::string_view text, std::size_t from, std::size_t at) {
    HeadersBefore found;
    std::string_view before = text.substr(0, at);
    if (before.ends_with(kByteOrderMark)) {
        before.remove_suffix(kByteOrderMark.size());
    }
    found.messageBegin = before.size();
    if (!before.ends_with(' ')) {
        return found;
    }
    before.remove_suffix(1);
    const std::size_t least = priorityLength(text.substr(found.messageBegin));
    const std::size_t end = before.size();
    std::size_t begin = end;
    while (begin > from && end - begin < kMostCountDigits && isDigit(before[begin - 1])) {
        --begin;
    }
    for (std::size_t i = begin; i < end; ++i) {
        const std::size_t length = readNumber<std::size_t>(before.substr(i)).value_or(0);
        if (before[i] != '0' && length >= least && length <= FrameHeader::kMostCounted) {
            found.places[found.count++] = {i, length};
        }
    }
    return found;
}

HeadersBefore firstHeaderWithin(std::string_view text, std::size_t from) {
    for (std::size_t at = text.find('<', from + 1); at != std::string_view::npos;
         at = text.find('<', at + 1)) {
        if (text[at - 1] != ' ' && text[at - 1] != kByteOrderMark.back()) {
            continue;
        }
        if (findPriority(text.substr(at)) == Kind::kComplete) {
            const HeadersBefore found = headersBefore(text, 0, at);
            if (found.count > 0) {
                return found;
            }
        }
    }
    return {};
}

bool leadsOn(std::string_view text, std::size_t length, int times) {
    const HeadersBefore next = firstHeaderWithin(text);
    for (std::size_t i = 0; i < next.count; ++i) {
        if (measures(text.substr(0, next.places[i].at), length)) {
            return times == 1 ||
                   leadsOn(text.substr(next.messageBegin), next.places[i].messageLength, times - 1);
        }
    }
    return false;
}

}  // namespace quorbel
