#include "platform/gui/RowCommands.h"
#include "reports/ReportsViewFixture.h"

#include <QAction>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QMenu>

namespace quorbel {

using namespace testing;

/// Copying from a report, by keys and from its context menu.
class ReportsViewCommandsTest : public QObject, private ReportsViewFixture {
    Q_OBJECT

    // What is there once a copy has ended; on a busy machine, any takes more than a slice.
    QString clipboard() {
        const auto *copy = m_page->findChild<RowCopy *>();
        if (!QTest::qWaitFor([copy] { return !copy->isRunning(); })) {
            return name("still being copied");
        }
        return QGuiApplication::clipboard()->text();
    }
    void press(const QKeySequence &key) {
        QVERIFY(QTest::qWaitForWindowActive(m_page.get()));
        QTest::keySequence(table(), key);
    }
    void pressCopyMessage() { press(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C)); }
    QMenu *openMenu(int row) {
        const QPoint place = table()->visualRect(table()->model()->index(row, 0)).center();
        QTest::mouseClick(table()->viewport(), Qt::RightButton, {}, place);
        QContextMenuEvent event(QContextMenuEvent::Mouse, place,
                                table()->viewport()->mapToGlobal(place));
        QCoreApplication::sendEvent(table()->viewport(), &event);
        auto *menu = table()->findChild<QMenu *>(name("rowMenu"));
        Q_ASSERT(menu != nullptr);
        return menu;
    }
    bool isEnabled(const char *command) {
        return m_page->findChild<QAction *>(name(command))->isEnabled();
    }

private Q_SLOTS:
    void init() {
        makePage();
        log("1.log",
            "1700000000,Local7.Error,h1,one, \ttwo\r\n"
            "1700000001,Kern.Alert,h2,other\r\n");
        QGuiApplication::clipboard()->setText(name("before"));
    }
    void cleanup() { dropPage(); }

    void copiesGroupsAndEventsAsTheyAreShown() {
        display(0);
        clickRow(0);
        press(QKeySequence::Copy);
        QCOMPARE(clipboard(), name("h1\t\t\t"));
        clickRow(1);
        press(QKeySequence::Copy);
        QCOMPARE(clipboard(), name("\t2023-11-14 22:13:20\tLocal7.Error\tone,  two"));
        pressCopyMessage();
        QCOMPARE(clipboard(), name("one, \ttwo"));
    }

    void aGroupHasAMessageInAReportByMessagesOnly() {
        display(0);
        clickRow(0);
        pressCopyMessage();
        QCOMPARE(clipboard(), name("before"));
        display(1);
        clickRow(0);
        pressCopyMessage();
        QCOMPARE(clipboard(), name("one, \ttwo"));
        clickRow(1);
        QGuiApplication::clipboard()->clear();
        pressCopyMessage();
        QCOMPARE(clipboard(), name("one, \ttwo"));
    }

    void theMenuCopiesAndOpensNoGroup() {
        display(0);
        QMenu *menu = openMenu(1);
        QTRY_VERIFY(menu->isVisible());
        QCOMPARE(selected(), QList<int>{1});
        QCOMPARE(rows(), (QStringList{name("h1|||"), name("h2|||")}));
        QVERIFY(isEnabled("copyRows"));
        QVERIFY(!isEnabled("copyMessages"));
        QTest::keyClick(menu, Qt::Key_Down);
        QTest::keyClick(menu, Qt::Key_Return);
        QCOMPARE(clipboard(), name("h2\t\t\t"));
        QTRY_VERIFY(isEnabled("copyMessages"));
        display(1);
        menu = openMenu(1);
        QTRY_VERIFY(menu->isVisible());
        QVERIFY(isEnabled("copyMessages"));
    }

    void anEmptyReportHasNothingToCopy() {
        show();
        table()->setFocus();
        press(QKeySequence::Copy);
        pressCopyMessage();
        QCOMPARE(clipboard(), name("before"));
        QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {});
        QCoreApplication::sendEvent(table(), &event);
        QVERIFY(!isEnabled("copyRows"));
        QVERIFY(!isEnabled("copyMessages"));
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ReportsViewCommandsTest)
#include "ReportsViewCommandsTest.moc"
