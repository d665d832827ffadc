#include "platform/gui/Sheet.h"
#include "shell/ShellFixture.h"
#include "shell/TrayIcon.h"
#include "shell/WindowController.h"
#include "support/WaitUntil.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QCursor>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTest>
#include <QTimer>

#include <memory>

using namespace quorbel;
using namespace quorbel::testing;

namespace {

constexpr int kNeverEnded = 99;

/// Runs the event loop until the program ends; kNeverEnded when it does not.
int runUntilExit() {
    QTimer watchdog;
    QObject::connect(&watchdog, &QTimer::timeout, [] { QCoreApplication::exit(kNeverEnded); });
    watchdog.start(kPatience);
    return QCoreApplication::exec();
}

QString texts(const QList<QAction *> &entries) {
    QStringList result;
    for (const QAction *entry : entries) {
        result.append(entry->isSeparator() ? QStringLiteral("-")
                                           : entry->text().remove(QLatin1Char('&')));
    }
    return result.join(QLatin1Char('|'));
}

QMenu *openMenu() {
    return qobject_cast<QMenu *>(QApplication::activePopupWidget());
}

QWidgetList helpWindows() {
    QWidgetList result;
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window->objectName() == QStringLiteral("helpWindow")) {
            result.append(window);
        }
    }
    return result;
}

}  // namespace

class WindowControllerTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void opensWithItsMinimumSizeInTheMiddle_data();
    void opensWithItsMinimumSizeInTheMiddle();
    void staysHiddenUntilItIsAskedToShow();
    void navigationButtonsSelectTheirPages_data();
    void navigationButtonsSelectTheirPages();
    void navigationIsReachedByKeyboard();
    void focusStaysOffControlsThatNobodyChose();
    void applicationCommandsSelectTheirPages_data();
    void applicationCommandsSelectTheirPages();
    void applicationCommandsAreCompleteAndNamed();
    void trayOffersTheApplicationCommands();
    void commandShowsTheClosedWindowAgain();
    void commandsDoNothingWithoutAWindow();
    void minimisedWindowComesBack();
    void settingsPageRemembersItsOpener_data();
    void settingsPageRemembersItsOpener();
    void eventsAreAskedForOnTheirPage();
    void helpDropDownOpensBelowThePointer();
    void helpDropDownRunsAbout();
    void helpOpensOneWindow();
    void aboutWithoutASheetDoesNothing();
    void aboutOpensOneSheet();
    void closedWindowGoesOnWhenItCanBeHadBack();
    void closedWindowEndsTheProgramWhenItCannot();
    void quitsUnderAnOpenSheet();
};

void WindowControllerTest::opensWithItsMinimumSizeInTheMiddle_data() {
    QTest::addColumn<QRect>("geometry");
    QTest::addColumn<QSize>("minimum");
    QTest::newRow("as designed") << QRect() << QSize();
    QTest::newRow("larger, in a corner") << QRect(0, 0, 1500, 1100) << QSize();
    QTest::newRow("off the screen") << QRect(-4000, 5000, 1300, 900) << QSize();
    QTest::newRow("another minimum") << QRect(7, 9, 1300, 900) << QSize(501, 403);
}

void WindowControllerTest::opensWithItsMinimumSizeInTheMiddle() {
    QFETCH(QRect, geometry);
    QFETCH(QSize, minimum);
    Shell shell;
    if (minimum.isValid()) {
        shell.window.setMinimumSize(minimum);
    }
    if (geometry.isValid()) {
        shell.window.setGeometry(geometry);
    }
    const QSize expected = shell.window.minimumSize();
    QVERIFY(expected.width() >= 400 && expected.height() >= 300);

    shell.window.windowDidLoad();
    QCOMPARE(shell.window.size(), expected);
    const QPoint off =
        shell.window.frameGeometry().center() - shell.window.screen()->availableGeometry().center();
    QVERIFY2(qAbs(off.x()) <= 1 && qAbs(off.y()) <= 1, "not in the middle");

    shell.window.makeVisible();
    QCOMPARE(shell.window.size(), expected);
}

void WindowControllerTest::staysHiddenUntilItIsAskedToShow() {
    Shell shell;
    shell.window.windowDidLoad();
    QVERIFY(!shell.window.isVisible());
    shell.window.makeVisible();
    QVERIFY(shell.window.isVisible());
    QCOMPARE(shell.currentTab(), Tab::kHome);
}

