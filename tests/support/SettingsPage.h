#pragma once

#include "common/SettingsDocument.h"
#include "core/AppDelegate.h"
#include "platform/KeyedArchive.h"
#include "platform/gui/QtText.h"
#include "platform/gui/Sheet.h"
#include "platform/gui/Storyboard.h"
#include "support/PrivateBus.h"
#include "support/ServiceStandIn.h"
#include "support/TemporaryFolder.h"
#include "support/ValueText.h"
#include "support/WindowStandIn.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTableView>
#include <QTest>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quorbel::testing {

/// What a settings page works in: a library folder, a stand-in for the service on a bus of its own,
/// a main window that notes where the page leads to; and the hands that work the page's controls.
///
/// Controls are looked for in the sheet or alert that was opened last, then in what it was
/// presented over, down to the page.
class SettingsPage {
public:
    SettingsPage() {
        qputenv("QUORBEL_LIBRARY", QByteArray::fromStdString(m_library.path().string()));
        m_delegate.setMainWindow(&mainWindow);
    }
    ~SettingsPage() {
        m_page.reset();
        qunsetenv("QUORBEL_LIBRARY");
    }
    SettingsPage(const SettingsPage &) = delete;
    SettingsPage &operator=(const SettingsPage &) = delete;

    Storyboard storyboard;  ///< to be filled before show()
    WindowStandIn mainWindow;

    AppDelegate &delegate() { return m_delegate; }
    ServiceStandIn &service() { return *m_service; }
    /// Gives the service's name on the bus back, for another to take it.
    void endService() { m_service.reset(); }
    [[nodiscard]] const std::string &busAddress() const { return m_bus.address(); }
    QWidget &page() { return *m_page; }
    [[nodiscard]] const std::filesystem::path &library() const { return m_library.path(); }

    void write(const Dictionary &settings) const {
        m_library.write(kSettingsFileName, writeKeyedArchive(settings));
    }

