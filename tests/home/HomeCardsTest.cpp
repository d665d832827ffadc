// The severity cards of the home page: what their charts show, and what mouse and keys do.

#include "home/ChartLegend.h"
#include "home/HomeCards.h"
#include "home/HourChart.h"
#include "home/SeverityCard.h"
#include "home/ShownHomeView.h"
#include "platform/gui/Appearance.h"
#include "support/InkSpans.h"
#include "support/WindowStandIn.h"

#include <QAccessible>
#include <QApplication>
#include <QHelpEvent>
#include <QImage>
#include <QSignalSpy>
#include <QTest>
#include <QToolTip>

#include <memory>

namespace quorbel {

using namespace Qt::StringLiterals;
using namespace testing;

namespace {

constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kHalfPastOne = 1'795'219'200 + 13 * kHour + 1800;  // in the afternoon, UTC
constexpr std::size_t kNotice = 5;
constexpr std::size_t kAlert = 1;
const QColor kColumn(0x76, 0x81, 0x8f);
const QColor kRed(0xd9, 0x3a, 0x3f);
const QColor kOutline(0x5b, 0x66, 0x75);

}  // namespace

class HomeCardsTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<ShownHomeView> m_home;
    WindowStandIn m_window;
    std::int64_t m_now = kHalfPastOne;

    void arrive(std::size_t severityClass, std::int64_t seconds, int times = 1) {
        std::bitset<kSeverityClassCount> classes;
        classes.set(severityClass);
        for (int i = 0; i < times; ++i) {
            m_home->state().arrivals.add(classes, seconds, m_now);
            ++(m_home->state().*kSeverityCounters.at(severityClass));
        }
    }
    SeverityCard &card(const char *part) {
        return m_home->control<SeverityCard>("card"_L1 + QLatin1StringView(part));
    }
    const HourChart &chart(const char *part) { return card(part).chart(); }
    void show(QSize size = {952, 700}) {
        m_home->page().window()->resize(size);
        m_home->page().resize(size);
        m_home->show();
        m_home->page().window()->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_home->page().window()));
    }
    /// The colours of a chart's pixels in the middle of a column, from its base upwards.
    QList<QColor> pixels(const char *part, std::size_t column) {
        const HourChart &shown = chart(part);
        const QImage image = card(part).grab().toImage();
        const QPoint place = shown.mapTo(&card(part), shown.columnRect(column).center());
        const int base = shown.mapTo(&card(part), QPoint(0, shown.height())).y() - baseOffset(part);
        QList<QColor> colours;
        for (int y = base - 1; y >= shown.mapTo(&card(part), QPoint(0, 0)).y(); --y) {
            colours.append(image.pixelColor(place.x(), y));
        }
        return colours;
    }
    /// How far above the chart's lower end its base line is.
    int baseOffset(const char *part) {
        const HourChart &shown = chart(part);
        const QImage image = card(part).grab().toImage();
        const QPoint corner = shown.mapTo(&card(part), QPoint(0, 0));
        int y = shown.height() - 1;
        while (image.pixelColor(corner + QPoint(0, y)) != QColor(0xc9, 0xd0, 0xd9)) {
            --y;
        }
        return shown.height() - y;
    }
    static int count(const QList<QColor> &colours, const QColor &colour) {
        return static_cast<int>(colours.count(colour));
    }
    QString tipAt(SeverityCard &where, const QPoint &place) {
        QHelpEvent help(QEvent::ToolTip, place, where.mapToGlobal(place));
        QApplication::sendEvent(&where, &help);
        return QToolTip::text();
    }
    QPoint columnOf(SeverityCard &where, std::size_t column) {
        return where.chart().mapTo(&where, where.chart().columnRect(column).center());
    }