void WindowControllerTest::navigationButtonsSelectTheirPages_data() {
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<Tab>("page");
    QTest::newRow("home") << QByteArray("Home") << Tab::kHome;
    QTest::newRow("events") << QByteArray("Scan") << Tab::kEvents;
    QTest::newRow("reports") << QByteArray("Reports") << Tab::kReports;
    QTest::newRow("tools") << QByteArray("Tools") << Tab::kTools;
}

void WindowControllerTest::navigationButtonsSelectTheirPages() {
    QFETCH(QByteArray, button);
    QFETCH(Tab, page);
    Shell shell;
    shell.window.makeVisible();
    for (const Tab from : {Tab::kHome, Tab::kEvents, Tab::kTools}) {
        shell.window.selectTab(from);
        QTest::mouseClick(&shell.button(button.constData()), Qt::LeftButton);
        QCOMPARE(shell.currentTab(), page);
        for (const char *entry : {"Home", "Scan", "Reports", "Tools"}) {
            QCOMPARE(shell.button(entry).isChecked(), button == entry);
        }
    }
}

void WindowControllerTest::navigationIsReachedByKeyboard() {
    Shell shell;
    shell.window.makeVisible();
    shell.button("Reports").setFocus(Qt::TabFocusReason);
    QTest::keyClick(&shell.button("Reports"), Qt::Key_Space);
    QCOMPARE(shell.currentTab(), Tab::kReports);
    for (const char *entry : {"Home", "Scan", "Reports", "Tools", "HelpDropDown"}) {
        QVERIFY2(!shell.button(entry).accessibleName().isEmpty(), entry);
        QVERIFY2((shell.button(entry).focusPolicy() & Qt::TabFocus) != 0, entry);
    }
}

void WindowControllerTest::focusStaysOffControlsThatNobodyChose() {
    Shell shell;
    new QPushButton(&shell.home());
    new QPushButton(&shell.events());
    shell.window.windowDidLoad();
    shell.window.makeVisible();
    shell.window.activateWindow();
    QTRY_VERIFY(shell.window.isActiveWindow());
    QCOMPARE(qobject_cast<QAbstractButton *>(shell.window.focusWidget()), nullptr);

    shell.home().findChild<QPushButton *>()->setFocus();
    shell.window.Scan();
    QCOMPARE(qobject_cast<QAbstractButton *>(shell.window.focusWidget()), nullptr);

    auto *onPage = shell.events().findChild<QPushButton *>();
    onPage->setFocus();
    shell.window.Scan();  // The page that is shown: nobody would set the focus there again.
    QCOMPARE(shell.window.focusWidget(), onPage);

    shell.button("Home").setFocus();
    QTest::keyClick(&shell.button("Home"), Qt::Key_Space);
    QCOMPARE(shell.window.focusWidget(), &shell.button("Home"));
}

void WindowControllerTest::applicationCommandsSelectTheirPages_data() {
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<Tab>("page");
    QTest::newRow("home") << QByteArray("applicationHome") << Tab::kHome;
    QTest::newRow("events") << QByteArray("applicationScan") << Tab::kEvents;
    QTest::newRow("reports") << QByteArray("applicationReports") << Tab::kReports;
    QTest::newRow("tools") << QByteArray("applicationTools") << Tab::kTools;
}

void WindowControllerTest::applicationCommandsSelectTheirPages() {
    QFETCH(QByteArray, command);
    QFETCH(Tab, page);
    Shell shell;
    shell.window.makeVisible();
    shell.window.selectTab(page == Tab::kHome ? Tab::kTools : Tab::kHome);
    shell.command(command.constData()).trigger();
    QCOMPARE(shell.currentTab(), page);
}

void WindowControllerTest::applicationCommandsAreCompleteAndNamed() {
    Shell shell;
    QCOMPARE(texts(shell.window.applicationCommands()),
             QStringLiteral("Home|Events|Reports|Tools|About Quorbel...|Quit"));
}

