#include "BookText.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QStringList sorted(QStringList list) {
    list.sort();
    return list;
}

/// The headings, paragraphs, list items, tables, code blocks and pictures of a chapter.
QStringList partsOf(const QString &html) {
    return found(html, u"<(/?(?:h[1-6]|p|ol|ul|li|table|tr|th|td|pre|img)\\b)"_s);
}

/// What is typed or written to a file as it stands, in any language.
QStringList codeBlocksOf(const QString &html) {
    // This one is no code: it shows how the fields of a filter are filled in.
    static const QString filled = u"Host 10.0.3.7"_s;
    QStringList blocks = found(html, u"<pre>(.*?)</pre>"_s);
    blocks.removeIf([](const QString &block) { return block.startsWith(filled); });
    return blocks;
}

/// Where two lists part, with what stands there.
QByteArray difference(const QStringList &original, const QStringList &translated) {
    qsizetype at = 0;
    while (at < original.size() && at < translated.size() && original[at] == translated[at]) {
        ++at;
    }
    return u"number %1: %2 in English, %3 translated"_s.arg(at + 1)
        .arg(original.value(at, u"nothing"_s), translated.value(at, u"nothing"_s))
        .toUtf8();
}

}  // namespace

/// The chapters of the help book in each language have what the English ones have: who changes one
/// is told of the others.
class TranslatedBookTest : public QObject {
    Q_OBJECT

private:
    static void addChapters() {
        QTest::addColumn<QString>("original");
        QTest::addColumn<QString>("translated");
        for (const QString &language : bookLanguages()) {
            for (const QString &name : chaptersIn()) {
                const QString place = u":/help/%1/%2"_s.arg(language, name);
                QTest::newRow(qPrintable(language + u'/' + name))
                    << contents(u":/help/"_s + name) << contents(place);
            }
        }
    }
    static void compare(const QStringList &original, const QStringList &translated) {
        QVERIFY2(original == translated, difference(original, translated).constData());
    }

private Q_SLOTS:
    void isInGerman() { QVERIFY(bookLanguages().contains(u"de"_s)); }

    void isWhole_data() { addChapters(); }
    void isWhole() {
        QFETCH(QString, original);
        QFETCH(QString, translated);
        QVERIFY(!translated.isEmpty());
        compare(partsOf(original), partsOf(translated));
    }

    void hasTheSameLinks_data() { addChapters(); }
    void hasTheSameLinks() {
        QFETCH(QString, original);
        QFETCH(QString, translated);
        const QString link = u"<a href=\"([^\"]*)\""_s;
        // The order of words is the language's own.
        compare(sorted(found(original, link)), sorted(found(translated, link)));
    }

    void hasTheSamePlaces_data() { addChapters(); }
    void hasTheSamePlaces() {
        QFETCH(QString, original);
        QFETCH(QString, translated);
        const QString place = u"<a name=\"([^\"]*)\""_s;
        compare(found(original, place), found(translated, place));
    }

    void hasTheSamePictures_data() { addChapters(); }
    void hasTheSamePictures() {
        QFETCH(QString, original);
        QFETCH(QString, translated);
        // It may be the language's own, of the same name.
        const QString picture = u"<img src=\"[^\"]*/([^\"/]*)\""_s;
        compare(found(original, picture), found(translated, picture));
    }

    void hasTheSameCode_data() { addChapters(); }
    void hasTheSameCode() {
        QFETCH(QString, original);
        QFETCH(QString, translated);
        compare(codeBlocksOf(original), codeBlocksOf(translated));
    }

    void everyChapterHasAnOriginal() {
        for (const QString &language : bookLanguages()) {
            for (const QString &name : chaptersIn(language)) {
                QVERIFY2(QFile::exists(u":/help/"_s + name), qPrintable(language + u'/' + name));
            }
        }
    }
};

QTEST_GUILESS_MAIN(TranslatedBookTest)
#include "TranslatedBookTest.moc"
