#include "reports/ReportPrinter.h"
#include "reports/ReportTableModel.h"
#include "support/TemporaryFolder.h"

#include <QFile>
#include <QHash>
#include <QImage>
#include <QPdfWriter>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

namespace quorbel {

using testing::TemporaryFolder;

class ReportPrinterTest : public QObject {
    Q_OBJECT

private:
    void makeModel(const std::string &lines, ReportKind kind = ReportKind::kHost) {
        m_model = std::make_unique<ReportTableModel>();
        m_model->setKind(kind);
        auto report = std::make_unique<ReportEngine>(kind, "yyyy-MM-dd HH:mm:ss");
        QVERIFY(report->read({m_folder->write("x.log", lines)}));
        m_model->setReport(std::move(report));
    }
    QString pdfPath() const {
        return QString::fromStdString((m_folder->path() / "x.pdf").string());
    }
    bool print(const ReportPrinter::Progress &onProgress = {},
               QPageSize::PageSizeId size = QPageSize::A4,
               const QList<int> &columns = {0, 1, 2, 3}) {
        QPdfWriter writer(pdfPath());
        writer.setPageSize(QPageSize(size));
        writer.setPageMargins(QMarginsF(12, 12, 12, 12), QPageLayout::Millimeter);
        return ReportPrinter(*m_model, columns).print(writer, onProgress);
    }
    static QByteArray outputOf(const QString &program, const QStringList &arguments) {
        QProcess process;
        process.start(program, arguments);
        if (!process.waitForFinished(60000) || process.exitCode() != 0) {
            return "failed: " + process.readAllStandardError();
        }
        return process.readAllStandardOutput();
    }
    // The text of each page, as it is laid out.
    QStringList pages() const {
        QStringList result =
            QString::fromUtf8(outputOf(QStringLiteral("pdftotext"),
                                       {QStringLiteral("-layout"), pdfPath(), QStringLiteral("-")}))
                .split(QLatin1Char('\f'));
        result.removeLast();
        return result;
    }
    // The words of a page's lines that are not empty, one line each.
    static QStringList lines(const QString &page) {
        QStringList result;
        for (const QString &line : page.split(QLatin1Char('\n'))) {
            if (const QString simple = line.simplified(); !simple.isEmpty()) {
                result += simple;
            }
        }
        return result;
    }
    /// Where the words of the first page begin, in points.
    QHash<QString, double> placesOfWords() const {
        static const QRegularExpression word(
            QStringLiteral("<word xMin=\"([0-9.]+)\"[^>]*>([^<]*)</word>"));
        const QString output = QString::fromUtf8(outputOf(
            QStringLiteral("pdftotext"), {QStringLiteral("-bbox"), QStringLiteral("-l"),
                                          QStringLiteral("1"), pdfPath(), QStringLiteral("-")}));
        QHash<QString, double> result;
        for (const QRegularExpressionMatch &match : word.globalMatch(output)) {
            result.insert(match.captured(2), match.captured(1).toDouble());
        }
        return result;
    }
    static QString text(const char *characters) { return QString::fromUtf8(characters); }

private Q_SLOTS:
    void init() { m_folder = std::make_unique<TemporaryFolder>(); }
    void cleanup() {
        m_model.reset();
        m_folder.reset();
    }

    void marksWhatASenderHides() {
        makeModel("1700000000,Local7.Error,\u200Bh1,user \u202Etoor\r\n");
        m_model->toggle(0);
        QVERIFY(print());
        const QString page = pages().value(0);
        QVERIFY2(page.contains(QStringLiteral("<U+200B>h1")), qPrintable(page));
        QVERIFY2(page.contains(QStringLiteral("user <U+202E>toor")), qPrintable(page));
        QCOMPARE(m_model->index(0, 0).data().toString().toStdString(), "\u200Bh1");
        QCOMPARE(m_model->index(0, 0).data(Qt::AccessibleTextRole).toString(),
                 QStringLiteral("<U+200B>h1, expanded, 1 event, 100 %"));
    }

    void printsTheTableAsItStands() {
        makeModel(
            "1700000000,Local7.Error,h1,one\n1700000001,Kern.Alert,h2,two\n"
            "1700000002,Local7.Debug,h1,three, four\n");
        QVERIFY(print());
        QCOMPARE(pages().size(), 1);
        QCOMPARE(lines(pages()[0]),
                 (QStringList{text("Host Date Priority Message"), text("h1"), text("h2")}));
        m_model->toggle(0);
        QVERIFY(print());
        QCOMPARE(lines(pages()[0]),
                 (QStringList{text("Host Date Priority Message"), text("h1"),
                              text("2023-11-14 22:13:20 Local7.Error one"),
                              text("2023-11-14 22:13:22 Local7.Debug three, four"), text("h2")}));
    }

