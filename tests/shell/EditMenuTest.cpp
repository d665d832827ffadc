#include "support/FrontEnd.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"

#include <QAbstractButton>
#include <QAction>
#include <QClipboard>
#include <QDialog>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QStackedWidget>
#include <QTableView>
#include <QTest>

#include <memory>
#include <optional>

namespace quorbel {

using namespace Qt::StringLiterals;
using namespace testing;

/// The Edit and View menus of the real window over the real pages.
class EditMenuTest : public QObject {
    Q_OBJECT

    QMenu &menu() { return m_frontEnd->control<QMenu>("editMenu"); }
    QTableView &table() {
        auto *page = m_frontEnd->window->findChild<QWidget *>(u"ScanView"_s);
        return *page->findChild<QTableView *>();
    }
    QStringList texts() {
        QStringList result;
        for (const QAction *entry : menu().actions()) {
            result += entry->isSeparator() ? u"-"_s : entry->text().remove(u'&');
        }
        return result;
    }
    QAction *action(const char *command) {
        for (QAction *found : menu().actions()) {
            if (found->objectName() == QLatin1String(command)) {
                return found;
            }
        }
        return nullptr;
    }
    void activate() {
        m_frontEnd->window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_frontEnd->window.get()));
    }
    // Opens it by its key.
    void open() {
        activate();
        QTest::keyClick(m_frontEnd->window.get(), Qt::Key_E, Qt::AltModifier);
        QTRY_VERIFY(menu().isVisible());
    }
    void choose(const char *command) {
        QTest::mouseClick(&menu(), Qt::LeftButton, {},
                          menu().actionGeometry(action(command)).center());
        QTRY_VERIFY(!menu().isVisible());
    }

