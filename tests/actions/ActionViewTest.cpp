#include "actions/ActionsFixture.h"

#include <QLabel>

namespace quorbel {

using namespace testing;
using namespace Qt::StringLiterals;

namespace {

Dictionary with(Dictionary record, std::string_view key, Value value) {
    record.set(key, std::move(value));
    return record;
}

}  // namespace

class ActionViewTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<ActionsPage> m_page;

private Q_SLOTS:
    void init() { m_page = std::make_unique<ActionsPage>(); }
    void cleanup() { m_page.reset(); }

    void addOpensTheEditorForANewAction() {
        m_page->writeActions({m_page->action("one", kRun, kEmail, kEvent)});
        m_page->show();
        m_page->clickRow("actionsTable", 0);
        m_page->click("automaticActionsAdd");
        QCOMPARE(m_page->selectedRow("actionsTable"), -1);
        QCOMPARE(m_page->openSheetName(), u"actionView"_s);
        QCOMPARE(m_page->openSheet()->focusWidget()->objectName(), u"actionBlank"_s);
        QCOMPARE(m_page->text("actionName"), u"New Action"_s);
        QVERIFY(m_page->isEnabled("actionName"));
        QCOMPARE(m_page->text("actionIP"), u"0.0.0.0"_s);
        QCOMPARE(m_page->text("actionMask"), u"0"_s);
        QCOMPARE(m_page->text("actionMessage"), u"*"_s);
        QCOMPARE(m_page->control<QComboBox>("actionFacility").currentIndex(), 0);
        QCOMPARE(m_page->control<QComboBox>("actionSeverity").currentIndex(), 0);
        for (const char *box : {"actionRun", "actionEmail", "actionEvent"}) {
            QVERIFY2(!m_page->isChecked(box), box);
        }
        m_page->click("onSave");
        QCOMPARE(m_page->openSheetName(), QString());
        QCOMPARE(m_page->rows("actionsTable"), u"one|New Action"_s);
        QCOMPARE(m_page->selectedRow("actionsTable"), -1);
        QVERIFY(!m_page->isEnabled("actionsEdit") && !m_page->isEnabled("actionsRemove"));
        QVERIFY(m_page->isEnabled("saveButton"));
        QCOMPARE(m_page->savedActions(), asText(Array{m_page->action("one", kRun, kEmail, kEvent),
                                                      m_page->action("New Action")}));
        QCOMPARE(m_page->mainWindow.selected, std::vector{Tab::kTools});
    }

    void theEditorSaysHowManyEventsItWouldHaveMatched() {
        for (const char *priority : {"Kern.Critical", "Kern.Error", "Local7.Error"}) {
            m_page->delegate().events.insertRaw({"1000", priority, "10.0.0.1", "fan", {}});
        }
        Dictionary errors = ActionsPage::action("a", kRun);
        errors.set("Severity", "Error");
        m_page->writeActions({errors});
        m_page->show();
        m_page->clickRow("actionsTable", 0);
        m_page->click("actionsEdit");
        const auto said = [this] { return m_page->control<QLabel>("consequence").text(); };
        QTRY_COMPARE(said(), u"It would have matched 2 of 3 listed events."_s);
        QCOMPARE(m_page->control<QLabel>("consequenceMore").text(), u"Today: 0."_s);
        m_page->click("anySeverity");
        QTRY_COMPARE(said(), u"It would have matched all 3 listed events."_s);
        QVERIFY(m_page->control<QLabel>("consequence").font().bold());
    }

    void aProposalIsANewAction() {
        m_page->writeActions({ActionsPage::action("a", kRun)});
        m_page->show();
        m_page->clickRow("actionsTable", 0);
        dynamic_cast<ToolsViewActions &>(m_page->page())
            .propose({{"Name", "like one"},
                      {"IP", "10.0.0.5"},
                      {"Message", "link * down"},
                      {"Mask", "32"},
                      {"Facility", "Local7"},
                      {"Severity", "Error"}});
        QCOMPARE(m_page->openSheetName(), QStringLiteral("actionView"));
        QVERIFY(m_page->isEnabled("actionName"));
        QVERIFY(!m_page->isChecked("actionRun"));
        m_page->click("onSave");
        QTRY_COMPARE(m_page->openSheetName(), QString());
        QCOMPARE(m_page->savedActions(), asText(Array{ActionsPage::action("a", kRun),
                                                      Dictionary{{"Name", "like one"},
                                                                 {"IP", "10.0.0.5"},
                                                                 {"Message", "link * down"},
                                                                 {"Mask", "32"},
                                                                 {"Facility", "Local7"},
                                                                 {"Severity", "Error"},
                                                                 {"runCommand", Dictionary{}},
                                                                 {"sendEmail", Dictionary{}},
                                                                 {"setEvent", Dictionary{}}}}));
        m_page->click("automaticActionsAdd");
        QCOMPARE(m_page->text("actionName"), QStringLiteral("New Action"));
    }