    void printsAnEmptyTable() {
        makeModel("");
        QVERIFY(print());
        QCOMPARE(pages().size(), 1);
        QCOMPARE(lines(pages()[0]), QStringList{text("Host Date Priority Message")});
        QVERIFY(print({}, QPageSize::A4, {}));
        QCOMPARE(pages().size(), 1);
        QCOMPARE(lines(pages()[0]), QStringList());
    }

    void leavesHiddenColumnsOut() {
        makeModel("1700000000,Local7.Error,h1,one\n");
        m_model->toggle(0);
        QVERIFY(print({}, QPageSize::A4, {1, 3}));
        QCOMPARE(lines(pages()[0]),
                 (QStringList{text("Date Message"), text("2023-11-14 22:13:20 one")}));
    }

    // Every row once and in order, whole on one page, below the titles of each page.
    void losesNoRowBetweenPages() {
        std::string log;
        for (int i = 0; i < 400; ++i) {
            // Rows of one to four lines.
            log += "1700000000,Local7.Error,h,row" + std::to_string(i) + "begin";
            for (int word = 0; word < i % 60; ++word) {
                log += " word";
            }
            log += " row" + std::to_string(i) + "end\n";
        }
        makeModel(log);
        m_model->toggle(0);
        QVERIFY(print());
        const QStringList all = pages();
        QVERIFY2(all.size() > 5, qPrintable(QString::number(all.size())));
        int next = 0;
        for (const QString &page : all) {
            QCOMPARE(lines(page).first(), text("Host Date Priority Message"));
            QCOMPARE(page.count(text("Priority")), 1);
            int from = 0;
            while (next < 400) {
                const auto begin = page.indexOf(QStringLiteral("row%1begin").arg(next), from);
                if (begin < 0) {
                    break;
                }
                const auto end = page.indexOf(QStringLiteral("row%1end").arg(next), begin);
                QVERIFY2(end > begin, qPrintable(QString::number(next)));
                QCOMPARE(page.mid(begin, end - begin).count(text("word")), next % 60);
                from = static_cast<int>(end);
                ++next;
            }
        }
        QCOMPARE(next, 400);
    }

    void wrapsLongTextsWithoutLosingALetter_data() {
        QTest::addColumn<int>("kind");
        QTest::addColumn<int>("pageSize");
        QTest::newRow("one word, A4") << 0 << static_cast<int>(QPageSize::A4);
        QTest::newRow("as a group, A4") << 1 << static_cast<int>(QPageSize::A4);
        QTest::newRow("taller than a page of A8") << 0 << static_cast<int>(QPageSize::A8);
        QTest::newRow("as a group, A8") << 1 << static_cast<int>(QPageSize::A8);
    }
    void wrapsLongTextsWithoutLosingALetter() {
        QFETCH(int, kind);
        QFETCH(int, pageSize);
        // 240 numbers without a space between them.
        std::string message;
        for (int i = 1000; i < 1240; ++i) {
            message += std::to_string(i);
        }
        makeModel("1700000000,Local7.Error,h," + message + "\n", static_cast<ReportKind>(kind));
        m_model->toggle(0);
        QVERIFY(print({}, static_cast<QPageSize::PageSizeId>(pageSize)));
        // In the order of drawing: cell by cell, line by line.
        QString printed = QString::fromUtf8(outputOf(
            QStringLiteral("pdftotext"), {QStringLiteral("-raw"), pdfPath(), QStringLiteral("-")}));
        const auto pageCount = printed.count(QLatin1Char('\f'));
        QCOMPARE(pageCount > 1, pageSize == static_cast<int>(QPageSize::A8));
        printed.remove(QRegularExpression(QStringLiteral("\\s")));
        QString titles;
        for (int column = 0; column < 4; ++column) {
            titles += m_model->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
        }
        QCOMPARE(printed.count(titles), pageCount);
        QVERIFY2(printed.remove(titles).contains(QString::fromStdString(message)),
                 qPrintable(printed));
    }

