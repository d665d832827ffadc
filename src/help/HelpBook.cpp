#include "help/HelpBook.h"

#include "platform/gui/Language.h"

#include <QFile>
#include <QRegularExpression>
#include <QTextBlock>
#include <QTextDocument>

#include <algorithm>
#include <array>

namespace quorbel {

namespace {

constexpr std::array kFiles{"getting-started", "pages",   "finding", "questions",      "ratings",
                            "reports",         "hosts",   "devices", "settings",       "actions",
                            "export",          "service", "keeping", "nothing-arrives"};

/// Its place in the resources in the language in use; in English where it is not translated.
QString placeOf(const QString &name) {
    const QString translated = QStringLiteral("/help/%1/%2.html").arg(languageInUse(), name);
    return QFile::exists(u':' + translated) ? translated
                                            : QStringLiteral("/help/%1.html").arg(name);
}

HelpChapter loadChapter(const QString &name) {
    HelpChapter chapter;
    const QString place = placeOf(name);
    chapter.url = QUrl(QStringLiteral("qrc:") + place);
    QFile file(u':' + place);
    if (!file.open(QIODevice::ReadOnly)) {
        return chapter;
    }
    QTextDocument document;
    document.setHtml(QString::fromUtf8(file.readAll()));
    chapter.title = document.firstBlock().text().trimmed();
    chapter.text = document.toPlainText();
    return chapter;
}

}  // namespace

QUrl chapterUrl(const QUrl &link) {
    const QString file = link.fileName();
    if (link.scheme() != u"qrc" || !file.endsWith(QStringLiteral(".html"))) {
        return link;
    }
    QUrl url = link;
    url.setPath(placeOf(file.chopped(5)));
    return url;
}

std::vector<HelpChapter> loadHelpBook() {
    std::vector<HelpChapter> book;
    book.reserve(kFiles.size());
    for (const char *name : kFiles) {
        book.push_back(loadChapter(QString::fromLatin1(name)));
    }
    return book;
}

QStringList searchWords(const QString &search) {
    static const QRegularExpression blanks(QStringLiteral("\\s+"));
    return search.split(blanks, Qt::SkipEmptyParts);
}

bool containsAll(const HelpChapter &chapter, const QStringList &words) {
    return std::all_of(words.begin(), words.end(), [&chapter](const QString &word) {
        return chapter.text.contains(word, Qt::CaseInsensitive);
    });
}

}  // namespace quorbel
