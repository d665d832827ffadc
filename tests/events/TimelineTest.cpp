// How the timeline looks around, and what it shows and says.

#include "events/TimelineFixture.h"

#include <cmath>

namespace quorbel {

using namespace testing;

class TimelineTest : public QObject, private TimelineFixture {
    Q_OBJECT

private Q_SLOTS:
    void init() { makePage(); }
    void cleanup() { endPage(); }

    void isFoldedAwayAtFirst() {
        startAfresh(10, 60);
        QVERIFY(!timeline().isVisible());
        QVERIFY(!toggle().isChecked());
        QCOMPARE(remembered(), QString());
    }
    void staysAsItWasLeft() {
        open();
        QVERIFY(toggle().isChecked());
        QCOMPARE(remembered(), name("true"));
        makeNextPage();
        show();
        QVERIFY(timeline().isVisible());
        QTest::mouseClick(&toggle(), Qt::LeftButton);
        QVERIFY(!timeline().isVisible());
        makeNextPage();
        show();
        QVERIFY(!timeline().isVisible());
        QCOMPARE(remembered(), name("false"));
    }
    void givesWayInALowWindowUnlessOpenedThere() {
        open();
        m_page->resize(1000, 599);
        QTRY_VERIFY(!timeline().isVisible());
        QVERIFY(!toggle().isChecked());
        m_page->resize(1000, 600);
        QTRY_VERIFY(timeline().isVisible());
        m_page->resize(1000, 500);
        QTRY_VERIFY(!timeline().isVisible());
        QTest::mouseClick(&toggle(), Qt::LeftButton);
        QTRY_VERIFY(timeline().isVisible());
        QCOMPARE(remembered(), name("true"));
    }

