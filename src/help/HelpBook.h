#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>

#include <vector>

namespace quorbel {

/// A chapter of the help book: one HTML file in the program's resources, help/NAME.html, or
/// help/LANGUAGE/NAME.html where it is translated.
struct HelpChapter {
    QUrl url;
    QString title;  ///< its first heading
    QString text;   ///< without markup
};

/// The whole book, in reading order. A chapter that is missing has no title and no text.
std::vector<HelpChapter> loadHelpBook();

/// Where a link of a chapter leads: to the chapter of that name in the language in use, or in
/// English where that is not translated, whichever of them the link stands in. Other links as they
/// are.
QUrl chapterUrl(const QUrl &link);

/// What is between the blanks of a search text.
QStringList searchWords(const QString &search);

/// Whether the chapter contains every one of the words, in any case. No words are in every chapter.
bool containsAll(const HelpChapter &chapter, const QStringList &words);

}  // namespace quorbel
