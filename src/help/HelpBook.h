#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>

#include <vector>

namespace quorbel {

/// A chapter of the help book: one HTML file in the program's resources.
struct HelpChapter {
    QUrl url;
    QString title;  ///< its first heading
    QString text;   ///< without markup
};

/// The whole book, in reading order. A chapter that is missing has no title and no text.
std::vector<HelpChapter> loadHelpBook();

/// What is between the blanks of a search text.
QStringList searchWords(const QString &search);

/// Whether the chapter contains every one of the words, in any case. No words are in every chapter.
bool containsAll(const HelpChapter &chapter, const QStringList &words);

}  // namespace quorbel
