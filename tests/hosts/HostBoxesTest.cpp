#include "HostTraffic.h"
#include "hosts/HostBoxes.h"
#include "hosts/HostPulse.h"
#include "hosts/LoudestHosts.h"
#include "hosts/SilentHosts.h"
#include "platform/gui/WindowMemory.h"
#include "support/ConfigurationFolder.h"
#include "support/InkSpans.h"
#include "support/WindowStandIn.h"

#include <QHelpEvent>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTextDocument>
#include <QToolTip>
#include <QVBoxLayout>

namespace quorbel {

using testing::HostTraffic;

class HostBoxesTest : public QObject {
    Q_OBJECT

private:
    static constexpr std::int64_t kNow = HostTraffic::kNow;
    static constexpr std::int64_t kHour = HostTraffic::kHour;
    static constexpr std::int64_t kDay = HostTraffic::kDay;

    template <class Control = QWidget>
    Control &control(const char *name) {
        return *m_window->findChild<Control *>(QLatin1String(name));
    }
    QString text(const char *name) { return control<QLabel>(name).text(); }
    QString state() { return text("silenceText") + u"; "_qs + text("silenceDetail"); }

    void show(int width = 1100, int height = 700) {
        m_window = std::make_unique<QWidget>();
        auto *layout = new QVBoxLayout(m_window.get());
        m_boxes = new HostBoxes(*m_delegate);
        m_boxes->pulse().setClock([this] { return m_now; });
        layout->addWidget(m_boxes);
        m_window->resize(width, height);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        wait();
    }
    /// Until what there is is shown.
    void wait() {
        int beats = 0;
        const auto connection =
            QObject::connect(&m_boxes->pulse(), &HostPulse::beat, m_boxes, [&beats] { ++beats; });
        QTRY_VERIFY(beats > 0);
        QObject::disconnect(connection);
    }
    /// Five that send every five minutes, for two weeks.
    void addRegularHosts() {
        for (int i = 0; i < 5; ++i) {
            m_traffic.add("regular-" + std::to_string(i), 14 * kDay - i, 0, 300);
        }
    }
    static QString cell(const RowTableView &list, int row, int column) {
        return list.model()->index(row, column).data().toString();
    }

    std::unique_ptr<testing::ConfigurationFolder> m_configuration;
    testing::WindowStandIn m_main;
    std::unique_ptr<AppDelegate> m_delegate;
    HostTraffic m_traffic;
    std::int64_t m_now = kNow;
    std::unique_ptr<QWidget> m_window;
    HostBoxes *m_boxes = nullptr;

private Q_SLOTS:
    void init() {
        finishRemembering();
        m_configuration = std::make_unique<testing::ConfigurationFolder>();
        m_delegate = std::make_unique<AppDelegate>();
        m_main.asked.clear();
        m_main.opened.clear();
        m_delegate->setMainWindow(&m_main);
        m_now = kNow;
    }
    void cleanup() {
        m_window.reset();
        m_delegate.reset();
    }

    void saysWhenThereIsNothing() {
        show();
        QCOMPARE(state(), QStringLiteral("No events yet; "));
        QCOMPARE(control<LoudestHosts>("loudestHosts").hint(), QStringLiteral("No events yet"));
        QVERIFY(!control("silentHosts").isVisible());
    }

    void learningIsNoCalm() {
        m_traffic.add("new", 2 * kDay, 0, 300);
        m_traffic.arriveAt(*m_delegate);
        show();
        QCOMPARE(state(), QStringLiteral("Learning the habits; tells from 10 Jan on"));
    }

    void cannotBeToldWithoutTheService_data() {
        QTest::addColumn<int>("outcome");
        QTest::newRow("no bus") << static_cast<int>(StatusOutcome::kNoBus);
        QTest::newRow("stopped") << static_cast<int>(StatusOutcome::kNotRunning);
        QTest::newRow("hangs") << static_cast<int>(StatusOutcome::kNoAnswer);
    }
    void cannotBeToldWithoutTheService() {
        QFETCH(int, outcome);
        addRegularHosts();
        m_traffic.add("gone", 14 * kDay, kHour, 300);
        m_traffic.arriveAt(*m_delegate);
        show();
        QVERIFY(control("silentHosts").isVisible());
        m_delegate->service.take({static_cast<StatusOutcome>(outcome), {}});
        QCOMPARE(state(), QStringLiteral("Cannot be told; not connected"));
        QVERIFY(!control("silentHosts").isVisible());
        m_delegate->service.take({StatusOutcome::kTold, {}});
        QVERIFY(control("silentHosts").isVisible());
    }

