#include "actions/ActionsFixture.h"

#include <QAbstractItemModelTester>

namespace quorbel {

using namespace testing;
using namespace Qt::StringLiterals;

class ActionsPageTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<ActionsPage> m_page;

    static Dictionary masked(const char *name, const char *mask) {
        Dictionary action = ActionsPage::action(name);
        action.set("Mask", mask);
        return action;
    }
    void saveRowWithMask(int row, const char *name, const QString &mask) {
        m_page->clickRow("actionsTable", row);
        m_page->click("actionsEdit");
        QCOMPARE(m_page->text("actionName"), QLatin1StringView(name));
        m_page->type("actionMask", mask);
        m_page->click("onSave");
    }

private Q_SLOTS:
    void init() { m_page = std::make_unique<ActionsPage>(); }
    void cleanup() { m_page.reset(); }

    void listsTheStoredActionsInTheirOrder() {
        Dictionary special = m_page->action("b", kRun, kEmail, kEvent);
        special.set("IP", "10.1.0.0");
        special.set("Mask", "16");
        special.set("Facility", "Local7");
        special.set("Severity", "Error");
        special.set("Message", "*disk*");
        m_page->writeActions({m_page->action("z"), special, m_page->action("a", {}, kEmail)});
        m_page->show();
        const QAbstractItemModelTester tester(m_page->control<QTableView>("actionsTable").model());
        QStringList shown;
        for (int column = 0; column < tester.model()->columnCount(); ++column) {
            shown += m_page->rows("actionsTable", column);
        }
        QCOMPARE(shown.join(u'\n'),
                 u"z|b|a\nAny|10.1.0.0/16|Any\nAny|Local7|Any\nAny|Error|Any\n*|*disk*|*\n"
                 u"|Command, E-mail, Event|E-mail"_s);
        QCOMPARE(m_page->selectedRow("actionsTable"), -1);
        for (const char *button : {"actionsEdit", "actionsRemove", "saveButton"}) {
            QVERIFY2(!m_page->isEnabled(button), button);
        }
    }

    void showingAgainReadsAfreshAndDropsEdits() {
        m_page->writeActions({m_page->action("one"), m_page->action("two")});
        m_page->show();
        m_page->clickRow("actionsTable", 0);
        m_page->click("actionsRemove");
        QVERIFY(m_page->isEnabled("saveButton"));
        m_page->click("onCancel");
        QCOMPARE(m_page->mainWindow.selected.size(), 1U);
        m_page->show();
        QCOMPARE(m_page->rows("actionsTable"), u"one|two"_s);
        QVERIFY(!m_page->isEnabled("saveButton"));
        m_page->clickRow("actionsTable", 0);
        m_page->writeActions({m_page->action("three"), m_page->action("four")});
        m_page->show();
        QCOMPARE(m_page->rows("actionsTable"), u"three|four"_s);
        QCOMPARE(m_page->selectedRow("actionsTable"), -1);
        QVERIFY(!m_page->isEnabled("actionsEdit"));
        QVERIFY(m_page->nothingWasSent());
    }

    void aSmallPageShowsSeveralActionsToo() {
        Array actions;
        for (const char *name : {"one", "two", "three", "four", "five", "six"}) {
            actions.push_back(m_page->action(name));
        }
        m_page->writeActions(actions);
        m_page->show();
        m_page->page().resize(700, 380);
        auto &table = m_page->control<QTableView>("actionsTable");
        QTRY_VERIFY(m_page->page().height() <= 400);
        QVERIFY2(table.viewport()->height() >= 3 * table.rowHeight(0),
                 qPrintable(QString::number(table.viewport()->height())));
    }

    void isWhite() {
        m_page->show();
        QCOMPARE(m_page->page().palette().color(QPalette::Window), QColor(Qt::white));
    }

    void returnsToWhereItWasOpened() {
        auto &page = dynamic_cast<SettingsPageLink &>((m_page->show(), m_page->page()));
        for (const Tab parent : {Tab::kEvents, Tab::kTools}) {
            page.parentTab = parent;
            m_page->click("onCancel");
            QCOMPARE(m_page->mainWindow.selected.back(), parent);
        }
        QCOMPARE(m_page->mainWindow.selected.size(), 2U);
    }

