#include "SampleLibrary.h"
#include "platform/gui/Appearance.h"
#include "platform/gui/LetteredMenu.h"
#include "platform/gui/MnemonicLetters.h"
#include "shell/FitChecks.h"
#include "shell/ShellViews.h"
#include "shell/TrayIcon.h"
#include "support/FrontEnd.h"
#include "support/TemporaryFolder.h"

#include <QAbstractButton>
#include <QContextMenuEvent>
#include <QDialog>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QPushButton>
#include <QShortcut>
#include <QStackedWidget>
#include <QTableView>
#include <QTest>

#include <memory>

namespace quorbel {

using namespace Qt::StringLiterals;

namespace {

/// The letter that presses a button together with Alt; null when there is none.
QChar letterOf(const QAbstractButton &button) {
    QList<QKeySequence> keys{button.shortcut()};
    for (const QShortcut *shortcut : button.findChildren<QShortcut *>(u"mnemonic"_s)) {
        keys += shortcut->key();
    }
    for (const QKeySequence &key : keys) {
        if (!key.isEmpty() && key[0].keyboardModifiers() == Qt::AltModifier) {
            return QChar(static_cast<char16_t>(key[0].key()));
        }
    }
    return {};
}

QSet<QChar> menuBarLetters(const QMenuBar &bar) {
    QSet<QChar> letters;
    for (const QAction *menu : bar.actions()) {
        letters += markedLetter(menu->text());
    }
    return letters;
}

bool isUsedUp(const QString &text, const QSet<QChar> &letters) {
    return std::ranges::all_of(text.section(u'\t', 0, 0), [&](QChar one) {
        return !one.isLetter() || letters.contains(one.toUpper());
    });
}

}  // namespace

/// The letters of all pages, sheets and menus, in the language of $QUORBEL_TEST_LANGUAGE.
class MnemonicsTest : public QObject {
    Q_OBJECT

private:
    [[nodiscard]] static QList<QAbstractButton *> buttonsWithText(const QWidget &window) {
        QList<QAbstractButton *> buttons = window.findChildren<QAbstractButton *>();
        buttons.removeIf([&window](const QAbstractButton *one) {
            return one->window() != &window || !one->isVisible() || one->text().isEmpty();
        });
        return buttons;
    }
    [[nodiscard]] static QList<QAbstractButton *> buttonsWithLetter(const QWidget &window) {
        QList<QAbstractButton *> buttons = buttonsWithText(window);
        buttons.removeIf([](const QAbstractButton *one) { return letterOf(*one).isNull(); });
        return buttons;
    }
    /// What is wrong with the letters of a window's buttons; empty when nothing is.
    [[nodiscard]] QString problemOf(const QWidget &window) const {
        QSet<QChar> letters;
        if (&window == m_frontEnd->window.get()) {
            letters = menuBarLetters(m_frontEnd->control<QMenuBar>("menuBar"));
        }
        for (const QAbstractButton *button : buttonsWithLetter(window)) {
            const QChar letter = letterOf(*button);
            if (letters.contains(letter)) {
                return u"twice: %1, for %2"_s.arg(letter).arg(button->text());
            }
            if (!button->text().contains(letter, Qt::CaseInsensitive)) {
                return u"not its own: %1, for %2"_s.arg(letter).arg(button->text());
            }
            letters += letter;
        }
        for (const QAbstractButton *button : buttonsWithText(window)) {
            if (letterOf(*button).isNull() && !isUsedUp(button->text(), letters)) {
                return u"none for "_s + button->text();
            }
        }
        return {};
    }
    [[nodiscard]] QString problemOf(const LetteredMenu &menu) const {
        QSet<QChar> letters;
        for (const QAction *entry : menu.actions()) {
            const QChar letter = menu.letterOf(*entry);
            if (!letter.isNull() && letters.contains(letter)) {
                return u"twice: %1, for %2"_s.arg(letter).arg(entry->text());
            }
            letters += letter;
        }
        for (const QAction *entry : menu.actions()) {
            if (menu.letterOf(*entry).isNull() && !isUsedUp(entry->text(), letters)) {
                return u"none for "_s + entry->text();
            }
        }
        return {};
    }
    static void press(QChar letter) {
        QTest::keyClick(QApplication::activeWindow(), static_cast<Qt::Key>(letter.unicode()),
                        Qt::AltModifier);
    }
    template <class Control>
    Control &control(const char *name) const {
        return m_frontEnd->control<Control>(name);
    }
    /// A menu that a button opens, or that is asked for over a control.
    static LetteredMenu *openMenu() {
        return qobject_cast<LetteredMenu *>(QApplication::activePopupWidget());
    }
    void checkOpenMenu() const {
        QTRY_VERIFY(openMenu() != nullptr);
        const QString problem = problemOf(*openMenu());
        QVERIFY2(problem.isEmpty(), qPrintable(problem));
        openMenu()->close();
    }
    static void askForMenu(QWidget &over) {
        QContextMenuEvent event(QContextMenuEvent::Keyboard, {5, 5},
                                over.mapToGlobal(QPoint(5, 5)));
        QCoreApplication::sendEvent(&over, &event);
    }

