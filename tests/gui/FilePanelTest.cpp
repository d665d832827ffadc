#include "platform/gui/FilePanel.h"
#include "support/ConfigurationFolder.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QCompleter>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QTreeView>

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <memory>

namespace quorbel {

using namespace Qt::StringLiterals;

namespace {

constexpr int kPatienceMs = testing::kPatience.count();

}  // namespace

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

    void aFolderIsNotReplacedByAFile() {
        std::filesystem::create_directory(m_folder->path() / "logs.txt");
        QFileDialog *panel = open(saveRequest());
        enter(panel, "logs"_L1);
        const auto *box = panel->findChild<QMessageBox *>("alertBox"_L1);
        QVERIFY(box != nullptr);
        QCOMPARE(box->text(), u"“logs.txt” is a folder."_s);
        answerAlert(panel, 0);
        QVERIFY(panel->isVisible());
        QVERIFY(m_chosen.isEmpty());
    }

    void openingTakesAnExistingFile() {
        m_folder->write("chime.aiff", "sound");
        enter(open(openRequest()), "chime.aiff"_L1);
        QCOMPARE(m_chosen, QStringList{path("chime.aiff"_L1)});
    }

    void aMissingFileCannotBeOpened() {
        QFileDialog *panel = open(openRequest());
        enter(panel, "missing.aiff"_L1);
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
            enter(panel, "~/"_L1);
            QCOMPARE(panel->directory().canonicalPath(), QDir::home().canonicalPath());
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

    void aNameIsTakenAsItWasTyped_data() {
        QTest::addColumn<QString>("typed");
        QTest::newRow("quotation marks") << "the \"old\" events.csv";
        QTest::newRow("one") << "5\" disk.txt";
        QTest::newRow("in between") << "\"a.txt\" \"b.txt\".txt";
        QTest::newRow("escapes") << "a%20b\\n #1?.txt";
        QTest::newRow("colon first") << ":x.txt";
        QTest::newRow("tilde") << "~x.txt";
    }
    void aNameIsTakenAsItWasTyped() {
        QFETCH(QString, typed);
        enter(open(saveRequest()), typed);
        QCOMPARE(m_chosen, QStringList{path(typed)});
        m_chosen.clear();
        m_folder->write(typed.toStdString(), "text");
        FilePanelRequest request = openRequest();
        request.extensions.clear();
        enter(open(request), typed);
        QCOMPARE(m_chosen, QStringList{path(typed)});
    }

    void aFullPathIsTakenAsItWasTyped() {
        m_folder->write("elsewhere/old.txt", "kept");
        const QString elsewhere = path("elsewhere/old.txt"_L1);
        QFileDialog *panel = open(saveRequest());
        enter(panel, elsewhere);
        answerAlert(panel, 0);
        QCOMPARE(m_chosen, QStringList{elsewhere});
    }

    void aFolderThatDoesNotExistIsRefused_data() {
        QTest::addColumn<bool>("save");
        QTest::addColumn<QString>("typed");
        for (const bool save : {true, false}) {
            QTest::addRow("relative %d", save) << save << "nowhere/events.txt";
            QTest::addRow("full path %d", save) << save << "/nowhere/events.txt";
            QTest::addRow("folder alone %d", save) << save << "nowhere/";
            QTest::addRow("a file %d", save) << save << "file.txt/events.txt";
        }
    }
    void aFolderThatDoesNotExistIsRefused() {
        QFETCH(bool, save);
        QFETCH(QString, typed);
        m_folder->write("file.txt", "text");
        QFileDialog *panel = open(save ? saveRequest() : openRequest());
        enter(panel, typed);
        const auto *box = panel->findChild<QMessageBox *>("alertBox"_L1);
        QVERIFY(box != nullptr);
        QVERIFY2(box->text().startsWith(u"The folder “"_s), qPrintable(box->text()));
        answerAlert(panel, 0);
        QVERIFY(panel->isVisible());
        QVERIFY(m_chosen.isEmpty());
    }

    void offersANameAndItsType_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("stem");
        QTest::newRow("first type") << "Quorbel events.txt" << 0 << "Quorbel events";
        QTest::newRow("second type") << "old.csv" << 1 << "old";
        QTest::newRow("capitals") << "OLD.CSV" << 1 << "OLD";
        QTest::newRow("a foreign type") << "old.log" << 0 << "old";
    }
    void offersANameAndItsType() {
        QFETCH(QString, name);
        QFETCH(int, type);
        QFETCH(QString, stem);
        FilePanelRequest request = saveRequest();
        request.name = name;
        QFileDialog *panel = open(request);
        const auto *field = panel->findChild<QLineEdit *>("fileNameEdit"_L1);
        QCOMPARE(field->text(), name);
        QCOMPARE(field->selectedText(), stem);
        QCOMPARE(panel->findChild<QComboBox *>("fileTypeCombo"_L1)->currentIndex(), type);
        pressAccept(panel);
        QCOMPARE(m_chosen,
                 QStringList{path(type == 0 && name.endsWith(u"log") ? name + u".txt"_s : name)});
    }

