// Narrowing the table to a span with the timeline.

#include "events/TimelineFixture.h"
#include "events/find/FindSpan.h"
#include "events/questions/QuestionPanel.h"

namespace quorbel {

using namespace testing;

class TimelineSpanTest : public QObject, private TimelineFixture {
    Q_OBJECT

private Q_SLOTS:
    void init() { makePage(); }
    void cleanup() { endPage(); }

    void narrowsTheTableByMouseAndGoesBack() {
        open();
        const std::int64_t first = axis().columnOf(kStart + 2 * kHour);
        const std::int64_t last = axis().columnOf(kStart + 4 * kHour) - 1;
        drag(axis().leftOf(first) + 1, axis().leftOf(last) + 3, Qt::ShiftModifier);
        QTRY_COMPARE(count(), name("200 of 2,400 events"));
        QCOMPARE(axis().showsAll(), true);  // looking and narrowing are two things
        const EventQuery once = query();
        QCOMPARE(once.from, kStart + 2 * kHour);
        QCOMPARE(once.until, kStart + 4 * kHour);
        // What is said counts what matches; beside the span nothing does.
        moveTo(axis().leftOf(first) + 2);
        QTRY_VERIFY2(readOut().contains(name(" of ")) && !readOut().contains(name(": 0 of ")),
                     qPrintable(readOut()));
        moveTo(axis().leftOf(last + 2) + 2);
        QTRY_VERIFY2(readOut().contains(name(": 0 of ")), qPrintable(readOut()));
        // Its edges can be taken.
        drag(axis().xOf(*once.until) + 1, axis().leftOf(first) + 4);
        QTRY_COMPARE(query().until, axis().spanOf(first).until);
        QCOMPARE(query().from, once.from);
        wheel(300, 360);
        timeline().setFocus();
        key(Qt::Key_Backspace);
        QCOMPARE(query(), once);
        QVERIFY(axis().showsAll());
        key(Qt::Key_Backspace);
        QTRY_COMPARE(count(), name("2,400 events"));
        QVERIFY(!query().isInUse());
        key(Qt::Key_Backspace);
        QVERIFY(!query().isInUse());
    }
    void narrowsTheTableByKey() {
        openWithFocus();
        key(Qt::Key_Left);
        key(Qt::Key_Return);
        const TimeSpan column = axis().spanOf(axis().newestColumn() - 1);
        QCOMPARE(query().from, column.from);
        QCOMPARE(query().until, column.until);
        key(Qt::Key_Left, Qt::ShiftModifier);
        key(Qt::Key_Left, Qt::ShiftModifier);
        QVERIFY(readOut().startsWith(
            spanText({axis().spanOf(axis().newestColumn() - 3).from, column.until}, axis())));
        key(Qt::Key_Escape);
        QVERIFY(query().from == column.from);
        for (int i = 0; i < 3; ++i) {
            key(Qt::Key_Right);
        }
        key(Qt::Key_Left, Qt::ShiftModifier);
        key(Qt::Key_Return);
        QCOMPARE(query().from, axis().spanOf(axis().newestColumn() - 1).from);
        QCOMPARE(query().until, axis().spanOf(axis().newestColumn()).until);
        key(Qt::Key_Backspace);
        QCOMPARE(query().until, column.until);
    }
    void saysTheSecondsOfASpanThatHasSome() {
        openWithFocus();
        for (int i = 0; i < 40; ++i) {
            key(Qt::Key_Plus);
        }
        key(Qt::Key_Left, Qt::ShiftModifier);
        key(Qt::Key_Return);
        const std::int64_t from = query().from.value();
        QCOMPARE(query().until, from + 2);
        const auto clock = [](std::int64_t moment) {
            return QDateTime::fromSecsSinceEpoch(moment).toString(name("yyyy-MM-dd HH:mm:ss"));
        };
        auto &bar = *m_page->findChild<FindBar *>(name("findBar"));
        const QString tip = m_page->findChild<QWidget *>(name("findSpan"))->toolTip();
        QVERIFY2(tip.contains(clock(from) + name(" – ") + clock(from + 2).mid(11)),
                 qPrintable(tip));
        bar.setSpan(kStart, kStart + 120);
        QVERIFY(!m_page->findChild<QWidget *>(name("findSpan"))->toolTip().contains(name(":00:")));
    }
    void goesBackToASpanThatWentOnMeanwhile() {
        openWithFocus();
        QDateTime now = QDateTime::fromSecsSinceEpoch(kStart + 24 * kHour);
        auto &choice = *m_page->findChild<FindSpan *>();
        choice.setClock([&now] { return now; });
        m_page->findChild<FindBar *>(name("findBar"))->setSpan(kStart + 23 * kHour, {});
        QCOMPARE(spanChosen(), name("Last hour"));
        key(Qt::Key_Return);
        QVERIFY(query().until.has_value());
        now = now.addSecs(600);
        key(Qt::Key_Backspace);
        QCOMPARE(spanChosen(), name("Last hour"));
        QCOMPARE(query().from, kStart + 23 * kHour + 600);
    }
    void leavesASpanAloneWhoseEdgeIsOnlyTouched() {
        open();
        auto &bar = *m_page->findChild<FindBar *>(name("findBar"));
        const std::int64_t end = kStart + 5 * kHour + 77;
        bar.setSpan(kStart + 130, end);
        press(axis().xOf(end));
        release(axis().xOf(end));
        QCOMPARE(query().from, kStart + 130);
        QCOMPARE(query().until, end);
        key(Qt::Key_Backspace);
        QCOMPARE(query().until, end);
    }
    void leavesASpanAloneThatWasChosenElsewhere() {
        openWithFocus();
        key(Qt::Key_Return);
        auto &bar = *m_page->findChild<FindBar *>(name("findBar"));
        bar.setSpan(kStart, kStart + 60);
        key(Qt::Key_Backspace);
        QCOMPARE(query().from, kStart);
        bar.setSpan({}, {});
        key(Qt::Key_Backspace);
        QVERIFY(!query().isInUse());
    }
    void goesBackBesideAKeptFilterWithASpanOfItsOwn() {
        openWithFocus();
        const QString unchosen = spanChosen();
        SavedFilter kept;
        kept.name = "since two";
        kept.query.from = kStart + 2 * kHour;
        Q_EMIT m_page->findChild<QuestionPanel *>(name("findSavedPanel"))->chosen(kept);
        const EventQuery before = query();
        QCOMPARE(before.from, kept.query.from);
        key(Qt::Key_Return);
        QVERIFY(query().until.has_value());
        QVERIFY(spanChosen() != unchosen);
        key(Qt::Key_Backspace);
        QCOMPARE(query(), before);
        QCOMPARE(spanChosen(), unchosen);
    }
    void doesNotNarrowWhenTheSelectionIsGivenUp() {
        open();
        press(200, Qt::ShiftModifier);
        dragTo(300);
        QVERIFY(!readOut().isEmpty());
        QTest::keyClick(&timeline(), Qt::Key_Escape);
        release(300);
        QVERIFY(!query().isInUse());
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::TimelineSpanTest)
#include "TimelineSpanTest.moc"
