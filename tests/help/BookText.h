#pragma once

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QStringList>

/// A file of the resources; empty where there is none.
inline QString contents(const QString &place) {
    QFile file(place);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// What the first group of an expression finds, in the order of the text.
inline QStringList found(const QString &text, const QString &expression) {
    const QRegularExpression pattern(expression, QRegularExpression::DotMatchesEverythingOption);
    QStringList result;
    for (auto match = pattern.globalMatch(text); match.hasNext();) {
        result += match.next().captured(1);
    }
    return result;
}

/// The files of the book's chapters in a language; in English, where none is named.
inline QStringList chaptersIn(const QString &language = {}) {
    return QDir(QStringLiteral(":/help/") + language).entryList({QStringLiteral("*.html")});
}

/// The languages that the book is translated into.
inline QStringList bookLanguages() {
    QStringList result = QDir(QStringLiteral(":/help")).entryList(QDir::Dirs);
    result.removeIf([](const QString &name) { return chaptersIn(name).isEmpty(); });
    return result;
}
