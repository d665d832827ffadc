#include "service/mail/MailText.h"

#include <cstdlib>

namespace quorbel::testing {

namespace {

constexpr std::string_view kLineEnd = "\r\n";

std::string fromBase64(std::string_view text) {
    constexpr std::string_view kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    unsigned held = 0;
    unsigned bits = 0;
    for (const char c : text) {
        const std::size_t digit = kDigits.find(c);
        if (digit == std::string_view::npos) {
            continue;
        }
        held = (held << 6U | static_cast<unsigned>(digit)) & 0xFFFFFFU;
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes += static_cast<char>(held >> bits & 0xFFU);
        }
    }
    return bytes;
}

std::string fromQuotedPrintable(std::string_view text) {
    std::string bytes;
    while (!text.empty()) {
        if (text.starts_with("=\r\n")) {
            text.remove_prefix(3);
        } else if (text.front() == '=') {
            bytes +=
                static_cast<char>(std::strtol(std::string(text.substr(1, 2)).c_str(), nullptr, 16));
            text.remove_prefix(3);
        } else {
            bytes += text.front();
            text.remove_prefix(1);
        }
    }
    return bytes;
}

/// Blanks between two encoded words are none.
std::string withoutEncodedWords(std::string text) {
    constexpr std::string_view kBegin = "=?UTF-8?B?";
    for (std::size_t at = text.find(kBegin); at != std::string::npos; at = text.find(kBegin)) {
        const std::size_t end = text.find("?=", at + kBegin.size());
        const std::string word =
            fromBase64(std::string_view(text).substr(at + kBegin.size(), end - at - kBegin.size()));
        const bool joins = text.substr(end + 2).starts_with(" =?");
        text.replace(at, end + 2 + (joins ? 1 : 0) - at, word);
    }
    return text;
}

}  // namespace

ReadMail readMail(std::string_view text) {
    ReadMail mail;
    std::string name;
    for (;;) {
        const std::size_t end = text.find(kLineEnd);
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 2);
        if (line.empty()) {
            break;
        }
        if (line.front() == ' ') {
            mail.headers[name] += line;
            continue;
        }
        name = line.substr(0, line.find(':'));
        mail.headers[name] = line.substr(std::min(name.size() + 2, line.size()));
    }
    for (auto &[key, value] : mail.headers) {
        value = withoutEncodedWords(std::move(value));
    }
    const bool isBase64 = mail.headers["Content-Transfer-Encoding"] == "base64";
    mail.body = isBase64 ? fromBase64(text) : fromQuotedPrintable(text);
    return mail;
}

}  // namespace quorbel::testing