    testing::TemporaryFolder m_library;
    std::unique_ptr<testing::FrontEnd> m_frontEnd;

private Q_SLOTS:
    void initTestCase() {
        applyAppearance(*qApp);
        writeSample(Sample::kBad, m_library);
        qputenv("QUORBEL_LIBRARY", m_library.path().c_str());
        qputenv("XDG_CONFIG_HOME", m_library.path().c_str());
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent");
    }
    void init() {
        m_frontEnd = std::make_unique<testing::FrontEnd>();
        QVERIFY(QTest::qWaitForWindowActive(m_frontEnd->window.get()));
    }
    void cleanup() { m_frontEnd.reset(); }

    void everyButtonHasALetterOfItsOwn_data() { testing::addViews(); }
    void everyButtonHasALetterOfItsOwn() {
        const QWidget *view = testing::showView(*m_frontEnd);
        QVERIFY(view != nullptr);
        QTRY_COMPARE(problemOf(*view->window()), QString());
        QVERIFY(!buttonsWithLetter(*view->window()).isEmpty());
    }

    void altWithTheLetterPressesEachButton_data() { testing::addViews(); }
    void altWithTheLetterPressesEachButton() {
        const QWidget *view = testing::showView(*m_frontEnd);
        QVERIFY(view != nullptr);
        QWidget *window = view->window();
        QTRY_COMPARE(QApplication::activeWindow(), window);
        QTRY_COMPARE(problemOf(*window), QString());
        for (QAbstractButton *button : buttonsWithLetter(*window)) {
            if (!button->isEnabled()) {
                continue;
            }
            button->blockSignals(true);  // each is only pressed, so that the others stay
            press(letterOf(*button));
            QVERIFY2(button->isDown(), qPrintable(button->text()));
        }
    }

    void aLetterLeadsToAPageAndThereToOthers() {
        QTRY_COMPARE(problemOf(*m_frontEnd->window), QString());
        const auto &pages = control<QStackedWidget>("tabView");
        for (const char *entry : {"Reports", "Tools", "Scan", "Home"}) {
            const QWidget *before = pages.currentWidget();
            const auto &button = control<QAbstractButton>(entry);
            const QChar letter = letterOf(button);
            QVERIFY2(!letter.isNull(), entry);
            press(letter);
            QTRY_VERIFY2(pages.currentWidget() != before, entry);
            QVERIFY(button.isChecked());
            QTRY_COMPARE(problemOf(*m_frontEnd->window), QString());
            QCOMPARE(letterOf(button), letter);
        }
    }

    void whatIsOnAnotherPageHasNone() {
        testing::showPage(*m_frontEnd, "ScanView");
        const auto &exported = control<QAbstractButton>("exportEvents");
        QTRY_VERIFY(!letterOf(exported).isNull());
        testing::showPage(*m_frontEnd, "ReportsView");
        QTRY_VERIFY(letterOf(exported).isNull());
    }

    void aLetterClosesASheet_data() { testing::addViews(); }
    void aLetterClosesASheet() {
        QFETCH(bool, isSheet);
        if (!isSheet) {
            return;
        }
        const QPointer<QWidget> sheet = testing::showView(*m_frontEnd);
        QTRY_COMPARE(QApplication::activeWindow(), sheet.data());
        const QAbstractButton *end = nullptr;
        for (const char *name : {"onCancel", "onClose", "onOK"}) {
            end = end == nullptr ? sheet->findChild<QAbstractButton *>(QLatin1String(name)) : end;
        }
        QVERIFY(end != nullptr);
        QTRY_VERIFY(!letterOf(*end).isNull());
        press(letterOf(*end));
        QTRY_VERIFY(sheet == nullptr);
    }

