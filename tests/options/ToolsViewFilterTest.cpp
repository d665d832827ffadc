#include "options/OptionsFixture.h"

namespace quorbel {

using namespace testing;

/// The filter lists of the options page and their editor.
class ToolsViewFilterTest : public QObject {
    Q_OBJECT

private:
    static void addLists() {
        QTest::addColumn<QByteArray>("list");
        QTest::newRow("include") << QByteArray("include");
        QTest::newRow("exclude") << QByteArray("exclude");
    }
    // The list's name is that of the row of data; of a control of that list.
    static std::string of(const char *control) {
        return QTest::currentDataTag() + std::string("Filters") + control;
    }
    static std::string key() { return of("Array"); }
    void press(const char *button) { m->click(of(button).c_str()); }
    void clickRow(int row) { m->clickRow(of("Table").c_str(), row); }
    QString names() { return m->rows(of("Table").c_str()); }
    int selectedRow() { return m->selectedRow(of("Table").c_str()); }
    QList<bool> enabled() {
        return {m->isEnabled(of("Edit").c_str()), m->isEnabled(of("Remove").c_str())};
    }
    void open(const char *button) {
        press(button);
        QCOMPARE(m->openSheetName(), QStringLiteral("filterView"));
    }
    void finish(const char *button) {
        m->click(button);
        QTRY_COMPARE(m->openSheetName(), QString());
    }
    // The fields of the open editor.
    QString fields() {
        return m->text("filterName") + u'|' + m->text("filterIP") + u'|' + m->text("filterMask") +
               u'|' + m->chosen("filterFacility") + u'|' + m->chosen("filterSeverity") + u'|' +
               m->text("filterMessage");
    }
    Dictionary withList(Array array) {
        Dictionary document = fullDocument();
        document.set(key(), std::move(array));
        return document;
    }
    QString savedList() { return at(m->save(), key()); }
    static QString textOf(const Array &array) { return toQString(testing::textOf(array)); }

    const QList<bool> kOn{true, true};
    const QList<bool> kOff{false, false};
    std::unique_ptr<OptionsPage> m;

private Q_SLOTS:
    void init() { m = std::make_unique<OptionsPage>(); }
    void cleanup() { m.reset(); }

    void buttonsFollowTheSelection_data() { addLists(); }
    void buttonsFollowTheSelection() {
        m->show(withList({filter("a"), filter("b")}));
        QCOMPARE(selectedRow(), -1);
        QCOMPARE(enabled(), kOff);
        clickRow(1);
        QCOMPARE(selectedRow(), 1);
        QCOMPARE(enabled(), kOn);
        m->clickBelowRows(of("Table").c_str());
        QCOMPARE(selectedRow(), -1);
        QCOMPARE(enabled(), kOff);
        QTest::keyClick(&m->control(of("Table").c_str()), Qt::Key_Up);
        QCOMPARE(enabled(), kOn);
        QVERIFY(!m->canSave());
    }

    void theEditorsControlsHaveTheirNames() {
        m->show({});
        m->click("includeFiltersAdd");
        QCOMPARE(m->openSheetName(), QStringLiteral("filterView"));
        QCOMPARE(m->openSheet()->windowTitle(), QStringLiteral("Quorbel Filter"));
        for (const char *name :
             {"filterName", "filterIP", "filterMask", "filterFacility", "filterSeverity",
              "filterMessage", "filterBlank", "anyHost", "anyFacility", "anySeverity", "anyMessage",
              "onSave", "onCancel"}) {
            QVERIFY2(!m->control(name).accessibleName().isEmpty(), name);
        }
        QCOMPARE(m->openSheet()->minimumSize(), m->openSheet()->maximumSize());
        QTRY_COMPARE(m->openSheet()->focusWidget(), &m->control("filterBlank"));
    }

    void aNewFilterIsAppended_data() { addLists(); }
    void aNewFilterIsAppended() {
        m->show(withList({filter("a")}));
        open("Add");
        QVERIFY(m->isEnabled("filterName"));
        QCOMPARE(fields(), QStringLiteral("New Filter|0.0.0.0|0|Any|Any|*"));
        m->type("filterName", QStringLiteral("núm, 1"));
        m->type("filterIP", QStringLiteral("192.168.1.0"));
        m->type("filterMask", QStringLiteral("24"));
        m->choose("filterFacility", "Local3");
        m->choose("filterSeverity", "Informational");
        m->type("filterMessage", QStringLiteral("*disk?full*"));
        finish("onSave");
        QVERIFY(m->canSave());
        QCOMPARE(names(), QStringLiteral("a|núm, 1"));
        QCOMPARE(selectedRow(), -1);
        QCOMPARE(enabled(), kOff);
        QCOMPARE(savedList(), textOf({filter("a"), filter("núm, 1", "192.168.1.0", "24", "Local3",
                                                          "Informational", "*disk?full*")}));
    }

