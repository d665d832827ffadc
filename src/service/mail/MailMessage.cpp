#include "service/mail/MailMessage.h"

#include "platform/Text.h"
#include "platform/Utf8.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <ctime>

namespace quorbel {

namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::size_t kLongestAddress = 254;  // RFC 5321, 4.5.3.1.3, without the angle brackets

bool isAlphanumeric(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

/// Words of allowed characters with single dots between them.
bool isDotted(std::string_view text, std::string_view allowed) {
    char last = '.';
    for (const char c : text) {
        const bool inWord = isAlphanumeric(c) || allowed.find(c) != std::string_view::npos;
        if (!inWord && (c != '.' || last == '.')) {
            return false;
        }
        last = c;
    }
    return last != '.';
}

bool isDomain(std::string_view text) {
    if (text.starts_with('[') && text.ends_with(']') && text.size() > 2) {
        text = text.substr(1, text.size() - 2);
        return std::ranges::all_of(
            text, [](char c) { return isAlphanumeric(c) || c == '.' || c == ':' || c == '-'; });
    }
    return isDotted(text, "-");
}

bool isAddress(std::string_view text) {
    const std::size_t at = text.rfind('@');
    return at != std::string_view::npos && text.size() <= kLongestAddress &&
           isDotted(text.substr(0, at), "!#$%&'*+-/=?^_`{|}~") && isDomain(text.substr(at + 1));
}

/// UTF-8 for sure; every malformed byte is replaced.
std::string asUtf8(std::string_view text) {
    constexpr char32_t kReplacement = 0xFFFD;
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const Utf8Character character = firstUtf8Character(text);
        if (character.length == 0) {
            appendUtf8(result, kReplacement);
        } else {
            result += text.substr(0, character.length);
        }
        text.remove_prefix(std::max<std::size_t>(character.length, 1));
    }
    return result;
}

/// One line without control characters: a run of them becomes a space.
std::string headerText(std::string_view text) {
    std::string result;
    bool control = false;
    for (const char c : asUtf8(text)) {
        const auto byte = static_cast<unsigned char>(c);
        const bool isControl = byte < 0x20 || byte == 0x7F;
        if (!isControl) {
            result += c;
        } else if (!control) {
            result += ' ';
        }
        control = isControl;
    }
    return std::string(trimmed(result));
}

std::string base64(std::string_view bytes) {
    constexpr std::string_view kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string result;
    result.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::string_view group = bytes.substr(at, 3);
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            bits = bits << 8U | (i < group.size() ? static_cast<unsigned char>(group[i]) : 0U);
        }
        for (std::size_t i = 0; i < 4; ++i) {
            result += i <= group.size() ? kDigits[bits >> (18 - 6 * i) & 0x3FU] : '=';
        }
    }
    return result;
}

/// Encoded words (RFC 2047), each of whole characters, on a line of its own.
std::string encodedWords(std::string_view text) {
    constexpr std::size_t kMostBytes = 39;  // a line of 76 bytes with what is around their digits
    std::string result;
    while (!text.empty()) {
        std::size_t length = 0;
        while (length < text.size()) {
            const std::size_t next = firstUtf8Character(text.substr(length)).length;
            if (length + next > kMostBytes) {
                break;
            }
            length += next;
        }
        result += result.empty() ? "=?UTF-8?B?" : "\r\n =?UTF-8?B?";
        result += base64(text.substr(0, length)) + "?=";
        text.remove_prefix(length);
    }
    return result;
}

/// A text without a structure, as a header's value.
std::string headerValue(std::string_view text) {
    constexpr std::size_t kMostPlain = 60;
    const std::string clean = headerText(text);
    const bool isPlain = clean.size() <= kMostPlain && asciiPrefixLength(clean) == clean.size() &&
                         clean.find("=?") == std::string::npos;
    return isPlain ? clean : encodedWords(clean);
}

std::string addressValue(const MailAddress &address) {
    const std::string name = headerText(address.name);
    if (name.empty()) {
        return address.address;
    }
    const bool isAtom =
        std::ranges::all_of(name, [](char c) { return isAlphanumeric(c) || c == ' ' || c == '-'; });
    return (isAtom && name.size() <= 60 ? name : encodedWords(name)) + "\r\n <" + address.address +
           '>';
}

std::string addressList(const std::vector<MailAddress> &addresses) {
    std::string result;
    for (const MailAddress &address : addresses) {
        result += result.empty() ? "" : ",\r\n ";
        result += addressValue(address);
    }
    return result;
}

