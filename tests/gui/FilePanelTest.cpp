#include "platform/gui/FilePanel.h"
#include "support/TemporaryFolder.h"

#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTest>

#include <memory>

namespace quorbel {

using namespace Qt::StringLiterals;

class FilePanelTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_chosen.clear();
        m_folder = std::make_unique<testing::TemporaryFolder>();
        m_window = std::make_unique<QWidget>();
        m_window->show();
    }

    void cleanup() {
        m_window.reset();
        m_folder.reset();
    }

    void showsItsMessageAndReturnsAtOnce() {
        QFileDialog *panel = open(saveRequest());
        QCOMPARE(panel->windowTitle(), saveRequest().message);
        QCOMPARE(panel->findChild<QLabel *>("filePanelMessage"_L1)->text(), saveRequest().message);
        QCOMPARE(panel->windowModality(), Qt::WindowModal);
        QCOMPARE(panel->directory().canonicalPath(), QDir(folder()).canonicalPath());
        QVERIFY(m_chosen.isEmpty());
    }

    void aNamesExtensionIsCompleted_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("saved");
        QTest::newRow("none") << "events" << 0 << "events.txt";
        QTest::newRow("none, second type") << "events" << 1 << "events.csv";
        QTest::newRow("the chosen one") << "events.txt" << 0 << "events.txt";
        QTest::newRow("the other one") << "events.csv" << 0 << "events.csv";
        QTest::newRow("capitals") << "EVENTS.CSV" << 0 << "EVENTS.CSV";
        QTest::newRow("a foreign one") << "events.pdf" << 0 << "events.pdf.txt";
        QTest::newRow("a dot in the name") << "host.example" << 1 << "host.example.csv";
        QTest::newRow("only a part of one") << "events.tx" << 0 << "events.tx.txt";
    }
    void aNamesExtensionIsCompleted() {
        QFETCH(QString, typed);
        QFETCH(int, type);
        QFETCH(QString, saved);
        QFileDialog *panel = open(saveRequest());
        auto *types = panel->findChild<QComboBox *>("fileTypeCombo"_L1);
        types->setFocus();
        while (types->currentIndex() < type) {
            QTest::keyClick(types, Qt::Key_Down);
        }
        enter(panel, typed);
        QCOMPARE(m_chosen, QStringList{path(saved)});
        QVERIFY(!panel->isVisible());
    }

    void savingOverAFileAsksFirst() {
        m_folder->write("old.txt", "kept");
        const QPointer<QFileDialog> panel = open(saveRequest());
        enter(panel, "old"_L1);
        QVERIFY(m_chosen.isEmpty());
        answerAlert(panel, 1);
        QVERIFY(m_chosen.isEmpty());
        QVERIFY(panel->isVisible());
        QTRY_VERIFY(panel->findChild<QMessageBox *>() == nullptr);
        pressAccept(panel);
        answerAlert(panel, 0);
        QCOMPARE(m_chosen, QStringList{path("old.txt"_L1)});
        QTRY_VERIFY(panel.isNull());
    }

    void openingTakesAnExistingFile() {
        m_folder->write("chime.aiff", "sound");
        enter(open(openRequest()), "chime.aiff"_L1);
        QCOMPARE(m_chosen, QStringList{path("chime.aiff"_L1)});
    }

    void aMissingFileCannotBeOpened() {
        QFileDialog *panel = open(openRequest());
        enter(panel, "missing.aiff"_L1);
        QVERIFY(panel->isVisible());
        QVERIFY(m_chosen.isEmpty());
    }

    void aFileThatVanishedIsRefused() {
        QFileDialog *panel = open(openRequest());
        panel->findChild<QLineEdit *>("fileNameEdit"_L1)->setText("missing.aiff"_L1);
        static_cast<QDialog *>(panel)->accept();
        answerAlert(panel, 0);
        QVERIFY(panel->isVisible());
        QVERIFY(m_chosen.isEmpty());
    }

    void openingRefusesAForeignTypeAndStaysOpen() {
        m_folder->write("notes.txt", "text");
        QFileDialog *panel = open(openRequest());
        enter(panel, "notes.txt"_L1);
        answerAlert(panel, 0);
        QVERIFY(panel->isVisible());
        QVERIFY(m_chosen.isEmpty());
    }

    void anyFileCanBeOpenedWithoutTypes() {
        m_folder->write("command", "#!");
        FilePanelRequest request = openRequest();
        request.extensions.clear();
        enter(open(request), "command"_L1);
        QCOMPARE(m_chosen, QStringList{path("command"_L1)});
    }

    void aFoldersNameEntersIt() {
        m_folder->write("inner/report.txt", "text");
        for (const FilePanelRequest &request : {saveRequest(), openRequest()}) {
            QFileDialog *panel = open(request);
            enter(panel, "inner"_L1);
            QVERIFY(panel->isVisible());
            QVERIFY(m_chosen.isEmpty());
            QTRY_COMPARE(panel->directory().dirName(), "inner"_L1);
            panel->reject();
        }
    }

    void cancellingChoosesNothing() {
        const QPointer<QFileDialog> panel = open(saveRequest());
        panel->findChild<QLineEdit *>("fileNameEdit"_L1)->setText("events"_L1);
        QTest::mouseClick(buttons(panel)->button(QDialogButtonBox::Cancel), Qt::LeftButton);
        QTRY_VERIFY(panel.isNull());
        QVERIFY(m_chosen.isEmpty());
    }

    void aMissingFolderIsReplacedByTheHomeFolder() {
        FilePanelRequest request = openRequest();
        request.folder = path("nowhere"_L1);
        QCOMPARE(open(request)->directory().canonicalPath(), QDir::home().canonicalPath());
    }

    void aDestroyedParentLeavesItUnanswered() {
        const QPointer<QFileDialog> panel = open(saveRequest());
        m_window.reset();
        QVERIFY(panel.isNull());
        QVERIFY(m_chosen.isEmpty());
    }

