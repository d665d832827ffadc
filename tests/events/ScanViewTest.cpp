#include "core/LoadedEvents.h"
#include "events/ScanViewFixture.h"
#include "platform/gui/QtText.h"
#include "support/PrivateBus.h"
#include "support/ServiceStandIn.h"

#include <QLabel>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include <memory>
#include <string>
#include <vector>

namespace quorbel {

using namespace testing;

class ScanViewTest : public QObject, private ScanViewFixture {
    Q_OBJECT

private:
    // The "Events" of the command that the service received last.
    Dictionary sentEvents(std::size_t commands = 1) {
        const auto received = m_service->waitForCommands(commands);
        if (received.size() != commands || received.back().find("command") == nullptr ||
            *received.back().find("command") != Value("update") || received.back().size() != 2 ||
            received.back().find("Events") == nullptr ||
            received.back().find("Events")->dictionary() == nullptr) {
            return {{"not an update", received.size()}};
        }
        return *received.back().find("Events")->dictionary();
    }
    bool nothingWasSent() {
        // A later command is the proof: commands arrive in order.
        m_delegate->setPipe({{"command", "mark"}});
        const auto received = m_service->waitForCommands(1);
        return received.size() == 1 && *received[0].find("command") == Value("mark");
    }

private Q_SLOTS:
    void initTestCase() {
        m_bus = std::make_unique<testing::PrivateBus>();
        m_service = std::make_unique<testing::ServiceStandIn>();
    }
    void init() {
        m_service->clear();
        m_window.opened.clear();
        makePage();
    }
    void cleanup() { endPage(); }
    void cleanupTestCase() {
        m_service.reset();
        m_bus.reset();
    }

    void theEventsOutliveThePage() {
        m_page->insertEvent(fields("1700000000", "stays"));
        m_page->insertEvent(fields("1700000001", "announced as removed"));
        auto next = std::make_unique<ScanView>(*m_delegate, m_storyboard);
        next->viewDidLoad();
        m_page->removeEvent(fields("1700000001", "announced as removed"));
        m_page = std::move(next);
        show();
        QCOMPARE(table()->model()->rowCount(), 1);
        QCOMPARE(cell(0, 4), name("stays"));
        const auto *count = m_page->findChild<QLabel *>(name("eventCount"));
        QTRY_COMPARE(count->text(), name("1 event"));
        m_page->insertEvent(fields("1700000002", "comes later"));
        QCOMPARE(table()->model()->rowCount(), 2);
        QCOMPARE(cell(0, 4), name("comes later"));
        QTRY_COMPARE(count->text(), name("2 events"));
    }

    void controlsHaveTheirNames() {
        QCOMPARE(m_page->objectName(), name("ScanView"));
        for (const char *control : {"scanActions", "scanOptions", "tableView", "deleteEvents",
                                    "exportEvents", "testSyslog"}) {
            auto *widget = m_page->findChild<QWidget *>(QLatin1String(control));
            QVERIFY2(widget != nullptr, control);
            QVERIFY2(!widget->accessibleName().isEmpty(), control);
        }
        QCOMPARE(m_page->findChild<QWidget *>(name("scanActions"))->cursor().shape(),
                 Qt::PointingHandCursor);
        QCOMPARE(m_page->palette().color(QPalette::Window), QColor(Qt::white));
    }

    void showingConvertsAndScrollsToTheTopWithoutASelection() {
        for (int i = 0; i < 100; ++i) {
            list().insertRaw(fields(std::to_string(1700000000 + i)));
        }
        list().insertRaw(fields(""));
        QCOMPARE(cell(1, 1), name("1700000099"));
        show();
        QCOMPARE(cell(0, 1), name("1970-01-01 00:00:00"));
        QCOMPARE(cell(1, 1), name("2023-11-14 22:14:59"));
        QCOMPARE(cell(1, 0), name("Moderate"));
        clickRow(2);
        table()->scrollToBottom();
        QVERIFY(table()->verticalScrollBar()->value() > 0);
        m_page->hide();
        show();
        QCOMPARE(table()->verticalScrollBar()->value(), 0);
        QCOMPARE(selected(), QList<int>());
    }