std::string dateValue(std::int64_t seconds) {
    const auto time = static_cast<std::time_t>(seconds);
    std::tm local{};
    localtime_r(&time, &local);
    std::array<char, 64> text{};
    return {text.data(),
            std::strftime(text.data(), text.size(), "%a, %d %b %Y %H:%M:%S %z", &local)};
}

/// The text with every line ended by CR LF, the last one too.
std::string withLineEnds(std::string_view text) {
    std::string result;
    result.reserve(text.size() + 2);
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '\r' && text[at] != '\n') {
            result += text[at];
            continue;
        }
        result += kLineEnd;
        if (text.substr(at).starts_with(kLineEnd)) {
            ++at;
        }
    }
    if (!result.empty() && !result.ends_with(kLineEnd)) {
        result += kLineEnd;
    }
    return result;
}

/// RFC 2045, 6.7. `text` has line ends of CR LF.
std::string quotedPrintable(std::string_view text) {
    constexpr std::size_t kLongestLine = 76;
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string result;
    std::size_t column = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text.substr(at).starts_with(kLineEnd)) {
            result += kLineEnd;
            column = 0;
            ++at;
            continue;
        }
        const auto byte = static_cast<unsigned char>(text[at]);
        // A blank in front of a line end would be lost on the way, and some programs take "From"
        // for the beginning of the next mail.
        const bool endsLine = text.substr(at + 1).starts_with(kLineEnd);
        const bool isPlain = (byte > 0x20 && byte < 0x7F && byte != '=') ||
                             ((byte == ' ' || byte == '\t') && !endsLine);
        const bool plain = isPlain && !(column == 0 && text.substr(at).starts_with("From "));
        const std::size_t width = plain ? 1 : 3;
        // The last column is for the mark of a line that goes on.
        if (column + width > kLongestLine - 1) {
            result += "=\r\n";
            column = 0;
        }
        if (plain) {
            result += static_cast<char>(byte);
        } else {
            result += {'=', kDigits[byte >> 4U], kDigits[byte & 0xFU]};
        }
        column += width;
    }
    return result;
}

std::string base64Lines(std::string_view text) {
    constexpr std::size_t kBytesPerLine = 57;
    std::string result;
    for (; !text.empty(); text.remove_prefix(std::min(kBytesPerLine, text.size()))) {
        result += base64(text.substr(0, kBytesPerLine));
        result += kLineEnd;
    }
    return result;
}

/// The body with the headers that say how it is written.
std::string bodyPart(const MailMessage &message) {
    const std::string text = withLineEnds(asUtf8(message.body));
    const auto foreign = static_cast<std::size_t>(
        std::ranges::count_if(text, [](char c) { return static_cast<unsigned char>(c) >= 0x80; }));
    const bool readable = foreign <= text.size() / 6;
    std::string part = "Content-Type: text/";
    part += message.html ? "html" : "plain";
    part += "; charset=UTF-8\r\nContent-Transfer-Encoding: ";
    part += readable ? "quoted-printable\r\n\r\n" : "base64\r\n\r\n";
    return part + (readable ? quotedPrintable(text) : base64Lines(text));
}

}  // namespace

std::optional<MailAddress> readMailAddress(std::string_view text) {
    text = trimmed(text);
    MailAddress address;
    const std::size_t open = text.rfind('<');
    if (text.ends_with('>') && open != std::string_view::npos) {
        address.name = trimmed(text.substr(0, open));
        if (address.name.size() > 1 && address.name.front() == '"' && address.name.back() == '"') {
            address.name = address.name.substr(1, address.name.size() - 2);
        }
        text = text.substr(open + 1, text.size() - open - 2);
    }
    if (!isAddress(text)) {
        return std::nullopt;
    }
    address.address = text;
    return address;
}

std::string writeMail(const MailMessage &message, const MailAddress &sender,
                      const std::vector<MailAddress> &recipients, const MailStamp &stamp) {
    const std::string_view address = sender.address;
    std::string mail;
    mail += "Date: " + dateValue(stamp.seconds) + "\r\n";
    mail += "Message-ID: <" + stamp.id + std::string(address.substr(address.rfind('@'))) + ">\r\n";
    mail += "From: " + addressValue(sender) + "\r\n";
    mail += "To: " + addressList(recipients) + "\r\n";
    mail += "Subject: " + headerValue(message.subject) + "\r\n";
    // Keeps answering machines from answering.
    mail += "Auto-Submitted: auto-generated\r\n";
    mail += "MIME-Version: 1.0\r\n";
    return mail + bodyPart(message);
}

}  // namespace quorbel