    void withoutADocumentTheFirstSaveHoldsTheActionsOnly() {
        m_page->show();
        QCOMPARE(m_page->rows("actionsTable"), QString());
        m_page->click("automaticActionsAdd");
        m_page->type("actionName", u"Näme, \"quoted\""_s);
        m_page->type("actionIP", u"any text"_s);
        m_page->type("actionMask", u"24"_s);
        m_page->type("actionMessage", {});
        m_page->choose("actionFacility", "Local7");
        m_page->choose("actionSeverity", "Debug");
        m_page->click("onSave");
        m_page->click("saveButton");
        QCOMPARE(m_page->savedText(),
                 u"{\"actionsArray\": [{\"Name\": \"Näme, \\\"quoted\\\"\", \"IP\": \"any text\", "
                 u"\"Message\": \"\", \"Mask\": \"24\", \"Facility\": \"Local7\", "
                 u"\"Severity\": \"Debug\", \"runCommand\": {}, \"sendEmail\": {}, "
                 u"\"setEvent\": {}}]}"_s);
    }

    void anEditedActionKeepsItsPlaceAndItsName() {
        m_page->writeActions({m_page->action("one"), m_page->action("two", kRun, kEmail, kEvent),
                              m_page->action("three")});
        m_page->show();
        m_page->clickRow("actionsTable", 1);
        m_page->click("actionsEdit");
        QVERIFY(!m_page->isEnabled("actionName"));
        QCOMPARE(m_page->text("actionName"), u"two"_s);
        for (const char *box : {"actionRun", "actionEmail", "actionEvent"}) {
            QVERIFY2(m_page->isChecked(box), box);
        }
        m_page->type("actionIP", u"10.0.0.5"_s);
        m_page->type("actionMessage", u"*full*"_s);
        m_page->click("onSave");
        QCOMPARE(m_page->rows("actionsTable"), u"one|two|three"_s);
        QVERIFY(m_page->isEnabled("saveButton"));
        Dictionary edited = m_page->action("two", kRun, kEmail, kEvent);
        edited.set("IP", "10.0.0.5");
        edited.set("Message", "*full*");
        QCOMPARE(m_page->savedActions(),
                 asText(Array{m_page->action("one"), edited, m_page->action("three")}));
    }

    void anUntouchedEditorStoresWhatItRead() {
        // In another order, and with a key that the editor does not have.
        Dictionary stored{{"setEvent", with(kEvent, "more", 1)}, {"more", true}};
        for (const auto &[key, value] : m_page->action("one", kRun, kEmail)) {
            stored.set(key, key == "setEvent" ? stored.begin()->second : value);
        }
        m_page->edit(stored);
        m_page->click("onSave");
        QCOMPARE(m_page->savedActions(),
                 asText(Array{m_page->action("one", kRun, kEmail, with(kEvent, "more", 1))}));
    }

    void cancelStoresNothing() {
        m_page->edit(m_page->action("one", kRun, kEmail, kEvent));
        m_page->type("actionIP", u"10.0.0.5"_s);
        for (const char *box : {"actionRun", "actionEmail", "actionEvent"}) {
            m_page->click(box);
        }
        const auto &editor = dynamic_cast<ActionView &>(*m_page->openSheet());
        QVERIFY(editor.runCommand.empty() && editor.sendEmail.empty() && editor.setEvent.empty());
        m_page->click("onCancel");
        QVERIFY(!m_page->isEnabled("saveButton"));
        m_page->click("actionsEdit");
        QCOMPARE(m_page->text("actionIP"), u"0.0.0.0"_s);
        QVERIFY(m_page->isChecked("actionRun"));
        m_page->click("onSave");
        QCOMPARE(m_page->savedActions(),
                 asText(Array{m_page->action("one", kRun, kEmail, kEvent)}));
    }