void WindowControllerTest::trayOffersTheApplicationCommands() {
    Shell shell;
    const TrayIcon tray(shell.window);
    const QMenu *menu = nullptr;
    for (const QWidget *widget : QApplication::topLevelWidgets()) {
        if (widget->objectName() == QStringLiteral("trayMenu")) {
            menu = qobject_cast<const QMenu *>(widget);
        }
    }
    if (menu == nullptr) {
        QFAIL("no menu");
    }
    QCOMPARE(texts(menu->actions()),
             QStringLiteral("Home|Events|Reports|Tools|About Quorbel...|-|Quit"));
    menu->actions().at(1)->trigger();
    QVERIFY(shell.window.isVisible());
    QCOMPARE(shell.currentTab(), Tab::kEvents);
    QVERIFY2(!tray.isShown(), "this platform has no tray");
}

void WindowControllerTest::commandShowsTheClosedWindowAgain() {
    Shell shell;
    shell.window.setReopenable([] { return true; });
    shell.window.makeVisible();
    shell.window.close();
    QVERIFY(!shell.window.isVisible());

    shell.command("applicationReports").trigger();

    QVERIFY(shell.window.isVisible());
    QCOMPARE(static_cast<int>(shell.currentTab()), 2);
}

void WindowControllerTest::commandsDoNothingWithoutAWindow() {
    AppDelegate delegate;
    {
        Shell shell;
        QCOMPARE(shell.delegate.mainWindow(), static_cast<MainWindowLink *>(&shell.window));
    }
    delegate.Reports();
    delegate.About();
    QCOMPARE(delegate.mainWindow(), nullptr);
}

void WindowControllerTest::minimisedWindowComesBack() {
    Shell shell;
    shell.window.makeVisible();
    shell.window.showMinimized();
    shell.delegate.Scan();
    QVERIFY(!shell.window.isMinimized());
    QCOMPARE(shell.currentTab(), Tab::kEvents);
}

void WindowControllerTest::settingsPageRemembersItsOpener_data() {
    QTest::addColumn<Tab>("page");
    QTest::addColumn<Tab>("opener");
    QTest::addColumn<QByteArray>("entry");
    QTest::newRow("options from tools") << Tab::kOptions << Tab::kTools << QByteArray("Tools");
    QTest::newRow("options from events") << Tab::kOptions << Tab::kEvents << QByteArray("Scan");
    QTest::newRow("actions from events") << Tab::kActions << Tab::kEvents << QByteArray("Scan");
    QTest::newRow("export from tools") << Tab::kExport << Tab::kTools << QByteArray("Tools");
    QTest::newRow("hosts from tools") << Tab::kHosts << Tab::kTools << QByteArray("Tools");
    QTest::newRow("hosts from home") << Tab::kHosts << Tab::kHome << QByteArray("Home");
}

void WindowControllerTest::settingsPageRemembersItsOpener() {
    QFETCH(Tab, page);
    QFETCH(Tab, opener);
    QFETCH(QByteArray, entry);
    Shell shell;
    shell.window.openSettingsPage(page, opener);
    QCOMPARE(shell.currentTab(), page);
    QCOMPARE(shell.page<SettingsPageStandIn>(page).parentTab, opener);
    QVERIFY(shell.button(entry.constData()).isChecked());

    shell.window.selectTab(Tab::kHome);
    shell.window.selectTab(page);
    QVERIFY(shell.button(entry.constData()).isChecked());
}

void WindowControllerTest::eventsAreAskedForOnTheirPage() {
    Shell shell;
    EventQuery query;
    query.host = "fs01";
    shell.window.showEvents(query);
    QCOMPARE(shell.currentTab(), Tab::kEvents);
    QVERIFY(shell.button("Scan").isChecked());
    const auto &asked = shell.page<EventsStandIn>(Tab::kEvents).asked;
    QCOMPARE(asked.size(), std::size_t{1});
    QVERIFY(asked.front() == query);
}

void WindowControllerTest::helpDropDownOpensBelowThePointer() {
    Shell shell;
    shell.window.makeVisible();
    const QPoint pointer(333, 222);
    QCursor::setPos(pointer);
    QTest::mouseClick(&shell.button("HelpDropDown"), Qt::LeftButton);

    QMenu *menu = openMenu();
    QVERIFY(menu != nullptr);
    QCOMPARE(menu->title(), QStringLiteral("Menu"));
    QCOMPARE(menu->pos(), QCursor::pos() + QPoint(0, 20));
    QCOMPARE(menu->activeAction(), nullptr);
    const QList<QAction *> entries = menu->actions();
    QCOMPARE(entries.size(), 3);
    QCOMPARE(entries[0]->text(), QStringLiteral("Quorbel Help..."));
    QVERIFY(entries[1]->isSeparator());
    QCOMPARE(entries[2]->text(), QStringLiteral("About Quorbel..."));
    for (const QAction *entry : entries) {
        QVERIFY(entry->shortcut().isEmpty());
    }
    menu->close();
}

