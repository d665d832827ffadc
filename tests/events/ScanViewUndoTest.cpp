// What was deleted last comes back: into the list, and by a command into the log.

#include "core/EventIntake.h"
#include "events/RestorationLines.h"
#include "events/ScanViewFixture.h"
#include "support/NoHomePage.h"
#include "support/PrivateBus.h"
#include "support/ServiceStandIn.h"

#include <QAction>
#include <QTimer>

#include <map>
#include <string>
#include <vector>

namespace quorbel {

using namespace testing;

class ScanViewUndoTest : public QObject, private ScanViewFixture {
    Q_OBJECT

private:
    void add(const char *date, const char *message, const char *priority = "Local7.Error") {
        list().insertRaw(fields(date, message, priority));
        ++(m_delegate->state.*kSeverityCounters[list().classes(0).deleted]);
    }
    void showActive() {
        show();
        activate();
        table()->setFocus();
        QTRY_VERIFY(table()->hasFocus());
    }
    // As a window manager does once an alert has closed.
    void activate() {
        m_page->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_page.get()));
    }
    void deleteRow(int row) {
        clickRow(row);
        QTest::keySequence(table(), QKeySequence::Delete);
        answer(name("Yes"));
        activate();
    }
    void deleteAll() {
        table()->clearSelection();
        click("deleteEvents");
        answer(name("OK"), true);
        answer(name("Yes"));
        activate();
    }
    void pressUndo() { QTest::keySequence(m_page->focusWidget(), QKeySequence::Undo); }
    QAction &undoAction() { return *m_page->findChild<QAction *>(name("undoDelete")); }
    QStringList messages() {
        QStringList texts;
        for (int row = 0; row < table()->model()->rowCount(); ++row) {
            texts += cell(row, 4);
        }
        return texts;
    }
    // Once there are so many, or the test's patience has ended; commands are made while the event
    // loop runs.
    std::vector<Dictionary> sent(std::size_t count) {
        const bool areThere = QTest::qWaitFor([&] { return m_service->received().size() >= count; },
                                              static_cast<int>(kPatience.count()));
        const auto commands = m_service->waitForCommands(areThere ? count : 0);
        return areThere ? commands
                        : std::vector<Dictionary>(count, {{"command", "none came"}, {"Events", 0}});
    }
    static std::string kindOf(const Dictionary &command) {
        return *command.find("command")->string();
    }
    std::vector<std::string> kinds(std::size_t count) {
        std::vector<std::string> texts;
        for (const Dictionary &command : sent(count)) {
            texts.push_back(kindOf(command));
        }
        return texts;
    }
    QStringList problem() {
        QStringList texts;
        if (QTest::qWaitFor([this] { return alert() != nullptr && alert()->isVisible(); })) {
            texts = {alert()->text(), alert()->informativeText()};
            answer(name("OK"));
        }
        return texts;
    }