    void printsTheChosenPagesOnly() {
        std::string log;
        for (int i = 0; i < 300; ++i) {
            log += "1,P,h,row" + std::to_string(i) + ".\n";
        }
        makeModel(log);
        m_model->toggle(0);
        QVERIFY(print());
        const QStringList all = pages();
        QVERIFY(all.size() > 3);
        QPdfWriter writer(pdfPath());
        writer.setPageMargins(QMarginsF(12, 12, 12, 12), QPageLayout::Millimeter);
        writer.setPageRanges(QPageRanges::fromString(QStringLiteral("2-3")));
        QVERIFY(ReportPrinter(*m_model, {0, 1, 2, 3}).print(writer));
        QCOMPARE(pages(), all.mid(1, 2));
    }

    void printsCopies() {
        makeModel("1,P,h,m\n");
        QPdfWriter writer(pdfPath());
        ReportPrinter printer(*m_model, {0, 1, 2, 3});
        printer.setCopies(3);
        QVERIFY(printer.print(writer));
        QCOMPARE(pages().size(), 3);
        QCOMPARE(lines(pages()[2]), (QStringList{text("Host Date Priority Message"), text("h")}));
        QCOMPARE(pages()[1], pages()[0]);
    }

    /// Each page's lines, once without page notes and once with them.
    std::pair<QList<QStringList>, QList<QStringList>> withoutAndWithNotes(
        QPageSize::PageSizeId size, qreal margin) {
        std::pair<QList<QStringList>, QList<QStringList>> result;
        for (const bool hasNotes : {false, true}) {
            QPdfWriter writer(pdfPath());
            writer.setPageSize(QPageSize(size));
            writer.setPageMargins(QMarginsF(margin, margin, margin, margin),
                                  QPageLayout::Millimeter);
            ReportPrinter printer(*m_model, {0, 1, 2, 3});
            printer.setPageNotes(hasNotes);
            [[maybe_unused]] const bool isComplete = printer.print(writer);
            for (const QString &page : pages()) {
                (hasNotes ? result.second : result.first).append(lines(page));
            }
        }
        return result;
    }

    void pageNotesNameTheGroupThatGoesOnAndThePages_data() {
        QTest::addColumn<qreal>("margin");
        QTest::newRow("in the margin") << 15.0;
        QTest::newRow("without a margin") << 0.0;
    }
    // Against the rows in their order: what a page begins with, and that nothing else changes.
    void pageNotesNameTheGroupThatGoesOnAndThePages() {
        QFETCH(const qreal, margin);
        std::string log;
        for (int i = 0; i < 600; ++i) {
            log += "1,P,host" + std::to_string(i * i % 97) + ",row" + std::to_string(i) + ".\n";
        }
        makeModel(log);
        m_model->setAllExpanded(true);
        QStringList expected;
        QHash<QString, QString> groupOf;
        for (int row = 0; row < m_model->rowCount(); ++row) {
            const QString group =
                m_model->index(m_model->rowOf({m_model->placeOf(row).group, {}}), 0)
                    .data()
                    .toString();
            const QString cell = m_model->index(row, 0).data().toString();
            expected += cell.isEmpty() ? text("1970-01-01 00:00:01 P ") +
                                             m_model->index(row, 3).data().toString()
                                       : cell;
            groupOf[expected.last()] = cell.isEmpty() ? group : QString();
        }
        const auto [plain, noted] = withoutAndWithNotes(QPageSize::A5, margin);
        QVERIFY2(noted.size() > 5, qPrintable(QString::number(noted.size())));
        QStringList all;
        for (const QStringList &page : plain) {
            all += page.mid(1);
        }
        QCOMPARE(all, expected);
        all.clear();
        int continued = 0;
        for (int number = 0; number < noted.size(); ++number) {
            QStringList page = noted[number];
            QCOMPARE(page.takeFirst(), text("Host Date Priority Message"));
            QCOMPARE(page.takeLast(), text("Page %1 of %2").arg(number + 1).arg(noted.size()));
            if (page.first().endsWith(text(" (continued)"))) {
                ++continued;
                const QString name = page.takeFirst();
                QCOMPARE(name, groupOf[page.first()] + text(" (continued)"));
            } else {
                QCOMPARE(groupOf[page.first()], QString());
            }
            all += page;
        }
        QVERIFY(continued > 3);
        QCOMPARE(all, expected);
    }