    void aLetterAsksBeforeDeletionAndAnother() {
        testing::showPage(*m_frontEnd, "ScanView")->findChild<QTableView *>()->selectRow(1);
        auto &deletes = control<QAbstractButton>("deleteEvents");
        QTRY_VERIFY(!letterOf(deletes).isNull());
        press(letterOf(deletes));
        QTRY_VERIFY(m_frontEnd->window->findChild<QDialog *>(u"alertBox"_s) != nullptr);
        const QPointer<QDialog> box = m_frontEnd->window->findChild<QDialog *>(u"alertBox"_s);
        QTRY_COMPARE(QApplication::activeWindow(), box.data());
        QTRY_COMPARE(problemOf(*box), QString());
        auto *no = box->findChild<QAbstractButton *>(u"alertButton1"_s);
        QVERIFY(no != nullptr && !letterOf(*no).isNull());
        press(letterOf(*no));
        QTRY_VERIFY(box == nullptr);
    }

    void anotherTextHasAnotherLetter() {
        testing::showPage(*m_frontEnd, "ReportsView");
        auto &display = control<QAbstractButton>("reportDisplay");
        QTRY_VERIFY(!letterOf(display).isNull());
        display.setText(u"Qq"_s);
        QTRY_COMPARE(letterOf(display), u'Q');
        QTRY_COMPARE(problemOf(*m_frontEnd->window), QString());
    }

    void thePanelOfQuestionsHasLetters() {
        testing::showPage(*m_frontEnd, "ScanView");
        QTest::mouseClick(&control<QAbstractButton>("findSaved"), Qt::LeftButton);
        auto &mark = control<QAbstractButton>("findSavedMark");
        QTRY_VERIFY(mark.isVisible() && mark.isEnabled());
        QTRY_COMPARE(problemOf(*mark.window()), QString());
        QVERIFY(!letterOf(mark).isNull());
        QTest::keyClick(QApplication::focusWidget(), static_cast<Qt::Key>(letterOf(mark).unicode()),
                        Qt::AltModifier);
        QTRY_VERIFY(openMenu() != nullptr);
        QCOMPARE(openMenu()->objectName(), u"findSavedColours"_s);
        checkOpenMenu();
        QTest::mouseClick(&control<QAbstractButton>("findSavedMore"), Qt::LeftButton);
        checkOpenMenu();
        mark.window()->close();
    }

    void theMenuBarsEntriesHaveLetters_data() {
        QTest::addColumn<bool>("isEventsPage");
        QTest::newRow("home") << false;
        QTest::newRow("events") << true;
    }
    void theMenuBarsEntriesHaveLetters() {
        QFETCH(bool, isEventsPage);
        testing::showPage(*m_frontEnd, isEventsPage ? "ScanView" : "HomeView");
        const auto &bar = control<QMenuBar>("menuBar");
        QCOMPARE(menuBarLetters(bar).size(), bar.actions().size());
        QVERIFY(!menuBarLetters(bar).contains(QChar()));
        for (const QAction *title : bar.actions()) {
            if (title->isEnabled()) {
                auto *menu = qobject_cast<LetteredMenu *>(title->menu());
                QVERIFY2(menu != nullptr, qPrintable(title->text()));
                menu->popup({0, 0});
                checkOpenMenu();
            }
        }
    }

    void everyMenuOfTheEventsPageHasLetters() {
        testing::showPage(*m_frontEnd, "ScanView");
        auto &table = *control<QWidget>("ScanView").findChild<QTableView *>();
        table.selectRow(1);
        askForMenu(table);
        checkOpenMenu();
        for (const char *name : {"findSeverity", "findFacility"}) {
            QTest::mouseClick(&control<QAbstractButton>(name), Qt::LeftButton);
            checkOpenMenu();
        }
        control<LetteredMenu>("timelineMenu").popup({0, 0});
        checkOpenMenu();
    }

    void theHelpMenuRunsByLetter() {
        QTest::mouseClick(&control<QAbstractButton>("HelpDropDown"), Qt::LeftButton);
        QTRY_VERIFY(openMenu() != nullptr);
        QCOMPARE(problemOf(*openMenu()), QString());
        const QAction &about = *openMenu()->actions().last();
        QTest::keyClick(openMenu(), static_cast<Qt::Key>(openMenu()->letterOf(about).unicode()));
        QTRY_VERIFY(m_frontEnd->window->findChild<Sheet *>() != nullptr);
    }

    void theTrayMenuHasLetters() {
        const TrayIcon tray(*m_frontEnd->window);
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (widget->objectName() == u"trayMenu"_s) {
                qobject_cast<LetteredMenu *>(widget)->popup({0, 0});
            }
        }
        checkOpenMenu();
    }
};

}  // namespace quorbel

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationVersion(QStringLiteral(QUORBEL_VERSION));
    quorbel::useLanguage();
    quorbel::MnemonicsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "MnemonicsTest.moc"