    void aProposalIsANewExclusion() {
        const auto list = [this](const char *key, const char *table) {
            return at(m->save(), key) + u'/' + m->rows(table);
        };
        Dictionary document = fullDocument();
        document.set("excludeFiltersArray", Array{filter("a"), filter("b")});
        m->show(document);
        m->clickRow("includeFiltersTable", 0);
        m->clickRow("excludeFiltersTable", 1);
        const Dictionary proposed =
            filter("like one", "10.0.0.5", "32", "Local7", "Error", "link * down");
        m->options().propose(proposed);
        QCOMPARE(m->openSheetName(), QStringLiteral("filterView"));
        QCOMPARE(fields(), QStringLiteral("like one|10.0.0.5|32|Local7|Error|link * down"));
        QVERIFY(m->isEnabled("filterName"));
        m->click("anyHost");
        finish("onSave");
        QCOMPARE(m->rows("includeFiltersTable"), QStringLiteral("first|second"));
        QCOMPARE(list("excludeFiltersArray", "excludeFiltersTable"),
                 textOf({filter("a"), filter("b"),
                         filter("like one", "0.0.0.0", "0", "Local7", "Error", "link * down")}) +
                     QStringLiteral("/a|b|like one"));
        // The next one begins by itself again.
        m->click("excludeFiltersAdd");
        QCOMPARE(fields(), QStringLiteral("New Filter|0.0.0.0|0|Any|Any|*"));
    }
    void aDroppedProposalLeavesNothing() {
        m->show({});
        m->options().propose(filter("x", "no address", "", "Local9", "", ""));
        QCOMPARE(fields(), QStringLiteral("x|no address|0|Any|Any|"));
        finish("onCancel");
        QVERIFY(!m->canSave());
        QCOMPARE(m->rows("excludeFiltersTable"), QString());
    }

    void aNewFilterAsItIsHoldsForEverything_data() { addLists(); }
    void aNewFilterAsItIsHoldsForEverything() {
        m->show({});
        open("Add");
        finish("onSave");
        QCOMPARE(savedList(), textOf({filter("New Filter")}));
    }

    void emptyFieldsAreKept_data() { addLists(); }
    void emptyFieldsAreKept() {
        m->show({});
        open("Add");
        for (const char *field : {"filterName", "filterIP", "filterMask", "filterMessage"}) {
            m->type(field, {});
        }
        finish("onSave");
        QCOMPARE(savedList(), textOf({filter("", "", "", "Any", "Any", "")}));
    }

    void cancelAndEscapeChangeNothing_data() { addLists(); }
    void cancelAndEscapeChangeNothing() {
        m->show(withList({filter("a")}));
        clickRow(0);
        open("Edit");
        m->type("filterMessage", QStringLiteral("x"));
        finish("onCancel");
        open("Edit");
        QCOMPARE(m->text("filterMessage"), QStringLiteral("*"));
        m->click("anyHost");
        QTest::keyClick(m->openSheet(), Qt::Key_Escape);
        QTRY_COMPARE(m->openSheetName(), QString());
        QVERIFY(!m->canSave());
        QVERIFY(m->saveUntouched() == withList({filter("a")}));
    }

    void anEditedFilterKeepsItsPlaceAndName_data() { addLists(); }
    void anEditedFilterKeepsItsPlaceAndName() {
        m->show(withList(
            {filter("a"), filter("b", "10.0.0.1", "32", "Mail", "Alert", "x"), filter("c")}));
        clickRow(1);
        open("Edit");
        QVERIFY(!m->isEnabled("filterName"));
        QCOMPARE(fields(), QStringLiteral("b|10.0.0.1|32|Mail|Alert|x"));
        m->click("anyFacility");
        m->type("filterMask", QStringLiteral("8"));
        finish("onSave");
        QVERIFY(m->canSave());
        QCOMPARE(selectedRow(), 1);
        QCOMPARE(names(), QStringLiteral("a|b|c"));
        QCOMPARE(
            savedList(),
            textOf({filter("a"), filter("b", "10.0.0.1", "8", "Any", "Alert", "x"), filter("c")}));
    }