    void showsAllWithTheNewestAtTheRight() {
        open();
        QVERIFY(axis().showsAll());
        QCOMPARE(axis().leftOf(axis().newestColumn() + 1), timeline().width());
        QVERIFY(axis().leftOf(axis().oldestColumn()) >= 0);
        QVERIFY(axis().columnWidth() >= TimeAxis::kNarrowest);
        QVERIFY(axis().range() == (TimeSpan{kStart, kStart + 2399 * 36 + 1}));
    }
    void keepsWhatIsUnderThePointerWhileZooming_data() {
        QTest::addColumn<int>("x");
        for (const int x : {60, 200, 471, 700, 930}) {
            QTest::newRow(std::to_string(x).c_str()) << x;
        }
    }
    void keepsWhatIsUnderThePointerWhileZooming() {
        QFETCH(int, x);
        open();
        double before = secondsPerPixel();
        const std::int64_t moment = axis().momentAt(x);
        for (int i = 0; i < 6; ++i) {
            wheel(x, 120);
            QVERIFY(secondsPerPixel() < before);
            QVERIFY(std::abs(axis().xOf(moment) - x) <= 2);
            before = secondsPerPixel();
        }
        const std::int64_t near = axis().momentAt(x);
        for (int i = 0; i < 3; ++i) {
            wheel(x, -120);
            QVERIFY(secondsPerPixel() > before);
            QVERIFY(std::abs(axis().xOf(near) - x) <= 2);
            before = secondsPerPixel();
        }
        for (int i = 0; i < 6; ++i) {
            wheel(x, -120);
        }
        QVERIFY(axis().showsAll());
    }
    void zoomsByWholeTurnsOfATouchPad() {
        open();
        const double before = secondsPerPixel();
        wheel(400, 50);
        wheel(400, 50);
        QCOMPARE(secondsPerPixel(), before);
        wheel(400, 50);
        QVERIFY(secondsPerPixel() < before);
    }
    void zoomsDownToSecondsAndNoFurther() {
        open();
        for (int i = 0; i < 40; ++i) {
            wheel(300, 120);
        }
        QCOMPARE(axis().step(), std::int64_t{1});
        QCOMPARE(axis().columnWidth(), TimeAxis::kWidest);
    }
    void pansWithTheMouse() {
        open();
        wheel(500, 360);
        const std::int64_t moment = axis().momentAt(400);
        drag(400, 550);
        QVERIFY(std::abs(axis().xOf(moment) - 550) <= 1);
        drag(550, 430);
        QVERIFY(std::abs(axis().xOf(moment) - 430) <= 1);
        for (int i = 0; i < 60; ++i) {
            drag(100, 800);
        }
        QCOMPARE(axis().leftOf(axis().oldestColumn()), 0);
        for (int i = 0; i < 60; ++i) {
            drag(800, 100);
        }
        QCOMPARE(axis().leftOf(axis().newestColumn() + 1), timeline().width());
        wheel(500, 0, 120);
        QVERIFY(axis().leftOf(axis().newestColumn() + 1) > timeline().width());
    }
    void goesFromColumnToColumnByKey() {
        openWithFocus();
        const TimeSpan newest = axis().spanOf(axis().newestColumn());
        QVERIFY(readOut().contains(name("event")));
        const QString first = readOut();
        key(Qt::Key_Left);
        QVERIFY(readOut() != first);
        QCOMPARE(timeline().accessibleName(), name("Timeline: ") + readOut());
        key(Qt::Key_Right);
        key(Qt::Key_Right);
        QCOMPARE(readOut(), first);
        for (int i = 0; i < 6; ++i) {
            key(Qt::Key_Plus);
        }
        QVERIFY(axis().step() < newest.until - newest.from);
        QVERIFY(!axis().showsAll());
        // Beyond the left edge what is in sight follows.
        const std::int64_t column = axis().firstColumn();
        for (int i = 0; i < 400; ++i) {
            key(Qt::Key_Left);
        }
        QVERIFY(axis().firstColumn() < column);
        key(Qt::Key_Minus);
        QVERIFY(!axis().showsAll());
        key(Qt::Key_Home);
        QVERIFY(axis().showsAll());
    }
    void tellsWhatThePointerIsAt() {
        open();
        const std::int64_t column = axis().columnOf(kStart + 4 * kHour);
        QVERIFY(readOut().isEmpty());
        moveTo(axis().leftOf(column) + 2);
        // 100 events an hour, the fourth of ten severe.
        QTRY_VERIFY(!readOut().isEmpty());
        const auto count = static_cast<int>(axis().step() / 36);
        QVERIFY2(readOut().startsWith(name("04:00 – 04:")), qPrintable(readOut()));
        QVERIFY2(readOut().contains(QStringLiteral(": %1 events, ").arg(count)) ||
                     readOut().contains(QStringLiteral(": %1 events, ").arg(count + 1)),
                 qPrintable(readOut()));
        QVERIFY(readOut().endsWith(name(" severe")));
        moveTo(3);
    }
    void followsArrivalsRemovalsAndRatings() {
        openWithFocus();
        const TimeSpan newest = axis().spanOf(axis().newestColumn());
        const QString before = readOut();
        for (int i = 0; i < 5; ++i) {
            m_page->insertEvent(fields(std::to_string(newest.from + 1)));
        }
        QTRY_VERIFY(readOut() != before);
        const QString more = readOut();
        m_page->removeEvent(fields(std::to_string(newest.from + 1)));
        QTRY_VERIFY(readOut() != more);
        m_page->insertEvent(fields(std::to_string(newest.until + kHour)));
        QTRY_VERIFY(axis().range().until > newest.until);
        QCOMPARE(axis().leftOf(axis().newestColumn() + 1), timeline().width());
        key(Qt::Key_Right);
        QVERIFY(!readOut().contains(name("severe")));
        m_page->hide();
        m_delegate->state.iSeverityError = 2;
        show();
        moveTo(timeline().width() - 3);
        QTRY_VERIFY2(readOut().endsWith(name(": 1 event, 1 severe")), qPrintable(readOut()));
    }
    void staysAtWhatIsLookedAtWhileEventsArrive() {
        open();
        wheel(300, 720);
        const std::int64_t moment = axis().momentAt(300);
        m_page->insertEvent(fields(std::to_string(kStart + 30 * kHour)));
        QTRY_COMPARE(axis().range().until, kStart + 30 * kHour + 1);
        QVERIFY(std::abs(axis().xOf(moment) - 300) <= 1);
    }
    void leavesRoomForWhatWaits() {
        open();
        m_delegate->hold.setOn(true);
        m_delegate->hold.addArrival(fields("1700000000"));
        m_delegate->hold.addArrival(fields("1700000000"));
        QVERIFY(axis().leftOf(axis().newestColumn() + 1) < timeline().width());
        moveTo(timeline().width() - 2);
        QTRY_COMPARE(readOut(), name("2 new events wait"));
        m_delegate->hold.addArrival(fields("1700000000"));
        QCOMPARE(timeline().accessibleName(), name("Timeline: 3 new events wait"));
        m_delegate->hold.setOn(false);
        m_delegate->hold.release(std::chrono::milliseconds(1000), *m_page);
        QCOMPARE(axis().leftOf(axis().newestColumn() + 1), timeline().width());
    }
    void paintsFullWhatMatchesAndPaleTheRest() {
        open(100, 36);
        list().insertRaw(fields(std::to_string(kStart + 2 * kHour), "last", "Kern.Debug"));
        QTRY_COMPARE(axis().range().until, kStart + 2 * kHour + 1);
        const auto colour = [this](std::int64_t moment, int above) {
            const QRect area = TimelinePicture::columnsArea(timeline().size());
            const int x = axis().leftOf(axis().columnOf(moment)) + 2;
            return timeline().grab().toImage().pixelColor(x, area.bottom() - above).name();
        };
        const std::int64_t severe = kStart + 3 * 36;
        const std::int64_t normal = kStart + 2 * kHour;
        QCOMPARE(colour(severe, 1), name("#d93a3f"));
        QCOMPARE(colour(normal, 0), name("#d3e7d9"));
        m_page->findChild<FindBar *>(name("findBar"))->addText({{"last", true, false}, false});
        QTRY_COMPARE(count(), name("1 of 101 events"));
        QTRY_COMPARE(colour(normal, 0), name("#2f9e52"));
        QCOMPARE(colour(severe, 1), name("#d93a3f"));
    }
    void goesOnWithTheNewestWhileThatIsInSight() {
        open();
        wheel(timeline().width() - 1, 480);
        const std::int64_t step = axis().step();
        QVERIFY(axis().leftOf(axis().newestColumn()) < timeline().width());
        m_page->insertEvent(fields(std::to_string(axis().range().until + 20 * step)));
        const std::int64_t newest = axis().newestColumn();
        QTRY_VERIFY(axis().newestColumn() > newest);
        QCOMPARE(axis().leftOf(axis().newestColumn() + 1), timeline().width());
        QCOMPARE(axis().step(), step);
    }
    void isBlankWithoutEventsAndTakesTheFirst() {
        open(0, 0);
        QTest::qWait(0);
        QVERIFY(!axis().hasRange());
        timeline().setFocus();
        for (const Qt::Key pressed :
             {Qt::Key_Left, Qt::Key_Plus, Qt::Key_Home, Qt::Key_Return, Qt::Key_Backspace}) {
            key(pressed);
        }
        wheel(100, 120);
        drag(100, 300, Qt::ShiftModifier);
        QVERIFY(readOut().isEmpty());
        m_page->insertEvent(fields("1700000000"));
        QTRY_VERIFY(axis().hasRange());
        m_page->removeEvent(fields("1700000000"));
        QTRY_VERIFY(!axis().hasRange());
    }
    void standsClocksThatAreFarOff() {
        for (const char *date : {"0", "1700000000", "253402300799", "99999999999999", "soon"}) {
            list().insertRaw(fields(date));
        }
        open(1, 1);
        QVERIFY(axis().range() == (TimeSpan{0, TimeCounts::kEnd}));
        for (int i = 0; i < 90; ++i) {
            wheel(i % 2 == 0 ? 5 : 700, 120);
        }
        QCOMPARE(axis().step(), std::int64_t{1});
        timeline().setFocus();
        for (const Qt::Key pressed : {Qt::Key_PageUp, Qt::Key_Right, Qt::Key_Minus, Qt::Key_Home}) {
            key(pressed);
        }
        QVERIFY(axis().showsAll());
        timeline().grab();
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::TimelineTest)
#include "TimelineTest.moc"