    void pageNotesStandInTheMarginWhereThereIsOne() {
        std::string log;
        for (int i = 0; i < 300; ++i) {
            log += "1,P,h,row" + std::to_string(i) + ".\n";
        }
        makeModel(log);  // one page with one row
        const auto [plain, noted] = withoutAndWithNotes(QPageSize::A4, 15);
        QCOMPARE(plain.size(), 1);
        QCOMPARE(noted.size(), 1);
        const QString output =
            QString::fromUtf8(outputOf(QStringLiteral("pdftotext"),
                                       {QStringLiteral("-bbox"), pdfPath(), QStringLiteral("-")}));
        static const QRegularExpression word(
            QStringLiteral("yMin=\"([0-9.]+)\"[^>]*yMax=\"([0-9.]+)\">Page</word>"));
        const QRegularExpressionMatch match = word.match(output);
        QVERIFY2(match.hasMatch(), qPrintable(output));
        const double paper = 297 / 25.4 * 72;
        const double body = 282 / 25.4 * 72;
        QVERIFY(match.captured(1).toDouble() > body);
        QVERIFY(match.captured(2).toDouble() < paper - 7 / 25.4 * 72);
    }

    // Groups that wrap over more than a page, on pages of a few lines: nothing is lost or repeated.
    void pageNotesLeaveRoomOnTinyPages() {
        std::string message;
        for (int i = 100; i < 300; ++i) {
            message += std::to_string(i) + " ";
        }
        makeModel("1,P,h," + message + "\n1,P,h,abc\n", ReportKind::kMessage);
        m_model->setAllExpanded(true);
        const auto [plain, noted] = withoutAndWithNotes(QPageSize::A8, 3);
        QVERIFY(noted.size() > 2);
        QString printed;
        for (QStringList page : noted) {
            page.removeLast();
            for (const QString &line : page) {
                printed += line.endsWith(text("(continued)")) ? QString() : line + QLatin1Char(' ');
            }
        }
        int last = -1;
        for (int i = 100; i < 300; ++i) {
            const auto at = printed.indexOf(QString::number(i), last + 1);
            QVERIFY2(at > last, qPrintable(QString::number(i)));
            last = static_cast<int>(at);
        }
        QVERIFY2(printed.indexOf(text("abc"), last) > last, qPrintable(printed.right(200)));
    }

    // Whatever just fits a page without the name above it begins below that name.
    void noPageHasNotesAlone() {
        std::string log;
        for (int words = 1; words < 60; ++words) {
            log += "1,P,h,";
            for (int i = 0; i < words * 2; ++i) {
                log += "abcdefgh ";
            }
            log += "\n";
        }
        makeModel(log);
        m_model->setAllExpanded(true);
        const auto [plain, noted] = withoutAndWithNotes(QPageSize::A7, 5);
        QVERIFY(noted.size() > 30);
        for (const QStringList &page : noted) {
            const QString all = page.join(QLatin1Char(' '));
            QVERIFY2(all.contains(text("abcd")), qPrintable(all));
        }
    }

    void pageNotesCountThePagesThatAreNotPrintedToo() {
        std::string log;
        for (int i = 0; i < 300; ++i) {
            log += "1,P,h,row" + std::to_string(i) + ".\n";
        }
        makeModel(log);
        m_model->toggle(0);
        QPdfWriter writer(pdfPath());
        writer.setPageRanges(QPageRanges::fromString(QStringLiteral("2-3")));
        ReportPrinter printer(*m_model, {0, 1, 2, 3});
        printer.setPageNotes(true);
        printer.setCopies(2);
        QList<int> told;
        int inAll = 0;
        QVERIFY(printer.print(writer, [&](int done, int all) {
            told += done;
            inAll = all;
            return true;
        }));
        QCOMPARE(pages().size(), 4);
        QCOMPARE(lines(pages()[0])[1], text("h (continued)"));
        QCOMPARE(lines(pages()[0]).last(), text("Page 2 of %1").arg(printer.pageCount()));
        QCOMPARE(pages()[2], pages()[0]);
        QCOMPARE(inAll, 602);
        QCOMPARE(told.first(), 1);
        QCOMPARE(told.last(), inAll);
        // Cancelled while it counts, nothing is begun on the device.
        QFile::remove(pdfPath());
        ReportPrinter other(*m_model, {0, 1, 2, 3});
        other.setPageNotes(true);
        QPdfWriter unused(pdfPath());
        QVERIFY(!other.print(unused, [](int done, int) { return done < 10; }));
        QCOMPARE(other.printedPages(), 0);
    }

