#include "help/HelpBook.h"

#include <QFile>
#include <QImage>
#include <QRegularExpression>
#include <QTest>

using namespace quorbel;

class HelpBookTest : public QObject {
    Q_OBJECT

private:
    static QString source(const QUrl &url) {
        QFile file(QLatin1Char(':') + url.path());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
    /// The values of an attribute, in the order in which they stand in the chapter.
    static QStringList values(const QString &html, const QString &attribute) {
        const QRegularExpression expression(attribute + QStringLiteral("=\"([^\"]*)\""));
        QStringList result;
        for (auto match = expression.globalMatch(html); match.hasNext();) {
            result.append(match.next().captured(1));
        }
        return result;
    }
    static void addChapters() {
        QTest::addColumn<QUrl>("url");
        for (const HelpChapter &chapter : loadHelpBook()) {
            QTest::newRow(qPrintable(chapter.url.fileName())) << chapter.url;
        }
    }

private Q_SLOTS:
    void hasItsChaptersInOrder() {
        QStringList titles;
        for (const HelpChapter &chapter : loadHelpBook()) {
            titles.append(chapter.title);
            QVERIFY2(chapter.text.size() > 1000, qPrintable(chapter.title));
            QVERIFY(!chapter.text.contains(QLatin1Char('<')));
        }
        QCOMPARE(titles,
                 (QStringList{QStringLiteral("Getting started"), QStringLiteral("The pages"),
                              QStringLiteral("How ratings work"),
                              QStringLiteral("Pointing devices at this machine"),
                              QStringLiteral("What each setting means"),
                              QStringLiteral("When nothing arrives")}));
    }

    void linksLeadSomewhere_data() { addChapters(); }
    void linksLeadSomewhere() {
        QFETCH(QUrl, url);
        const QStringList links = values(source(url), QStringLiteral("href"));
        for (const QString &link : links) {
            const QUrl target = url.resolved(QUrl(link));
            if (target.scheme() == QStringLiteral("https")) {
                continue;
            }
            const QString html = source(target);
            QVERIFY2(!html.isEmpty(), qPrintable(link));
            if (target.hasFragment()) {
                const QStringList names = values(html, QStringLiteral("<a name"));
                QVERIFY2(names.contains(target.fragment()), qPrintable(link));
            }
        }
    }

    void picturesAreThere_data() { addChapters(); }
    void picturesAreThere() {
        QFETCH(QUrl, url);
        for (const QString &picture : values(source(url), QStringLiteral("src"))) {
            const QImage image(QLatin1Char(':') + QUrl(picture).path());
            QVERIFY2(!image.isNull(), qPrintable(picture));
        }
    }

    void showsTheHomePageAndTheEvents() {
        const QString html = source(QUrl(QStringLiteral("qrc:/help/pages.html")));
        QCOMPARE(values(html, QStringLiteral("src")).size(), 2);
    }

    void searchNeedsEveryWord_data() {
        QTest::addColumn<QString>("search");
        QTest::addColumn<bool>("found");
        const auto row = [](const char *name, const char *search, bool found) {
            QTest::newRow(name) << QString::fromLatin1(search) << found;
        };
        row("nothing", "", true);
        row("blanks", " \t ", true);
        row("one word", "octet", true);
        row("other case", "OCTET", true);
        row("part of a word", "octe", true);
        row("two words", "udp  octet ", true);
        row("one of two", "octet zebra", false);
        row("none", "zebra", false);
        row("no pattern", "oct.t", false);
        row("no markup", "href", false);
    }
    void searchNeedsEveryWord() {
        QFETCH(QString, search);
        QFETCH(bool, found);
        HelpChapter chapter;
        chapter.text = QStringLiteral("Octet counting\nis for TCP, not for UDP");
        QCOMPARE(containsAll(chapter, searchWords(search)), found);
    }
};

QTEST_MAIN(HelpBookTest)
#include "HelpBookTest.moc"
