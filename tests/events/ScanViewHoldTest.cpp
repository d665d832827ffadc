// The event list held by its button, and the way back to the newest events.

#include "core/EventIntake.h"
#include "events/ScanViewFixture.h"
#include "platform/DateFormat.h"
#include "support/NoHomePage.h"

#include <QHeaderView>
#include <QLabel>
#include <QScrollBar>
#include <QTest>

#include <array>
#include <deque>
#include <random>

namespace quorbel {

using namespace testing;

namespace {

/// What the list is to hold, done at once and one by one.
class PlainPage {
public:
    struct Row {
        std::int64_t seconds = 0;
        std::string message;
        bool isRaw = true;
        bool isRemoval = false;
        bool operator==(const Row &) const = default;
    };

    void arrive(const Row &row) { held ? waiting.push_back(row) : insert(row); }
    void remove(Row row) {
        row.isRemoval = true;
        held ? waiting.push_back(row) : takeOut(row);
    }
    void release() {
        held = false;
        for (const Row &row : std::exchange(waiting, {})) {
            row.isRemoval ? takeOut(row) : insert(row);
        }
    }
    void show() {
        onScreen = true;
        for (Row &row : rows) {
            row.isRaw = false;
        }
    }

    std::deque<Row> rows;  // newest first
    std::vector<Row> waiting;
    bool held = false;
    bool onScreen = false;

private:
    void insert(Row row) {
        row.isRaw = !onScreen;
        rows.push_front(row);
    }
    void takeOut(const Row &announced) {
        const auto found = std::ranges::find_if(rows, [&](const Row &row) {
            return !row.isRaw && row.seconds == announced.seconds &&
                   row.message == announced.message;
        });
        if (found != rows.end()) {
            rows.erase(found);
        }
    }
};

}  // namespace

class ScanViewHoldTest : public QObject, private ScanViewFixture {
    Q_OBJECT

private:
    void show() {
        ScanViewFixture::show();
        m_page->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_page.get()));
    }
    QPushButton &holdEvents() { return *m_page->findChild<QPushButton *>(name("holdEvents")); }
    QPushButton &newestEvents() { return *m_page->findChild<QPushButton *>(name("newestEvents")); }
    EventHold &hold() { return m_delegate->hold; }
    QScrollBar &bar() { return *table()->verticalScrollBar(); }
    void arrive(std::string_view message, std::string_view date = "1700000000") {
        m_intake->setNotification(fields(date, message));
    }
    void arriveMany(int count) {
        for (int i = 0; i < count; ++i) {
            arrive(std::to_string(i));
        }
    }
    void settle() {
        QTRY_VERIFY(!hold().delays() || hold().isOn());
        QCoreApplication::processEvents();
    }
    void pressHold() { QTest::mouseClick(&holdEvents(), Qt::LeftButton); }
    std::size_t pick(std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(m_random);
    }
    PlainPage::Row randomRow() {
        return {1'700'000'000 + static_cast<std::int64_t>(pick(40)),
                std::string(1, static_cast<char>('a' + pick(3)))};
    }
    void announce(const PlainPage::Row &row, bool isRemoval) {
        const std::string date = std::to_string(row.seconds);
        if (isRemoval) {
            m_intake->removeNotification(fields(date, row.message));
            m_plain.remove(row);
        } else {
            m_intake->setNotification(fields(date, row.message));
            m_plain.arrive(row);
            ++m_counted;
        }
    }
    void deleteSomeRows() {
        const std::size_t count = std::min<std::size_t>(1 + pick(3), m_plain.rows.size());
        table()->scrollToTop();
        for (std::size_t row = 0; row < count; ++row) {
            clickRow(static_cast<int>(2 * row), Qt::ControlModifier);
        }
        const QList<int> rows = selected();
        if (rows.isEmpty()) {
            return;
        }
        click("deleteEvents");
        // What is new while the question stands neither joins nor changes what is deleted.
        announce(randomRow(), false);
        answer(name("Yes"));
        const bool moved = !m_plain.held;
        for (auto row = rows.rbegin(); row != rows.rend(); ++row) {
            m_plain.rows.erase(m_plain.rows.begin() + *row + (moved ? 1 : 0));
            --m_counted;
        }
    }
    void toggleHold() {
        if (pick(2) == 0) {
            m_page->activateWindow();  // a question may have been in front of it
            QVERIFY(QTest::qWaitForWindowActive(m_page.get()));
            QTest::keyClick(table(), Qt::Key_H, Qt::ControlModifier);
        } else {
            pressHold();
        }
        if (m_plain.held) {
            for (std::size_t i = pick(4); i > 0; --i) {
                announce(randomRow(), pick(3) == 0);  // behind what waits
            }
            settle();
            m_plain.release();
        } else {
            m_plain.held = true;
        }
        QCOMPARE(hold().isOn(), m_plain.held);
        QCOMPARE(holdEvents().isChecked(), m_plain.held);
    }
    void hideOrShow() {
        settle();
        if (m_plain.onScreen) {
            m_page->hide();
            m_plain.onScreen = false;
            return;
        }
        AppState &state = m_delegate->state;
        static const std::array formats = {"yyyy-MM-dd HH:mm:ss", "dd.MM.yyyy hh:mm:ss AM/PM"};
        state.oldDateFormat = std::exchange(state.newDateFormat, formats[pick(2)]);
        show();
        m_plain.show();
    }
    void compare() {
        settle();
        QCOMPARE(list().size(), m_plain.rows.size());
        QCOMPARE(hold().arrivals() + hold().removals(), m_plain.waiting.size());
        QCOMPARE(m_delegate->state.iError, m_counted);
        const DateFormat format(m_delegate->state.newDateFormat);
        for (std::size_t row = 0; row < m_plain.rows.size(); ++row) {
            const PlainPage::Row &expected = m_plain.rows[row];
            const auto at = static_cast<int>(row);
            QCOMPARE(cell(at, 4).toStdString(), expected.message);
            if (m_plain.onScreen) {
                QCOMPARE(cell(at, 1).toStdString(),
                         format.render(static_cast<double>(expected.seconds)));
            }
        }
    }

    std::unique_ptr<EventIntake> m_intake;
    testing::NoHomePage m_home;
    std::mt19937 m_random{11};
    PlainPage m_plain;
    std::int64_t m_counted = 0;