    void drawsMarkers() {
        makeModel("1,P,h,m\n");
        const auto darkPixels = [this] {
            // The marker stands left of the group's text, in the second line.
            const QString picture = QString::fromStdString((m_folder->path() / "page").string());
            outputOf(QStringLiteral("pdftoppm"),
                     {QStringLiteral("-r"), QStringLiteral("300"), QStringLiteral("-png"),
                      QStringLiteral("-singlefile"), pdfPath(), picture});
            const QImage page(picture + QStringLiteral(".png"));
            const int margin = static_cast<int>(12 / 25.4 * 300);
            int dark = 0;
            for (int y = margin + 45; y < margin + 85; ++y) {
                for (int x = margin - 2; x < margin + 26; ++x) {
                    dark += qGray(page.pixel(x, y)) < 128 ? 1 : 0;
                }
            }
            return dark;
        };
        QVERIFY(print());
        const int plus = darkPixels();
        m_model->toggle(0);
        QVERIFY(print());
        const int minus = darkPixels();
        QVERIFY2(minus > 30 && plus > minus + 30,
                 qPrintable(QStringLiteral("%1 %2").arg(plus).arg(minus)));
    }

    void printsTextsOfAnyScript() {
        makeModel("1,P,h,naïve Ελληνικά кириллица <b>&amp;</b>\n");
        m_model->toggle(0);
        QVERIFY(print());
        QCOMPARE(lines(pages()[0]).last(),
                 text("1970-01-01 00:00:01 P naïve Ελληνικά кириллица <b>&amp;</b>"));
    }

    void aTabIsAsWideAsAFewLetters() {
        makeModel("1,P,h,one\ttwo\n");
        m_model->toggle(0);
        QVERIFY(print());
        const auto places = placesOfWords();
        const double distance = places[text("two")] - places[text("one")];
        // The letters have 8 points.
        QVERIFY2(distance > 12 && distance < 40, qPrintable(QString::number(distance)));
    }

    void mixedDirectionsStandAsOnTheScreen() {
        makeModel("1,P,h,שלום left right\n");
        m_model->toggle(0);
        QVERIFY(print());
        const auto places = placesOfWords();
        QVERIFY(places.contains(text("left")) && places.contains(text("Message")));
        // The column's text begins at its left, and its first word stands there.
        QVERIFY(places[text("left")] > places[text("Message")] + 10);
        QVERIFY(places[text("left")] < places[text("Message")] + 60);
        QVERIFY(places[text("right")] > places[text("left")]);
    }

    void pagesThatDoNotExistAreNotBegun() {
        makeModel("1,P,h,m\n");
        QPdfWriter writer(pdfPath());
        writer.setPageRanges(QPageRanges::fromString(QStringLiteral("2-3")));
        ReportPrinter printer(*m_model, {0, 1, 2, 3});
        QVERIFY(printer.print(writer));
        QCOMPARE(printer.pageCount(), 1);
        QCOMPARE(printer.printedPages(), 0);
        QVERIFY(!QFile::exists(pdfPath()));
    }

    void canBeCancelledAndTellsHowFarItIs() {
        std::string log;
        for (int i = 0; i < 99; ++i) {
            log += "1,P,h,m\n";
        }
        makeModel(log);
        m_model->toggle(0);
        int last = 0;
        QVERIFY(print([&last](int done, int inAll) {
            last = done;
            return inAll == 100;
        }));
        QCOMPARE(last, 100);
        QVERIFY(!print([&last](int done, int) {
            last = done;
            return done < 10;
        }));
        QCOMPARE(last, 10);
        // Rows that go meanwhile are left out.
        QVERIFY(print([this](int, int) {
            m_model->clear();
            return true;
        }));
        QCOMPARE(lines(pages()[0]), (QStringList{text("Host Date Priority Message"), text("h")}));
    }

    void aDeviceThatRefusesPrintsNothing() {
        makeModel("1,P,h,m\n");
        QPdfWriter writer(QStringLiteral("/proc/x.pdf"));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("QPainter::begin.*")));
        QVERIFY(!ReportPrinter(*m_model, {0, 1, 2, 3}).print(writer));
    }

    void printsTensOfThousandsOfRows() {
        constexpr int kRows = 20'000;
        std::string log;
        for (int i = 0; i < kRows; ++i) {
            log += "1700000000,Local7.Error,10.0.0.1,message number " + std::to_string(i) +
                   " of a usual length and with some words in it\n";
        }
        makeModel(log);
        m_model->toggle(0);
        QVERIFY(print());
        const QString all = pages().join(QLatin1Char(' '));
        QCOMPARE(all.count(text("message number")), kRows);
        QVERIFY(all.contains(QStringLiteral("message number %1 of").arg(kRows - 1)));
    }

private:
    std::unique_ptr<TemporaryFolder> m_folder;
    std::unique_ptr<ReportTableModel> m_model;
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ReportPrinterTest)
#include "ReportPrinterTest.moc"