    void clicksInTheListEnableEditAndRemove() {
        m_page->writeActions({m_page->action("one"), m_page->action("two")});
        m_page->show();
        m_page->clickRow("actionsTable", 1);
        QVERIFY(m_page->isEnabled("actionsEdit") && m_page->isEnabled("actionsRemove"));
        m_page->clickBelowRows("actionsTable");
        QCOMPARE(m_page->selectedRow("actionsTable"), -1);
        QVERIFY(!m_page->isEnabled("actionsEdit") && !m_page->isEnabled("actionsRemove"));
        QVERIFY(!m_page->isEnabled("saveButton"));
    }

    void removingTakesEveryEqualRecord() {
        const Dictionary twin = m_page->action("twin", kRun);
        m_page->writeActions({twin, m_page->action("twin"), twin, m_page->action("other"), twin});
        m_page->show();
        m_page->clickRow("actionsTable", 2);
        m_page->click("actionsRemove");
        QCOMPARE(m_page->openSheetName(), QString());
        // One row goes from the table, and all that are equal from the document.
        QCOMPARE(m_page->rows("actionsTable"), u"twin|twin|other|twin"_s);
        QCOMPARE(m_page->selectedRow("actionsTable"), -1);
        QVERIFY(!m_page->isEnabled("actionsEdit") && !m_page->isEnabled("actionsRemove"));
        QCOMPARE(m_page->savedActions(),
                 asText(Array{m_page->action("twin"), m_page->action("other")}));
    }

    void anEditReplacesTheActionThatWasShown() {
        // After equal records were removed the rows are no longer those of the working list.
        const Dictionary twin = m_page->action("a");
        m_page->writeActions({twin, twin, m_page->action("b"), m_page->action("c")});
        m_page->show();
        m_page->clickRow("actionsTable", 0);
        m_page->click("actionsRemove");
        QCOMPARE(m_page->rows("actionsTable"), u"a|b|c"_s);
        saveRowWithMask(1, "b", u"8"_s);
        QCOMPARE(m_page->rows("actionsTable", 1), u"Any|0.0.0.0/8|Any"_s);
        QCOMPARE(m_page->savedActions(), asText(Array{masked("b", "8"), m_page->action("c")}));
    }

    void anEditedTwinOfARemovedActionComesBackInItsPlace() {
        const Dictionary twin = m_page->action("a");
        m_page->writeActions({m_page->action("x"), twin, twin, m_page->action("b"), twin});
        m_page->show();
        m_page->clickRow("actionsTable", 4);
        m_page->click("actionsRemove");
        QCOMPARE(m_page->rows("actionsTable"), u"x|a|a|b"_s);
        saveRowWithMask(2, "a", u"4"_s);
        QCOMPARE(m_page->rows("actionsTable", 1), u"Any|Any|0.0.0.0/4|Any"_s);
        saveRowWithMask(3, "b", u"8"_s);
        QCOMPARE(m_page->savedActions(),
                 asText(Array{m_page->action("x"), masked("a", "4"), masked("b", "8")}));
    }

    void removalsGoOnAfterEditsAndAdditions() {
        const Dictionary twin = m_page->action("a");
        m_page->writeActions({twin, m_page->action("b"), twin, m_page->action("c")});
        m_page->show();
        m_page->clickRow("actionsTable", 0);
        m_page->click("actionsRemove");
        m_page->click("automaticActionsAdd");
        m_page->click("onSave");
        m_page->clickRow("actionsTable", 0);
        m_page->click("actionsRemove");
        QCOMPARE(m_page->rows("actionsTable"), u"a|c|New Action"_s);
        saveRowWithMask(2, "New Action", u"3"_s);
        m_page->clickRow("actionsTable", 0);
        m_page->click("actionsRemove");
        QCOMPARE(m_page->savedActions(),
                 asText(Array{m_page->action("c"), masked("New Action", "3")}));
    }