private Q_SLOTS:
    void initTestCase() {
        qputenv("TZ", "UTC");
        applyAppearance(*qApp);
    }
    void init() {
        m_now = kHalfPastOne;
        m_window.asked.clear();
        m_home = std::make_unique<ShownHomeView>();
        m_home->delegate().setMainWindow(&m_window);
        m_home->page().cards().setClock([this] { return m_now; });
    }
    void cleanup() { m_home.reset(); }

    void aChartShowsTheHoursOfTheLastDayAndTheDayBefore() {
        arrive(kNotice, m_now, 16);
        arrive(kNotice, m_now - kHour, 4);
        arrive(kNotice, m_now - 24 * kHour, 4);
        arrive(kNotice, m_now - 26 * kHour, 9);
        show();
        const HourCounts &counts = chart("Notice").counts();
        QCOMPARE(counts.lastDay.at(23), std::uint64_t{16});
        QCOMPARE(counts.lastDay.at(22), std::uint64_t{4});
        QCOMPARE(counts.dayBefore.at(21), std::uint64_t{9});
        QCOMPARE(m_home->text("dayNotice"_L1), "24 h: 20"_L1);
        QCOMPARE(chart("Error").counts().total(), std::uint64_t{0});
        // As high as their roots are, with a notch where the day before was lower.
        const auto tall = pixels("Notice", 23);
        const auto low = pixels("Notice", 22);
        QVERIFY(count(tall, kColumn) > count(low, kColumn));
        const auto top = [](const QList<QColor> &colours) {
            return static_cast<int>(colours.lastIndexOf(kColumn)) + 1;
        };
        QCOMPARE(count(tall, kColumn), top(tall) - 1);
        QCOMPARE(tall.indexOf(QColor(Qt::white)), top(low) - 1);
        QCOMPARE(count(low, kColumn), top(low));
        QVERIFY(std::abs(top(tall) - 2 * top(low)) <= 1);
        // An outline where nothing came since.
        QCOMPARE(count(pixels("Notice", 21), kOutline), 1);
        QCOMPARE(count(pixels("Notice", 20), kOutline), 0);
    }
    void onlyWhatMakesTheRatingSevereIsRed() {
        arrive(kAlert, m_now, 3);
        arrive(kNotice, m_now, 3);
        show();
        QVERIFY(count(pixels("Alerting", 23), kRed) > 0);
        QCOMPARE(count(pixels("Alerting", 23), kColumn), 0);
        QCOMPARE(count(pixels("Notice", 23), kRed), 0);
        QVERIFY(m_home->control("signAlerting"_L1).isVisible());
        QVERIFY(!m_home->control("signNotice"_L1).isVisible());
        QVERIFY(!m_home->control("signEmergency"_L1).isVisible());  // of which there is none

        // Deleted ones came nevertheless.
        m_home->state().iAlert = 0;
        m_home->page().setEventsStatus();
        QTRY_VERIFY(!m_home->control("signAlerting"_L1).isVisible());
        QVERIFY(count(pixels("Alerting", 23), kColumn) > 0);
        QCOMPARE(chart("Alerting").counts().total(), std::uint64_t{3});
    }
    void whatArrivesIsShownSoon() {
        show();
        arrive(kNotice, m_now, 2);
        m_home->page().setEventsStatus();
        QTRY_COMPARE(chart("Notice").counts().lastDay.at(23), std::uint64_t{2});
        QCOMPARE(m_home->text("dayNotice"_L1), "24 h: 2"_L1);
    }
    void theHoursGoOnWhileNothingArrives() {
        arrive(kNotice, m_now, 2);
        const QSignalSpy refreshes(&m_home->page().cards(), &HomeCards::refreshDue);
        show();
        QTRY_COMPARE(refreshes.count(), 1);  // after it was shown
        QCOMPARE(chart("Notice").counts().lastDay.at(23), std::uint64_t{2});
        m_now += kHour;
        QTRY_COMPARE_WITH_TIMEOUT(chart("Notice").counts().lastDay.at(22), std::uint64_t{2}, 20000);
        QCOMPARE(chart("Notice").counts().clockHour(23), 14);
    }
    void saysThatNothingCameYet() {
        show();
        QCOMPARE(m_home->control("chartLegend"_L1).accessibleName(), "Charts: No events yet"_L1);
        arrive(kNotice, m_now);
        m_home->page().setEventsStatus();
        QTRY_COMPARE(m_home->control("chartLegend"_L1).accessibleName(),
                     "Charts: last 24 hours, the day before, midnight"_L1);
    }
    void largeNumbersAreRounded_data() {
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("text");
        QTest::newRow("whole") << 99'999 << "24 h: 99,999";
        QTest::newRow("thousands") << 100'499 << "24 h: 100 k";
        QTest::newRow("millions") << 1'060'000 << "24 h: 1.1 M";
    }
    void largeNumbersAreRounded() {
        QFETCH(int, count);
        QFETCH(QString, text);
        arrive(kNotice, m_now, count);
        show();
        QCOMPARE(m_home->text("dayNotice"_L1), text);
    }

    void aPressOpensTheEventsOfTheClass() {
        show();
        QTest::mouseClick(&card("Notice"), Qt::LeftButton);
        EventQuery query;
        query.classes.set(kNotice);
        QCOMPARE(m_window.asked.size(), std::size_t{1});
        QVERIFY(m_window.asked.front() == query);
        // On what stands in it, too.
        QTest::mouseClick(
            m_home->page().window()->windowHandle(), Qt::LeftButton, {},
            m_home->control("eventsNotice"_L1).mapTo(m_home->page().window(), QPoint(5, 5)));
        QCOMPARE(m_window.asked.size(), std::size_t{2});
    }
    void returnAndSpaceOpenThem() {
        show();
        card("Unknown").setFocus();
        QTest::keyClick(&card("Unknown"), Qt::Key_Return);
        QTest::keyClick(&card("Unknown"), Qt::Key_Space);
        QCOMPARE(m_window.asked.size(), std::size_t{2});
        QVERIFY(m_window.asked.back().classes[kUnknownClass]);
    }
    void tabGoesFromCardToCard() {
        show();
        card("Emergency").setFocus();
        QTest::keyClick(&card("Emergency"), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), &card("Alerting"));
        QTest::keyClick(&card("Alerting"), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), &card("Critical"));
    }
    void arrowsReadTheHoursAloud() {
        arrive(kNotice, m_now, 66);
        arrive(kNotice, m_now - 2 * kHour, 7);
        arrive(kNotice, m_now - 26 * kHour, 95);
        show();
        SeverityCard &notice = card("Notice");
        notice.setFocus();
        QTest::keyClick(&notice, Qt::Key_Left);
        const auto read = [&notice] {
            return QAccessible::queryAccessibleInterface(&notice)->text(QAccessible::Description);
        };
        QCOMPARE(read(), "13 to now: 66, day before 0"_L1);
        QTest::keyClick(&notice, Qt::Key_Left);
        QTest::keyClick(&notice, Qt::Key_Left);
        QCOMPARE(read(), "11 to 12: 7, day before 95"_L1);
        QCOMPARE(QToolTip::text(),
                 "Notice, 11:00 to 12:00\n7 events; the day before: 95\n"
                 "Click: show the Notice events"_L1);
        QTest::keyClick(&notice, Qt::Key_Right);
        QCOMPARE(read(), "12 to 13: 0, day before 0"_L1);
        QTest::keyClick(&notice, Qt::Key_Home);
        QCOMPARE(read(), "14 to 15: 0, day before 0"_L1);
        QTest::keyClick(&notice, Qt::Key_Left);
        QCOMPARE(read(), "14 to 15: 0, day before 0"_L1);
        QTest::keyClick(&notice, Qt::Key_End);
        QCOMPARE(read(), "13 to now: 66, day before 0"_L1);
        QCOMPARE(QAccessible::queryAccessibleInterface(&notice)->role(), QAccessible::Button);
        QCOMPARE(notice.accessibleName(), "Notice"_L1);
    }
    void thePointerTellsOfAnHour() {
        arrive(kNotice, m_now - kHour);
        show();
        SeverityCard &notice = card("Notice");
        QCOMPARE(tipAt(notice, columnOf(notice, 22)),
                 "Notice, 12:00 to 13:00\n1 event; the day before: 0\n"
                 "Click: show the Notice events"_L1);
        QCOMPARE(tipAt(notice, QPoint(20, 12)),
                 "Notice, last 24 hours: 1\nClick: show the Notice events"_L1);
        const QColor before = pixels("Notice", 3).at(10);
        QTest::mouseMove(&notice, columnOf(notice, 3));
        QTRY_VERIFY(pixels("Notice", 3).at(10) != before);
    }

    void aSmallPageHasSmallCards() {
        show({732, 700});
        const int tall = card("Notice").height();
        QVERIFY(tall >= 94);
        QVERIFY(m_home->control("dayNotice"_L1).isVisible());
        m_home->page().resize(731, 700);
        QVERIFY(!m_home->control("dayNotice"_L1).isVisible());
        m_home->page().resize(952, 470);
        QTRY_VERIFY(card("Notice").height() < 94);
        QVERIFY(card("Notice").height() >= 70);
        QVERIFY(!m_home->control("dayNotice"_L1).isVisible());
        m_home->page().resize(952, 700);
        QTRY_COMPARE(card("Notice").height(), tall);
        QVERIFY(m_home->control("dayNotice"_L1).isVisible());
    }
    void anEmptyPlaceForMoreTakesNoRoom() {
        show();
        QWidget &area = m_home->control("hostArea"_L1);
        QVERIFY(!area.isVisible());
        const QWidget &details = m_home->control("details"_L1);
        QVERIFY(details.geometry().bottom() > details.parentWidget()->height() - 50);
    }
    void theLegendIsMirroredInAWindowReadFromRightToLeft() {
        constexpr int kWidth = 420;
        const auto spans = [](Qt::LayoutDirection direction) {
            QGuiApplication::setLayoutDirection(direction);
            ChartLegend legend;
            legend.resize(kWidth, 20);
            return testing::inkSpans(legend, legend.rect());
        };
        const testing::Spans usual = spans(Qt::LeftToRight);
        const testing::Spans mirrored = spans(Qt::RightToLeft);
        QGuiApplication::setLayoutDirection(Qt::LeftToRight);
        QVERIFY(usual.size() > 2);
        QVERIFY(testing::areMirrored(usual, mirrored, kWidth));
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::HomeCardsTest)
#include "HomeCardsTest.moc"
