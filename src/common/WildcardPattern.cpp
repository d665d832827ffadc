#include "common/WildcardPattern.h"

#include "platform/Utf8.h"

#include <unicode/uchar.h>

#include <algorithm>

namespace quorbel {

namespace {

constexpr std::size_t kNoMatch = std::string_view::npos;

char smallLetter(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

std::size_t characterLength(std::string_view text) {
    return std::max<std::size_t>(firstUtf8Character(text).length, 1);
}

bool continuesCharacter(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80;
}

}  // namespace

void foldCase(std::string_view text, std::string &folded) {
    folded.clear();
    while (!text.empty()) {
        const std::size_t ascii = asciiPrefixLength(text);
        const std::size_t before = folded.size();
        folded.resize(before + ascii);
        std::ranges::transform(text.substr(0, ascii),
                               folded.begin() + static_cast<std::ptrdiff_t>(before), smallLetter);
        text.remove_prefix(ascii);
        if (text.empty()) {
            return;
        }
        const Utf8Character character = firstUtf8Character(text);
        if (character.length == 0) {
            folded += text.front();
            text.remove_prefix(1);
        } else {
            const UChar32 same =
                u_foldCase(static_cast<UChar32>(character.code), U_FOLD_CASE_DEFAULT);
            appendUtf8(folded, static_cast<char32_t>(same));
            text.remove_prefix(character.length);
        }
    }
}

WildcardPattern::WildcardPattern(std::string_view pattern) {
    std::string folded;
    foldCase(pattern, folded);
    std::string_view rest = folded;
    for (;;) {
        const std::size_t star = rest.find('*');
        const std::string_view part = rest.substr(0, star);
        m_parts.push_back({std::string(part), part.find('?') == std::string_view::npos});
        m_bare = m_bare && part.empty();
        if (star == std::string_view::npos) {
            return;
        }
        rest.remove_prefix(star + 1);
    }
}

bool WildcardPattern::matches(std::string_view folded) const {
    const std::size_t first = lengthAt(m_parts.front(), folded);
    if (first == kNoMatch) {
        return false;
    }
    folded.remove_prefix(first);
    if (m_parts.size() == 1) {
        return folded.empty();
    }
    for (std::size_t i = 1; i + 1 < m_parts.size(); ++i) {
        if (!skipPast(m_parts[i], folded)) {
            return false;
        }
    }
    return matchesEnd(m_parts.back(), folded);
}

/// How much of the text's begin the part takes.
std::size_t WildcardPattern::lengthAt(const Part &part, std::string_view text) {
    if (part.literal) {
        return text.starts_with(part.text) ? part.text.size() : kNoMatch;
    }
    std::size_t at = 0;
    for (const char c : part.text) {
        if (at >= text.size() || (c != '?' && text[at] != c)) {
            return kNoMatch;
        }
        at += c == '?' ? characterLength(text.substr(at)) : 1;
    }
    return at;
}

bool WildcardPattern::matchesEnd(const Part &part, std::string_view text) {
    if (part.literal) {
        return text.ends_with(part.text);
    }
    // Where it has to begin follows from how many characters it takes.
    const auto isBegin = [](char c) { return !continuesCharacter(c); };
    auto missing = std::ranges::count_if(part.text, isBegin);
    std::size_t begin = text.size();
    while (missing > 0 && begin > 0) {
        missing -= isBegin(text[--begin]) ? 1 : 0;
    }
    return missing == 0 && lengthAt(part, text.substr(begin)) == text.size() - begin;
}

/// Takes the first place where the part stands, and everything before it, off the text.
bool WildcardPattern::skipPast(const Part &part, std::string_view &text) {
    if (part.literal) {
        const std::size_t at = text.find(part.text);
        text.remove_prefix(at == kNoMatch ? 0 : at + part.text.size());
        return at != kNoMatch;
    }
    while (!text.empty()) {
        const std::size_t length = lengthAt(part, text);
        if (length != kNoMatch) {
            text.remove_prefix(length);
            return true;
        }
        text.remove_prefix(characterLength(text));
    }
    return false;
}

}  // namespace quorbel