    void removingKeepsTheFocusAtTheList() {
        m_page->writeActions({m_page->action("a"), m_page->action("b"), m_page->action("c")});
        m_page->show();
        m_page->page().activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&m_page->page()));
        m_page->clickRow("actionsTable", 1);
        m_page->control("actionsRemove").setFocus();
        for (int press = 0; press < 2; ++press) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
            QCOMPARE(m_page->rows("actionsTable"), u"a|c"_s);
            QVERIFY(m_page->control("actionsTable").hasFocus());
        }
        QVERIFY(m_page->mainWindow.selected.empty());
        QVERIFY(m_page->isEnabled("saveButton"));
        // By mouse alike. The second press selected what came after the removed one.
        QCOMPARE(m_page->selectedRow("actionsTable"), 1);
        m_page->click("actionsRemove");
        m_page->click("actionsRemove");
        QCOMPARE(m_page->rows("actionsTable"), u"a"_s);
        QVERIFY(m_page->control("actionsTable").hasFocus());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
        QCOMPARE(m_page->selectedRow("actionsTable"), 0);
    }

    void removeWithoutASelectionDoesNothing() {
        m_page->writeActions({m_page->action("one")});
        m_page->show();
        dynamic_cast<ToolsViewActions &>(m_page->page()).removeActions();
        QCOMPARE(m_page->rows("actionsTable"), u"one"_s);
        QVERIFY(!m_page->isEnabled("saveButton"));
    }

    void aDoubleClickAndEnterEdit() {
        m_page->writeActions({m_page->action("one"), m_page->action("two")});
        m_page->show();
        m_page->clickRow("actionsTable", 1);
        auto &table = m_page->control<QTableView>("actionsTable");
        QTest::mouseDClick(table.viewport(), Qt::LeftButton, {},
                           table.visualRect(table.model()->index(1, 0)).center());
        QCOMPARE(m_page->openSheetName(), u"actionView"_s);
        QCOMPARE(m_page->text("actionName"), u"two"_s);
        m_page->click("onCancel");
        QTest::keyClick(&table, Qt::Key_Enter);
        QCOMPARE(m_page->text("actionName"), u"two"_s);
        m_page->click("onCancel");
        m_page->clickBelowRows("actionsTable");
        QTest::keyClick(&table, Qt::Key_Enter);
        QCOMPARE(m_page->openSheetName(), QString());
    }

    void emailLinksOpenTheirSheets() {
        m_page->show();
        for (const char *link : {"emailServer", "emailFormat", "emailTest"}) {
            QCOMPARE(m_page->control<QAbstractButton>(link).cursor().shape(),
                     Qt::PointingHandCursor);
            m_page->click(link);
            QCOMPARE(m_page->openSheetName(), QLatin1StringView(link));
            m_page->click("onCancel");
            QTest::keyClick(&m_page->control(link), Qt::Key_Return);
            QCOMPARE(m_page->openSheetName(), QLatin1StringView(link));
            m_page->click("onCancel");
            m_page->holdDown(link, Qt::Key_Return);
            QCOMPARE(m_page->openSheetName(), QLatin1StringView(link));
            m_page->click("onCancel");
        }
        QVERIFY(m_page->nothingWasSent());
    }

    void otherKeysPassUnchanged() {
        const Dictionary stored{{"before", Data{"\1"}},
                                {"textInterval", 5},
                                {"actionsArray", Array{m_page->action("one")}},
                                {"hostsDisplay", true},
                                {"real", 1.5},
                                {"nothing", Null{}},
                                {"date", Date{1.25}},
                                {"list", Array{1, "two"}}};
        m_page->write(stored);
        m_page->show();
        m_page->clickRow("actionsTable", 0);
        m_page->click("actionsEdit");
        m_page->click("onSave");
        m_page->click("saveButton");
        const Dictionary saved = m_page->saved();
        QCOMPARE(asText(saved), asText(stored));
        QVERIFY(saved == stored);
    }

    void otherTypesReadAsEmpty() {
        for (const Value &wrong : {Value(5), Value("text"), Value(Dictionary{{"a", 1}}),
                                   Value(Null{}), Value(true), Value(Data{"x"})}) {
            m_page->write({{"actionsArray", wrong}});
            m_page->show();
            QCOMPARE(m_page->rows("actionsTable"), QString());
        }
    }

    void elementsAndFieldsOfOtherTypesReadAsEmpty() {
        Dictionary odd;
        for (const auto &[key, value] : m_page->action("one")) {
            odd.set(key, Array{1});
        }
        const Array stored{5, "text", odd, m_page->action("last")};
        m_page->writeActions(stored);
        m_page->show();
        QCOMPARE(m_page->rows("actionsTable"), u"|||last"_s);
        for (int row = 0; row < 3; ++row) {
            m_page->clickRow("actionsTable", row);
            m_page->click("actionsEdit");
            for (const char *field : {"actionName", "actionIP", "actionMessage"}) {
                QCOMPARE(m_page->text(field), QString());
            }
            QCOMPARE(m_page->text("actionMask"), u"0"_s);
            QCOMPARE(m_page->control<QComboBox>("actionFacility").currentIndex(), -1);
            QVERIFY(!m_page->isChecked("actionRun") && !m_page->isChecked("actionEvent"));
            m_page->click("onCancel");
        }
        // What was not edited is saved as it was.
        m_page->clickRow("actionsTable", 3);
        m_page->click("actionsRemove");
        QCOMPARE(m_page->savedActions(), asText(Array{5, "text", odd}));
    }

    void thePagesSaveReplacesWhatASheetSavedMeanwhile() {
        m_page->write({{"actionsEmailPort", 26}, {"actionsArray", Array{}}});
        m_page->show();
        m_page->click("emailServer");
        m_page->type("serverPort", u"587"_s);
        m_page->click("onSave");
        const Dictionary bySheet = m_page->saved();
        QCOMPARE(settingInteger(bySheet, "actionsEmailPort"), 587);
        m_page->write(bySheet);  // as the service does
        m_page->click("automaticActionsAdd");
        m_page->click("onSave");
        m_page->click("saveButton");
        QCOMPARE(m_page->savedText(), u"{\"actionsEmailPort\": 26, \"actionsArray\": [%1]}"_s.arg(
                                          asText(m_page->action("New Action"))));
    }

    void worksByKeyboardAlone() {
        m_page->writeActions({m_page->action("one")});
        m_page->show();
        auto &table = m_page->control<QTableView>("actionsTable");
        m_page->page().activateWindow();
        QTRY_VERIFY(table.hasFocus());
        QTest::keyClick(&table, Qt::Key_Space);
        QCOMPARE(m_page->selectedRow("actionsTable"), 0);
        QTest::keyClick(&m_page->control("actionsEdit"), Qt::Key_Space);
        QCOMPARE(m_page->openSheetName(), u"actionView"_s);
        // From the blank control, Tab visits every control once, in the order of the form.
        QDialog *sheet = m_page->openSheet();
        QStringList order;
        for (int i = 0; i < 40 && !order.contains(u"onSave"_s); ++i) {
            QTest::keyClick(sheet->focusWidget(), Qt::Key_Tab);
            order += sheet->focusWidget()->objectName();
        }
        QCOMPARE(order.join(u' '),
                 u"actionIP actionMask anyHost actionFacility anyFacility actionSeverity "
                 u"anySeverity actionMessage anyMessage actionRun actionRunText actionEmail "
                 u"actionEmailText actionEvent actionEventText thresholdOn onCancel onSave"_s);
        QTest::keyClick(sheet->focusWidget(), Qt::Key_Return);
        QCOMPARE(m_page->openSheetName(), QString());
        QVERIFY(m_page->isEnabled("saveButton"));
        QVERIFY(QTest::qWaitForWindowActive(&m_page->page()));
        QTest::keyClick(&m_page->page(), Qt::Key_S, Qt::ControlModifier);
        QTRY_COMPARE(m_page->mainWindow.selected.size(), 1U);
        QCOMPARE(m_page->savedText(),
                 asText(Dictionary{{"actionsArray", Array{m_page->action("one")}}}));
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ActionsPageTest)
#include "ActionsPageTest.moc"
#include "common/SettingsDocument.h"
