// Finding on the real page, with real keys and clicks.

#include "events/ScanViewFixture.h"
#include "platform/gui/RowTableView.h"

#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QTest>

namespace quorbel {

using namespace testing;

class EventFinderTest : public QObject, private ScanViewFixture {
    Q_OBJECT

private:
    QLineEdit *field() { return m_page->findChild<QLineEdit *>(name("findText")); }
    QString count() { return m_page->findChild<QLabel *>(name("eventCount"))->text(); }
    QString hint() { return m_page->findChild<RowTableView *>(name("tableView"))->hint(); }
    int rows() { return table()->model()->rowCount(); }
    void find(const char *text) {
        QTest::keyClick(m_page->focusWidget() == nullptr ? m_page.get() : m_page->focusWidget(),
                        Qt::Key_F, Qt::ControlModifier);
        QTRY_COMPARE(QApplication::focusWidget(), field());
        QTest::keyClicks(field(), name(text));
    }

private Q_SLOTS:
    void init() {
        makePage();
        for (int i = 0; i < 40; ++i) {
            list().insertRaw(fields(std::to_string(1'700'000'000 + i),
                                    i % 4 == 0 ? "disk sdb1 " + std::to_string(i) : "link up",
                                    i % 2 == 0 ? "Kern.Critical" : "Kern.Debug"));
        }
        show();
        m_page->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_page.get()));
    }
    void cleanup() { endPage(); }