    /// Whatever a file holds: to look into it can take for ever.
    void listingOpensNoFile() {
        const auto name = m_folder->write("without_extension", "#!/bin/sh\n");
        const int watch = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
        inotify_add_watch(watch, name.c_str(), IN_OPEN | IN_ACCESS);
        FilePanelRequest request = openRequest();
        request.extensions.clear();
        QFileDialog *panel = open(request);
        QTRY_COMPARE_WITH_TIMEOUT(listed(panel), QStringList{"without_extension"_L1}, kPatienceMs);
        auto *field = panel->findChild<QLineEdit *>("fileNameEdit"_L1);
        QTest::keyClicks(field, path("without"_L1));
        QTRY_VERIFY_WITH_TIMEOUT(field->completer()->popup()->isVisible(), kPatienceMs);
        std::array<char, 4096> events{};
        QCOMPARE(read(watch, events.data(), events.size()), ssize_t{-1});
        ::close(watch);
    }

    void nothingCanBeDeletedOrMoved_data() {
        QTest::addColumn<bool>("save");
        QTest::newRow("save") << true;
        QTest::newRow("open") << false;
    }
    void nothingCanBeDeletedOrMoved() {
        QFETCH(bool, save);
        m_folder->write("inner/kept.txt", "text");
        QFileDialog *panel = open(save ? saveRequest() : openRequest());
        auto *files = panel->findChild<QTreeView *>("treeView"_L1);
        QTRY_COMPARE_WITH_TIMEOUT(listed(panel), QStringList{"inner"_L1}, kPatienceMs);
        // Where the folder could be deleted, the question would wait for an answer.
        QTimer agreement;
        bool asked = false;
        connect(&agreement, &QTimer::timeout, this, [&asked] {
            if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
                asked = true;
                box->reject();
            }
        });
        agreement.start(0);
        files->setFocus();
        files->setCurrentIndex(files->model()->index(0, 0, files->rootIndex()));
        panel->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(panel));
        QTest::keyClick(files, Qt::Key_Delete);
        QVERIFY(!asked);
        QCOMPARE(panel->findChild<QWidget *>("newFolderButton"_L1)->isVisible(), save);
        for (const auto *view : panel->findChildren<QAbstractItemView *>()) {
            QCOMPARE(view->dragDropMode(), QAbstractItemView::NoDragDrop);
            QCOMPARE(view->contextMenuPolicy(), Qt::NoContextMenu);
        }
        QVERIFY(QFile::exists(path("inner/kept.txt"_L1)));
    }

    void foldersCanBeMadeWhereAFileIsToBeSaved() {
        QFileDialog *panel = open(saveRequest());
        QTest::mouseClick(panel->findChild<QToolButton *>("newFolderButton"_L1), Qt::LeftButton);
        QTRY_COMPARE_WITH_TIMEOUT(QDir(folder()).entryList(QDir::Dirs | QDir::NoDotAndDotDot),
                                  QStringList{"New Folder"_L1}, kPatienceMs);
    }

    void aLongNameHasTheRoomThatThereIs() {
        const QString name =
            "a name that is as long as the names of exported reports can be.txt"_L1;
        m_folder->write(name.toStdString(), "text");
        QFileDialog *panel = open(saveRequest());
        QTRY_COMPARE_WITH_TIMEOUT(listed(panel), QStringList{name}, kPatienceMs);
        panel->resize(1400, 500);
        const auto *files = panel->findChild<QTreeView *>("treeView"_L1);
        const int needed =
            files->fontMetrics().horizontalAdvance(name) + 2 * files->iconSize().width();
        QTRY_VERIFY_WITH_TIMEOUT(files->columnWidth(0) > needed, kPatienceMs);
        // Without pushing anything out of sight.
        const int last = files->model()->columnCount() - 1;
        QVERIFY(files->columnViewportPosition(last) + files->columnWidth(last) <=
                files->viewport()->width());
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

    /// The names in the list.
    static QStringList listed(const QFileDialog *panel) {
        const auto *files = panel->findChild<QTreeView *>("treeView"_L1);
        QStringList names;
        for (int row = 0; row < files->model()->rowCount(files->rootIndex()); ++row) {
            names += files->model()->index(row, 0, files->rootIndex()).data().toString();
        }
        return names;
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
    const quorbel::testing::ConfigurationFolder configuration;
    const QApplication application(argc, argv);
    quorbel::FilePanelTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "FilePanelTest.moc"
