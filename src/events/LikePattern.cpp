#include "events/LikePattern.h"

#include <QRegularExpression>

namespace quorbel {

namespace {

constexpr qsizetype kLongest = 200;

/// What may be another one in a message of the same kind: an address (MAC, IPv6, IPv4), a number in
/// hexadecimal digits, a number.
const QRegularExpression &changingParts() {
    static const QRegularExpression parts(
        QStringLiteral("(?<mac>\\b(?:[0-9A-Fa-f]{2}[:-]){5}[0-9A-Fa-f]{2}\\b)"
                       "|(?<v6>(?<![\\w:])(?=[0-9A-Fa-f:]*:[0-9A-Fa-f]*:)(?=[:A-Fa-f]*[0-9])"
                       "[0-9A-Fa-f:]{3,39}(?![\\w:]))"
                       "|(?<v4>\\b\\d{1,3}(?:\\.\\d{1,3}){3}\\b)"
                       "|(?<hex>\\b0x[0-9A-Fa-f]+|\\b(?=[0-9A-Fa-f]*\\d)[0-9A-Fa-f]{6,}\\b)"
                       "|(?<number>\\d+)"));
    return parts;
}

std::string wildcardFor(const QRegularExpressionMatch &part) {
    if (part.hasCaptured(QStringLiteral("mac"))) {
        return "[0-9A-Fa-f:-]+";
    }
    if (part.hasCaptured(QStringLiteral("v6")) || part.hasCaptured(QStringLiteral("v4"))) {
        return "[0-9A-Fa-f.:]+";
    }
    return part.hasCaptured(QStringLiteral("hex")) ? "(?:0x)?[0-9A-Fa-f]+" : "\\d+";
}

void appendQuoted(QStringView text, std::string &pattern) {
    for (const char character : text.toString().toStdString()) {
        if (QByteArrayView("\\^$.|?*+()[]{}").contains(character)) {
            pattern += '\\';
        }
        pattern += character;
    }
}

}  // namespace

std::string likePattern(const QString &message) {
    const qsizetype unknown = message.indexOf(QChar::ReplacementCharacter);
    qsizetype end = std::min(unknown < 0 ? message.size() : unknown, kLongest);
    if (end < message.size() && end > 0 && message[end - 1].isHighSurrogate()) {
        --end;
    }
    const QString text = message.left(end);
    std::string pattern = "^";
    qsizetype done = 0;
    auto parts = changingParts().globalMatch(text);
    while (parts.hasNext()) {
        const QRegularExpressionMatch part = parts.next();
        appendQuoted(QStringView(text).mid(done, part.capturedStart() - done), pattern);
        pattern += wildcardFor(part);
        done = part.capturedEnd();
    }
    appendQuoted(QStringView(text).mid(done), pattern);
    return end == message.size() ? pattern + '$' : pattern;
}

}  // namespace quorbel
