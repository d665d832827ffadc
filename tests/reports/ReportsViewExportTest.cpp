#include "platform/gui/FileIcons.h"
#include "reports/ReportsViewFixture.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileSystemModel>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPrinter>
#include <QProcess>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>

namespace quorbel {

using namespace testing;

class ReportsViewExportTest : public QObject, private ReportsViewFixture {
    Q_OBJECT

private:
    static constexpr const char *kLog =
        "1700000000,Local7.Error,h1,one, with a comma\r\n"
        "1700000001,Kern.Alert,h2,two\r\n"
        "1700000002,Local7.Error,h1,three\r\n";

    QString path(const char *file) {
        return QString::fromStdString((m_folder->path() / file).string());
    }
    static QByteArray bytesOf(const QString &path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no such file");
    }
    QStringList files() {
        return QDir(path("")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    QFileDialog *panel() { return m_page->findChild<QFileDialog *>(name("filePanel")); }
    static void press(QDialog *dialog, QDialogButtonBox::StandardButton button) {
        const auto *buttons = dialog->findChild<QDialogButtonBox *>();
        QTest::mouseClick(buttons->button(button), Qt::LeftButton);
    }
    void exportTo(const QString &file) {
        click("exportResults");
        QTRY_VERIFY(panel() != nullptr && panel()->isVisible());
        QVERIFY(m_page->findChild<QMessageBox *>() == nullptr);
        panel()->findChild<QLineEdit *>(name("fileNameEdit"))->setText(file);
        press(panel(), QDialogButtonBox::Save);
        QTRY_VERIFY(panel() == nullptr);
    }
    QPrintDialog *printPanel() { return m_page->findChild<QPrintDialog *>(name("printPanel")); }
    void openPrintPanel() {
        click("printResults");
        QTRY_VERIFY(printPanel() != nullptr && printPanel()->isVisible());
    }
    // Prints to a file through the dialog's own controls.
    void printTo(const QString &file, int copies = 1) {
        openPrintPanel();
        confirmPrint(file, copies);
    }
    void confirmPrint(const QString &file, int copies = 1) {
        auto *printers = printPanel()->findChild<QComboBox *>(name("printers"));
        const int pdf = printers->findText(name("Print to File (PDF)"));
        QVERIFY(pdf >= 0);
        printers->setCurrentIndex(pdf);
        printPanel()->findChild<QSpinBox *>(name("copies"))->setValue(copies);
        auto *field = printPanel()->findChild<QLineEdit *>(name("filename"));
        QVERIFY(field != nullptr);
        field->setText(file);
        press(printPanel(), QDialogButtonBox::Ok);
        QTRY_VERIFY(printPanel() == nullptr);
    }
    static QStringList printedLines(const QString &file) {
        QProcess process;
        process.start(QStringLiteral("pdftotext"),
                      {QStringLiteral("-layout"), file, QStringLiteral("-")});
        process.waitForFinished();
        QStringList result;
        for (const QByteArray &line : process.readAllStandardOutput().split('\n')) {
            if (const QString simple = QString::fromUtf8(line).simplified(); !simple.isEmpty()) {
                result += simple;
            }
        }
        return result;
    }

private Q_SLOTS:
    void init() { makePage(); }
    void cleanup() { dropPage(); }

    void writesCollapsedGroupsAsSingleLines() {
        log("x.log", kLog);
        display(0);
        exportTo(path("report.csv"));
        QCOMPARE(bytesOf(path("report.csv")),
                 QByteArray("Host,Date,Priority,Message\nh1,,,\nh2,,,\n"));
        exportTo(path("report.txt"));
        QCOMPARE(bytesOf(path("report.txt")),
                 QByteArray("Host\tDate\tPriority\tMessage\nh1\t\t\t\nh2\t\t\t\n"));
    }

    void writesAllRowsWhateverIsSelected() {
        log("x.log", kLog);
        display(0);
        clickRow(0);
        exportTo(path("report.csv"));
        QCOMPARE(bytesOf(path("report.csv")),
                 QByteArray("Host,Date,Priority,Message\n"
                            "h1,,,\n"
                            ",2023-11-14 22:13:20,Local7.Error,one, with a comma\n"
                            ",2023-11-14 22:13:22,Local7.Error,three\n"
                            "h2,,,\n"));
        QCOMPARE(selected(), QList<int>{0});
    }

    void theTitlesAreThoseOfTheKind() {
        log("x.log", kLog);
        display(1);
        clickRow(1);
        exportTo(path("report.txt"));
        QCOMPARE(bytesOf(path("report.txt")), QByteArray("Message\tDate\tPriority\tHost\n"
                                                         "one, with a comma\t\t\t\n"
                                                         "two\t\t\t\n"
                                                         "\t2023-11-14 22:13:21\tKern.Alert\th2\n"
                                                         "three\t\t\t\n"));
    }

    void beforeAnyReportTheTitlesAreWrittenAlone() {
        show();
        QVERIFY(table()->isColumnHidden(0));
        exportTo(path("report.csv"));
        QCOMPARE(bytesOf(path("report.csv")), QByteArray("Host,Date,Priority,Message\n"));
    }

    void aPageShownAnewMeanwhileLeavesTheOlderFileAlone() {
        log("x.log", kLog);
        display(0);
        clickRow(0);
        QVERIFY(duringWork(
            [this](QWidget *) {
                // Only now, so that the panel does not ask about it.
                m_folder->write("report.csv", "older");
                m_page->viewWillAppear();
            },
            [this] { exportTo(path("report.csv")); }));
        QVERIFY(progressWindow() == nullptr);
        QCOMPARE(rowCount(), 0);
        QCOMPARE(bytesOf(path("report.csv")), QByteArray("older"));
        QCOMPARE(files(), (QStringList{name("report.csv"), name("x.log")}));
    }

    void aCancelledPanelWritesNothing() {
        show();
        click("exportResults");
        QTRY_VERIFY(panel() != nullptr && panel()->isVisible());
        QCOMPARE(panel()->findChild<QLabel *>(name("filePanelMessage"))->text(),
                 name("Please select export file name with 'txt' or 'csv' extensions:"));
        auto *field = panel()->findChild<QLineEdit *>(name("fileNameEdit"));
        QVERIFY2(field->text().startsWith(name("Quorbel report 2")), qPrintable(field->text()));
        field->setText(path("report.csv"));
        press(panel(), QDialogButtonBox::Cancel);
        QTRY_VERIFY(panel() == nullptr);
        QVERIFY(std::filesystem::is_empty(m_folder->path()));
    }

    void aFileThatCannotBeWrittenGoesUnmentioned() {
        show();
        exportTo(name("/proc/report.csv"));
        QVERIFY(m_page->findChild<QMessageBox *>() == nullptr);
    }

    void printsTheTableAsShown() {
        log("x.log", kLog);
        display(0);
        clickRow(0);
        printTo(path("report.pdf"));
        QTRY_COMPARE(printedLines(path("report.pdf")),
                     (QStringList{name("Host Date Priority Message"), name("h1"),
                                  name("2023-11-14 22:13:20 Local7.Error one, with a comma"),
                                  name("2023-11-14 22:13:22 Local7.Error three"), name("h2")}));
        QVERIFY(m_page->findChild<QMessageBox *>() == nullptr);
    }

    void largestFirstIsNeitherExportedNorPrinted() {
        std::string lines;
        for (int i = 0; i < 60; ++i) {
            lines += "1,P,host" + std::to_string(i % (i % 11 + 1)) + "," + std::to_string(i) + "\n";
        }
        log("x.log", lines);
        display(0);
        clickRow(2);
        clickRow(1);
        const QStringList shown = rows();
        exportTo(path("before.csv"));
        printTo(path("before.pdf"));
        QTRY_VERIFY(!printedLines(path("before.pdf")).isEmpty());
        QTest::mouseClick(control<QAbstractButton>("largestFirst"), Qt::LeftButton, {},
                          QPoint(8, control<QAbstractButton>("largestFirst")->height() / 2));
        QVERIFY(rows() != shown);
        exportTo(path("after.csv"));
        QCOMPARE(bytesOf(path("after.csv")), bytesOf(path("before.csv")));
        printTo(path("after.pdf"));
        QTRY_COMPARE(printedLines(path("after.pdf")), printedLines(path("before.pdf")));
        // With all of them open as well.
        click("expandAll");
        exportTo(path("all.csv"));
        QTest::mouseClick(control<QAbstractButton>("largestFirst"), Qt::LeftButton, {},
                          QPoint(8, control<QAbstractButton>("largestFirst")->height() / 2));
        exportTo(path("expanded.csv"));
        QVERIFY(bytesOf(path("all.csv")).count('\n') > 70);
        QCOMPARE(bytesOf(path("all.csv")), bytesOf(path("expanded.csv")));
    }

    void pageNotesAreChosenInTheDialogAndStayChosen() {
        log("x.log", kLog);
        display(0);
        const auto notes = [this] {
            return printPanel()->findChild<QCheckBox *>(name("pageNotes"));
        };
        openPrintPanel();
        QVERIFY(notes() != nullptr && notes()->isVisible() && !notes()->isChecked());
        QTest::mouseClick(notes(), Qt::LeftButton, {}, QPoint(8, notes()->height() / 2));
        confirmPrint(path("report.pdf"));
        const QStringList expected{name("Host Date Priority Message"), name("h1"), name("h2"),
                                   name("Page 1 of 1")};
        QTRY_COMPARE(printedLines(path("report.pdf")), expected);
        openPrintPanel();
        QVERIFY(notes()->isChecked());
        QTest::mouseClick(notes(), Qt::LeftButton, {}, QPoint(8, notes()->height() / 2));
        confirmPrint(path("plain.pdf"));
        QTRY_COMPARE(printedLines(path("plain.pdf")), expected.mid(0, 3));
    }

    void printsAsManyCopiesAsChosen() {
        log("x.log", "1,P,h,m\n");
        display(0);
        printTo(path("report.pdf"), 2);
        QTRY_COMPARE(printedLines(path("report.pdf")),
                     (QStringList{name("Host Date Priority Message"), name("h"),
                                  name("Host Date Priority Message"), name("h")}));
    }

    void aCancelledPrintLeavesNoFile() {
        log("x.log", kLog);
        display(0);
        clickRow(0);
        QVERIFY(duringWork(
            [this](QWidget *window) {
                QVERIFY(std::filesystem::exists(m_folder->path() / "report.pdf"));
                QTest::mouseClick(window->findChild<QPushButton *>(name("onCancel")),
                                  Qt::LeftButton);
            },
            [this] { printTo(path("report.pdf")); }));
        QVERIFY(progressWindow() == nullptr);
        QVERIFY(!std::filesystem::exists(m_folder->path() / "report.pdf"));
        QCOMPARE(rowCount(), 4);
        clickRow(0);
        QCOMPARE(rowCount(), 2);
        printTo(path("report.pdf"));
        QTRY_COMPARE(printedLines(path("report.pdf")),
                     (QStringList{name("Host Date Priority Message"), name("h1"), name("h2")}));
    }

    void aPrintEndsWithTheProgram() {
        log("x.log", kLog);
        display(0);
        clickRow(0);
        QVERIFY(
            duringWork([](QWidget *) { endProgram(); }, [this] { printTo(path("report.pdf")); }));
        QVERIFY(progressWindow() == nullptr);
        QVERIFY(!std::filesystem::exists(m_folder->path() / "report.pdf"));
        letProgramEnd();
    }

    void anExportEndsWithTheProgram() {
        log("x.log", kLog);
        display(0);
        clickRow(0);
        QVERIFY(duringWork(
            [this](QWidget *) {
                // Only now, so that the panel does not ask about it.
                m_folder->write("report.txt", "kept");
                endProgram();
            },
            [this] { exportTo(path("report.txt")); }));
        QCOMPARE(bytesOf(path("report.txt")), QByteArray("kept"));
        letProgramEnd();
    }

    void pagesThatTheReportDoesNotHaveAreNotPrinted() {
        log("x.log", kLog);
        display(0);
        openPrintPanel();
        auto *range = printPanel()->findChild<QRadioButton *>(name("printRange"));
        QVERIFY(range != nullptr);
        range->setChecked(true);
        printPanel()->findChild<QSpinBox *>(name("from"))->setValue(7);
        printPanel()->findChild<QSpinBox *>(name("to"))->setValue(9);
        confirmPrint(path("report.pdf"));
        QTRY_VERIFY(m_page->findChild<QMessageBox *>(name("alertBox")) != nullptr);
        auto *box = m_page->findChild<QMessageBox *>(name("alertBox"));
        QCOMPARE(box->text(), name("No page was printed"));
        QCOMPARE(box->informativeText(), name("The report has only one page."));
        QCOMPARE(files(), QStringList{name("x.log")});
    }

    void theFileToPrintToIsChosenInAPanelOfOurs() {
        show();
        openPrintPanel();
        auto *printers = printPanel()->findChild<QComboBox *>(name("printers"));
        printers->setCurrentIndex(printers->findText(name("Print to File (PDF)")));
        auto *field = printPanel()->findChild<QLineEdit *>(name("filename"));
        field->setText(path("old.pdf"));
        QTest::mouseClick(printPanel()->findChild<QAbstractButton *>(name("fileBrowser")),
                          Qt::LeftButton);
        auto *chooser = printPanel()->findChild<QFileDialog *>(name("filePanel"));
        QVERIFY(chooser != nullptr);
        QCOMPARE(chooser->findChild<QLineEdit *>(name("fileNameEdit"))->text(), name("old.pdf"));
        chooser->findChild<QLineEdit *>(name("fileNameEdit"))->setText(name("new"));
        press(chooser, QDialogButtonBox::Save);
        QCOMPARE(field->text(), path("new.pdf"));
        for (const auto *model : printPanel()->findChildren<QFileSystemModel *>()) {
            QCOMPARE(model->iconProvider(), &fileIcons());
        }
    }

    void aPageShownAnewMeanwhilePrintsNothing() {
        log("x.log", kLog);
        display(0);
        clickRow(0);
        QVERIFY(duringWork(
            [this](QWidget *) {
                QVERIFY(std::filesystem::exists(m_folder->path() / "report.pdf"));
                m_page->viewWillAppear();
            },
            [this] { printTo(path("report.pdf")); }));
        QVERIFY(progressWindow() == nullptr);
        QCOMPARE(rowCount(), 0);
        QCOMPARE(files(), QStringList{name("x.log")});
    }

    void beforeAnyReportAnEmptyTableIsPrinted() {
        show();
        printTo(path("report.pdf"));
        QTRY_VERIFY(std::filesystem::exists(m_folder->path() / "report.pdf"));
        QCOMPARE(printedLines(path("report.pdf")), QStringList());
        QVERIFY(bytesOf(path("report.pdf")).startsWith("%PDF"));
    }

    void aCancelledDialogPrintsNothing() {
        log("x.log", kLog);
        display(0);
        openPrintPanel();
        press(printPanel(), QDialogButtonBox::Cancel);
        QTRY_VERIFY(printPanel() == nullptr);
        // It can be opened again, and the page may go while it is open.
        openPrintPanel();
        m_page.reset();
    }
};

}  // namespace quorbel

int main(int argc, char **argv) {
    // No print server, so no printer: nothing comes out on paper.
    qputenv("CUPS_SERVER", "/nonexistent/cups.sock");
    const QApplication application(argc, argv);
    quorbel::ReportsViewExportTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "ReportsViewExportTest.moc"