private Q_SLOTS:
    void init() {
        m_bus = std::make_unique<PrivateBus>();
        m_service = std::make_unique<ServiceStandIn>();
        makePage();
    }
    void cleanup() {
        m_page.reset();
        m_delegate.reset();
        m_service.reset();
        m_bus.reset();
    }

    void theDeletedEventStandsWhereItStood() {
        add("1700000000", "1");
        add("1700000001", "2", "Kern.Alert");
        add("1700000002", "3");
        showActive();
        QVERIFY(!undoAction().isEnabled());
        deleteRow(1);
        QCOMPARE(messages(), (QStringList{name("3"), name("1")}));
        QCOMPARE(m_delegate->state.iAlert, 0);
        QVERIFY(undoAction().isEnabled());
        m_page->insertEvent(fields("1700000003", "4"));
        pressUndo();
        QCOMPARE(messages(), (QStringList{name("4"), name("3"), name("2"), name("1")}));
        QCOMPARE(cell(2, 1), name("2023-11-14 22:13:21"));
        QCOMPARE(m_delegate->state.iAlert, 1);
        QCOMPARE(m_delegate->state.iError, 2);
        QVERIFY(!undoAction().isEnabled());
        const auto commands = sent(2);
        QCOMPARE(commands.size(), std::size_t{2});
        QCOMPARE(commands[0],
                 (Dictionary{{"command", "update"},
                             {"Events", Dictionary{{"1700000001,Kern.Alert,10.0.0.5,2\n", "1"}}}}));
        QCOMPARE(commands[1], (Dictionary{{"command", "restore"},
                                          {"Events", Array{"1700000001,Kern.Alert,10.0.0.5,2\n"}},
                                          {"Listed", Array{}}}));
        QCOMPARE(m_page->findChildren<QMessageBox *>().size(), 0);
    }

    void onlyTheLastDeletionComesBackAndOnce() {
        add("1700000000", "1");
        add("1700000001", "2");
        showActive();
        pressUndo();
        QCOMPARE(messages().size(), 2);
        deleteRow(0);
        deleteRow(0);
        pressUndo();
        QCOMPARE(messages(), QStringList{name("1")});
        pressUndo();
        undoAction().trigger();
        QCOMPARE(messages(), QStringList{name("1")});
        QCOMPARE(m_delegate->state.iError, 1);
        QCOMPARE(kinds(3), (std::vector<std::string>{"update", "update", "restore"}));
    }

    void undoingWorksFromAnyControlOfThePage() {
        add("1700000000", "1");
        showActive();
        deleteAll();
        QCOMPARE(messages(), QStringList());
        m_page->findChild<QPushButton *>(name("exportEvents"))->setFocus();
        pressUndo();
        QCOMPARE(messages(), QStringList{name("1")});
    }

    void deletingNothingKeepsWhatWasDeletedBefore() {
        add("1700000000", "1");
        showActive();
        deleteAll();
        deleteAll();
        QCOMPARE(kinds(2), (std::vector<std::string>{"update", "update"}));
        pressUndo();
        QCOMPARE(messages(), QStringList{name("1")});
        QCOMPARE(m_delegate->state.iError, 1);
    }

    void equalEventsAndThoseOfTheMinuteAreNamed() {
        // 22:13:20; the minute ends with 22:13:59.
        add("1699999999", "same");
        add("1700000000", "same");
        add("1700000000", "other");
        add("1700000000", "same");
        add("1700000039", "same");
        add("1700000040", "same");
        showActive();
        clickRow(2);
        clickRow(4, Qt::ControlModifier);
        QTest::keySequence(table(), QKeySequence::Delete);
        answer(name("Yes"));
        activate();
        pressUndo();
        const auto commands = sent(2);
        QCOMPARE(commands.back(),
                 (Dictionary{{"command", "restore"},
                             {"Events", Array{"1700000000,Local7.Error,10.0.0.5,same\n",
                                              "1700000000,Local7.Error,10.0.0.5,same\n"}},
                             {"Listed", Array{"1700000039,Local7.Error,10.0.0.5,same\n",
                                              "1699999999,Local7.Error,10.0.0.5,same\n"}}}));
    }

    // The format hides them, and the list knows them nevertheless.
    void theSecondsComeBack() {
        m_delegate->state.newDateFormat = m_delegate->state.oldDateFormat = "yyyy-MM-dd HH:mm";
        add("1700000000", "1");
        showActive();
        deleteRow(0);
        m_delegate->state.newDateFormat = "HH:mm:ss dd.MM.yyyy";
        m_page->hide();
        m_page->show();
        undoAction().trigger();
        const auto commands = sent(2);
        QCOMPARE(*commands[0].find("Events"),
                 Value(Dictionary{{"1699999980,Local7.Error,10.0.0.5,1\n", "1"}}));
        QCOMPARE(*commands[1].find("Events"), Value(Array{"1700000000,Local7.Error,10.0.0.5,1\n"}));
    }

    void theServiceHearsInOrderHoweverQuickTheUserIs() {
        for (int i = 0; i < 3000; ++i) {
            add("1700000000", std::to_string(i).c_str());
        }
        showActive();
        deleteAll();
        undoAction().trigger();
        table()->selectAll();
        m_page->deleteEvents();
        answer(name("Yes"));
        QCOMPARE(kinds(3), (std::vector<std::string>{"update", "restore", "update"}));
        QCOMPARE(sent(3)[1].find("Events")->array()->size(), std::size_t{3000});
        undoAction().trigger();
        m_page.reset();
        m_delegate.reset();
        QCOMPARE(kinds(4).back(), std::string("restore"));
        QCOMPARE(sent(4)[3].find("Events")->array()->size(), std::size_t{3000});
    }

    void anEventThatGoesAgainBeforeItIsNamedIsLeftOut() {
        add("1700000000", "1");
        add("1700000001", "2");
        showActive();
        deleteAll();
        undoAction().trigger();
        m_page->removeEvent(fields("1700000000", "1"));
        m_page->hide();  // takes out at once what was announced
        m_page->show();
        const auto commands = sent(2);
        QCOMPARE(*commands[1].find("Events"), Value(Array{"1700000001,Local7.Error,10.0.0.5,2\n"}));
    }

    void aHeldListTakesThemAtOnce() {
        EventIntake intake(m_delegate->state, list(), m_delegate->hold, *m_page, m_home);
        add("1700000000", "1");
        showActive();
        m_delegate->hold.setOn(true);
        deleteRow(0);
        intake.setNotification(fields("1700000001", "2"));
        pressUndo();
        QCOMPARE(messages(), QStringList{name("1")});
        click("holdEvents");
        QTRY_COMPARE(messages(), (QStringList{name("2"), name("1")}));
    }

    void whatTheServiceCouldNotPutBackIsSaid() {
        add("1700000000", "1");
        showActive();
        deleteRow(0);
        QCOMPARE(kinds(1).size(), std::size_t{1});
        m_service->setReply("1 of 1 events could not be put back: <b>disk</b> full");
        pressUndo();
        QCOMPARE(problem(),
                 (QStringList{name("The deleted events are listed again, but may be missing from "
                                   "the log."),
                              name("1 of 1 events could not be put back: <b>disk</b> full.\n\nWhat "
                                   "is not in the log will not be listed after the next start.")}));
        QCOMPARE(messages(), QStringList{name("1")});
    }

    void aServiceThatDoesNotAnswerIsSaid() {
        add("1700000000", "1");
        showActive();
        deleteRow(0);
        QCOMPARE(kinds(1).size(), std::size_t{1});
        m_service.reset();
        pressUndo();
        QCOMPARE(problem().value(1).section(u'\n', 0, 0), name("The service did not answer."));
        QCOMPARE(messages(), QStringList{name("1")});
    }

    void whatNoLogFileCanHoldIsSaid() {
        add("soon", "1");
        list().insertRaw({"1700000000", "Local7.Error", "10.0.0.5", {}, {}});
        add("1700000000", "2");
        showActive();
        deleteAll();
        pressUndo();
        QCOMPARE(problem().value(1).section(u'\n', 0, 0),
                 name("No log file can hold 2 of them, which lack a time or a text."));
        const auto commands = sent(2);
        QCOMPARE(*commands[1].find("Events"), Value(Array{"1700000000,Local7.Error,10.0.0.5,2\n"}));
    }

    void aCommandIsPutTogetherAPartAtATime() {
        std::vector<EventId> ids;
        for (int i = 0; i < 1000; ++i) {
            const EventId id = list().insertRaw(fields("1700000000", std::to_string(i / 4)));
            if (i % 2 == 0) {
                ids.push_back(id);
            }
        }
        RestorationLines lines(list(), ids);
        int parts = 1;
        while (!lines.work(std::chrono::milliseconds::zero())) {
            ++parts;
            if (parts % 3 == 0) {
                list().insertRaw(fields("1800000000", "new"));
            }
        }
        QVERIFY2(parts >= 1500 / 64 && parts < 1500, qPrintable(QString::number(parts)));
        const Dictionary command = lines.takeCommand().toDictionary();
        QCOMPARE(command.find("Events")->array()->size(), std::size_t{500});
        QCOMPARE(command.find("Listed")->array()->size(), std::size_t{500});
        QCOMPARE(command.find("Events")->array()->back(),
                 Value("1700000000,Local7.Error,10.0.0.5,249\n"));
    }

    void manyComeBackBetweenTheOtherEventsOfTheWindow() {
        constexpr int kMany = 300'000;
        list().beginBulkInsert();
        for (int i = 0; i < kMany; ++i) {
            const std::string date = std::to_string(1'700'000'000 + i / 10);
            list().insertRaw(fields(date, "message number " + std::to_string(i)));
        }
        list().endBulkInsert();
        m_delegate->state.iError = kMany;
        showActive();
        deleteAll();
        QCOMPARE(m_delegate->state.iError, 0);
        int slices = 0;
        QTimer ticks;
        connect(&ticks, &QTimer::timeout, this, [&slices] { ++slices; });
        ticks.start(0);
        pressUndo();
        QCOMPARE(list().size(), std::size_t{kMany});
        QCOMPARE(m_delegate->state.iError, kMany);
        const auto commands = sent(2);
        const auto *events = commands[1].find("Events")->array();
        QCOMPARE(events->size(), std::size_t{kMany});
        QCOMPARE(events->front(), Value("1700000000,Local7.Error,10.0.0.5,message number 0\n"));
        // Other events of the window were handled between the slices.
        QVERIFY2(slices > 3, qPrintable(QString::number(slices)));
    }

private:
    NoHomePage m_home;
    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<ServiceStandIn> m_service;
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ScanViewUndoTest)
#include "ScanViewUndoTest.moc"