    void saysThatAllAreOnTime() {
        addRegularHosts();
        m_traffic.arriveAt(*m_delegate);
        show();
        QCOMPARE(state(), QStringLiteral("No host is overdue; 5 send regularly"));
    }

    void saysThatNothingComesFromAnybody() {
        addRegularHosts();
        m_traffic.arriveAt(*m_delegate);
        m_now = kNow + 2 * kHour;
        show();
        QCOMPARE(text("silenceText"), QStringLiteral("Nothing from any host"));
        QVERIFY(text("silenceDetail").startsWith(u"since 11:5"));
    }

    void showsWhoIsSilent() {
        addRegularHosts();
        m_traffic.add("gone", 14 * kDay, 3 * kHour, 300);
        m_traffic.arriveAt(*m_delegate);
        show();
        const auto &list = control<SilentHosts>("silentHosts");
        QCOMPARE(list.model()->rowCount(), 1);
        QCOMPARE(list.model()->index(0, 0).data(Qt::AccessibleTextRole).toString(),
                 QStringLiteral("gone: silent since 08:55, usually every 5 min"));
        QCOMPARE(text("silenceText"), QStringLiteral("5 others on time"));
        QVERIFY(!control("moreSilent").isVisible());

        // It is heard again.
        HostTraffic::arrive(*m_delegate, "gone", kNow);
        wait();
        QCOMPARE(state(), QStringLiteral("No host is overdue; 6 send regularly"));
        QVERIFY(!control("silentHosts").isVisible());
    }

    void showsTheLongestSilentAndHowManyMore() {
        addRegularHosts();
        for (int i = 1; i <= 5; ++i) {
            m_traffic.add("gone-" + std::to_string(i), 14 * kDay, (i % 3 + 2) * kHour, 300);
        }
        m_traffic.arriveAt(*m_delegate);
        show();
        const auto &list = control<SilentHosts>("silentHosts");
        QCOMPARE(list.model()->rowCount(), 2);
        QCOMPARE(cell(list, 0, 0), QStringLiteral("gone-2"));
        QCOMPARE(cell(list, 1, 0), QStringLiteral("gone-5"));
        QVERIFY(!control("silenceRow").isVisible());
        auto &more = control<QPushButton>("moreSilent");
        QCOMPARE(more.text(), QStringLiteral("and 3 more"));
        QTest::mouseClick(&more, Qt::LeftButton);
        QVERIFY(m_main.opened == std::vector({std::pair(Tab::kHosts, Tab::kHome)}));
    }

    void retiredHostsAreNotTold() {
        addRegularHosts();
        m_traffic.add("gone", 14 * kDay, 3 * kHour, 300);
        m_traffic.arriveAt(*m_delegate);
        m_delegate->hosts.setExpected("gone", false);
        show();
        QCOMPARE(state(), QStringLiteral("No host is overdue; 5 send regularly"));
    }

    void showsTheLoudest() {
        for (int i = 1; i <= 7; ++i) {
            m_traffic.add("host-" + std::to_string(i), kDay - kHour, 0, 60 * i);
        }
        m_traffic.add("yesterday", 2 * kDay - kHour, kDay, 1);
        m_traffic.arriveAt(*m_delegate);
        show();
        const auto &list = control<LoudestHosts>("loudestHosts");
        QCOMPARE(list.model()->rowCount(), 5);
        QVERIFY(list.viewport()->rect().contains(list.visualRect(list.model()->index(4, 0))));
        QCOMPARE(cell(list, 0, LoudestHosts::kHost), QStringLiteral("host-1"));
        QCOMPARE(cell(list, 0, LoudestHosts::kCount), QStringLiteral("1,380"));
        QCOMPARE(cell(list, 0, LoudestHosts::kShare), QStringLiteral("39 %"));
        QCOMPARE(cell(list, 4, LoudestHosts::kHost), QStringLiteral("host-5"));

        for (int i = 0; i < 200'000; ++i) {
            HostTraffic::arrive(*m_delegate, "storm", kNow);
        }
        wait();
        QCOMPARE(cell(list, 0, LoudestHosts::kHost), QStringLiteral("storm"));
        QCOMPARE(cell(list, 1, LoudestHosts::kHost), QStringLiteral("host-1"));
        QCOMPARE(cell(list, 1, LoudestHosts::kShare), QStringLiteral("< 1 %"));
    }