void WindowControllerTest::helpDropDownRunsAbout() {
    Shell shell;
    shell.storyboard.add(QStringLiteral("aboutView"), [] { return std::make_unique<Sheet>(); });
    shell.window.makeVisible();
    shell.window.HelpDropDown();
    QMenu *menu = openMenu();
    QVERIFY(menu != nullptr);
    const QRect about = menu->actionGeometry(menu->actions().at(2));
    QTest::mouseClick(menu, Qt::LeftButton, {}, about.center());
    QCOMPARE(shell.window.findChildren<Sheet *>().size(), 1);
    QTRY_COMPARE(openMenu(), nullptr);
}

void WindowControllerTest::helpOpensOneWindow() {
    Shell shell;
    shell.window.makeVisible();
    QVERIFY(helpWindows().isEmpty());
    QCOMPARE(shell.command("applicationHelp").shortcut(), QKeySequence(Qt::Key_F1));
    shell.command("applicationHelp").trigger();
    QCOMPARE(helpWindows().size(), 1);
    QWidget *help = helpWindows().front();
    QVERIFY(help->isVisible());

    help->showMinimized();
    shell.window.HelpDropDown();
    QMenu *menu = openMenu();
    QVERIFY(menu != nullptr);
    QTest::mouseClick(menu, Qt::LeftButton, {},
                      menu->actionGeometry(menu->actions().at(0)).center());
    QCOMPARE(helpWindows(), QWidgetList{help});
    QVERIFY(help->isVisible() && !help->isMinimized());
    QVERIFY(QTest::qWaitForWindowActive(help));

    help->close();
    shell.command("applicationHelp").trigger();
    QCOMPARE(helpWindows(), QWidgetList{help});
    QVERIFY(help->isVisible());
}

void WindowControllerTest::aboutWithoutASheetDoesNothing() {
    Shell shell;
    shell.window.makeVisible();
    shell.command("applicationAbout").trigger();
    QCOMPARE(shell.window.findChildren<Sheet *>().size(), 0);
    QCOMPARE(QApplication::activeModalWidget(), nullptr);
}

void WindowControllerTest::aboutOpensOneSheet() {
    Shell shell;
    shell.storyboard.add(QStringLiteral("aboutView"), [] { return std::make_unique<Sheet>(); });
    shell.window.makeVisible();
    shell.delegate.About();
    shell.delegate.About();
    const auto sheets = shell.window.findChildren<Sheet *>();
    QCOMPARE(sheets.size(), 1);
    QVERIFY(sheets.front()->isVisible());
    QCOMPARE(sheets.front()->windowModality(), Qt::WindowModal);

    sheets.front()->close();
    QTRY_COMPARE(shell.window.findChildren<Sheet *>().size(), 0);
    shell.delegate.About();
    QCOMPARE(shell.window.findChildren<Sheet *>().size(), 1);
}

void WindowControllerTest::closedWindowGoesOnWhenItCanBeHadBack() {
    Shell shell;
    shell.window.setReopenable([] { return true; });
    shell.window.makeVisible();
    QTimer::singleShot(0, &shell.window, [&shell] {
        shell.command("closeWindow").trigger();
        QTimer::singleShot(0, &shell.window, [] { QCoreApplication::exit(7); });
    });
    QCOMPARE(runUntilExit(), 7);
    QVERIFY(!shell.window.isVisible());
}

void WindowControllerTest::closedWindowEndsTheProgramWhenItCannot() {
    Shell shell;
    shell.window.makeVisible();
    QTimer::singleShot(0, &shell.window, &QWidget::close);
    QCOMPARE(runUntilExit(), 0);
}

void WindowControllerTest::quitsUnderAnOpenSheet() {
    Shell shell;
    shell.window.setReopenable([] { return true; });
    shell.storyboard.add(QStringLiteral("aboutView"), [] { return std::make_unique<Sheet>(); });
    shell.window.makeVisible();
    shell.window.About();
    QTimer::singleShot(0, &shell.window, [&shell] { shell.command("applicationQuit").trigger(); });
    QCOMPARE(runUntilExit(), 0);
}

QTEST_MAIN(WindowControllerTest)
#include "WindowControllerTest.moc"
