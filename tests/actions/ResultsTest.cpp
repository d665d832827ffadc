// What the pages of the actions and of the exports show of what came of them.

#include "actions/ActionResults.h"
#include "actions/ActionsFixture.h"
#include "core/ServiceResults.h"
#include "export/ToolsViewExport.h"
#include "platform/bus/StatusReader.h"
#include "platform/gui/NoteLabel.h"
#include "support/ServiceProcess.h"

namespace quorbel {

using namespace testing;
using namespace Qt::StringLiterals;

namespace {

constexpr std::int64_t kSince = 1'700'000'000;  // 2023-11-14 22:13:20 UTC

Value entry(const char *name, std::int64_t done, std::int64_t doneSeconds, std::int64_t failed,
            const char *problem, std::int64_t failedSeconds) {
    return Array{name, done, doneSeconds, failed, problem, failedSeconds};
}

StatusAnswer told(const char *property, const Array &results) {
    return {StatusOutcome::kTold, {{"Since", kSince}, {property, results}}};
}

}  // namespace

class ResultsTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<ActionsPage> m_page;

    ServiceState &state() { return m_page->delegate().service; }
    /// All cells of a row.
    QString row(int number) {
        const QAbstractItemModel *model = m_page->control<QTableView>("actionResults").model();
        QStringList texts;
        for (int column = 0; column < model->columnCount(); ++column) {
            texts += model->index(number, column).data().toString();
        }
        return texts.join(u'|');
    }
    void showActions(const Array &actions) {
        m_page->writeActions(actions);
        m_page->show();
    }
    void showExports() {
        m_page->storyboard.add(
            u"exports"_s, [this] { return std::make_unique<ToolsViewExport>(m_page->delegate()); });
        m_page->SettingsPage::show("exports");
    }
    QString note(const char *name) { return m_page->control<NoteLabel>(name).text(); }

private Q_SLOTS:
    void initTestCase() { qputenv("TZ", "UTC"); }
    void init() { m_page = std::make_unique<ActionsPage>(); }
    void cleanup() { m_page.reset(); }

    void eachActionHasARow() {
        showActions({ActionsPage::action("one", kRun), ActionsPage::action("two", {}, {}, kEvent),
                     ActionsPage::action("nothing")});
        state().take(told("Actions", {entry("one", 12, kSince + 60, 2,
                                            "the command ended with status 1", kSince + 61),
                                      entry("two", 0, 0, 0, "", 0)}));
        QCOMPARE(row(0),
                 u"one|12 times|2023-11-14 22:14:20|2023-11-14 22:14:21: the command ended with "
                 "status 1"_s);
        QCOMPARE(row(1), u"two|never||"_s);
        QCOMPARE(row(2), u"nothing|has nothing to do||"_s);
        QVERIFY(m_page->control("actionResults").toolTip().contains(u"2023-11-14 22:13:20"_s));
        // Live, in the user's format, and nothing of it is an edit.
        m_page->delegate().state.newDateFormat = "d.M.y HH:mm";
        state().take(told("Actions", {entry("one", 1'000'000, kSince, 0, "", 0),
                                      entry("two", 1, kSince, 0, "", 0)}));
        QCOMPARE(row(0), u"one|1,000,000 times|14.11.2023 22:13|"_s);
        QVERIFY(!m_page->isEnabled("saveButton"));
    }

    void whatIsNotCertainIsNotTold() {
        showActions({ActionsPage::action("same", kRun), ActionsPage::action("same"),
                     ActionsPage::action("same", {}, {}, kEvent),
                     ActionsPage::action("new", kRun)});
        state().take(told(
            "Actions", {entry("same", 1, kSince, 0, "", 0), entry("same", 2, kSince, 0, "", 0)}));
        // Those of one name in their order, without what has nothing to do.
        QVERIFY2(row(0).startsWith(u"same|once|"_s), qPrintable(row(0)));
        QCOMPARE(row(1), u"same|has nothing to do||"_s);
        QVERIFY2(row(2).startsWith(u"same|2 times"_s), qPrintable(row(2)));
        QCOMPARE(row(3), u"new|cannot be told||the service does not have it so"_s);
        // One of them is removed, and that is not saved.
        m_page->clickRow("actionsTable", 0);
        m_page->click("actionsRemove");
        QCOMPARE(row(1), u"same|cannot be told||the service does not have it so"_s);
        QCOMPARE(m_page->control<QTableView>("actionResults").model()->rowCount(), 3);
    }

