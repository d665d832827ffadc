#include "service/message/MessageParser.h"

#include "platform/Number.h"
#include "service/message/Timestamp.h"

#include <algorithm>
#include <array>

namespace quorbel {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kNil = "-";
constexpr std::string_view kSpace = " ";

bool removePrefix(std::string_view &text, std::string_view prefix) {
    if (!text.starts_with(prefix)) {
        return false;
    }
    text.remove_prefix(prefix.size());
    return true;
}

std::string_view withoutLineEnd(std::string_view message) {
    const auto isEnd = [](char c) { return c == '\r' || c == '\n' || c == '\0'; };
    while (!message.empty() && isEnd(message.back())) {
        message.remove_suffix(1);
    }
    return message;
}

/// Takes "<191>" off the front; leaves the text alone when there is no usable priority.
std::optional<Priority> takePriority(std::string_view &text) {
    constexpr std::size_t kMostDigits = 3;
    std::size_t end = 1;
    unsigned value = 0;
    for (; end < text.size() && end <= kMostDigits && isDigit(text[end]); ++end) {
        value = value * 10 + static_cast<unsigned>(text[end] - '0');
    }
    const bool isNumber = text.starts_with('<') && end > 1 && (end == 2 || text[1] != '0');
    if (!isNumber || end >= text.size() || text[end] != '>') {
        return std::nullopt;
    }
    const auto priority = Priority::fromValue(value);
    if (priority) {
        text.remove_prefix(end + 1);
    }
    return priority;
}

/// The length of a time stamp that stands as a word of its own, and of the space behind it.
std::size_t timestampWord(std::string_view text) {
    std::size_t length = legacyTimestampLength(text);
    if (length == 0) {
        length = isoTimestampLength(text);
    }
    if (length == text.size()) {
        return length;
    }
    return length != 0 && text[length] == ' ' ? length + 1 : 0;
}

bool looksLikeHostName(std::string_view word) {
    if (word == kNil) {
        return true;
    }
    const auto isLetterOrDigit = [](char c) {
        return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    };
    const auto isPart = [&](char c) {
        return isLetterOrDigit(c) || c == '.' || c == '-' || c == '_' || c == ':' || c == '%';
    };
    return !word.empty() && (isLetterOrDigit(word.front()) || word.starts_with("::")) &&
           !word.ends_with(':') && std::ranges::all_of(word, isPart);
}

/// Words that daemons write where a host name would stand.
bool hasNoHostName(std::string_view rest) {
    constexpr std::string_view kBeginnings[] = {"Message forwarded from ", "Forwarded from ",
                                                "last message repeated ", "message repeated "};
    return std::ranges::any_of(kBeginnings, [rest](std::string_view words) {
        return rest.starts_with(words.front()) && rest.starts_with(words);
    });
}

/// What a word calls the host; nothing for nil.
std::string_view named(std::string_view word) {
    return word == kNil ? std::string_view() : word;
}

/// Of RFC 3164.
ParsedMessage parse3164(Priority priority, std::string_view rest) {
    std::string_view hostName;
    const std::size_t timestamp = timestampWord(rest);
    if (timestamp == 0) {
        return {priority, rest};
    }
    rest.remove_prefix(timestamp);
    // Some senders pad here; an indented text without a host name cannot be told from that.
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
    const std::size_t space = rest.find(' ');
    if (space != std::string_view::npos && space + 1 < rest.size() &&
        looksLikeHostName(rest.substr(0, space)) && !hasNoHostName(rest)) {
        hostName = named(rest.substr(0, space));
        rest.remove_prefix(space + 1);
    }
    removePrefix(rest, kByteOrderMark);
    return {priority, rest, true, hostName};
}

/// The length of one element of structured data, RFC 5424, 6.3; 0 when it has no end.
std::size_t elementLength(std::string_view text) {
    bool quoted = false;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (quoted && text[i] == '\\') {
            ++i;
        } else if (text[i] == '"') {
            quoted = !quoted;
        } else if (text[i] == ']' && !quoted) {
            return i + 1;
        }
    }
    return 0;
}

