#include "events/ScanViewFixture.h"
#include "platform/gui/ProgressWindow.h"
#include "support/ConfigurationFolder.h"
#include "support/TemporaryFolder.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QRegularExpression>
#include <QTest>
#include <QTimer>

#include <filesystem>

namespace quorbel {

using namespace testing;

class ScanViewExportTest : public QObject, private ScanViewFixture {
    Q_OBJECT

private:
    static constexpr const char *kHeader = "Rating\tDate\tPriority\tHost\tMessage\n";

    QString path(const char *file) {
        return QString::fromStdString((m_folder->path() / file).string());
    }
    static QByteArray bytesOf(const QString &path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no such file");
    }
    QFileDialog *panel() { return m_page->findChild<QFileDialog *>(name("filePanel")); }
    void press(QDialogButtonBox::StandardButton button) {
        const auto *buttons = panel()->findChild<QDialogButtonBox *>(name("buttonBox"));
        QTest::mouseClick(buttons->button(button), Qt::LeftButton);
    }
    // Names the file in the panel that is open and presses "Save".
    void save(const QString &file) {
        QTRY_VERIFY(panel() != nullptr && panel()->isVisible());
        panel()->findChild<QLineEdit *>(name("fileNameEdit"))->setText(file);
        press(QDialogButtonBox::Save);
        QTRY_VERIFY(panel() == nullptr);
    }
    void exportAll(const QString &file) {
        click("exportEvents");
        answer(name("OK"), true);
        save(file);
    }
    static bool isProgressShown() {
        return std::ranges::any_of(QApplication::topLevelWidgets(), [](const QWidget *window) {
            return window->objectName() == name("progressWindow") && window->isVisible();
        });
    }

private Q_SLOTS:
    void init() {
        m_folder = std::make_unique<TemporaryFolder>();
        makePage();
    }
    void cleanup() {
        m_page.reset();
        m_delegate.reset();
        m_folder.reset();
    }

    void writesTheSelectedRowsAsShownInDisplayedOrder() {
        list().insertRaw(fields("1700000000", "oldest"));
        list().insertRaw(fields("1700000001", "not selected", "Kern.Alert"));
        list().insertRaw(fields("1700000002", "newest", "Local7.Debug"));
        show();
        clickRow(2);
        clickRow(0, Qt::ControlModifier);
        click("exportEvents");
        QVERIFY(alert() == nullptr);
        save(path("events.txt"));
        QCOMPARE(bytesOf(path("events.txt")),
                 QByteArray(kHeader) +
                     "Normal\t2023-11-14 22:13:22\tLocal7.Debug\t10.0.0.5\tnewest\n"
                     "Moderate\t2023-11-14 22:13:20\tLocal7.Error\t10.0.0.5\toldest\n");
        QCOMPARE(selected(), (QList<int>{0, 2}));
    }

    void thePanelTakesTextFilesOnly() {
        list().insertRaw(fields("1700000000"));
        show();
        clickRow(0);
        click("exportEvents");
        QTRY_VERIFY(panel() != nullptr);
        QCOMPARE(panel()->findChild<QLabel *>(name("filePanelMessage"))->text(),
                 name("Please select export file name with 'txt' or 'csv' extensions:"));
        QCOMPARE(panel()->nameFilters().size(), 2);
        QVERIFY(panel()->nameFilters().at(0).contains(name("*.txt")));
        QVERIFY(panel()->nameFilters().at(1).contains(name("*.csv")));
        QCOMPARE(panel()->acceptMode(), QFileDialog::AcceptSave);
        QVERIFY(QRegularExpression(name("^Quorbel events \\d{4}-\\d{2}-\\d{2}\\.txt$"))
                    .match(panel()->findChild<QLineEdit *>(name("fileNameEdit"))->text())
                    .hasMatch());
    }

    void commasBreakTheColumnsOfACsvFile() {
        list().insertRaw(fields("1700000000", "one, \"two\"\nthree"));
        show();
        clickRow(0);
        click("exportEvents");
        save(path("events.csv"));
        QCOMPARE(bytesOf(path("events.csv")),
                 QByteArray("Rating,Date,Priority,Host,Message\n"
                            "Moderate,2023-11-14 22:13:20,Local7.Error,10.0.0.5,"
                            "one, \"two\"\nthree\n"));
    }

    void hiddenColumnsAreWrittenToo() {
        list().insertRaw(fields("1700000000", "m"));
        show();
        table()->setColumnHidden(2, true);
        exportAll(path("events.txt"));
        QCOMPARE(
            bytesOf(path("events.txt")),
            QByteArray(kHeader) + "Moderate\t2023-11-14 22:13:20\tLocal7.Error\t10.0.0.5\tm\n");
    }

    void withoutASelectionItAsksForAll() {
        list().insertRaw(fields("1700000000"));
        show();
        click("exportEvents");
        QTRY_VERIFY(alert() != nullptr);
        QCOMPARE(alert()->windowTitle(), name("Quorbel"));
        QCOMPARE(alert()->text(), name("No events selected"));
        QCOMPARE(alert()->informativeText(),
                 name("Please select specific events or check all events."));
        QCOMPARE(alert()->checkBox()->text(), name("Export all events"));
        QVERIFY(!alert()->checkBox()->isChecked());
        QCOMPARE(alert()->buttons().size(), 1);
        answer(name("OK"));
        QVERIFY(panel() == nullptr);
    }