    void choosingAHostAsksForItsEvents() {
        addRegularHosts();
        m_traffic.add("gone", 14 * kDay, 3 * kHour, 300);
        m_traffic.add("loud", kDay, 0, 10);
        m_traffic.arriveAt(*m_delegate);
        show();
        auto &loudest = control<LoudestHosts>("loudestHosts");
        const QPoint first = loudest.visualRect(loudest.model()->index(0, 0)).center();
        QTest::mouseClick(loudest.viewport(), Qt::LeftButton, {}, first);
        QVERIFY(m_main.asked.empty());
        QTest::mouseDClick(loudest.viewport(), Qt::LeftButton, {}, first);
        QCOMPARE(m_main.asked.size(), 1U);
        QCOMPARE(m_main.asked.back().host, std::string("loud"));

        auto &silent = control<SilentHosts>("silentHosts");
        silent.setFocus(Qt::TabFocusReason);
        QTest::keyClick(&silent, Qt::Key_Return);
        QCOMPARE(m_main.asked.size(), 2U);
        QCOMPARE(m_main.asked.back().host, std::string("gone"));
        QTest::mouseClick(&control<QPushButton>("allHosts"), Qt::LeftButton);
        QCOMPARE(m_main.opened.size(), 1U);
    }

    void keyboardStepsTheHosts() {
        addRegularHosts();
        m_traffic.arriveAt(*m_delegate);
        show();
        auto &loudest = control<LoudestHosts>("loudestHosts");
        loudest.setFocus(Qt::TabFocusReason);
        QVERIFY(loudest.selectionModel()->isRowSelected(0));
        QTest::keyClick(&loudest, Qt::Key_Down);
        QVERIFY(loudest.selectionModel()->isRowSelected(1));
        QTest::keyClick(&loudest, Qt::Key_Return);
        QCOMPARE(m_main.asked.back().host, cell(loudest, 1, 0).toStdString());
        QTest::keyClick(&loudest, Qt::Key_Tab);
        QVERIFY(!loudest.selectionModel()->hasSelection());
    }

    void isOneLineOfLinksInASmallWindow_data() {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<bool>("isSmall");
        QTest::newRow("usual") << QSize(900, 650) << false;
        QTest::newRow("low") << QSize(900, 649) << true;
        QTest::newRow("narrow") << QSize(899, 650) << true;
    }
    void isOneLineOfLinksInASmallWindow() {
        QFETCH(QSize, size);
        QFETCH(bool, isSmall);
        addRegularHosts();
        m_traffic.add("gone", 14 * kDay, 3 * kHour, 300);
        m_traffic.arriveAt(*m_delegate);
        show(1200, 800);
        m_window->resize(size);
        QCoreApplication::processEvents();
        QCOMPARE(control("links").isVisible(), isSmall);
        QCOMPARE(control("boxes").isVisible(), !isSmall);
        if (isSmall) {
            QCOMPARE(control<QPushButton>("loudestLink").text(), QStringLiteral("regular-0 17 %"));
            QTest::mouseClick(&control<QPushButton>("silentLink"), Qt::LeftButton);
            QCOMPARE(m_main.asked.back().host, std::string("gone"));
        }
    }