/// RFC 5424, 7.1: how good the sender's clock is, which says nothing of a time that we take.
bool isTimeQuality(std::string_view element) {
    return element.starts_with("[timeQuality ") || element == "[timeQuality]";
}

/// Takes the structured data and the space behind it; empty for nil. Nothing, and the text left
/// alone, when it is broken.
std::optional<std::string> takeStructuredData(std::string_view &text) {
    std::string data;
    std::size_t length = text.starts_with(kNil) ? kNil.size() : 0;
    while (length < text.size() && text[length] == '[') {
        const std::string_view element = text.substr(length, elementLength(text.substr(length)));
        if (element.empty()) {
            return std::nullopt;
        }
        length += element.size();
        if (!isTimeQuality(element)) {
            data += element;
        }
    }
    if (length == 0 || (length < text.size() && text[length] != ' ')) {
        return std::nullopt;
    }
    text.remove_prefix(std::min(length + 1, text.size()));
    return data;
}

/// Takes a word and the space behind it; empty for nil. Nothing when no space follows.
std::optional<std::string_view> takeWord(std::string_view &text) {
    const std::size_t end = text.find(' ');
    if (end == std::string_view::npos || end == 0) {
        return std::nullopt;
    }
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(end + 1);
    return named(word);
}

/// "application[process]:", either of which may be empty.
std::string tagOf(std::string_view application, std::string_view process) {
    std::string tag(application);
    if (!process.empty()) {
        tag += '[';
        tag += process;
        tag += ']';
    }
    return tag += ':';
}

/// Takes "1 TIMESTAMP ", by which a message is known to follow RFC 5424.
bool takeVersionAndTimestamp(std::string_view &text) {
    std::string_view rest = text;
    if (!removePrefix(rest, "1 ")) {
        return false;
    }
    const std::size_t timestamp = rest.starts_with("- ") ? 1 : isoTimestampLength(rest);
    rest.remove_prefix(timestamp);
    if (timestamp == 0 || !removePrefix(rest, kSpace)) {
        return false;
    }
    text = rest;
    return true;
}

}  // namespace

std::optional<ParsedMessage> MessageParser::parse(std::string_view message) {
    message = withoutLineEnd(message);
    removePrefix(message, kByteOrderMark);
    if (message.empty()) {
        return std::nullopt;
    }
    const auto priority = takePriority(message);
    if (!priority) {
        return ParsedMessage{kAssumedPriority, message, false};
    }
    removePrefix(message, kByteOrderMark);
    if (takeVersionAndTimestamp(message)) {
        return parse5424(*priority, message);
    }
    return parse3164(*priority, message);
}

ParsedMessage MessageParser::parse5424(Priority priority, std::string_view rest) {
    const std::string_view afterTimestamp = rest;
    const auto hostName = takeWord(rest);
    const auto application = hostName ? takeWord(rest) : std::nullopt;
    const auto process = application ? takeWord(rest) : std::nullopt;
    const auto messageId = process ? takeWord(rest) : std::nullopt;
    if (!messageId) {
        return {priority, afterTimestamp, false};
    }
    const auto data = takeStructuredData(rest);
    removePrefix(rest, kByteOrderMark);
    m_text = *messageId;
    const auto add = [this](std::string_view part) {
        m_text += m_text.empty() || part.empty() ? "" : " ";
        m_text += part;
    };
    add(data.value_or(""));
    if (!application->empty() || !process->empty()) {
        add(tagOf(*application, *process));
    }
    if (m_text.empty()) {
        return {priority, rest, data.has_value(), *hostName};
    }
    add(rest);
    return {priority, m_text, data.has_value(), *hostName};
}

}  // namespace quorbel