    void uncheckingAReactionEmptiesIt_data() {
        QTest::addColumn<QByteArray>("box");
        QTest::addColumn<QByteArray>("key");
        QTest::newRow("run") << QByteArray("actionRun") << QByteArray("runCommand");
        QTest::newRow("email") << QByteArray("actionEmail") << QByteArray("sendEmail");
        QTest::newRow("event") << QByteArray("actionEvent") << QByteArray("setEvent");
    }
    void uncheckingAReactionEmptiesIt() {
        QFETCH(QByteArray, box);
        QFETCH(QByteArray, key);
        const Dictionary stored = m_page->action("one", kRun, kEmail, kEvent);
        m_page->edit(stored);
        m_page->click(box);
        QVERIFY(!m_page->isChecked(box));
        QCOMPARE(m_page->openSheetName(), u"actionView"_s);
        m_page->click("onSave");
        QCOMPARE(m_page->savedActions(),
                 asText(Array{with(stored, key.toStdString(), Dictionary{})}));
    }

    void checkingAReactionOpensItsSheet_data() {
        QTest::addColumn<QByteArray>("box");
        QTest::addColumn<QByteArray>("link");
        QTest::addColumn<QString>("sheet");
        QTest::newRow("run") << QByteArray("actionRun") << QByteArray("actionRunText")
                             << u"commandRun"_s;
        QTest::newRow("email") << QByteArray("actionEmail") << QByteArray("actionEmailText")
                               << u"commandEmail"_s;
        QTest::newRow("event") << QByteArray("actionEvent") << QByteArray("actionEventText")
                               << u"commandEvent"_s;
    }
    void checkingAReactionOpensItsSheet() {
        QFETCH(QByteArray, box);
        QFETCH(QByteArray, link);
        QFETCH(QString, sheet);
        m_page->edit(m_page->action("one"));
        m_page->click(box);
        QCOMPARE(m_page->openSheetName(), sheet);
        m_page->click("onCancel");
        QCOMPARE(m_page->openSheetName(), u"actionView"_s);
        QVERIFY(!m_page->isChecked(box));
        // Escape and the window's own close button leave like Cancel.
        m_page->click(box);
        QTest::keyClick(m_page->openSheet(), Qt::Key_Escape);
        QVERIFY(!m_page->isChecked(box));
        m_page->click(box);
        m_page->openSheet()->close();
        QVERIFY(!m_page->isChecked(box));
        QCOMPARE(m_page->control(link).cursor().shape(), Qt::PointingHandCursor);
        m_page->click(link);
        QCOMPARE(m_page->openSheetName(), sheet);
        m_page->click("onCancel");
        QVERIFY(!m_page->isChecked(box));
    }

    void anyButtonsStandForEveryEvent() {
        Dictionary narrow = m_page->action("one");
        narrow.set("IP", "10.0.0.5");
        narrow.set("Mask", "32");
        narrow.set("Facility", "Mail");
        narrow.set("Severity", "Alert");
        narrow.set("Message", "x");
        m_page->edit(narrow);
        for (const char *button : {"anyHost", "anyFacility", "anySeverity", "anyMessage"}) {
            m_page->click(button);
        }
        m_page->click("onSave");
        QCOMPARE(m_page->savedActions(), asText(Array{m_page->action("one")}));
    }

    void theRecordEndsBeforeAMissingValue_data() {
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<QString>("saved");
        const QString start =
            u"[{\"Name\": \"one\", \"IP\": \"0.0.0.0\", \"Message\": \"*\", \"Mask\": \"0\""_s;
        QTest::newRow("facility") << QByteArray("Facility") << start + u"}]"_s;
        QTest::newRow("severity") << QByteArray("Severity")
                                  << start + u", \"Facility\": \"Any\"}]"_s;
    }
    void theRecordEndsBeforeAMissingValue() {
        QFETCH(QByteArray, key);
        QFETCH(QString, saved);
        m_page->edit(
            with(m_page->action("one", kRun, kEmail, kEvent), key.toStdString(), "Unheard of"));
        QCOMPARE(m_page->control<QComboBox>("action" + key).currentIndex(), -1);
        m_page->click("onSave");
        QCOMPARE(m_page->savedActions(), saved);
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ActionViewTest)
#include "ActionViewTest.moc"