    void anEmptyListWritesTheHeaderAlone() {
        show();
        exportAll(path("events.txt"));
        QCOMPARE(bytesOf(path("events.txt")), QByteArray(kHeader));
    }

    void aCancelledPanelWritesNothing() {
        list().insertRaw(fields("1700000000"));
        show();
        clickRow(0);
        click("exportEvents");
        QTRY_VERIFY(panel() != nullptr && panel()->isVisible());
        panel()->findChild<QLineEdit *>(name("fileNameEdit"))->setText(path("events.txt"));
        press(QDialogButtonBox::Cancel);
        QTRY_VERIFY(panel() == nullptr);
        QVERIFY(std::filesystem::is_empty(m_folder->path()));
        QVERIFY(alert() == nullptr);
    }

    void aFileThatCannotBeWrittenGoesUnmentioned() {
        list().insertRaw(fields("1700000000"));
        show();
        clickRow(0);
        click("exportEvents");
        QTRY_VERIFY(panel() != nullptr && panel()->isVisible());
        // No one, root included, can make a file there.
        save(name("/proc/events.txt"));
        QVERIFY(alert() == nullptr);
        QVERIFY(!isProgressShown());
    }

    void textsAreWrittenAsTheyStand_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("64 KiB") << QByteArray(65536, 'x');
        QTest::newRow("right to left") << QByteArray("שלום עולם, مرحبا");
        QTest::newRow("emoji") << QByteArray("disk 💾 is 🔥 👩‍👩‍👧");
        QTest::newRow("a tab and a return") << QByteArray("a\tb\rc");
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("U+FEFF in front") << QByteArray("\uFEFFhost");
        QTest::newRow("unseen characters") << QByteArray("user \u202Etoor\u202C\u2028\u200B\uFFFE");
        QTest::newRow("1 MB") << QByteArray(1'000'000, 'x');
    }
    void textsAreWrittenAsTheyStand() {
        QFETCH(QByteArray, text);
        // A priority without a point, and no date and no host.
        list().insertRaw({std::nullopt, "Kern", std::nullopt, text.toStdString(), {}});
        show();
        const QByteArray date = cell(0, 1).toUtf8();
        exportAll(path("events.txt"));
        QCOMPARE(bytesOf(path("events.txt")), QByteArray(kHeader) + cell(0, 0).toUtf8() + "\t" +
                                                  date + "\tKern\t\t" + text + "\n");
    }

    void theEventsThatWereChosenAreWrittenHoweverTheListChangesMeanwhile() {
        list().insertRaw(fields("1700000000", "chosen"));
        list().insertRaw(fields("1700000001", "removed meanwhile"));
        show();
        clickRow(0);
        clickRow(1, Qt::ControlModifier);
        click("exportEvents");
        QTRY_VERIFY(panel() != nullptr);
        m_page->insertEvent(fields("1700000002", "new"));
        m_page->removeEvent(fields("1700000001", "removed meanwhile"));
        QTRY_COMPARE(list().size(), std::size_t{2});
        save(path("events.txt"));
        QCOMPARE(bytesOf(path("events.txt")),
                 QByteArray(kHeader) +
                     "Moderate\t2023-11-14 22:13:20\tLocal7.Error\t10.0.0.5\tchosen\n");
    }

    void eventsThatComeAndGoDuringALongExportShiftNothing() {
        constexpr int kEvents = 20'000;
        list().beginBulkInsert();
        for (int i = 0; i < kEvents; ++i) {
            list().insertRaw(fields(std::to_string(1700000000 + i), std::to_string(i)));
        }
        list().endBulkInsert();
        show();
        bool progressWasShown = false;
        int arrived = 0;
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&] {
            if (isProgressShown()) {
                progressWasShown = true;
                ++arrived;
                m_page->insertEvent(fields("1800000000", "new"));
                if (arrived == 1) {
                    m_page->removeEvent(fields("1700000007", "7"));
                    QCoreApplication::sendPostedEvents(m_page.get());
                }
            }
        });
        timer.start(0);
        ProgressWindow::setPatienceMs(0);
        exportAll(path("events.csv"));
        ProgressWindow::setPatienceMs(ProgressWindow::kPatienceMs);
        timer.stop();
        QVERIFY(progressWasShown);
        QVERIFY(!isProgressShown());
        const QList<QByteArray> lines = bytesOf(path("events.csv")).split('\n');
        QCOMPARE(lines.size(), kEvents + 1);  // the header and the end, less the one that went
        for (int row = 0, number = kEvents - 1; row < kEvents - 1; ++row, --number) {
            if (number == 7) {
                --number;
            }
            const QByteArray &line = lines.at(row + 1);
            QVERIFY2(line.endsWith(",10.0.0.5," + QByteArray::number(number)), line.constData());
        }
    }

private:
    std::unique_ptr<TemporaryFolder> m_folder;
};

}  // namespace quorbel

int main(int argc, char **argv) {
    // Where file dialogs keep their history.
    const quorbel::testing::ConfigurationFolder configuration;
    const QApplication application(argc, argv);
    quorbel::ScanViewExportTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "ScanViewExportTest.moc"