    /// Shows the page by its identifier; the same one again when it was shown before.
    void show(const QByteArray &identifier) {
        if (!m_page) {
            m_page = storyboard.instantiate(QString::fromLatin1(identifier));
        }
        m_page->hide();
        m_page->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_page.get()));
    }

    /// The open sheet or alert that was opened last; null when none is open.
    [[nodiscard]] QDialog *openSheet() const {
        QDialog *last = nullptr;
        for (QDialog *dialog : m_page->findChildren<QDialog *>()) {  // those below come later
            last = dialog->isVisible() ? dialog : last;
        }
        return last;
    }
    /// Its name; empty when none is open.
    [[nodiscard]] QString openSheetName() const {
        return openSheet() != nullptr ? openSheet()->objectName() : QString();
    }

    template <class Control = QWidget>
    Control &control(const QByteArray &name) {
        QWidget *top = openSheet() != nullptr ? openSheet() : m_page.get();
        for (QWidget *window = top; window != nullptr; window = window->parentWidget()) {
            for (Control *found : window->findChildren<Control *>(QString::fromLatin1(name))) {
                if (found->window() == window->window()) {
                    return *found;
                }
            }
        }
        qFatal("no control %s in %s", name.constData(), qPrintable(top->objectName()));
    }
    void click(const QByteArray &button) {
        auto &found = control<QAbstractButton>(button);
        // Where the tick of a check box is.
        QTest::mouseClick(&found, Qt::LeftButton, {}, QPoint(8, found.height() / 2));
    }
    /// Holds a key of a control down until it has repeated some times, wherever that goes.
    void holdDown(const QByteArray &name, Qt::Key key) {
        QPointer<QWidget> target = &control(name);
        QTest::keyPress(target, key);
        for (int i = 0; i < 5; ++i) {
            if (QDialog *sheet = openSheet()) {
                target = sheet->focusWidget() != nullptr ? sheet->focusWidget() : sheet;
            } else {
                target = &control(name);
            }
            QKeyEvent repeat(QEvent::KeyPress, key, Qt::NoModifier, QString(), true);
            QApplication::sendEvent(target, &repeat);
        }
    }
    /// Types into a field in place of what it holds.
    void type(const QByteArray &field, const QString &text) {
        auto &found = control(field);
        QTest::mouseClick(&found, Qt::LeftButton);
        QTest::keyClick(&found, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(&found, Qt::Key_Delete);
        for (const QChar character : text) {
            if (character == u'\n') {
                QTest::keyClick(&found, Qt::Key_Return);
            } else {
                // keyClicks() takes no other than ASCII characters.
                QTest::sendKeyEvent(QTest::Click, &found, Qt::Key_unknown, QString(character), {});
            }
        }
    }
    /// Chooses an item of a chooser with the keyboard.
    void choose(const QByteArray &chooser, const char *item) {
        auto &found = control<QComboBox>(chooser);
        found.setFocus();
        QTest::keyClick(&found, Qt::Key_Home);
        for (int i = 0; i < found.count() && found.currentText() != QString::fromUtf8(item); ++i) {
            QTest::keyClick(&found, Qt::Key_Down);
        }
        QCOMPARE(found.currentText(), QString::fromUtf8(item));
    }
    void clickRow(const QByteArray &table, int row) {
        auto &found = control<QTableView>(table);
        QTest::mouseClick(found.viewport(), Qt::LeftButton, {},
                          found.visualRect(found.model()->index(row, 0)).center());
    }
    /// Clicks below the last row, which selects nothing.
    void clickBelowRows(const QByteArray &table) {
        QWidget *viewport = control<QTableView>(table).viewport();
        QTest::mouseClick(viewport, Qt::LeftButton, Qt::ControlModifier,
                          QPoint(5, viewport->height() - 5));
    }

    QString text(const QByteArray &field) { return control<QLineEdit>(field).text(); }
    QString area(const QByteArray &field) { return control<QPlainTextEdit>(field).toPlainText(); }
    QString chosen(const QByteArray &chooser) { return control<QComboBox>(chooser).currentText(); }
    bool isChecked(const QByteArray &box) { return control<QAbstractButton>(box).isChecked(); }
    bool isEnabled(const QByteArray &name) { return control(name).isEnabled(); }
    QString rows(const QByteArray &table, int column = 0) {
        const QAbstractItemModel *model = control<QTableView>(table).model();
        QStringList texts;
        for (int row = 0; row < model->rowCount(); ++row) {
            texts += model->index(row, column).data().toString();
        }
        return texts.join(u'|');
    }
    /// The selected row; -1 when there is none.
    int selectedRow(const QByteArray &table) {
        const auto rows = control<QTableView>(table).selectionModel()->selectedRows();
        return rows.isEmpty() ? -1 : rows.first().row();
    }

    /// The next command that reaches the service, as text; empty when none does.
    QString command() {
        const auto commands = m_service->waitForCommands(m_seen + 1);
        return m_seen < commands.size() ? toQString(textOf(commands[m_seen++])) : QString();
    }
    /// The document that the next command saves; empty when that is another command.
    Dictionary saved() {
        const auto commands = m_service->waitForCommands(m_seen + 1);
        if (m_seen == commands.size()) {
            return {};
        }
        const Dictionary &command = commands[m_seen++];
        const bool isSave = settingText(command, "command") == "save" && command.size() == 2;
        return isSave ? settingDictionary(command, "Settings") : Dictionary{};
    }
    QString savedText() { return toQString(textOf(saved())); }
    /// Whether no further command is on its way: a last one overtakes none.
    bool nothingWasSent() {
        m_delegate.setPipe({{"command", "last"}});
        return command() == QStringLiteral("{\"command\": \"last\"}");
    }

private:
    TemporaryFolder m_library;
    PrivateBus m_bus;
    std::optional<ServiceStandIn> m_service{std::in_place};
    std::size_t m_seen = 0;
    AppDelegate m_delegate;
    std::unique_ptr<QWidget> m_page;
};

}  // namespace quorbel::testing