    void aRawDateWithAPointIsNotConverted() {
        list().insertRaw(fields("1700000000.5"));
        show();
        QCOMPARE(cell(0, 1), name("1700000000.5"));
    }

    void showingAfterANewFormatReRendersAndTakesNewLevels() {
        list().insertRaw(fields("1700000000"));
        show();
        m_page->hide();
        AppState &state = m_delegate->state;
        state.oldDateFormat = state.newDateFormat;
        state.newDateFormat = "dd.MM.yyyy hh:mm:ss AM/PM";
        state.iSeverityError = kSevere;
        show();
        QCOMPARE(cell(0, 1), name("14.11.2023 10:13:20 PM"));
        QCOMPARE(cell(0, 0), name("Severe"));
    }

    void aNewEventStandsOnTopAndClearsTheSelection() {
        list().insertRaw(fields("1700000000", "first"));
        show();
        clickRow(0);
        QCOMPARE(selected(), QList<int>{0});
        const EventId id = m_page->insertEvent(fields("1700000001", "second"));
        QCOMPARE(list().rowOf(id), std::optional<std::size_t>(0));
        QCOMPARE(cell(0, 4), name("second"));
        QCOMPARE(cell(0, 1), name("2023-11-14 22:13:21"));
        QCOMPARE(cell(0, 0), name("Moderate"));
        QCOMPARE(selected(), QList<int>());
    }

    void newEventsDoNotMoveTheRowsThatSomeoneReads() {
        for (int i = 0; i < 200; ++i) {
            list().insertRaw(fields(std::to_string(1700000000 + i), std::to_string(i)));
        }
        show();
        table()->verticalScrollBar()->setValue(50);
        const QString first = table()->model()->index(table()->rowAt(1), 4).data().toString();
        for (int i = 0; i < 30; ++i) {
            m_page->insertEvent(fields("1700001000"));
        }
        QTest::qWait(0);
        QCOMPARE(table()->model()->index(table()->rowAt(1), 4).data().toString(), first);
        table()->scrollToTop();
        m_page->insertEvent(fields("1700002000", "newest"));
        QTest::qWait(0);
        QCOMPARE(table()->model()->index(table()->rowAt(1), 4).data().toString(), name("newest"));
    }

    void aFloodMovesTheTableOnceAndNotOnceAnEvent() {
        for (int i = 0; i < 300; ++i) {
            list().insertRaw(fields("1700000000", std::to_string(i)));
        }
        show();
        QScrollBar *bar = table()->verticalScrollBar();
        bar->setValue(50);
        const QString first = cell(table()->rowAt(1), 4);
        const QSignalSpy moves(bar, &QScrollBar::valueChanged);
        for (int i = 0; i < 1000; ++i) {
            m_page->insertEvent(fields("1700001000"));
        }
        QTRY_COMPARE(bar->value(), 1050);
        QCOMPARE(moves.size(), 1);
        QCOMPARE(cell(table()->rowAt(1), 4), first);
    }