    void showsWhatMatchesAndAllAgain() {
        QTRY_COMPARE(count(), name("40 events"));
        find("SDB");
        QTRY_COMPARE(count(), name("10 of 40 events"));
        QCOMPARE(rows(), 10);
        QCOMPARE(cell(0, 4), name("disk sdb1 36"));
        QTest::keyClick(field(), Qt::Key_Escape);
        QTRY_COMPARE(count(), name("40 events"));
        QCOMPARE(rows(), 40);
        QVERIFY(field()->hasFocus());
        QTest::keyClick(field(), Qt::Key_Escape);
        QTRY_VERIFY(table()->hasFocus());
    }
    void goesToTheTableByKey() {
        find("sdb");
        QTest::keyClick(field(), Qt::Key_Down);
        QTRY_VERIFY(table()->hasFocus());
        QTRY_COMPARE(rows(), 10);
    }
    void leavesTableAndSelectionAloneWhenOtherEventsArrive() {
        find("sdb");
        QTRY_COMPARE(rows(), 10);
        clickRow(2);
        m_page->insertEvent(fields("1700000100", "link down"));
        QCOMPARE(rows(), 10);
        QCOMPARE(selected(), QList<int>{2});
        QTRY_COMPARE(count(), name("10 of 41 events"));
        m_page->insertEvent(fields("1700000100", "disk sdb7"));
        QCOMPARE(cell(0, 4), name("disk sdb7"));
        QCOMPARE(selected(), QList<int>{});
        QTRY_COMPARE(count(), name("11 of 42 events"));
    }
    void countsNewEventsAboveAsTheyAreDisplayed() {
        for (int i = 0; i < 400; ++i) {
            m_page->insertEvent(fields("1700000100", "disk sdb2"));
        }
        find("sdb");
        QTRY_COMPARE(rows(), 410);
        table()->verticalScrollBar()->setValue(100);
        QCoreApplication::processEvents();
        for (int i = 0; i < 37; ++i) {
            m_page->insertEvent(fields("1700000200", "disk sdb3"));
            m_page->insertEvent(fields("1700000200", "link down"));
        }
        auto *newest = m_page->findChild<QPushButton *>(name("newestEvents"));
        QTRY_COMPARE(newest->text(), name("37 new"));
        click("newestEvents");
        QTRY_COMPARE(table()->verticalScrollBar()->value(), 0);
        QTRY_VERIFY(!newest->isVisible());
    }
    void removesAnnouncedEventsByTheirOwnRow() {
        find("sdb");
        QTRY_COMPARE(rows(), 10);
        m_page->removeEvent(fields("1700000036", "disk sdb1 36", "Kern.Critical"));
        QTRY_COMPARE(count(), name("9 of 39 events"));
        QCOMPARE(cell(0, 4), name("disk sdb1 32"));
        m_page->removeEvent(fields("1700000039", "link up", "Kern.Debug"));
        QTRY_COMPARE(count(), name("9 of 38 events"));
    }
    void deletesOnlyWhatMatches() {
        find("sdb");
        QTRY_COMPARE(rows(), 10);
        click("deleteEvents");
        answer(name("OK"), true);
        QTRY_VERIFY(alert() != nullptr && alert()->isVisible());
        QVERIFY(alert()->informativeText().endsWith(
            name("\n\nOnly the 10 events that match are deleted.")));
        m_page->insertEvent(fields("1700000100", "disk sdb9"));
        answer(name("Yes"));
        QTRY_COMPARE(count(), name("1 of 31 events"));
        QCOMPARE(cell(0, 4), name("disk sdb9"));
    }
    void deletesAllThatTheQuestionWasAbout() {
        click("deleteEvents");
        answer(name("OK"), true);
        QTRY_VERIFY(alert() != nullptr && alert()->isVisible());
        // As a slow search does that ends only now.
        field()->setText(name("sdb"));
        QTRY_COMPARE(rows(), 10);
        answer(name("Yes"));
        QTRY_COMPARE(count(), name("0 of 0 events"));
    }
    void deletesASelectedRowOfTheResult() {
        find("sdb");
        QTRY_COMPARE(rows(), 10);
        clickRow(1);
        click("deleteEvents");
        QTRY_VERIFY(alert() != nullptr && alert()->isVisible());
        QVERIFY(alert()->informativeText().endsWith(
            name("\n\nOnly the 1 event that matches is deleted.")));
        answer(name("Yes"));
        QTRY_COMPARE(count(), name("9 of 39 events"));
        QCOMPARE(cell(1, 4), name("disk sdb1 28"));
    }
    void keepsTheSelectedEventInViewWhenCleared() {
        find("sdb");
        QTRY_COMPARE(rows(), 10);
        clickRow(9);
        click("findClear");
        QTRY_COMPARE(rows(), 40);
        QCOMPARE(selected(), QList<int>{39});
        const QRect row = table()->visualRect(table()->model()->index(39, 0));
        QVERIFY(table()->viewport()->rect().contains(row.center()));
    }
    void saysWhatIsWrongWithAnExpressionAndKeepsTheResult() {
        find("sdb1 3[26]");
        QTRY_COMPARE(rows(), 0);
        QCOMPARE(hint(), name("No events match."));
        click("findRegex");
        QTRY_COMPARE(rows(), 2);
        QTest::keyClicks(field(), name("("));
        auto *error = m_page->findChild<QLabel *>(name("findError"));
        QTRY_VERIFY(error->isVisible());
        QVERIFY(!error->text().isEmpty());
        QCOMPARE(rows(), 2);
        QTest::keyClick(field(), Qt::Key_Backspace);
        QTRY_VERIFY(!error->isVisible());
        QCOMPARE(rows(), 2);
    }
    void tellsCapitalLettersOnRequest() {
        find("SDB");
        QTRY_COMPARE(rows(), 10);
        click("findCase");
        QTRY_COMPARE(rows(), 0);
    }
    void choosesAndCountsRatings() {
        auto *severe = m_page->findChild<QPushButton *>(name("findRatingSevere"));
        QTRY_COMPARE(severe->text(), name("20"));
        find("sdb");
        QTRY_COMPARE(severe->text(), name("10"));
        click("findRatingNormal");
        QTRY_COMPARE(rows(), 0);
        QCOMPARE(severe->text(), name("10"));
        click("findRatingSevere");
        QTRY_COMPARE(rows(), 10);
    }
    void followsTheDateFormat() {
        find("2023-11-14");
        QTRY_COMPARE(rows(), 40);
        m_page->hide();
        m_delegate->state.newDateFormat = "dd/MM/yyyy";
        show();
        QTRY_COMPARE(rows(), 0);
    }
    void foldsInANarrowWindow() {
        m_page->resize(520, 400);
        auto *open = m_page->findChild<QPushButton *>(name("findOpen"));
        QTRY_VERIFY(open->isVisible());
        QVERIFY(!field()->isVisible());
        QTest::mouseClick(open, Qt::LeftButton);
        QTRY_VERIFY(field()->isVisible() && field()->hasFocus());
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::EventFinderTest)
#include "EventFinderTest.moc"