private:
    [[nodiscard]] QString folder() const {
        return QString::fromStdString(m_folder->path().string());
    }
    [[nodiscard]] QString path(const QString &name) const { return folder() + u'/' + name; }

    [[nodiscard]] FilePanelRequest saveRequest() const {
        return {.message = "Please select export file name:"_L1,
                .extensions = {"txt"_L1, "csv"_L1},
                .folder = folder(),
                .save = true};
    }
    [[nodiscard]] FilePanelRequest openRequest() const {
        return {.message = "Please select sound file name:"_L1,
                .extensions = {"aiff"_L1, "aif"_L1},
                .folder = folder(),
                .save = false};
    }

    QFileDialog *open(const FilePanelRequest &request) {
        openFilePanel(m_window.get(), request,
                      [this](const QString &chosen) { m_chosen.append(chosen); });
        return m_window->findChildren<QFileDialog *>("filePanel"_L1).last();
    }

    static QDialogButtonBox *buttons(const QFileDialog *panel) {
        return panel->findChild<QDialogButtonBox *>("buttonBox"_L1);
    }
    static void pressAccept(const QFileDialog *panel) {
        const auto kind = panel->acceptMode() == QFileDialog::AcceptSave ? QDialogButtonBox::Save
                                                                         : QDialogButtonBox::Open;
        QTest::mouseClick(buttons(panel)->button(kind), Qt::LeftButton);
    }
    static void enter(const QFileDialog *panel, const QString &name) {
        panel->findChild<QLineEdit *>("fileNameEdit"_L1)->setText(name);
        pressAccept(panel);
    }
    static void answerAlert(const QFileDialog *panel, int index) {
        const auto *box = panel->findChild<QMessageBox *>("alertBox"_L1);
        QVERIFY(box != nullptr);
        QTest::mouseClick(box->findChild<QPushButton *>(QStringLiteral("alertButton%1").arg(index)),
                          Qt::LeftButton);
    }

    std::unique_ptr<testing::TemporaryFolder> m_folder;
    std::unique_ptr<QWidget> m_window;
    QStringList m_chosen;
};

}  // namespace quorbel

int main(int argc, char **argv) {
    // Where file dialogs keep their history.
    const quorbel::testing::TemporaryFolder configuration;
    qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(configuration.path().string()));
    const QApplication application(argc, argv);
    quorbel::FilePanelTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "FilePanelTest.moc"