    void aDoubleClickAndEnterEdit_data() { addLists(); }
    void aDoubleClickAndEnterEdit() {
        m->show(withList({filter("a"), filter("b")}));
        auto &table = m->control<QTableView>(of("Table").c_str());
        clickRow(1);
        QTest::mouseDClick(table.viewport(), Qt::LeftButton, {},
                           table.visualRect(table.model()->index(1, 0)).center());
        QCOMPARE(m->openSheetName(), QStringLiteral("filterView"));
        QCOMPARE(m->text("filterName"), QStringLiteral("b"));
        finish("onCancel");
        QTest::keyClick(&table, Qt::Key_Return);
        QCOMPARE(m->text("filterName"), QStringLiteral("b"));
    }

    void anUnknownFacilityOpensWithNoneSelected_data() { addLists(); }
    void anUnknownFacilityOpensWithNoneSelected() {
        m->show(withList({filter("a", "::1", "many", "Kernel", "Information")}));
        clickRow(0);
        open("Edit");
        QCOMPARE(fields(), QStringLiteral("a|::1|0|||*"));
        QCOMPARE(m->index("filterFacility"), -1);
        QCOMPARE(m->index("filterSeverity"), -1);
        m->choose("filterSeverity", "Debug");
        finish("onSave");
        QCOMPARE(savedList(), textOf({filter("a", "::1", "0", "", "Debug")}));
    }

    void addOnTheIncludeListTakesTheSelectionAway() {
        m->show(fullDocument());
        m->clickRow("includeFiltersTable", 1);
        m->click("includeFiltersAdd");
        QVERIFY(m->isEnabled("filterName"));
        QCOMPARE(m->text("filterName"), QStringLiteral("New Filter"));
        finish("onSave");
        QCOMPARE(m->rows("includeFiltersTable"), QStringLiteral("first|second|New Filter"));
        QCOMPARE(m->selectedRow("includeFiltersTable"), -1);
        QVERIFY(!m->isEnabled("includeFiltersEdit") && !m->isEnabled("includeFiltersRemove"));
    }

    void addOnTheExcludeListKeepsItsSelectionAndEdits() {
        m->show(fullDocument());
        m->clickRow("includeFiltersTable", 0);
        m->clickRow("excludeFiltersTable", 0);
        m->click("excludeFiltersAdd");
        // It is the include list whose selection goes.
        QCOMPARE(m->text("filterName"), QStringLiteral("third"));
        QVERIFY(!m->isEnabled("filterName"));
        m->click("anyHost");
        finish("onSave");
        QCOMPARE(m->selectedRow("includeFiltersTable"), -1);
        QVERIFY(!m->isEnabled("includeFiltersEdit") && !m->isEnabled("includeFiltersRemove"));
        QCOMPARE(m->selectedRow("excludeFiltersTable"), 0);
        QVERIFY(m->isEnabled("excludeFiltersEdit") && m->isEnabled("excludeFiltersRemove"));
        Dictionary expected = fullDocument();
        expected.set("excludeFiltersArray",
                     Array{filter("third", "0.0.0.0", "0", "Kern", "Debug")});
        QVERIFY(m->save() == expected);  // replaced, and none added
    }

    void eachEditorWorksOnItsOwnList() {
        m->show(fullDocument());
        m->clickRow("includeFiltersTable", 1);
        m->clickRow("excludeFiltersTable", 0);
        m->click("excludeFiltersEdit");
        QCOMPARE(m->text("filterName"), QStringLiteral("third"));
        finish("onSave");
        m->click("includeFiltersEdit");
        QCOMPARE(m->text("filterName"), QStringLiteral("second"));
        m->click("anyHost");
        finish("onSave");
        Dictionary expected = fullDocument();
        expected.set("includeFiltersArray", Array{filter("first"), filter("second")});
        QVERIFY(m->save() == expected);
    }

    void removingAsksNothing_data() { addLists(); }
    void removingAsksNothing() {
        m->show(withList({filter("a"), filter("b"), filter("c")}));
        clickRow(1);
        press("Remove");
        QCOMPARE(names(), QStringLiteral("a|c"));
        QCOMPARE(selectedRow(), -1);
        QVERIFY(m->canSave());
        // Both stay enabled; Remove does nothing now, and Edit makes a new one.
        QCOMPARE(enabled(), kOn);
        press("Remove");
        QCOMPARE(names(), QStringLiteral("a|c"));
        open("Edit");
        QVERIFY(m->isEnabled("filterName"));
        QCOMPARE(m->text("filterName"), QStringLiteral("New Filter"));
        finish("onSave");
        QCOMPARE(names(), QStringLiteral("a|c|New Filter"));
        QCOMPARE(savedList(), textOf({filter("a"), filter("c"), filter("New Filter")}));
    }

