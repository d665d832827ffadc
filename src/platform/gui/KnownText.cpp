#include "platform/gui/KnownText.h"

#include "platform/gui/QtText.h"

#include <QCoreApplication>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <iterator>
#include <vector>

namespace quorbel {

namespace {

/// Severities, ratings and other names. Here for the tools that collect texts.
[[maybe_unused]] constexpr std::array kNames{
    QT_TRANSLATE_NOOP("KnownText", "Emergency"),   QT_TRANSLATE_NOOP("KnownText", "Alert"),
    QT_TRANSLATE_NOOP("KnownText", "Critical"),    QT_TRANSLATE_NOOP("KnownText", "Error"),
    QT_TRANSLATE_NOOP("KnownText", "Warning"),     QT_TRANSLATE_NOOP("KnownText", "Notice"),
    QT_TRANSLATE_NOOP("KnownText", "Information"), QT_TRANSLATE_NOOP("KnownText", "Informational"),
    QT_TRANSLATE_NOOP("KnownText", "Debug"),       QT_TRANSLATE_NOOP("KnownText", "Unknown"),
    QT_TRANSLATE_NOOP("KnownText", "Normal"),      QT_TRANSLATE_NOOP("KnownText", "Moderate"),
    QT_TRANSLATE_NOOP("KnownText", "Severe"),      QT_TRANSLATE_NOOP("KnownText", "Unrated"),
    QT_TRANSLATE_NOOP("KnownText", "Any"),         QT_TRANSLATE_NOOP("KnownText", "None"),
};

/// What is wrong, where a place stands for any text. What a text ends with behind a colon or a
/// quotation mark may be known itself, and several stand side by side behind semicolons.
constexpr std::array kProblems{
    QT_TRANSLATE_NOOP("KnownText", "%1 of %2 events could not be put back: %3"),
    QT_TRANSLATE_NOOP("KnownText", "%1 cannot stand in a log file"),
    QT_TRANSLATE_NOOP("KnownText", "%1 could not be rewritten: %2"),
    QT_TRANSLATE_NOOP("KnownText", "the service is stopping"),
    QT_TRANSLATE_NOOP("KnownText", "they are of too many days"),
    QT_TRANSLATE_NOOP("KnownText", "The events to put back are not an array"),
    QT_TRANSLATE_NOOP("KnownText", "The command cannot be read: %1"),
    QT_TRANSLATE_NOOP("KnownText", "There is no such command"),
    QT_TRANSLATE_NOOP("KnownText", "No mail server is set"),
    QT_TRANSLATE_NOOP("KnownText", "There are no recipients"),
    QT_TRANSLATE_NOOP("KnownText", "The sender %1 is not a valid e-mail address"),
    QT_TRANSLATE_NOOP("KnownText", "%1 is not a valid e-mail address"),
    QT_TRANSLATE_NOOP("KnownText",
                      "The mail server's connection security %1 is not one of "
                      "\"None\", \"STARTTLS\" or \"SSL/TLS\""),
    QT_TRANSLATE_NOOP("KnownText", "No connection security is chosen for the mail server"),
    QT_TRANSLATE_NOOP("KnownText", "the password is sent without encryption only with \"None\""),
    QT_TRANSLATE_NOOP("KnownText", "The name of the mail server is not valid: %1"),
    QT_TRANSLATE_NOOP("KnownText", "The mail server %1 is not known"),
    QT_TRANSLATE_NOOP("KnownText", "The mail server %1 cannot be reached on port %2"),
    QT_TRANSLATE_NOOP("KnownText", "The mail server %1 did not answer in time"),
    QT_TRANSLATE_NOOP("KnownText", "The mail server %1 refused the user name or the password: %2"),
    QT_TRANSLATE_NOOP("KnownText", "The mail server %1 refused the user name or the password"),
    QT_TRANSLATE_NOOP("KnownText", "The mail server %1 does not offer STARTTLS"),
    QT_TRANSLATE_NOOP("KnownText", "The certificate of the mail server %1 is not trusted"),
    QT_TRANSLATE_NOOP("KnownText", "The mail server %1 refused all recipients: %2"),
    QT_TRANSLATE_NOOP("KnownText", "The mail server %1 refused all recipients"),
    QT_TRANSLATE_NOOP("KnownText", "The mail server %1 refused the e-mail: %2"),
    QT_TRANSLATE_NOOP("KnownText", "The mail server %1 refused the e-mail"),
    QT_TRANSLATE_NOOP("KnownText", "The mail server refused %1"),
    QT_TRANSLATE_NOOP("KnownText", "The e-mail could not be sent: %1"),
    QT_TRANSLATE_NOOP("KnownText", "The service is stopping"),
    QT_TRANSLATE_NOOP("KnownText", "Too many commands are waiting"),
    QT_TRANSLATE_NOOP("KnownText", "Too many e-mails are waiting"),
    QT_TRANSLATE_NOOP("KnownText", "the command ended with status %1"),
    QT_TRANSLATE_NOOP("KnownText", "the command was killed by signal %1"),
    QT_TRANSLATE_NOOP("KnownText", "the command took too long and was stopped"),
    QT_TRANSLATE_NOOP("KnownText", "the command could not be stopped"),
    QT_TRANSLATE_NOOP("KnownText", "%1 cannot be run: %2"),
    QT_TRANSLATE_NOOP("KnownText", "%1 is not the full path of a file"),
    QT_TRANSLATE_NOOP("KnownText", "There is no filter \"%1\" any more"),
    QT_TRANSLATE_NOOP("KnownText", "There is a filter \"%1\" already"),
    QT_TRANSLATE_NOOP("KnownText", "The filters cannot be kept: %1"),
    QT_TRANSLATE_NOOP("KnownText", "Another window is changing its filters. Try again"),
    QT_TRANSLATE_NOOP("KnownText", "%1 is too large for a file of filters"),
    QT_TRANSLATE_NOOP("KnownText", "%1, line %2: %3"),
    QT_TRANSLATE_NOOP("KnownText", "%1 could not be read"),
    QT_TRANSLATE_NOOP("KnownText", "%1 could not be written: %2"),
    QT_TRANSLATE_NOOP("KnownText", "%1 cannot be used: %2"),
    QT_TRANSLATE_NOOP("KnownText", "the file is too large"),
    QT_TRANSLATE_NOOP("KnownText", "this is no file of filters"),
    QT_TRANSLATE_NOOP("KnownText", "the file was written by a newer version"),
    QT_TRANSLATE_NOOP("KnownText", "there are bytes that are no UTF-8"),
    QT_TRANSLATE_NOOP("KnownText", "the line is too long"),
    QT_TRANSLATE_NOOP("KnownText", "the name is too long"),
    QT_TRANSLATE_NOOP("KnownText", "the name has characters that are not seen"),
    QT_TRANSLATE_NOOP("KnownText", "there are two filters \"%1\""),
    QT_TRANSLATE_NOOP("KnownText", "there are too many filters"),
    QT_TRANSLATE_NOOP("KnownText", "the value of \"%1\" cannot be read"),
    QT_TRANSLATE_NOOP("KnownText", "\"%1\" needs a value"),
    QT_TRANSLATE_NOOP("KnownText", "\"%1\" is not known"),
    QT_TRANSLATE_NOOP("KnownText", "\"%1\" stands before any filter"),
    QT_TRANSLATE_NOOP("KnownText", "\"%1\" is no regular expression: %2"),
    QT_TRANSLATE_NOOP("KnownText", "\"%1\" is no colour that there is"),
    QT_TRANSLATE_NOOP("KnownText", "\"%1\" is no rating that there is"),
    QT_TRANSLATE_NOOP("KnownText", "\"%1\" is no severity that there is"),
    QT_TRANSLATE_NOOP("KnownText", "\"%1\" is no span of time that there is"),
    QT_TRANSLATE_NOOP("KnownText", "\"%1\" is no moment like 2026-11-21T02:00:00Z"),
    QT_TRANSLATE_NOOP("KnownText", "\"%1\" names \"%2\", which is no network"),
    QT_TRANSLATE_NOOP("KnownText", "\"%1\" is one condition too many"),
    QT_TRANSLATE_NOOP("KnownText", "\"%1\" is one expression too many"),
    QT_TRANSLATE_NOOP("KnownText", "\"%1\" does not follow an expression"),
    QT_TRANSLATE_NOOP("KnownText", "\"%1\" is given twice"),
    QT_TRANSLATE_NOOP("KnownText", "expression too large"),
    QT_TRANSLATE_NOOP("KnownText", "invalid escape sequence: %1"),
    QT_TRANSLATE_NOOP("KnownText", "invalid character class: %1"),
    QT_TRANSLATE_NOOP("KnownText", "invalid character class range: %1"),
    QT_TRANSLATE_NOOP("KnownText", "missing ]: %1"),
    QT_TRANSLATE_NOOP("KnownText", "missing ): %1"),
    QT_TRANSLATE_NOOP("KnownText", "unexpected ): %1"),
    QT_TRANSLATE_NOOP("KnownText", "trailing \\: %1"),
    QT_TRANSLATE_NOOP("KnownText", "no argument for repetition operator: %1"),
    QT_TRANSLATE_NOOP("KnownText", "invalid repetition size: %1"),
    QT_TRANSLATE_NOOP("KnownText", "bad repetition operator: %1"),
    QT_TRANSLATE_NOOP("KnownText", "invalid perl operator: %1"),
    QT_TRANSLATE_NOOP("KnownText", "invalid UTF-8: %1"),
    QT_TRANSLATE_NOOP("KnownText", "invalid named capture group: %1"),
};

struct Pattern {
    const char *source;
    QRegularExpression expression;
};

Pattern patternOf(const char *source) {
    static const QRegularExpression place(QStringLiteral("\\\\%\\d"));
    QString expression = QRegularExpression::escape(QString::fromUtf8(source));
    expression.replace(place, QStringLiteral("(.*?)"));
    return {source, QRegularExpression(QRegularExpression::anchoredPattern(expression),
                                       QRegularExpression::DotMatchesEverythingOption)};
}

const std::vector<Pattern> &patterns() {
    static const std::vector<Pattern> all = [] {
        std::vector<Pattern> made;
        std::ranges::transform(kProblems, std::back_inserter(made), patternOf);
        return made;
    }();
    return all;
}

QString translated(const char *source) {
    return QCoreApplication::translate("KnownText", source);
}

QString knownOne(const QString &problem) {
    for (const Pattern &pattern : patterns()) {
        const QRegularExpressionMatch match = pattern.expression.match(problem);
        if (!match.hasMatch()) {
            continue;
        }
        QStringList parts = match.capturedTexts();
        if (QByteArrayView(pattern.source).contains(": %")) {
            parts.last() = knownProblem(parts.last());
        }
        QString text = translated(pattern.source);
        for (qsizetype i = parts.size(); --i > 0;) {
            // Not by arg(), which would look for places in what was filled in.
            text.replace(u'%' + QString::number(i), QChar(u'\x1f') + QString::number(i));
        }
        for (qsizetype i = 1; i < parts.size(); ++i) {
            text.replace(QChar(u'\x1f') + QString::number(i), parts[i]);
        }
        return text;
    }
    return problem;
}

}  // namespace

QString knownName(const QString &name) {
    return translated(name.toUtf8().constData());
}

QString knownName(std::string_view name) {
    return knownName(toQString(name));
}

QString knownProblem(const QString &problem) {
    const QString separator = QStringLiteral("; ");
    QStringList parts = problem.split(separator);
    std::ranges::transform(parts, parts.begin(), knownOne);
    return parts.join(separator);
}

}  // namespace quorbel