private Q_SLOTS:
    void initTestCase() { qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent"); }
    void init() {
        makePage();
        m_intake =
            std::make_unique<EventIntake>(m_delegate->state, list(), hold(), *m_page, m_home);
    }
    void cleanup() {
        m_intake.reset();
        m_page.reset();
        m_delegate.reset();
    }

    void aPlainPageHoldsTheSameRows() {
        show();
        m_plain.onScreen = true;
        int released = 0;
        for (int step = 0; step < 600; ++step) {
            for (std::size_t i = pick(6); i > 0; --i) {
                announce(randomRow(), pick(3) == 0);
            }
            const std::size_t what = pick(12);
            if (what < 2) {
                hideOrShow();
            } else if (what < 5 && m_plain.onScreen) {
                released += m_plain.waiting.empty() ? 0 : 1;
                toggleHold();
            } else if (what == 5 && m_plain.onScreen) {
                deleteSomeRows();
            }
            compare();
            if (QTest::currentTestFailed()) {
                return;
            }
        }
        QVERIFY(list().size() > 100);
        QVERIFY(released > 20);
    }

    void heldTheListKeepsItsRowsAndItsSelection() {
        arriveMany(3);
        show();
        clickRow(1);
        pressHold();
        QVERIFY(holdEvents().isChecked());
        arrive("new");
        m_intake->removeNotification(fields("1700000000", "0"));
        QTRY_COMPARE(holdEvents().text(), name("Held: 1 new"));
        QCOMPARE(list().size(), std::size_t{3});
        QCOMPARE(selected(), QList<int>{1});
        QCOMPARE(m_delegate->state.iError, 4);
        QCOMPARE(m_page->findChild<QLabel *>(name("eventCount"))->text(), name("3 events"));
        pressHold();
        QTRY_COMPARE(list().size(), std::size_t{3});
        QTRY_COMPARE(cell(2, 4), name("1"));
        QCOMPARE(cell(0, 4), name("new"));
        QCOMPARE(selected(), QList<int>());
    }

    void theKeyWorksFromAnywhereOnThePageAgainAndAgain() {
        show();
        for (const char *control : {"tableView", "deleteEvents", "holdEvents"}) {
            auto *widget = m_page->findChild<QWidget *>(name(control));
            widget->setFocus();
            QTest::keyClick(widget, Qt::Key_H, Qt::ControlModifier);
            QVERIFY2(hold().isOn(), control);
            arrive("new");
            QTRY_COMPARE(holdEvents().text(), name("Held: 1 new"));
            QTest::keyClick(widget, Qt::Key_H, Qt::ControlModifier);
            QVERIFY2(!hold().isOn(), control);
            settle();
            QVERIFY2(widget->hasFocus(), control);
        }
        holdEvents().setFocus();
        QTest::keyClick(&holdEvents(), Qt::Key_Space);
        QVERIFY(hold().isOn());
    }

    void aClickLeavesTheKeyboardWithTheTable() {
        arriveMany(3);
        show();
        table()->setFocus();
        pressHold();
        QVERIFY(table()->hasFocus());
    }

    void itSaysWhatWaits() {
        show();
        QCOMPARE(holdEvents().text(), QString());
        QCOMPARE(holdEvents().accessibleName(), name("Hold new events"));
        QCOMPARE(holdEvents().toolTip(),
                 name("Hold the list as it is while you read: new events wait (Ctrl+H)"));
        pressHold();
        QTRY_COMPARE(holdEvents().text(), name("Held"));
        QCOMPARE(holdEvents().accessibleDescription(),
                 name("The list is held; nothing new so far (Ctrl+H)"));
        m_intake->removeNotification(fields("1700000000"));
        QTRY_COMPARE(holdEvents().text(), name("Held: 1 removed"));
        arriveMany(1204);
        QTRY_COMPARE(holdEvents().text(), name("Held: 1,204 new"));
        QCOMPARE(holdEvents().accessibleDescription(),
                 name("The list is held; not in it yet: 1,204 new events and 1 removal "
                      "(Ctrl+H)"));
        pressHold();
        QTRY_COMPARE(holdEvents().text(), QString());
    }

    void veryManyAreSaidBrieflyAndExactlyInTheToolTip() {
        show();
        pressHold();
        arriveMany(1'299'999);
        QTRY_COMPARE(holdEvents().text(), name("Held: 1.2M new"));
        QVERIFY(holdEvents().toolTip().contains(name("1,299,999 new events")));
        // Neither leaving the page nor the end of the program waits for them.
        m_page->hide();
        QVERIFY(hold().isOn());
        QCOMPARE(list().size(), std::size_t{0});
    }

    void aReleaseLetsTheWindowsOwnEventsInBetween() {
        show();
        pressHold();
        arriveMany(200'000);
        pressHold();
        int turns = 0;
        while (hold().delays()) {
            QCoreApplication::processEvents();
            ++turns;
        }
        QVERIFY2(turns > 3, qPrintable(QString::number(turns)));
        QCOMPARE(list().size(), std::size_t{200'000});
        QCOMPARE(cell(0, 4), name("199999"));
    }

    void aReleaseGoesOnWithAnotherPage() {
        show();
        pressHold();
        arriveMany(10);
        auto next = std::make_unique<ScanView>(*m_delegate, m_storyboard);
        next->viewDidLoad();
        m_page = std::move(next);
        QVERIFY(holdEvents().isChecked());
        QTRY_COMPARE(holdEvents().text(), name("Held: 10 new"));
        show();
        pressHold();
        QTRY_COMPARE(list().size(), std::size_t{10});
    }

    void whatWaitsIsRenderedInTheFormatAtItsRelease() {
        show();
        pressHold();
        arrive("new");
        m_page->hide();
        AppState &state = m_delegate->state;
        state.oldDateFormat = std::exchange(state.newDateFormat, "dd.MM.yyyy HH:mm:ss");
        show();
        pressHold();
        QTRY_COMPARE(list().size(), std::size_t{1});
        QCOMPARE(cell(0, 1), name("14.11.2023 22:13:20"));
    }

    void deletingAllLeavesWhatWaits() {
        arriveMany(5);
        show();
        pressHold();
        arrive("waits");
        click("deleteEvents");
        answer(name("OK"), true);
        answer(name("Yes"));
        QCOMPARE(list().size(), std::size_t{0});
        QCOMPARE(m_delegate->state.iError, 1);
        pressHold();
        QTRY_COMPARE(list().size(), std::size_t{1});
        QCOMPARE(cell(0, 4), name("waits"));
    }

    void aNarrowPageShortensWhatTheButtonSays() {
        show();
        pressHold();
        arriveMany(1204);
        QTRY_COMPARE(holdEvents().text(), name("Held: 1,204 new"));
        QCoreApplication::processEvents();
        const int wide = holdEvents().width();
        QCOMPARE(wide, holdEvents().maximumWidth());
        const int link = m_page->findChild<QWidget *>(name("scanActions"))->width();
        m_page->resize(560, 400);
        QTRY_VERIFY(holdEvents().width() < wide);
        QCOMPARE(m_page->findChild<QWidget *>(name("scanActions"))->width(), link);
    }

    void newEventsAboveAreCountedAndAClickLeadsToThem() {
        arriveMany(300);
        show();
        table()->setFocus();
        bar().setValue(40);
        QCoreApplication::processEvents();
        QVERIFY(!newestEvents().isVisible());
        const QRect place = table()->geometry();
        const QString first = cell(table()->rowAt(1), 4);
        for (int i = 0; i < 37; ++i) {
            arrive("new");
        }
        QTRY_VERIFY(newestEvents().isVisible());
        QCOMPARE(newestEvents().text(), name("37 new"));
        QCOMPARE(newestEvents().accessibleName(), name("Go to the newest: 37 new events above"));
        QCOMPARE(table()->geometry(), place);
        QVERIFY(table()->hasFocus());
        QCOMPARE(cell(table()->rowAt(1), 4), first);
        QVERIFY(table()->horizontalHeader()->geometry().contains(newestEvents().geometry()));
        QTest::mouseClick(&newestEvents(), Qt::LeftButton);
        QCOMPARE(bar().value(), 0);
        QVERIFY(!newestEvents().isVisible());
        QVERIFY(table()->hasFocus());
        arrive("seen at once");
        QCoreApplication::processEvents();
        bar().setValue(20);
        QVERIFY(!newestEvents().isVisible());
    }

    void theKeyLeadsToThemToo() {
        arriveMany(300);
        show();
        table()->setFocus();
        bar().setValue(40);
        arrive("new");
        QTRY_VERIFY(newestEvents().isVisible());
        QCOMPARE(newestEvents().accessibleName(), name("Go to the newest: 1 new event above"));
        QTest::keyClick(table(), Qt::Key_Home, Qt::ControlModifier);
        QCOMPARE(bar().value(), 0);
        QVERIFY(!newestEvents().isVisible());
    }

    void scrollingUpTakesWhatIsSeenOffTheCount() {
        arriveMany(300);
        show();
        bar().setValue(40);
        for (int i = 0; i < 37; ++i) {
            arrive("new");
        }
        QTRY_COMPARE(newestEvents().text(), name("37 new"));
        bar().setValue(30);
        QCOMPARE(newestEvents().text(), name("30 new"));
        bar().setValue(70);
        QCOMPARE(newestEvents().text(), name("30 new"));
        list().removeRows({{0, 10}});
        QTRY_COMPARE(newestEvents().text(), name("20 new"));
        list().removeRows({{0, list().size()}});
        QTRY_VERIFY(!newestEvents().isVisible());
    }

    void showingThePageMakesAllSeen() {
        arriveMany(300);
        show();
        m_page->hide();
        arriveMany(50);
        show();
        bar().setValue(60);
        QCoreApplication::processEvents();
        QVERIFY(!newestEvents().isVisible());
        arrive("new");
        QTRY_COMPARE(newestEvents().text(), name("1 new"));
        m_page->hide();
        show();
        QVERIFY(!newestEvents().isVisible());
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ScanViewHoldTest)
#include "ScanViewHoldTest.moc"
