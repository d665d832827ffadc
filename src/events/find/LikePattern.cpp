#include "events/find/LikePattern.h"

#include <QRegularExpression>

#include <algorithm>

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

/// What is shown in the place of bytes that are no text stands for a few of any.
void appendQuoted(QStringView text, std::string &pattern) {
    QString quoted;
    for (const QChar character : text) {
        if (character == QChar::ReplacementCharacter) {
            quoted += QStringLiteral("\\C{1,3}");
            continue;
        }
        if (QStringView(u"\\^$.|?*+()[]{}").contains(character)) {
            quoted += u'\\';
        }
        quoted += character;
    }
    pattern += quoted.toStdString();
}

/// As much of a text as patterns are made of.
QString beginningOf(const QString &text) {
    qsizetype end = std::min(text.size(), kLongest);
    if (end < text.size() && end > 0 && text[end - 1].isHighSurrogate()) {
        --end;
    }
    return text.left(end);
}

/// Hands on what stays the same and what changes, in their order.
template <typename OnSame, typename OnChanging>
void forEachPart(const QString &text, const OnSame &onSame, const OnChanging &onChanging) {
    qsizetype done = 0;
    auto parts = changingParts().globalMatch(text);
    while (parts.hasNext()) {
        const QRegularExpressionMatch part = parts.next();
        onSame(QStringView(text).mid(done, part.capturedStart() - done));
        onChanging(part);
        done = part.capturedEnd();
    }
    onSame(QStringView(text).mid(done));
}

}  // namespace

std::string likePattern(const QString &message) {
    const QString text = beginningOf(message);
    std::string pattern = "^";
    forEachPart(
        text, [&](QStringView same) { appendQuoted(same, pattern); },
        [&](const QRegularExpressionMatch &changing) { pattern += wildcardFor(changing); });
    return text.size() == message.size() ? pattern + '$' : pattern;
}

QString likeWildcards(const QString &message) {
    const QString text = beginningOf(message);
    QString pattern;
    const auto addStar = [&pattern] { pattern += pattern.endsWith(u'*') ? u"" : u"*"; };
    forEachPart(
        text, [&](QStringView same) { pattern += same; },
        [&](const QRegularExpressionMatch &) { addStar(); });
    if (text.size() < message.size() || text.isEmpty()) {
        addStar();
    }
    return pattern;
}

}  // namespace quorbel