    // Hosts may be called anything.
    void tipsHoldTheWholeNameAsItIs() {
        const std::string odd = "a&b<i>" + std::string(150, 'w');
        addRegularHosts();
        m_traffic.add(odd, 14 * kDay, 3 * kHour, 30);
        m_traffic.arriveAt(*m_delegate);
        show(1200, 800);
        auto &silent = control<SilentHosts>("silentHosts");
        const QPoint place = silent.visualRect(silent.model()->index(0, 0)).center();
        QHelpEvent asked(QEvent::ToolTip, place, silent.viewport()->mapToGlobal(place));
        QCoreApplication::sendEvent(silent.viewport(), &asked);
        QTextDocument tip;
        tip.setHtml(QToolTip::text());
        QVERIFY2(tip.toPlainText().startsWith(QString::fromStdString(odd) + u": silent since "_qs),
                 qPrintable(tip.toPlainText()));
        m_window->resize(800, 500);
        QCoreApplication::processEvents();
        for (const char *link : {"loudestLink", "silentLink"}) {
            const QString told = control<QPushButton>(link).toolTip();
            QVERIFY(Qt::mightBeRichText(told));
            tip.setHtml(told);
            QCOMPARE(tip.toPlainText(), QString::fromStdString(odd));
        }
    }

    void saysOfWhichYearADayIs() {
        m_traffic.add("gone", 40 * kDay, 9 * kDay, 300);
        m_traffic.arriveAt(*m_delegate);
        show();
        QCOMPARE(state(), QStringLiteral("Nothing from any host; since 27 Dec 2025"));
    }

    // A clock that was far ahead for a moment takes the counts of all with it.
    void noShareIsMoreThanAll() {
        m_traffic.add("steady", 20 * kHour, kHour, 600);
        m_traffic.arriveAt(*m_delegate);
        HostTraffic::arrive(*m_delegate, "odd", kNow + 10 * kDay);
        HostTraffic::arrive(*m_delegate, "odd", kNow);
        show();
        const auto &loudest = control<LoudestHosts>("loudestHosts");
        QCOMPARE(cell(loudest, 0, LoudestHosts::kHost), QStringLiteral("steady"));
        QCOMPARE(cell(loudest, 0, LoudestHosts::kShare), QStringLiteral("99 %"));
    }

    void isMirroredInAWindowReadFromRightToLeft_data() {
        QTest::addColumn<QString>("list");
        QTest::newRow("silent") << u"silentHosts"_qs;
        QTest::newRow("loudest") << u"loudestHosts"_qs;
    }
    void isMirroredInAWindowReadFromRightToLeft() {
        QFETCH(QString, list);
        addRegularHosts();
        m_traffic.add("gone", 14 * kDay, 13 * kHour, 250);
        m_traffic.add("flood", kHour, 0, 1);
        m_traffic.arriveAt(*m_delegate);
        const auto spans = [&](Qt::LayoutDirection direction) {
            QGuiApplication::setLayoutDirection(direction);
            show(1200, 800);
            auto &table = *m_boxes->findChild<RowTableView *>(list);
            const int last = table.model()->rowCount() - 1;  // its bar is short
            QRect row = table.visualRect(table.model()->index(last, 0));
            row.setLeft(0);
            row.setRight(table.viewport()->width() - 1);
            return testing::inkSpans(*table.viewport(), row);
        };
        const testing::Spans usual = spans(Qt::LeftToRight);
        const testing::Spans mirrored = spans(Qt::RightToLeft);
        QGuiApplication::setLayoutDirection(Qt::LeftToRight);
        QVERIFY(usual.size() > 2);
        const auto width = control<RowTableView>(list.toLatin1().data()).viewport()->width();
        QVERIFY(testing::areMirrored(usual, mirrored, width));
    }

    void costsNothingWhileItIsHidden() {
        addRegularHosts();
        m_traffic.arriveAt(*m_delegate);
        show();
        int beats = 0;
        connect(&m_boxes->pulse(), &HostPulse::beat, m_boxes, [&beats] { ++beats; });
        m_window->hide();
        QVERIFY(!m_delegate->service.isWatched());
        QTest::qWait(1200);
        QCOMPARE(beats, 0);
        m_window->show();
        QTRY_VERIFY(beats > 0);
        QVERIFY(m_delegate->service.isWatched());
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::HostBoxesTest)
#include "HostBoxesTest.moc"
