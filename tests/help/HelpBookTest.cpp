#include "help/HelpBook.h"

#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

#include <algorithm>
#include <initializer_list>

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
    /// The chapters in every language.
    static void addChapters() {
        QTest::addColumn<QUrl>("url");
        QDirIterator files(QStringLiteral(":/help"), {QStringLiteral("*.html")}, QDir::Files,
                           QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString place = files.next();
            QTest::newRow(qPrintable(place)) << QUrl(QStringLiteral("qrc") + place);
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
        QCOMPARE(
            titles,
            (QStringList{
                QStringLiteral("Getting started"), QStringLiteral("The pages"),
                QStringLiteral("Finding events"), QStringLiteral("Questions and kept filters"),
                QStringLiteral("How ratings work"), QStringLiteral("Reports"),
                QStringLiteral("Hosts and silence"),
                QStringLiteral("Pointing devices at this machine"),
                QStringLiteral("What each setting means"), QStringLiteral("Actions and e-mail"),
                QStringLiteral("Regular export"), QStringLiteral("Looking after the service"),
                QStringLiteral("Moving and keeping"), QStringLiteral("When nothing arrives")}));
    }

    void searchFindsEveryChapterByItsTitle() {
        const auto book = loadHelpBook();
        for (const HelpChapter &chapter : book) {
            QVERIFY2(containsAll(chapter, searchWords(chapter.title)), qPrintable(chapter.title));
        }
    }

    void everyChapterIsLinkedTo() {
        QSet<QString> linked;
        for (const HelpChapter &chapter : loadHelpBook()) {
            for (const QString &link : values(source(chapter.url), QStringLiteral("href"))) {
                const QUrl target = chapter.url.resolved(QUrl(link)).adjusted(QUrl::RemoveFragment);
                if (target != chapter.url) {
                    linked.insert(target.fileName());
                }
            }
        }
        const auto book = loadHelpBook();
        for (auto chapter = book.begin() + 1; chapter != book.end(); ++chapter) {
            QVERIFY2(linked.contains(chapter->url.fileName()), qPrintable(chapter->title));
        }
    }

    void hasAPlaceForEveryPage() {
        const QUrl url(QStringLiteral("qrc:/help/pages.html"));
        const QStringList pages{QStringLiteral("Home"),    QStringLiteral("Events"),
                                QStringLiteral("Reports"), QStringLiteral("Tools"),
                                QStringLiteral("Options"), QStringLiteral("Actions"),
                                QStringLiteral("Export")};
        const QStringList places = values(source(url), QStringLiteral("<a name"));
        for (const QString &page : pages) {
            QVERIFY2(places.contains(page.toLower()), qPrintable(page));
            QVERIFY2(source(url).contains(QStringLiteral("</a>%1</h2>").arg(page)),
                     qPrintable(page));
        }
    }

    void explains_data() {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QStringList>("terms");
        const auto row = [](const char *file, std::initializer_list<const char *> terms) {
            QStringList list;
            for (const char *term : terms) {
                list.append(QString::fromLatin1(term));
            }
            QTest::newRow(file) << QString::fromLatin1(file) << list;
        };
        row("reports", {"Events by host", "Events by message", "Events by priority",
                        "Events by date", "All Logs", "Display", "Export...", "Print..."});
        row("devices", {"rsyslog", "RFC 5425", "6514", "cert.pem", "key.pem", "ca.pem"});
        row("settings", {"Hosts", "Dates", "Ratings", "Retention", "Show a popup",
                         "Close each after", "Play a sound", "Sound file", "include filters",
                         "exclude filter", "Name", "Mask", "Facility", "Severity", "Message"});
        row("actions",
            {"Command",       "Arguments",       "Environment", "QUORBEL_DATE", "QUORBEL_PRIORITY",
             "QUORBEL_HOST",  "QUORBEL_MESSAGE", "$date",       "$priority",    "$host",
             "$message",      "Server",          "Port",        "Security",     "STARTTLS",
             "SSL/TLS",       "Sender",          "User name",   "Password",     "Time-out",
             "E-mail format", "Test e-mail"});
        row("export", {"txt", "csv", "db", "ReadWritePaths=", "SQLite", "mirror"});
        row("keeping", {"Quorbel.ini", "QuorbelFilters.txt", "QuorbelWindow.ini", "Quorbel.clock",
                        "tls", "another machine", "a year"});
        row("service", {"SIGHUP", "journalctl", "malformed", "dropped", "filtered", "held back"});
    }
    void explains() {
        QFETCH(QString, file);
        QFETCH(QStringList, terms);
        const auto book = loadHelpBook();
        const auto chapter = std::find_if(book.begin(), book.end(), [&file](const auto &each) {
            return each.url.fileName() == file + QStringLiteral(".html");
        });
        QVERIFY(chapter != book.end());
        for (const QString &term : terms) {
            QVERIFY2(chapter->text.contains(term), qPrintable(term));
        }
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

    void showsPictures_data() {
        QTest::addColumn<QStringList>("pictures");
        const auto row = [](const char *file, const QStringList &pictures) {
            QTest::newRow(file) << pictures;
        };
        row("pages", {QStringLiteral("home"), QStringLiteral("events")});
        row("reports", {QStringLiteral("reports")});
        row("settings", {QStringLiteral("options")});
        row("actions", {QStringLiteral("actions")});
    }
    void showsPictures() {
        QFETCH(QStringList, pictures);
        const QUrl url(
            QStringLiteral("qrc:/help/%1.html").arg(QString::fromLatin1(QTest::currentDataTag())));
        QStringList shown;
        for (const QString &picture : values(source(url), QStringLiteral("src"))) {
            shown.append(QUrl(picture).fileName().section(QLatin1Char('.'), 0, 0));
        }
        QCOMPARE(shown, pictures);
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
