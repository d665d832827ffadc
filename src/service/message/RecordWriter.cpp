#include "service/message/RecordWriter.h"

#include "common/LogReader.h"
#include "platform/Utf8.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace quorbel {

namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kEmptyField = "-";
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

bool isPlain(char c) {
    return c >= ' ' && c <= '~';
}

/// How many bytes at the start of a text are plain, or fewer by some: looks at eight at a time.
std::size_t plainBlocks(std::string_view text) {
    constexpr std::size_t kBlock = sizeof(std::uint64_t);
    constexpr std::uint64_t kOnes = 0x0101010101010101;
    constexpr std::uint64_t kTops = kOnes * 0x80;
    std::size_t at = 0;
    for (; at + kBlock <= text.size(); at += kBlock) {
        std::uint64_t block = 0;
        std::memcpy(&block, text.data() + at, kBlock);
        // Of the first byte that is not plain, one of these has the top bit: above 0x7F, of 0x7F
        // one more, of what is below a blank the difference.
        if (((block | (block + kOnes) | (block - kOnes * ' ')) & kTops) != 0) {
            break;
        }
    }
    return at;
}

std::size_t plainLength(std::string_view text) {
    std::size_t length = plainBlocks(text);
    while (length < text.size() && isPlain(text[length])) {
        ++length;
    }
    return length;
}

bool isControl(char32_t code) {
    return code < 0x20 || (code >= 0x7F && code <= 0x9F);
}

bool isNoncharacter(char32_t code) {
    return (code >= 0xFDD0 && code <= 0xFDEF) || (code & 0xFFFE) == 0xFFFE;
}

/// What one character of a message is written as.
struct WrittenCharacter {
    std::size_t taken = 1;
    std::size_t length = 0;
    std::array<char, 4> bytes{};

    WrittenCharacter(std::size_t length_, std::string_view text)
        : taken(length_), length(text.size()) {
        std::ranges::copy(text, bytes.begin());
    }
    [[nodiscard]] std::string_view text() const { return {bytes.data(), length}; }
};

WrittenCharacter escaped(std::size_t taken, char32_t code) {
    const auto digit = [code](unsigned shift) {
        return static_cast<char>('0' + (code >> shift & 7U));
    };
    const std::array<char, 4> text{'#', digit(6), digit(3), digit(0)};
    return {taken, {text.data(), text.size()}};
}

/// The first character of `text`, which is not empty, as it is written.
WrittenCharacter writtenCharacter(std::string_view text) {
    const Utf8Character character = firstUtf8Character(text);
    if (character.length == 0) {
        return {1, kReplacement};
    }
    if (isControl(character.code)) {
        return escaped(character.length, character.code);
    }
    if (isNoncharacter(character.code)) {
        return {character.length, kReplacement};
    }
    return {character.length, text.substr(0, character.length)};
}

/// Moves as much of `message` to `lines` as fits into `room` bytes.
void appendPart(std::string &lines, std::string_view &message, std::size_t room) {
    while (!message.empty()) {
        const std::string_view fitting = message.substr(0, room);
        const std::size_t plain = plainLength(fitting);
        lines += fitting.substr(0, plain);
        message.remove_prefix(plain);
        room -= plain;
        if (message.empty() || room == 0) {
            return;
        }
        const WrittenCharacter written = writtenCharacter(message);
        if (written.length > room) {
            return;
        }
        lines += written.text();
        message.remove_prefix(written.taken);
        room -= written.length;
    }
}

}  // namespace

void appendHost(std::string_view host, std::string &field) {
    for (const char c : (host.empty() ? kEmptyField : host).substr(0, kLongestHost)) {
        field += isPlain(c) && c != ' ' && c != ',' ? c : '_';
    }
}

RecordWriter::Written RecordWriter::append(const ReceivedEvent &event, std::string &lines) {
    makePrefix(event);
    const std::size_t room = kLogPieceSize - kLineEnd.size() - m_prefix.size();
    std::string_view rest = event.message.empty() ? kEmptyField : event.message;
    std::size_t count = 0;
    while (!rest.empty()) {
        lines += m_prefix;
        appendPart(lines, rest, room);
        lines += kLineEnd;
        ++count;
    }
    return {count, m_prefix.size()};
}

/// Many events have the same one: they come in turns of one second, and senders come in bursts.
void RecordWriter::makePrefix(const ReceivedEvent &event) {
    if (!m_prefix.empty() && event.seconds == m_seconds && event.priority == m_priority &&
        event.host == m_host) {
        return;
    }
    m_seconds = event.seconds;
    m_priority = event.priority;
    m_host = event.host;
    m_prefix = std::to_string(event.seconds);
    m_prefix += ',';
    m_prefix += event.priority.text();
    m_prefix += ',';
    appendHost(event.host, m_prefix);
    m_prefix += ',';
}

}  // namespace quorbel
