#include "help/HelpBook.h"

#include <QFile>
#include <QRegularExpression>
#include <QTextBlock>
#include <QTextDocument>

#include <algorithm>
#include <array>

namespace quorbel {

namespace {

constexpr std::array kFiles{"getting-started", "pages",   "finding",        "questions", "ratings",
                            "reports",         "devices", "settings",       "actions",   "export",
                            "service",         "keeping", "nothing-arrives"};

HelpChapter loadChapter(const QString &name) {
    HelpChapter chapter;
    chapter.url = QUrl(QStringLiteral("qrc:/help/%1.html").arg(name));
    QFile file(QStringLiteral(":/help/%1.html").arg(name));
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