    void whyNothingIsToldIsSaid() {
        showActions({ActionsPage::action("one", kRun)});
        QCOMPARE(row(0), u"one|cannot be told||the service is being asked"_s);
        const std::pair<StatusOutcome, QString> cases[] = {
            {StatusOutcome::kNoBus, u"the service does not answer"_s},
            {StatusOutcome::kNoAnswer, u"the service does not answer"_s},
            {StatusOutcome::kNotRunning, u"the service does not run"_s},
            {StatusOutcome::kNotAllowed, u"you may not ask the service"_s},
            {StatusOutcome::kTooOld, u"the service that runs is too old to tell it"_s},
            {StatusOutcome::kTold, u"the service that runs is too old to tell it"_s},
        };
        for (const auto &[outcome, reason] : cases) {
            state().take({outcome, {}});
            QCOMPARE(row(0), u"one|cannot be told||"_s + reason);
        }
        // What is no list of results is none.
        state().take(told("Actions", {"one"}));
        QVERIFY(row(0).startsWith(u"one|cannot be told|"_s));
        state().take(told("Actions", {Array{"one", 1, 2}}));
        QVERIFY(row(0).startsWith(u"one|cannot be told|"_s));
    }

    void itIsAskedForOnlyWhileItIsSeen() {
        QVERIFY(!state().isWatched());
        showActions({ActionsPage::action("one", kRun)});
        QVERIFY(state().isWatched());
        m_page->page().hide();
        QVERIFY(!state().isWatched());
        m_page->page().show();
        QVERIFY(state().isWatched());
        m_page->page().hide();
    }

    void eachExportHasALine() {
        showExports();
        QCOMPARE(note("textResult"),
                 u"What came of it cannot be told: the service is being asked"_s);
        state().take(told("Exports", {entry("text", 3, kSince + 60, 0, "", 0)}));
        QCOMPARE(note("textResult"),
                 u"Written last at 2023-11-14 22:14:20, 3 times since the "
                 "service started at 2023-11-14 22:13:20"_s);
        QCOMPARE(note("databaseResult"), u"The service does not write it now"_s);
        state().take(
            told("Exports", {entry("text", 0, 0, 1, "a.txt is not the full path of a file", kSince),
                             entry("database", 5, kSince + 9, 1, "x", kSince)}));
        QCOMPARE(note("textResult"),
                 u"Never written since the service started at 2023-11-14 22:13:20\n"
                 "Last problem, at 2023-11-14 22:13:20: a.txt is not the full path of a file"_s);
        const auto role = [this](const char *name) {
            return m_page->control(name).property("role").toString();
        };
        QCOMPARE(role("textResult"), u"warning"_s);
        QCOMPARE(role("databaseResult"), u"caption"_s);  // it has worked since
        state().take({StatusOutcome::kNotRunning, {}});
        QCOMPARE(note("textResult"), u"What came of it cannot be told: the service does not run"_s);
        QCOMPARE(role("textResult"), u"caption"_s);
        QVERIFY(!m_page->isEnabled("saveButton"));
    }

    void theRealServiceTellsThem() {
        m_page->endService();
        // Not every name can be told to the letter.
        const std::string longName(700, 'n');
        m_page->write({{"actionsArray",
                        Array{ActionsPage::action("one", {{"Command", "/bin/false"}}),
                              ActionsPage::action(longName.c_str(), {{"Command", "/bin/false"}}),
                              ActionsPage::action("a\tb", {{"Command", "/bin/false"}})}},
                       {"textInterval", 5},
                       {"textLocation", (m_page->library() / "events.txt").string()}});
        ServiceProcess service({.library = m_page->library(), .busAddress = m_page->busAddress()});
        QVERIFY2(service.waitForJournal("Connected to the system bus"), service.journal().c_str());
        m_page->show();
        StatusReader reader([this](const StatusAnswer &answer) { state().take(answer); });
        const auto comes = [&](const auto &condition) {
            return QTest::qWaitFor(
                [&] {
                    reader.isAsking() ? reader.dispatch() : reader.ask();
                    return condition();
                },
                static_cast<int>(kPatience.count()));
        };
        QVERIFY2(comes([&] { return row(0) == u"one|never||"_s; }), qPrintable(row(0)));
        QCOMPARE(row(1), QString(700, u'n') + u"|never||"_s);
        QCOMPARE(row(2), u"a\tb|never||"_s);
        const auto results = serviceResults(state().report(), "Exports");
        QVERIFY(results.has_value());
        QCOMPARE(results->size(), 1U);
        QCOMPARE(results->at(0).name, std::string("text"));
        QCOMPARE(service.terminate(), std::optional(0));
        QVERIFY2(comes([&] { return row(0) == u"one|cannot be told||the service does not run"_s; }),
                 qPrintable(row(0)));
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ResultsTest)
#include "ResultsTest.moc"