private Q_SLOTS:
    void init() {
        m_library.write("one.log",
                        "1700000000,Local7.Error,10.0.0.5,first\n"
                        "1700000001,Local7.Error,10.0.0.6,second\n");
        m_frontEnd = std::make_unique<FrontEnd>();
        m_frontEnd->delegate.state.newDateFormat = m_frontEnd->delegate.state.oldDateFormat =
            "yyyy-MM-dd HH:mm:ss";
        activate();
    }
    void cleanup() { m_frontEnd.reset(); }

    void holdsTheCommandsOfThePageInSight() {
        QVERIFY(!menu().menuAction()->isEnabled());
        m_frontEnd->window->Scan();
        QVERIFY(menu().menuAction()->isEnabled());
        const QStringList events{u"Undo Delete"_s,
                                 u"-"_s,
                                 u"Copy"_s,
                                 u"Copy Message"_s,
                                 u"-"_s,
                                 u"Details\tReturn"_s,
                                 u"-"_s,
                                 u"Only This Host"_s,
                                 u"Not This Host"_s,
                                 u"Only Like This"_s,
                                 u"Show Surroundings\tCtrl+Shift+F"_s,
                                 u"-"_s,
                                 u"Exclude Messages Like This..."_s,
                                 u"Automatic Action..."_s,
                                 u"-"_s,
                                 u"Delete..."_s};
        QCOMPARE(texts(), events);
        m_frontEnd->window->Reports();
        QCOMPARE(texts(), (QStringList{u"Copy"_s, u"Copy Message"_s}));
        m_frontEnd->window->Tools();
        QVERIFY(texts().isEmpty());
        QVERIFY(!menu().menuAction()->isEnabled());
        m_frontEnd->window->Scan();
        QCOMPARE(texts(), events);
    }

    void anEventBecomesAFilterAndAnAction_data() {
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<Tab>("page");
        QTest::addColumn<QByteArray>("sheet");
        QTest::addColumn<QByteArray>("message");
        QTest::newRow("filter") << QByteArray("excludeLikeThis") << Tab::kOptions
                                << QByteArray("filterView") << QByteArray("filterMessage");
        QTest::newRow("action") << QByteArray("actionLikeThis") << Tab::kActions
                                << QByteArray("actionView") << QByteArray("actionMessage");
    }
    void anEventBecomesAFilterAndAnAction() {
        QFETCH(QByteArray, command);
        QFETCH(Tab, page);
        QFETCH(QByteArray, sheet);
        QFETCH(QByteArray, message);
        m_frontEnd->window->Scan();
        QTRY_VERIFY(table().hasFocus());
        QTest::keyClick(&table(), Qt::Key_Down);
        open();
        choose(command.constData());
        const auto tab = [this] {
            return static_cast<Tab>(m_frontEnd->control<QStackedWidget>("tabView").currentIndex());
        };
        QCOMPARE(tab(), page);
        QVERIFY(m_frontEnd->control<QAbstractButton>("Scan").isChecked());
        auto &editor = m_frontEnd->control<QDialog>(sheet.constData());
        QTRY_VERIFY(editor.isVisible());
        QCOMPARE(editor.findChild<QLineEdit *>(QString::fromLatin1(message))->text(), u"second"_s);
        QCOMPARE(editor.findChild<QLabel *>(u"hostMeaning"_s)->text(), u"1 address"_s);
        QTest::keyClick(&editor, Qt::Key_Escape);
        QTRY_VERIFY(m_frontEnd->window->findChild<QDialog *>(QString::fromLatin1(sheet)) ==
                    nullptr);
        auto *settings = m_frontEnd->control<QStackedWidget>("tabView").currentWidget();
        QTest::mouseClick(settings->findChild<QAbstractButton *>(u"onCancel"_s), Qt::LeftButton);
        QCOMPARE(tab(), Tab::kEvents);
    }

    void aFilterAndAnActionSayThatAHostsNameCannotBeMeant_data() {
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<QByteArray>("sheet");
        QTest::newRow("filter") << QByteArray("excludeLikeThis") << QByteArray("filterView");
        QTest::newRow("action") << QByteArray("actionLikeThis") << QByteArray("actionView");
    }
    void aFilterAndAnActionSayThatAHostsNameCannotBeMeant() {
        QFETCH(QByteArray, command);
        QFETCH(QByteArray, sheet);
        m_frontEnd->window->Scan();
        QTRY_VERIFY(table().hasFocus());
        m_frontEnd->delegate.events.insertRaw({"1700000002", "Kern.Error", "fs01", "third", {}});
        QTest::keyClick(&table(), Qt::Key_Home);
        QTest::keyClick(&table(), Qt::Key_Down);
        QTest::keyClick(&table(), Qt::Key_Up);
        open();
        choose(command.constData());
        auto &editor = m_frontEnd->control<QDialog>(sheet.constData());
        QTRY_VERIFY(editor.isVisible());
        QCOMPARE(editor.findChild<QLabel *>(u"hostMeaning"_s)->text(),
                 u"Any host: only an address can be meant, not “fs01”"_s);
    }

    void theViewMenuHoldsWhatOneDoesWithTheList() {
        QMenu &view = m_frontEnd->control<QMenu>("viewMenu");
        QVERIFY(!view.menuAction()->isEnabled());
        m_frontEnd->window->Scan();
        QTRY_VERIFY(table().hasFocus());
        QStringList entries;
        for (const QAction *entry : view.actions()) {
            entries += entry->text().remove(u'&');
        }
        QCOMPARE(entries, (QStringList{u"Find...	Ctrl+F"_s, u"Questions...	Ctrl+L"_s,
                                       u"Clear the Filter	Ctrl+Shift+L"_s,
                                       u"Show Surroundings	Ctrl+Shift+F"_s,
                                       u"Hold New Events	Ctrl+H"_s, u"Timeline	Ctrl+T"_s,
                                       u"Go to the Newest	Ctrl+Home"_s}));
        const auto choose = [&](int entry) {
            QCoreApplication::processEvents();
            activate();
            auto &bar = m_frontEnd->control<QMenuBar>("menuBar");
            QTest::mouseClick(&bar, Qt::LeftButton, {},
                              bar.actionGeometry(view.menuAction()).center());
            QTRY_VERIFY(view.isVisible());
            QTest::mouseClick(&view, Qt::LeftButton, {},
                              view.actionGeometry(view.actions().at(entry)).center());
            QTRY_VERIFY(!view.isVisible());
        };
        choose(0);
        auto &field = m_frontEnd->control<QLineEdit>("findText");
        QTRY_VERIFY(field.hasFocus());
        QTest::keyClicks(&field, u"second"_s);
        QTRY_COMPARE(table().model()->rowCount(), 1);
        choose(2);
        QTRY_COMPARE(table().model()->rowCount(), 2);
        choose(4);
        QVERIFY(m_frontEnd->control<QAbstractButton>("holdEvents").isChecked());
        choose(4);
        QVERIFY(!m_frontEnd->control<QAbstractButton>("holdEvents").isChecked());
        m_frontEnd->window->Tools();
        QVERIFY(!view.menuAction()->isEnabled());
    }

    void runsThemForTheSelectedRows() {
        m_frontEnd->window->Scan();
        QTRY_VERIFY(table().hasFocus());
        open();
        QVERIFY(!action("copyRows")->isEnabled());
        QVERIFY(action("deleteSelected")->isEnabled());
        QTest::keyClick(&menu(), Qt::Key_Escape);
        QTRY_VERIFY(!menu().isVisible());
        table().selectRow(0);
        open();
        choose("copyRows");
        QTRY_COMPARE(QGuiApplication::clipboard()->text(),
                     u"Moderate\t2023-11-14 22:13:21\tLocal7.Error\t10.0.0.6\tsecond"_s);
        open();
        choose("deleteSelected");
        QTRY_VERIFY(m_frontEnd->window->findChild<QMessageBox *>() != nullptr);
        QCOMPARE(m_frontEnd->control<QMessageBox>("alertBox").text(),
                 u"Are you sure you want to delete selected events?"_s);
    }

    void undoesTheLastDeletion() {
        m_frontEnd->window->Scan();
        QTRY_VERIFY(table().hasFocus());
        QVERIFY(!action("undoDelete")->isEnabled());
        QCOMPARE(action("undoDelete")->shortcut(), QKeySequence(u"Ctrl+Z"_s));
        table().selectRow(0);
        open();
        choose("deleteSelected");
        QTRY_VERIFY(m_frontEnd->window->findChild<QPushButton *>(u"alertButton0"_s) != nullptr);
        QTest::mouseClick(&m_frontEnd->control<QPushButton>("alertButton0"), Qt::LeftButton);
        QTRY_COMPARE(table().model()->rowCount(), 1);
        open();
        QVERIFY(action("undoDelete")->isEnabled());
        choose("undoDelete");
        QCOMPARE(table().model()->rowCount(), 2);
        QCOMPARE(table().model()->index(0, 4).data().toString(), u"second"_s);
        QVERIFY(!action("undoDelete")->isEnabled());
    }

private:
    TemporaryFolder m_library;
    ScopedVariable m_variable{"QUORBEL_LIBRARY", m_library.path().c_str()};
    std::unique_ptr<FrontEnd> m_frontEnd;
};

}  // namespace quorbel

QTEST_MAIN(quorbel::EditMenuTest)
#include "EditMenuTest.moc"
