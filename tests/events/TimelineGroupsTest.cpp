// The timeline's columns stacked by something else than the rating.

#include "events/TimelineFixture.h"

namespace quorbel {

using namespace testing;

class TimelineGroupsTest : public QObject, private TimelineFixture {
    Q_OBJECT

private:
    void insert(std::int64_t moment, int count, const char *host, const char *priority) {
        for (; count > 0; --count) {
            list().insertRaw({std::to_string(moment), priority, host, "text", {}});
        }
    }
    void openWithHosts() {
        insert(kStart, 6, "fs01", "Mail.Debug");
        insert(kStart, 3, "db01", "Kern.Critical");
        insert(kStart + kHour, 2, "mx2", "Kern.Debug");
        insert(kStart + kHour, 1, "odd\u202e", "User.Debug");
        insert(kStart + kHour, 1, "odd\u202e", "Auth.Debug");
        insert(kStart + kHour, 1, "last", "Daemon.Debug");
        open(0, 0);
        QTRY_VERIFY(axis().hasRange());
        timeline().setFocus();
        QTRY_VERIFY(timeline().hasFocus());
    }
    QString said() { return timeline().accessibleName(); }
    QString colourAt(std::int64_t moment, int above) {
        const QRect area = TimelinePicture::columnsArea(timeline().size());
        const int x = axis().leftOf(axis().columnOf(moment)) + 2;
        return timeline().grab().toImage().pixelColor(x, area.bottom() - above).name();
    }

private Q_SLOTS:
    void init() { makePage(); }
    void cleanup() { endPage(); }

    void isByRatingAtFirst() {
        openWithHosts();
        QCOMPARE(colourAt(kStart, 1), name("#d93a3f"));
        QVERIFY(!said().contains(name("others")));
        QCOMPARE(remembered("Timeline/stackedBy"), QString());
    }
    void stacksByHost() {
        openWithHosts();
        const int height = timeline().sizeHint().height();
        chooseFromMenu(Qt::Key_H);
        QVERIFY(timeline().sizeHint().height() > height);
        QTRY_VERIFY2(said().endsWith(name(": 5 events, fs01 0, db01 0, mx2 2, others 3")),
                     qPrintable(said()));
        QCOMPARE(colourAt(kStart, 1), name("#c6dcf2"));  // pale, but for what is asked for
        QCOMPARE(colourAt(kStart, 30), name("#e0d1ec"));
        m_page->findChild<FindBar *>(name("findBar"))->addText({{"db01", true, false}, false});
        QTRY_COMPARE(count(), name("3 of 14 events"));
        QTRY_COMPARE(colourAt(kStart, 1), name("#8e55b8"));
        QCOMPARE(colourAt(kStart, 20), name("#c6dcf2"));
        for (int i = 0; i < 400 && !said().contains(name("db01 3")); ++i) {
            key(Qt::Key_Left);
        }
        QVERIFY2(said().contains(name(": 3 of 9 events, 3 severe, fs01 0, db01 3")),
                 qPrintable(said()));
    }
    void stacksByFacilityAndByRatingAgain() {
        openWithHosts();
        chooseFromMenu(Qt::Key_F);
        QTRY_VERIFY2(said().endsWith(name(": 5 events, Mail 0, Kern 2, Auth 1, others 2")),
                     qPrintable(said()));
        chooseFromMenu(Qt::Key_R);
        QTRY_COMPARE(colourAt(kStart, 1), name("#d93a3f"));
        QTRY_VERIFY2(said().endsWith(name(": 5 events")), qPrintable(said()));
    }
    void followsWhatIsMostFrequent() {
        openWithHosts();
        chooseFromMenu(Qt::Key_H);
        QTRY_VERIFY(said().contains(name("fs01 0")));
        list().setAside({{5, 9}});  // fs01 and db01
        QTRY_VERIFY2(said().endsWith(name(": 5 events, mx2 2, odd<U+202E> 2, last 1, others 0")),
                     qPrintable(said()));
        list().putBack();
        QTRY_VERIFY2(said().contains(name("fs01 0, db01 0")), qPrintable(said()));
        m_page->insertEvent({std::to_string(kStart + kHour), "Kern.Debug", "fs01", "text", {}});
        QTRY_VERIFY2(said().contains(name(": 6 events, fs01 1, db01 0")), qPrintable(said()));
    }
    void isRemembered() {
        openWithHosts();
        chooseFromMenu(Qt::Key_H);
        QCOMPARE(remembered("Timeline/stackedBy"), name("stackByHost"));
        makeNextPage();
        insert(kStart, 4, "fs01", "Mail.Debug");
        show();
        QTRY_VERIFY(axis().hasRange());
        timeline().setFocus();
        QTRY_VERIFY2(said().endsWith(name(": 4 events, fs01 4, others 0")), qPrintable(said()));
        QVERIFY(m_page->findChild<QAction *>(name("stackByHost"))->isChecked());
        chooseFromMenu(Qt::Key_R);
        QCOMPARE(remembered("Timeline/stackedBy"), name("stackByRating"));
    }
    void zoomsWhileGroupsAreCountedAnew() {
        insert(kStart, 200'000, "many", "Mail.Debug");
        openWithHosts();
        chooseFromMenu(Qt::Key_H);
        QTRY_VERIFY(said().contains(name("fs01 0")));
        list().removeRows({{5, 9}});  // db01 and fs01, too few to be noticed
        list().removeRows({{0, 3}, {50, 5000}});
        for (int i = 0; i < 10'000 && !said().contains(name("many 0, mx2 2, others")); ++i) {
            wheel(300, i % 2 == 0 ? 120 : -120);
            timeline().grab();
            QTest::qWait(1);
        }
        QVERIFY2(said().contains(name("many 0, mx2 2, others")), qPrintable(said()));
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::TimelineGroupsTest)
#include "TimelineGroupsTest.moc"
