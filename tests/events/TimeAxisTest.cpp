// Which spans the timeline's columns stand for where clocks change.

#include "events/timeline/TimeAxis.h"
#include "events/timeline/TimeTexts.h"

#include <QDateTime>
#include <QTest>

#include <functional>

namespace quorbel {

class TimeAxisTest : public QObject {
    Q_OBJECT

private:
    static std::int64_t moment(int year, int month, int day, int hour = 0) {
        return QDateTime(QDate(year, month, day), QTime(hour, 0)).toSecsSinceEpoch();
    }
    static QDateTime local(std::int64_t moment) { return QDateTime::fromSecsSinceEpoch(moment); }
    /// All of the range in columns that are five pixels wide, and no wider.
    static TimeAxis axisOver(std::int64_t first, std::int64_t last, std::int64_t about) {
        TimeAxis axis;
        axis.setWidth(static_cast<int>((last - first) / about + 3) * TimeAxis::kNarrowest);
        axis.setClockOffset(clockOffsetAt(last));
        axis.setRange(first, last);
        return axis;
    }
    /// Whether columns follow one another without a gap, and each begins where it should.
    static void check(const TimeAxis &axis, const std::function<bool(const QDateTime &)> &isStart) {
        QVERIFY(axis.newestColumn() > axis.oldestColumn() + 3);
        for (std::int64_t i = axis.oldestColumn(); i <= axis.newestColumn(); ++i) {
            const TimeSpan span = axis.spanOf(i);
            QVERIFY2(isStart(local(span.from)), qPrintable(local(span.from).toString(Qt::ISODate)));
            QVERIFY(span.until > span.from);
            QCOMPARE(axis.spanOf(i + 1).from, span.until);
            QCOMPARE(axis.columnOf(span.from), i);
            QCOMPARE(axis.columnOf(span.until - 1), i);
            QCOMPARE(axis.xOf(span.from), axis.leftOf(i));
        }
        for (int x = 0; x < 400; ++x) {
            QCOMPARE(axis.columnOf(axis.momentAt(x)), axis.columnAt(x));
        }
    }

private Q_SLOTS:
    void initTestCase() { qputenv("TZ", "Europe/Berlin"); }

    void halfDaysBeginAtMidnightAndNoonAllYear() {
        const TimeAxis axis = axisOver(moment(2026, 1, 10), moment(2026, 12, 10), 43'200);
        QCOMPARE(axis.step(), std::int64_t{43'200});
        check(axis, [](const QDateTime &start) {
            return start.time() == QTime(0, 0) || start.time() == QTime(12, 0);
        });
    }
    void marksStandAtTheColumnsEdges() {
        TimeAxis axis = axisOver(moment(2026, 6, 1), moment(2026, 12, 10), 3 * 3600);
        QCOMPARE(axis.step(), std::int64_t{3 * 3600});
        // In summer, while it is winter at the end of the range.
        for (const TimeTick &tick : ticksOf(axis, 400, 20)) {
            QVERIFY2(tick.text == QStringLiteral("12:00") || !tick.text.contains(u':'),
                     qPrintable(tick.text));
            QCOMPARE(axis.leftOf(axis.columnAt(tick.x)), tick.x);
        }
        QVERIFY(ticksOf(axis, 400, 20).size() > 10);
    }
    void aClockThatIsSetLeavesNoGap() {
        for (const int month : {3, 10}) {
            const TimeAxis axis = axisOver(moment(2026, month, 20), moment(2026, month, 30), 7200);
            QCOMPARE(axis.step(), std::int64_t{7200});
            check(axis, [](const QDateTime &start) {
                // There is no two o'clock when it is set forward.
                return start.time().hour() % 2 == 0 || start.time() == QTime(3, 0);
            });
        }
    }
    void weeksBeginOnMonday() {
        const TimeAxis axis = axisOver(moment(2025, 1, 1), moment(2027, 1, 1), 7 * 86'400);
        QCOMPARE(axis.step(), std::int64_t{7 * 86'400});
        check(axis, [](const QDateTime &start) {
            return start.date().dayOfWeek() == Qt::Monday && start.time() == QTime(0, 0);
        });
    }
    void monthsAndYearsBeginOnTheirFirstDay() {
        const auto isFirst = [](const QDateTime &start) {
            return start.date().day() == 1 && start.time() == QTime(0, 0);
        };
        constexpr std::int64_t kYear = 31'556'952;
        const TimeAxis months = axisOver(moment(2020, 1, 15), moment(2030, 5, 1), kYear / 12);
        QCOMPARE(months.step(), kYear / 12);
        check(months, isFirst);
        const TimeAxis years = axisOver(moment(1970, 3, 1), moment(2105, 1, 1), kYear);
        QCOMPARE(years.step(), kYear);
        check(years,
              [&](const QDateTime &start) { return isFirst(start) && start.date().month() == 1; });
        QCOMPARE(local(years.spanOf(years.newestColumn()).from).date(), QDate(2105, 1, 1));
    }
    void whatIsAtThePointerStaysThereFromSecondsToYears() {
        TimeAxis axis = axisOver(moment(1990, 1, 1), moment(2026, 11, 1), 31'556'952);
        constexpr int kX = 70;
        const std::int64_t there = axis.momentAt(kX);
        for (int i = 0; i < 60; ++i) {
            axis.zoom(0.6, kX);
            QVERIFY(std::abs(axis.xOf(there) - kX) <= 1);
        }
        QCOMPARE(axis.step(), std::int64_t{1});
        for (int i = 0; i < 20; ++i) {
            axis.zoom(1.4, kX);
            QVERIFY(std::abs(axis.xOf(there) - kX) <= 1);
        }
    }
};

}  // namespace quorbel

QTEST_GUILESS_MAIN(quorbel::TimeAxisTest)
#include "TimeAxisTest.moc"