    void aClickOnNoRowDisablesWhatARemovalLeftEnabled_data() { addLists(); }
    void aClickOnNoRowDisablesWhatARemovalLeftEnabled() {
        m->show(withList({filter("a"), filter("b")}));
        clickRow(1);
        press("Remove");
        QCOMPARE(enabled(), kOn);
        m->clickBelowRows(of("Table").c_str());
        QCOMPARE(selectedRow(), -1);
        QCOMPARE(enabled(), kOff);
    }

    void removeWithoutASelectionChangesNothing_data() { addLists(); }
    void removeWithoutASelectionChangesNothing() {
        m->show(withList({filter("a")}));
        QTest::currentDataTag() == std::string("include") ? m->options().includeFiltersRemove()
                                                          : m->options().excludeFiltersRemove();
        QCOMPARE(names(), QStringLiteral("a"));
        QVERIFY(!m->canSave());
    }

    void allEqualRecordsAreRemoved_data() { addLists(); }
    void allEqualRecordsAreRemoved() {
        Dictionary sameWithMore = filter("a");
        sameWithMore.set("Seventh", "field");
        const Array array{filter("a"),  filter("b"), filter("a"), filter("a", "0.0.0.0", "00"),
                          sameWithMore, "no record"};
        m->show(withList(array));
        clickRow(2);
        press("Remove");
        // One row goes from the table, and all that are equal in the six fields from the document.
        QCOMPARE(names(), QStringLiteral("a|b|a|a|"));
        QCOMPARE(savedList(), textOf({filter("b"), filter("a", "0.0.0.0", "00"), "no record"}));
    }

    void anEditReplacesTheFilterThatWasShown_data() { addLists(); }
    void anEditReplacesTheFilterThatWasShown() {
        // After equal records were removed the rows are no longer those of the working list.
        m->show(withList({filter("a"), filter("a"), filter("b"), filter("c")}));
        clickRow(0);
        press("Remove");
        QCOMPARE(names(), QStringLiteral("a|b|c"));
        clickRow(1);
        open("Edit");
        QCOMPARE(m->text("filterName"), QStringLiteral("b"));
        m->type("filterMask", QStringLiteral("1"));
        finish("onSave");
        QCOMPARE(names(), QStringLiteral("a|b|c"));
        QCOMPARE(savedList(), textOf({filter("b", "0.0.0.0", "1"), filter("c")}));
        // What the removal took with it comes back when it is edited, where it is shown.
        clickRow(0);
        open("Edit");
        QCOMPARE(m->text("filterName"), QStringLiteral("a"));
        m->type("filterMask", QStringLiteral("2"));
        finish("onSave");
        QCOMPARE(savedList(),
                 textOf({filter("a", "0.0.0.0", "2"), filter("b", "0.0.0.0", "1"), filter("c")}));
    }

    void theTableShowsTheFields_data() { addLists(); }
    void theTableShowsTheFields() {
        m->show(withList({filter("a", "10.0.0.0", "8", "Mail", "Error", "*x*"), filter("b"),
                          filter("c", "0.0.0.0", "8"), filter("d", "::1", "")}));
        const auto &table = m->control<QTableView>(of("Table").c_str());
        QStringList titles;
        for (int column = 0; column < table.model()->columnCount(); ++column) {
            titles += table.model()->headerData(column, Qt::Horizontal).toString() + u':' +
                      m->rows(of("Table").c_str(), column);
        }
        QCOMPARE(titles.join(u'\n'),
                 QStringLiteral("Name:a|b|c|d\nHost:10.0.0.0/8|Any|0.0.0.0/8|::1\n"
                                "Facility:Mail|Any|Any|Any\nSeverity:Error|Any|Any|Any\n"
                                "Message:*x*|*|*|*"));
    }

    void enterSavesTheEditor_data() { addLists(); }
    void enterSavesTheEditor() {
        m->show({});
        open("Add");
        QTest::keyClick(&m->control("filterName"), Qt::Key_Return);
        QTRY_COMPARE(m->openSheetName(), QString());
        QCOMPARE(names(), QStringLiteral("New Filter"));
    }

    void tabGoesThroughTheEditorInOrder() {
        m->show({});
        m->click("includeFiltersAdd");
        QStringList order;
        QTRY_COMPARE(m->openSheet()->focusWidget(), &m->control("filterBlank"));
        for (int i = 0; i < 12; ++i) {
            QTest::keyClick(m->openSheet()->focusWidget(), Qt::Key_Tab);
            order += m->openSheet()->focusWidget()->objectName();
        }
        QCOMPARE(order.join(u' '),
                 QStringLiteral("filterName filterIP filterMask anyHost filterFacility anyFacility "
                                "filterSeverity anySeverity filterMessage anyMessage onCancel "
                                "onSave"));
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::ToolsViewFilterTest)
#include "ToolsViewFilterTest.moc"