    void eventsThatComeTogetherStandAsIfEachCameAlone() {
        for (int i = 0; i < 300; ++i) {
            list().insertRaw(fields("1700000000", std::to_string(i)));
        }
        show();
        const auto come = [this](int first, int count) {
            LoadedEvents events;
            for (int i = first; i < first + count; ++i) {
                events.add(fields(std::to_string(1700000000 + i), "late " + std::to_string(i)));
            }
            m_page->insertEvents(std::move(events));
        };
        clickRow(0);
        come(0, 2);
        QCOMPARE(selected(), QList<int>());
        QCOMPARE(cell(0, 4), name("late 1"));
        QCOMPARE(cell(0, 1), name("2023-11-14 22:13:21"));
        QCOMPARE(cell(0, 0), name("Moderate"));
        QCOMPARE(cell(1, 4), name("late 0"));
        QScrollBar *bar = table()->verticalScrollBar();
        bar->setValue(50);
        const QString first = cell(table()->rowAt(1), 4);
        come(2, 5000);
        QTRY_COMPARE(bar->value(), 5050);
        QCOMPARE(cell(table()->rowAt(1), 4), first);
        QCOMPARE(table()->model()->rowCount(), 5302);
        // None that is seen comes: the selection stays.
        EventQuery query;
        query.texts.push_back({{"late 1", false, false}, false});
        m_page->setFilter(query);
        QTRY_COMPARE(table()->model()->rowCount(), 1111);
        clickRow(3);
        come(5002, 2);
        QCOMPARE(selected(), QList<int>{3});
        come(10'000, 3);
        QCOMPARE(selected(), QList<int>());
        QCOMPARE(table()->model()->rowCount(), 1114);
        QCOMPARE(cell(0, 4), name("late 10002"));
        QVERIFY(m_page->canInsertMany());
        query.texts.front().pattern.isExpression = true;
        m_page->setFilter(query);
        QTRY_VERIFY(!m_page->canInsertMany());
    }

    void arrivalsAndScatteredRemovalsInOneTurnKeepThePlace() {
        for (int i = 0; i < 300; ++i) {
            list().insertRaw(fields("1700000000", std::to_string(i)));
        }
        show();
        table()->verticalScrollBar()->setValue(100);
        const QString first = cell(table()->rowAt(1), 4);
        for (const char *message : {"298", "290", "10"}) {
            m_page->removeEvent(fields("1700000000", message));
            m_page->insertEvent(fields("1700001000"));
        }
        QTRY_COMPARE(list().size(), std::size_t{300});
        QCOMPARE(cell(table()->rowAt(1), 4), first);
    }

    void whoGoesToTheTopWhileEventsArriveStaysThere() {
        for (int i = 0; i < 300; ++i) {
            list().insertRaw(fields("1700000000"));
        }
        show();
        table()->verticalScrollBar()->setValue(100);
        m_page->insertEvent(fields("1700001000"));
        table()->scrollToTop();
        QCoreApplication::processEvents();
        QCOMPARE(table()->verticalScrollBar()->value(), 0);
    }

    void aRemovalTakesTheFirstMatchingRowOnly() {
        list().insertRaw(fields("1700000000", "same"));
        list().insertRaw(fields("1700000005", "other"));
        list().insertRaw(fields("1700000000", "same"));
        show();
        m_page->removeEvent(fields("1700000000", "none"));
        QCoreApplication::processEvents();
        QCOMPARE(list().size(), std::size_t{3});
        m_page->removeEvent(fields("1700000000", "same"));
        QTRY_COMPARE(list().size(), std::size_t{2});
        QCOMPARE(cell(0, 4), name("other"));
        // Hidden or shown makes no difference.
        m_page->hide();
        m_page->removeEvent(fields("1700000000", "same"));
        QTRY_COMPARE(list().size(), std::size_t{1});
    }

    void equalEventsAnnouncedTogetherAreRemovedOneForOne() {
        for (int i = 0; i < 3; ++i) {
            list().insertRaw(fields("1700000000", "same"));
            list().insertRaw(fields("1700000000", "between"));
        }
        show();
        m_page->removeEvent(fields("1700000000", "same"));
        m_page->removeEvent(fields("1700000000", "same"));
        QTRY_COMPARE(list().size(), std::size_t{4});
        QCOMPARE(cell(1, 4), name("between"));
        QCOMPARE(cell(2, 4), name("between"));
        QCOMPARE(cell(3, 4), name("same"));
    }

    void scatteredRemovalsKeepTheSelectionAndThePlaceWhereOneReads() {
        for (int i = 0; i < 300; ++i) {
            list().insertRaw(fields("1700000000", std::to_string(i)));
        }
        show();
        table()->verticalScrollBar()->setValue(100);
        clickRow(105);
        const QString top = cell(table()->rowAt(1), 4);
        const QString chosen = cell(105, 4);
        for (const char *message : {"298", "290", "280", "10"}) {
            m_page->removeEvent(fields("1700000000", message));
        }
        QTRY_COMPARE(list().size(), std::size_t{296});
        QCOMPARE(selected(), QList<int>{102});
        QCOMPARE(cell(102, 4), chosen);
        QCOMPARE(cell(table()->rowAt(1), 4), top);
    }

    void aRemovalOfAnEventThatIsStillRawRemovesNothing() {
        show();
        m_page->hide();
        list().insertRaw(fields("1700000000"));
        m_page->removeEvent(fields("1700000000"));
        QCoreApplication::processEvents();
        QCOMPARE(list().size(), std::size_t{1});
    }

    void linksLeadToTheirPagesAndBack() {
        show();
        click("scanActions");
        click("scanOptions");
        QCOMPARE(m_window.opened,
                 (std::vector<std::pair<Tab, Tab>>{{Tab::kActions, Tab::kEvents},
                                                   {Tab::kOptions, Tab::kEvents}}));
    }

    void deletesTheSelectedEvents() {
        AppState &state = m_delegate->state;
        list().insertRaw(fields("1700000000", "keep"));
        list().insertRaw(fields("1700000001", "a, b"));
        list().insertRaw(fields("1700000002", "keep too"));
        list().insertRaw(fields("1700000003", "top", "Kern.Alert"));
        state.iError = 3;
        state.iAlert = 1;
        show();
        clickRow(0);
        clickRow(2, Qt::ControlModifier);
        QCOMPARE(selected(), (QList<int>{0, 2}));
        click("deleteEvents");
        QTRY_VERIFY(alert() != nullptr);
        QCOMPARE(alert()->windowTitle(), name("Quorbel"));
        QCOMPARE(alert()->text(), name("Are you sure you want to delete selected events?"));
        QCOMPARE(alert()->informativeText(),
                 name("By clicking 'Yes' you will permanently delete selected events."));
        QVERIFY(alert()->checkBox() == nullptr);
        answer(name("Yes"));
        QCOMPARE(sentEvents(), (Dictionary{{"1700000003,Kern.Alert,10.0.0.5,top\n", "1"},
                                           {"1700000001,Local7.Error,10.0.0.5,a, b\n", "1"}}));
        QCOMPARE(list().size(), std::size_t{2});
        QCOMPARE(cell(0, 4), name("keep too"));
        QCOMPARE(cell(1, 4), name("keep"));
        QCOMPARE(state.iError, 2);
        QCOMPARE(state.iAlert, 0);
        QCOMPARE(selected(), QList<int>());
    }

    void noOnTheConfirmationChangesNothing() {
        list().insertRaw(fields("1700000000"));
        m_delegate->state.iError = 1;
        show();
        clickRow(0);
        click("deleteEvents");
        answer(name("No"));
        QCOMPARE(list().size(), std::size_t{1});
        QCOMPARE(m_delegate->state.iError, 1);
        QVERIFY(nothingWasSent());
    }

    void dismissingAQuestionChangesNothing() {
        list().insertRaw(fields("1700000000"));
        show();
        clickRow(0);
        click("deleteEvents");
        QTRY_VERIFY(alert() != nullptr && alert()->isVisible());
        QTest::keyClick(alert(), Qt::Key_Escape);
        QTRY_VERIFY(alert() == nullptr);
        QCOMPARE(list().size(), std::size_t{1});
        QVERIFY(nothingWasSent());
    }

    void withoutASelectionAndATickNothingIsDeleted() {
        list().insertRaw(fields("1700000000"));
        show();
        click("deleteEvents");
        QTRY_VERIFY(alert() != nullptr);
        QCOMPARE(alert()->windowTitle(), name("Quorbel"));
        QCOMPARE(alert()->text(), name("No events selected"));
        QCOMPARE(alert()->informativeText(),
                 name("Please select specific events or check all events."));
        QCOMPARE(alert()->checkBox()->text(), name("Delete all events"));
        QVERIFY(!alert()->checkBox()->isChecked());
        QCOMPARE(alert()->buttons().size(), 1);
        answer(alert()->buttons().at(0)->text());
        QVERIFY(alert() == nullptr);
        QCOMPARE(list().size(), std::size_t{1});
        QVERIFY(nothingWasSent());
    }

    void deletesAllEventsWhenTicked() {
        list().insertRaw(fields("1700000000", "twice"));
        list().insertRaw(fields("1700000000", "twice"));
        list().insertRaw(fields("soon", "unreadable date", "Local7.Information"));
        AppState &state = m_delegate->state;
        state.iError = 2;
        state.iInformation = 0;
        show();
        click("deleteEvents");
        answer(name("OK"), true);
        QTRY_VERIFY(alert() != nullptr && alert()->isVisible());
        QCOMPARE(alert()->text(), name("Are you sure you want to delete all events?"));
        QCOMPARE(alert()->informativeText(),
                 name("By clicking 'Yes' you will permanently delete all events."));
        QCOMPARE(alert()->buttons().size(), 2);
        answer(name("Yes"));
        QCOMPARE(sentEvents(),
                 (Dictionary{{"1700000000,Local7.Error,10.0.0.5,twice\n", "2"},
                             {"0,Local7.Information,10.0.0.5,unreadable date\n", "1"}}));
        QCOMPARE(list().size(), std::size_t{0});
        QCOMPARE(state.iError, 0);
        // The word that lowers this counter is shorter than the name that raises it.
        QCOMPARE(state.iInformation, -1);
    }

    void deletingAllOfNothingSendsAnEmptyMap() {
        show();
        click("deleteEvents");
        answer(name("OK"), true);
        answer(name("Yes"));
        QCOMPARE(sentEvents(), Dictionary());
    }

    void aFormatWithoutSecondsGivesWhatItShows() {
        m_delegate->state.newDateFormat = m_delegate->state.oldDateFormat = "yyyy-MM-dd HH:mm";
        list().insertRaw(fields("1700000042"));
        show();
        clickRow(0);
        click("deleteEvents");
        answer(name("Yes"));
        QCOMPARE(sentEvents(), (Dictionary{{"1700000040,Local7.Error,10.0.0.5,disk full\n", "1"}}));
    }

    void deletesTheEventsThatWereChosenHoweverTheListChangesMeanwhile() {
        list().insertRaw(fields("1700000000", "chosen"));
        list().insertRaw(fields("1700000001", "removed meanwhile"));
        show();
        clickRow(0);
        clickRow(1, Qt::ControlModifier);
        click("deleteEvents");
        QTRY_VERIFY(alert() != nullptr);
        m_page->insertEvent(fields("1700000002", "new"));
        m_page->removeEvent(fields("1700000001", "removed meanwhile"));
        answer(name("Yes"));
        QCOMPARE(sentEvents(), (Dictionary{{"1700000000,Local7.Error,10.0.0.5,chosen\n", "1"}}));
        QCOMPARE(list().size(), std::size_t{1});
        QCOMPARE(cell(0, 4), name("new"));
    }

    void deletesManyScatteredRows() {
        for (int i = 0; i < 9000; ++i) {
            list().insertRaw(fields(std::to_string(1700000000 + i), std::to_string(i)));
        }
        show();
        QItemSelection everySecond;
        for (int row = 0; row < 9000; row += 2) {
            everySecond.select(table()->model()->index(row, 0), table()->model()->index(row, 4));
        }
        table()->selectionModel()->select(everySecond, QItemSelectionModel::Select);
        click("deleteEvents");
        answer(name("Yes"));
        QCOMPARE(sentEvents().size(), std::size_t{4500});
        QCOMPARE(list().size(), std::size_t{4500});
        QCOMPARE(cell(0, 4), name("8998"));
        QCOMPARE(cell(4499, 4), name("0"));
    }

    void aServiceThatIsGoneOrDiesCostsNothing() {
        m_service->onCommand(testing::ServiceStandIn::OnCommand::kDie);
        list().insertRaw(fields("1700000000"));
        show();
        click("deleteEvents");
        answer(name("OK"), true);
        answer(name("Yes"));
        QCOMPARE(m_service->waitForCommands(1).size(), std::size_t{1});
        m_service = std::make_unique<testing::ServiceStandIn>();
        list().insertRaw(fields("1700000000"));
        click("deleteEvents");
        answer(name("OK"), true);
        answer(name("Yes"));
        QCOMPARE(sentEvents().size(), std::size_t{1});
    }

private:
    std::unique_ptr<testing::PrivateBus> m_bus;
    std::unique_ptr<testing::ServiceStandIn> m_service;
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ScanViewTest)
#include "ScanViewTest.moc"
#include "core/AppState.h"
